#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "renderer/ImageBuffers.h"
#include "renderer/LibraryObject.h"
#include "renderer/VelmarContext.h"

#include <cstddef>

namespace Velmar {

/// Holds the library's tone mapper and the images between which it works.
class ToneMapper : public Destroyable<ToneMapper, ThreadSafeRefCounted> {
  public:
    /// Has the library make and initialise its tone mapper. Its error is kept and not thrown: the render continues. The
    /// context must be loaded and outlive the object.
    ToneMapper(const VelmarContext& context, const Reference<RenderBuffer>& render_buffer_,
               const Reference<UInt8Buffer>& uint8_buffer_, const Reference<FloatBuffer>& float_buffer_);

    const String& getErrorMessage() const { return error_msg; }

  private:
    struct Layout;

    InterfaceRef interface;
    Reference<RenderBuffer> render_buffer;
    Reference<UInt8Buffer> uint8_buffer;
    Reference<FloatBuffer> float_buffer;
    String error_msg;
};

struct ToneMapper::Layout {
    static_assert(offsetof(ToneMapper, interface) == 16);
    static_assert(offsetof(ToneMapper, render_buffer) == 24);
    static_assert(offsetof(ToneMapper, uint8_buffer) == 32);
    static_assert(offsetof(ToneMapper, float_buffer) == 40);
    static_assert(offsetof(ToneMapper, error_msg) == 48);
};

static_assert(sizeof(ToneMapper) == 88);

/// Holds the library's texture manager.
class TextureManager : public Destroyable<TextureManager, ThreadSafeRefCounted> {
  public:
    /// Has the library make and initialise the object. The context must be loaded and outlive it.
    explicit TextureManager(const VelmarContext& context);

    LibraryObject* getInterface() const { return interface.getPointer(); }

  private:
    struct Layout;

    InterfaceRef interface;
};

struct TextureManager::Layout {
    static_assert(offsetof(TextureManager, interface) == 16);
};

static_assert(sizeof(TextureManager) == 24);

/// Holds the library's data manager and the texture manager that works with it.
class DataManager : public Destroyable<DataManager, ThreadSafeRefCounted> {
  public:
    /// Has the library make and initialise both objects, and links them. The context must be loaded and outlive the
    /// object. Throws `VelmarException` with the text of a `Velmar::Exception` of these steps.
    explicit DataManager(const VelmarContext& context);

  private:
    struct Layout;

    Reference<TextureManager> texture_manager;
    InterfaceRef interface;
};

struct DataManager::Layout {
    static_assert(offsetof(DataManager, texture_manager) == 16);
    static_assert(offsetof(DataManager, interface) == 24);
};

static_assert(sizeof(DataManager) == 32);

} // namespace Velmar
