#pragma once

#include "velmarmemory.h"

#include "scene/nodes/Matrix4f.h"

#include <cstddef>
#include <limits>
#include <type_traits>

namespace Velmar {

/// A key frame in the form that a `TransformPath` works on.
struct TransformFrame {
    /// w is 0.
    Vec4f translation;
    /// A quaternion.
    Vec4f rotation;
    /// Scale and shear, applied before the rotation.
    Matrix4f S;
    double time;
};

static_assert(std::is_trivially_copyable_v<TransformFrame>);

/// An array of frames, aligned to 16 bytes. Up to four lie in the object itself, as most paths have no more.
class TransformFrames {
  public:
    static constexpr std::size_t frames_inside = 4;

    TransformFrames() = default;
    TransformFrames(const TransformFrames&) = delete;
    TransformFrames& operator=(const TransformFrames&) = delete;
    ~TransformFrames() { sdkAlignedFree(heap); }

    /// Drops all frames and makes room for `count` new ones, all unwritten.
    void reset(std::size_t count) {
        if (count > capacity) {
            if (count > std::numeric_limits<std::size_t>::max() / sizeof(TransformFrame)) throw BadAlloc();
            void* const block = sdkAlignedMalloc(count * sizeof(TransformFrame), alignof(TransformFrame));
            sdkAlignedFree(heap);
            heap = static_cast<TransformFrame*>(block);
            capacity = count;
        }
        used = count;
    }

    std::size_t size() const { return used; }
    bool empty() const { return used == 0; }
    TransformFrame* data() { return heap != nullptr ? heap : inside; }
    const TransformFrame* data() const { return heap != nullptr ? heap : inside; }
    TransformFrame& operator[](std::size_t index) { return data()[index]; }
    const TransformFrame& operator[](std::size_t index) const { return data()[index]; }
    TransformFrame* begin() { return data(); }
    TransformFrame* end() { return data() + used; }
    const TransformFrame* begin() const { return data(); }
    const TransformFrame* end() const { return data() + used; }

  private:
    TransformFrame inside[frames_inside];
    TransformFrame* heap = nullptr;
    std::size_t used = 0;
    std::size_t capacity = frames_inside;
};

} // namespace Velmar
