#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "renderer/InterfaceRef.h"
#include "renderer/TextureManager.h"
#include "renderer/VelmarContext.h"

namespace Velmar {

/// Holds the library's data manager and the texture manager that works with it.
class DataManager : public Destroyable<DataManager, ThreadSafeRefCounted> {
  public:
    /// Has the library make and initialise both objects, and links them. The context must be loaded and outlive the
    /// object. Throws `VelmarException` with the text of a `Velmar::Exception` of these steps.
    explicit DataManager(const VelmarContext& context);

  private:
    friend struct DataManagerLayout;

    Reference<TextureManager> texture_manager;
    InterfaceRef interface;
};

static_assert(sizeof(DataManager) == 32);

} // namespace Velmar
