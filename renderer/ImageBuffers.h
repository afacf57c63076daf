#pragma once

#include "velmarmemory.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/System.h"

#include <cstdint>

namespace Velmar {

/// An image of floats for the renderer library to fill. This side only makes and destroys it.
class FloatBuffer : public Destroyable<FloatBuffer, ThreadSafeRefCounted> {
  public:
    FloatBuffer() = default;
    ~FloatBuffer();

  private:
    friend struct FloatBufferLayout;

    OwnedMutex image_lock;
    [[maybe_unused]] std::uint64_t reserved_24[2]{};
    /// Allocated by `sdkMalloc`.
    void* e = nullptr;
    [[maybe_unused]] std::uint64_t reserved_48[2]{};
};

static_assert(sizeof(FloatBuffer) == 64);

/// An image of bytes for the renderer library to fill. This side only makes and destroys it.
class UInt8Buffer : public Destroyable<UInt8Buffer, ThreadSafeRefCounted> {
  public:
    UInt8Buffer();
    ~UInt8Buffer();

  private:
    friend struct UInt8BufferLayout;

    struct ImageDescription : SdkAllocated {
        ~ImageDescription() { sdkAlignedFree(e); }

        /// Allocated by `sdkAlignedMalloc`.
        void* e = nullptr;
        std::uint64_t reserved[4]{};
        std::uint64_t components = 3;
    };

    static_assert(sizeof(ImageDescription) == 48);

    /// Owns a description; a member of its own, so that it goes too when the lock can't be made.
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

static_assert(sizeof(UInt8Buffer) == 32);

} // namespace Velmar
