#include "RenderJob.h"

#include "Record.h"
#include "System.h"

namespace FakeSdk {

namespace {

// Places in the image store.
constexpr int passes_done = 24;
constexpr int array_of_the_library = 136;
constexpr int section_152 = 152;
constexpr int layer_width = 312;
constexpr int layer_height = 320;
constexpr int floats_per_pixel = 328;
constexpr int second_width = 336;
constexpr int second_height = 344;
constexpr int main_buffer = 352;
constexpr int second_buffer = 384;
constexpr int third_buffer = 416;
constexpr int layers = 448;
constexpr int all_channels = 1416;
constexpr int has_regions = 1440;
constexpr int width = 1504;
constexpr int height = 1508;
constexpr int margin = 1520;
constexpr int super_sample_factor = 1524;
constexpr int start_divider = 1528;
constexpr int progressive = 1536;
constexpr int allocator = 1592;

constexpr uint64_t passes = 20;

template <class T>
T& at(const RenderBuffer& buffer, int offset) {
    return *reinterpret_cast<T*>(buffer.master_buffer + offset);
}

struct FloatArray {
    float* e;
    uint64_t size;
    uint64_t capacity;
    void* allocator;
};

} // namespace

void recordImageStore(const RenderBuffer& buffer) {
    Record() << "  image " << at<uint32_t>(buffer, width) << " x " << at<uint32_t>(buffer, height) << ", margin "
             << at<uint32_t>(buffer, margin) << ", super sample factor " << at<uint32_t>(buffer, super_sample_factor)
             << ", layers " << at<uint64_t>(buffer, layer_width) << " x " << at<uint64_t>(buffer, layer_height)
             << ", second " << at<uint64_t>(buffer, second_width) << " x " << at<uint64_t>(buffer, second_height);
    Record() << "  start divider " << at<uint32_t>(buffer, start_divider) << ", progressive "
             << at<bool>(buffer, progressive) << ", regions " << at<bool>(buffer, has_regions) << ", one allocator "
             << (at<FloatArray>(buffer, main_buffer).allocator == at<void*>(buffer, allocator));
    Record() << "  floats per pixel " << at<uint64_t>(buffer, floats_per_pixel) << ", main "
             << at<FloatArray>(buffer, main_buffer).size << ", second " << at<FloatArray>(buffer, second_buffer).size
             << ", third " << at<FloatArray>(buffer, third_buffer).size << ", light layers "
             << at<Vector<ChannelDescriptor>>(buffer, layers).size;
    const Vector<ChannelDescriptor>& channels = at<Vector<ChannelDescriptor>>(buffer, all_channels);
    for (uint64_t i = 0; i < channels.size; ++i)
        Record() << "  channel '" << channels[i].name << "' of type " << channels[i].type << " at "
                 << channels[i].offset << ", components " << channels[i].components;
}

void RenderJob::run(void* job) {
    RenderJob& self = *static_cast<RenderJob*>(job);
    const RenderBuffer& buffer = *self.render_buffer;
    for (uint64_t pass = 0; pass < passes; ++pass) {
        // The count is the one thing of a node that two threads may change at once.
        const Reference<SceneNode> held(self.scene);
        enterCriticalSection(&at<char>(buffer, section_152));
        FloatArray& floats = at<FloatArray>(buffer, main_buffer);
        for (uint64_t i = 0; i < floats.size; ++i)
            floats.e[i] += 1.0f;
        at<uint64_t>(buffer, passes_done) += 1;
        leaveCriticalSection(&at<char>(buffer, section_152));
    }
}

void RenderJob::start(const Reference<RenderBuffer>& buffer, const Reference<SceneNode>& scene_) {
    render_buffer = buffer.ob;
    scene = scene_.ob;
    thread = startThread(run, this);
}

uint64_t RenderJob::look() const {
    if (thread == nullptr) return 0;
    enterCriticalSection(&at<char>(*render_buffer, section_152));
    const uint64_t done = at<uint64_t>(*render_buffer, passes_done);
    leaveCriticalSection(&at<char>(*render_buffer, section_152));
    return done;
}

void RenderJob::stop() {
    if (thread == nullptr) return;
    joinThread(thread);
    thread = nullptr;
    const FloatArray& floats = at<FloatArray>(*render_buffer, main_buffer);
    double sum = 0.0;
    for (uint64_t i = 0; i < floats.size; ++i)
        sum += static_cast<double>(floats.e[i]);
    Record() << "  passes " << at<uint64_t>(*render_buffer, passes_done) << ", sum of the image " << sum;
    // Left for the image store to release.
    at<void*>(*render_buffer, array_of_the_library) = host_memory.alignedMalloc(100, 16);
}

} // namespace FakeSdk
