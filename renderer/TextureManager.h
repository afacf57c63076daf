#pragma once

#include "velmarthreadsaferefcounted.h"

#include "renderer/InterfaceRef.h"
#include "renderer/VelmarContext.h"

namespace Velmar {

/// Holds the library's texture manager.
class TextureManager : public Destroyable<TextureManager, ThreadSafeRefCounted> {
  public:
    /// Has the library make and initialise the object. The context must be loaded and outlive it.
    explicit TextureManager(const VelmarContext& context);

    LibraryObject* getInterface() const { return interface.getPointer(); }

  private:
    friend struct TextureManagerLayout;

    InterfaceRef interface;
};

static_assert(sizeof(TextureManager) == 24);

} // namespace Velmar
