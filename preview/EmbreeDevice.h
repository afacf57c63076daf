#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <embree3/rtcore.h>
#include <memory>

namespace Preview {

struct ReleaseDevice {
    void operator()(RTCDevice device) const { rtcReleaseDevice(device); }
};
struct ReleaseScene {
    void operator()(RTCScene scene) const { rtcReleaseScene(scene); }
};
struct ReleaseGeometry {
    void operator()(RTCGeometry geometry) const { rtcReleaseGeometry(geometry); }
};
using DeviceOwner = std::unique_ptr<RTCDeviceTy, ReleaseDevice>;
using SceneOwner = std::unique_ptr<RTCSceneTy, ReleaseScene>;
using GeometryOwner = std::unique_ptr<RTCGeometryTy, ReleaseGeometry>;

/// Embree, which finds what rays hit. It builds its structures with threads of the preview's own: those of the
/// libraries that it may be built with go on when the device is gone, and must not run while the process is taken down.
class EmbreeDevice {
  public:
    /// Thrown by `commit`.
    struct Cancelled {};

    /// `threads` is the number of threads that may build; more than there are processors don't. Throws
    /// `std::bad_alloc`.
    explicit EmbreeDevice(unsigned threads);
    EmbreeDevice(const EmbreeDevice&) = delete;
    EmbreeDevice& operator=(const EmbreeDevice&) = delete;

    /// An empty scene, watertight as all of the preview's are. A compact one takes little more than half the memory,
    /// none for the build alone, and its rays take a quarter to a half longer. Throws `std::bad_alloc`.
    SceneOwner makeScene(bool compact = false);
    /// A geometry without buffers. Throws `std::bad_alloc`.
    GeometryOwner makeGeometry(RTCGeometryType type);

    /// Builds a scene of `size` faces or instances. Throws `std::bad_alloc`, or `Cancelled` when the flag of
    /// `setCancelled` became true; the scene is of no use then.
    void commit(RTCScene scene, std::size_t size);

    /// Has `commit` end early when `flag` becomes true. The flag must outlive the builds; null for none.
    void setCancelled(const std::atomic<bool>* flag) { cancelled = flag; }

    /// Throws `std::bad_alloc` if a call of this thread has failed.
    void throwIfFailed();
    /// Forgets what calls of this thread have failed for.
    void forgetErrors();

    /// Bytes that Embree has allocated.
    std::int64_t getBytes() const { return bytes.load(std::memory_order_relaxed); }

  private:
    static bool countMemory(void* self, ssize_t count, bool post);
    static bool continueBuild(void* self, double fraction);
    bool isCancelled() const;

    std::atomic<std::int64_t> bytes{0};
    const std::atomic<bool>* cancelled = nullptr;
    unsigned builders;
    /// Last: it reports what it frees.
    DeviceOwner device;
};

} // namespace Preview
