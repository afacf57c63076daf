#pragma once

#include "reference.h"
#include "velmarmemory.h"
#include "velmarthreadsaferefcounted.h"

#include "renderer/MasterBuffer.h"
#include "utils/System.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

class SceneNodeRoot;

/// Owns the image store of one render.
class RenderBuffer : public Destroyable<RenderBuffer, ThreadSafeRefCounted> {
  public:
    /// Makes the image store that the scene's render settings ask for. Width, height and super sample factor are taken
    /// as in the settings, set or not.
    /// Throws `VelmarException` when the scene has no render settings or the store can't be allocated.
    explicit RenderBuffer(const Reference<SceneNodeRoot>& scene);
    ~RenderBuffer();

    MasterBuffer* getMasterBuffer() const { return master_buffer; }

  private:
    struct Layout;

    MasterBuffer* master_buffer;
};

struct RenderBuffer::Layout {
    static_assert(offsetof(RenderBuffer, master_buffer) == 16);
};

static_assert(sizeof(RenderBuffer) == 24);

/// An image of floats for the renderer library to fill. This side only makes and destroys it.
class FloatBuffer : public Destroyable<FloatBuffer, ThreadSafeRefCounted> {
  public:
    FloatBuffer() = default;
    ~FloatBuffer();

  private:
    struct Layout;

    OwnedMutex image_lock;
    [[maybe_unused]] std::uint64_t reserved_24[2]{};
    /// Allocated by `sdkMalloc`.
    void* e = nullptr;
    [[maybe_unused]] std::uint64_t reserved_48[2]{};
};

struct FloatBuffer::Layout {
    static_assert(offsetof(FloatBuffer, image_lock) == 16);
    static_assert(offsetof(FloatBuffer, reserved_24) == 24);
    static_assert(offsetof(FloatBuffer, e) == 40);
    static_assert(offsetof(FloatBuffer, reserved_48) == 48);
};

static_assert(sizeof(FloatBuffer) == 64);

/// An image of bytes for the renderer library to fill. This side only makes and destroys it.
class UInt8Buffer : public Destroyable<UInt8Buffer, ThreadSafeRefCounted> {
  public:
    UInt8Buffer();
    ~UInt8Buffer();

  private:
    struct Layout;

    struct ImageDescription : SdkAllocated {
        ~ImageDescription() { sdkAlignedFree(e); }

        /// Allocated by `sdkAlignedMalloc`.
        void* e = nullptr;
        std::uint64_t reserved[4]{};
        std::uint64_t components = 3;
    };

    /// Owns a description; a member of its own, so that it is freed too when the lock can't be made.
    struct OwnedDescription {
        OwnedDescription() : description(new ImageDescription) {}
        ~OwnedDescription() { delete description; }
        OwnedDescription(const OwnedDescription&) = delete;
        OwnedDescription& operator=(const OwnedDescription&) = delete;

        ImageDescription* description;
    };

    OwnedDescription image;
    OwnedMutex image_lock;
};

struct UInt8Buffer::Layout {
    static_assert(offsetof(UInt8Buffer, image) == 16);
    static_assert(offsetof(UInt8Buffer, image_lock) == 24);

    static_assert(offsetof(ImageDescription, e) == 0);
    static_assert(offsetof(ImageDescription, reserved) == 8);
    static_assert(offsetof(ImageDescription, components) == 40);
    static_assert(sizeof(ImageDescription) == 48);
};

static_assert(sizeof(UInt8Buffer) == 32);

} // namespace Velmar
