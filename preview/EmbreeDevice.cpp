#include "preview/EmbreeDevice.h"

#include "preview/SceneNodes.h"
#include "preview/System.h"

#include <algorithm>
#include <new>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace Preview {

EmbreeDevice::EmbreeDevice(unsigned threads)
    // Embree's own tasks, which the Windows build has, take no more threads than twice the processors, and don't check.
    : builders(std::min(threads, std::max(std::thread::hardware_concurrency(), 1u))) {
    // One instruction set, where results must be the same on different machines.
    const std::string isa = System::getEnvironment("VELMAR_PREVIEW_ISA");
    const std::string count = std::to_string(builders);
    // All threads are the caller's.
    const std::string settings = "threads=" + count + ",user_threads=" + count + ",set_affinity=0" +
                                 (isa.empty() ? std::string() : ",max_isa=" + isa);
    device.reset(rtcNewDevice(settings.c_str()));
    if (device == nullptr) throw std::bad_alloc();
    rtcSetDeviceMemoryMonitorFunction(device.get(), countMemory, this);
}

bool EmbreeDevice::countMemory(void* self, ssize_t count, bool) {
    static_cast<EmbreeDevice*>(self)->bytes.fetch_add(count, std::memory_order_relaxed);
    return true;
}

bool EmbreeDevice::continueBuild(void* self, double) {
    return !static_cast<EmbreeDevice*>(self)->isCancelled();
}

bool EmbreeDevice::isCancelled() const {
    return cancelled != nullptr && cancelled->load(std::memory_order_relaxed);
}

SceneOwner EmbreeDevice::makeScene(bool compact) {
    SceneOwner scene(rtcNewScene(device.get()));
    if (scene == nullptr) throw std::bad_alloc();
    rtcSetSceneFlags(scene.get(),
                     static_cast<RTCSceneFlags>(RTC_SCENE_FLAG_ROBUST | RTC_SCENE_FLAG_CONTEXT_FILTER_FUNCTION |
                                                (compact ? RTC_SCENE_FLAG_COMPACT : RTC_SCENE_FLAG_NONE)));
    rtcSetSceneProgressMonitorFunction(scene.get(), continueBuild, this);
    return scene;
}

GeometryOwner EmbreeDevice::makeGeometry(RTCGeometryType type) {
    GeometryOwner geometry(rtcNewGeometry(device.get(), type));
    if (geometry == nullptr) throw std::bad_alloc();
    return geometry;
}

void EmbreeDevice::commit(RTCScene scene, std::size_t size) {
    // Below this, starting a thread takes longer than it saves.
    constexpr std::size_t min_size_for_threads = 20000;
    // Each thread has errors of its own, and a failed build is the error of any of them.
    std::atomic<RTCError> error_of_helpers = RTC_ERROR_NONE;
    std::vector<std::thread> helpers;
    if (builders > 1 && size >= min_size_for_threads) {
        try {
            helpers.reserve(builders - 1);
            while (helpers.size() + 1 < builders)
                helpers.emplace_back([&] {
                    rtcJoinCommitScene(scene);
                    const RTCError error = rtcGetDeviceError(device.get());
                    if (error != RTC_ERROR_NONE) error_of_helpers = error;
                });
        } catch (const std::bad_alloc&) {
            // As many as there are.
        } catch (const std::system_error&) {
        }
    }
    rtcJoinCommitScene(scene);
    for (std::thread& helper : helpers)
        helper.join();
    if (isCancelled()) {
        forgetErrors();
        throw Cancelled();
    }
    throwIfFailed();
    if (error_of_helpers != RTC_ERROR_NONE) throw std::bad_alloc();
}

void EmbreeDevice::throwIfFailed() {
    const RTCError error = rtcGetDeviceError(device.get());
    if (error == RTC_ERROR_NONE) return;
    if (error != RTC_ERROR_OUT_OF_MEMORY) report("Embree's error " + std::to_string(error));
    throw std::bad_alloc();
}

void EmbreeDevice::forgetErrors() {
    rtcGetDeviceError(device.get());
}

} // namespace Preview
