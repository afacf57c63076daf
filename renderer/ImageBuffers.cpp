#include "renderer/ImageBuffers.h"

#include <cstddef>

namespace Velmar {

struct FloatBufferLayout {
    static_assert(offsetof(FloatBuffer, image_lock) == 16);
    static_assert(offsetof(FloatBuffer, reserved_24) == 24);
    static_assert(offsetof(FloatBuffer, e) == 40);
    static_assert(offsetof(FloatBuffer, reserved_48) == 48);
};

struct UInt8BufferLayout {
    static_assert(offsetof(UInt8Buffer, image) == 16);
    static_assert(offsetof(UInt8Buffer, image_lock) == 24);
    static_assert(offsetof(UInt8Buffer::ImageDescription, e) == 0);
    static_assert(offsetof(UInt8Buffer::ImageDescription, components) == 40);
};

FloatBuffer::~FloatBuffer() {
    sdkFree(e);
}

UInt8Buffer::UInt8Buffer() = default;

UInt8Buffer::~UInt8Buffer() = default;

} // namespace Velmar
