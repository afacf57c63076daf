#include "preview/RenderJob.h"

#include "preview/SceneNodes.h"
#include "preview/System.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <new>

namespace Preview {

namespace {

constexpr unsigned max_threads = 256;
constexpr const char* default_image = "velmar_preview.png";

bool isOver(int state) {
    return state == VELMAR_PREVIEW_FINISHED || state == VELMAR_PREVIEW_FAILED;
}

double secondsOf(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

void reportEnd(const char* reason) noexcept {
    std::array<char, 200> text{};
    std::snprintf(text.data(), text.size(), "the render ends: %s", reason);
    report(text.data());
}

} // namespace

RenderJob::RenderJob(const Velmar::SceneNodeRoot& scene_, Velmar::RenderBuffer& buffer_)
    : scene(scene_), buffer(buffer_) {
    // On Windows both allocate when they are first used: here, where that may fail.
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait_for(lock, std::chrono::seconds(0));
}

RenderJob::~RenderJob() {
    end(false);
}

bool RenderJob::start() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (state != VELMAR_PREVIEW_IDLE && !isOver(state)) return false;
    }
    end(false);
    const std::lock_guard<std::mutex> lock(mutex);
    stopping = broken = false;
    paused = halted = picture_due = false;
    save_at_end = true;
    pass = 0;
    next_tile = outstanding = 0;
    pictures = 0;
    last_saved = 0.0;
    paused_for = {};
    begun = Clock::now();
    state = VELMAR_PREVIEW_PREPARING;
    try {
        control = std::thread(&RenderJob::run, this);
    } catch (const std::exception&) {
        report("no thread can be started; nothing is rendered");
        state = VELMAR_PREVIEW_FAILED;
        ended = begun;
        changed.notify_all();
    }
    return true;
}

bool RenderJob::pause() {
    std::unique_lock<std::mutex> lock(mutex);
    if (state != VELMAR_PREVIEW_PREPARING && state != VELMAR_PREVIEW_RENDERING) return false;
    if (!paused) pause_begun = Clock::now();
    paused = true;
    changed.wait(lock, [this] { return outstanding == 0; });
    return true;
}

bool RenderJob::resume() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (!paused) return false;
    paused_for += Clock::now() - pause_begun;
    paused = false;
    changed.notify_all();
    return true;
}

bool RenderJob::stop() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (state == VELMAR_PREVIEW_IDLE) return false;
    }
    end(true);
    return true;
}

bool RenderJob::update() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (state == VELMAR_PREVIEW_IDLE) return false;
    }
    end(false);
    return start();
}

void RenderJob::end(bool with_picture) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
        save_at_end = with_picture;
        changed.notify_all();
    }
    if (control.joinable()) control.join();
}

bool RenderJob::wait(double seconds) {
    std::unique_lock<std::mutex> lock(mutex);
    const auto over = [this] { return isOver(state); };
    // Longer times than the clock can count.
    constexpr double max_seconds = 1e8;
    if (seconds < 0.0 || seconds > max_seconds) {
        changed.wait(lock, over);
        return true;
    }
    return changed.wait_for(lock, std::chrono::duration<double>(seconds), over);
}

bool RenderJob::setOption(int option, double value) {
    const std::lock_guard<std::mutex> lock(mutex);
    constexpr double max_seed = 18446744073709549568.0;
    switch (option) {
    case VELMAR_PREVIEW_SEED:
        if (!(value >= 0.0) || value > max_seed) return false;
        seed = static_cast<std::uint64_t>(value);
        return true;
    case VELMAR_PREVIEW_THREADS:
        if (!(value >= 0.0) || value > double{max_threads}) return false;
        wanted_threads = static_cast<unsigned>(value);
        return true;
    case VELMAR_PREVIEW_SAMPLES:
    case VELMAR_PREVIEW_SECONDS:
        if (!(value >= 0.0) || !std::isfinite(value)) return false;
        (option == VELMAR_PREVIEW_SAMPLES ? wanted_samples : wanted_seconds) = value;
        return true;
    default:
        return false;
    }
}

void RenderJob::setImagePath(std::string path) {
    const std::lock_guard<std::mutex> lock(mutex);
    image_path = std::move(path);
}

void RenderJob::setState(int new_state) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (isOver(new_state)) ended = Clock::now();
    state = new_state;
    changed.notify_all();
}

double RenderJob::activeSeconds() const {
    const Clock::time_point now = paused ? pause_begun : isOver(state) ? ended : Clock::now();
    return secondsOf(now - begun - paused_for);
}

// ---- the control thread ---------------------------------------------------------------------------------------------

void RenderJob::run() {
    bool rendered = false;
    try {
        rendered = prepare();
        if (rendered) renderAll();
        rendered = rendered && !broken;
    } catch (const std::bad_alloc&) {
        report("out of memory; the render ends");
        rendered = false;
    } catch (const std::exception& exception) {
        reportEnd(exception.what());
        rendered = false;
    } catch (...) {
        reportEnd("an unknown exception");
        rendered = false;
    }
    const bool cancelled = stopping && !broken;
    setState(rendered || cancelled ? VELMAR_PREVIEW_FINISHED : VELMAR_PREVIEW_FAILED);
}

unsigned RenderJob::chooseThreads(const Velmar::SceneNodeRenderSettings* settings) const {
    unsigned count = std::thread::hardware_concurrency();
    if (settings != nullptr && !valueOr(settings->auto_choose_num_threads, true) && settings->num_threads.has_value)
        count = static_cast<unsigned>(std::max(settings->num_threads.value, 1));
    if (wanted_threads != 0) count = wanted_threads;
    return std::clamp(count, 1u, max_threads);
}

bool RenderJob::prepare() {
    bindAndLoad(scene);
    const SceneNodes nodes(scene);
    std::uint64_t seed_now = 0;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        thread_count = chooseThreads(nodes.settings);
        seed_now = seed;
    }
    if (world == nullptr) world = std::make_unique<World>(thread_count);
    const std::shared_ptr<const PreparedRender> made = PreparedRender::make(nodes, buffer, *world, seed_now, stopping);
    if (made == nullptr) return false;

    const std::lock_guard<std::mutex> lock(mutex);
    const auto positive = [](double value) { return std::isfinite(value) && value > 0.0 ? value : 0.0; };
    halt_seconds = halt_samples = 0.0;
    save_period = 1800.0;
    if (nodes.settings != nullptr) {
        halt_seconds = positive(valueOr(nodes.settings->halt_time, -1.0));
        halt_samples = positive(valueOr(nodes.settings->halt_samples_per_pixel, -1.0));
        save_period = positive(valueOr(nodes.settings->image_save_period, 1800.0));
    }
    if (wanted_seconds > 0.0) halt_seconds = wanted_seconds;
    if (wanted_samples > 0.0) halt_samples = wanted_samples;
    render = made;
    pass = made->hasCoarsePass() ? 0 : 1;
    return true;
}

void RenderJob::renderAll() {
    setState(VELMAR_PREVIEW_RENDERING);
    std::vector<std::thread> helpers;
    try {
        helpers.reserve(thread_count - 1);
        while (helpers.size() + 1 < thread_count)
            helpers.emplace_back(&RenderJob::work, this);
    } catch (const std::exception&) {
        report("fewer threads than asked for can be started");
    }
    work();
    for (std::thread& helper : helpers)
        helper.join();
    bool with_picture = false;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        with_picture = save_at_end && pass > 0;
    }
    if (with_picture) savePicture();
}

void RenderJob::work() {
    try {
        std::vector<float> values = render->makeTileValues();
        while (const std::optional<Ticket> ticket = nextTile()) {
            if (ticket->picture) {
                savePicture();
                continue;
            }
            render->renderTile(ticket->tile, ticket->pass, values, stopping);
            finishTile();
        }
    } catch (const std::bad_alloc&) {
        report("out of memory; the render ends");
        broken = true;
        stopping = true;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    halted = true;
    changed.notify_all();
}

bool RenderJob::isHalted() const {
    if (halt_seconds > 0.0 && pass > 1 && activeSeconds() >= halt_seconds) return true;
    const double factor = render->getStore().getFactor();
    return halt_samples > 0.0 && static_cast<double>(pass - 1) * factor * factor >= halt_samples;
}

std::optional<RenderJob::Ticket> RenderJob::nextTile() {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        if (stopping || halted) return std::nullopt;
        if (paused) {
            changed.wait(lock);
            continue;
        }
        if (picture_due) {
            picture_due = false;
            return Ticket{true, pass, {}};
        }
        const std::vector<PixelBox>& tiles = render->getTiles();
        if (next_tile < tiles.size()) {
            // A time that is over ends the render within a pass too: the store holds means.
            if (halt_seconds > 0.0 && pass > 1 && activeSeconds() >= halt_seconds) {
                halted = true;
                changed.notify_all();
                return std::nullopt;
            }
            ++outstanding;
            return Ticket{false, pass, tiles[next_tile++]};
        }
        if (outstanding > 0) {
            changed.wait(lock);
            continue;
        }
        // The pass is complete.
        next_tile = 0;
        ++pass;
        render->getStore().setSampleCount(pass - 1);
        const double now = activeSeconds();
        if (pass == 1 || (save_period > 0.0 && now >= last_saved + save_period)) {
            picture_due = true;
            last_saved = now;
        }
        halted = tiles.empty() || (pass > 0 && isHalted());
        changed.notify_all();
    }
}

void RenderJob::finishTile() {
    const std::lock_guard<std::mutex> lock(mutex);
    --outstanding;
    if (outstanding == 0) changed.notify_all();
}

// ---- pictures -------------------------------------------------------------------------------------------------------

void RenderJob::savePicture() {
    try {
        std::optional<std::string> wanted;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            wanted = image_path;
        }
        std::string path = wanted ? *wanted : System::getEnvironment("VELMAR_PREVIEW_IMAGE");
        if (!wanted && path.empty()) path = default_image;
        if (path.empty() || !writeImage(path)) return;
        const std::lock_guard<std::mutex> lock(mutex);
        ++pictures;
    } catch (const std::bad_alloc&) {
        report("out of memory; a picture isn't written");
    }
}

bool RenderJob::writeImage(const std::string& path) const {
    const std::shared_ptr<const PreparedRender> present = getRender();
    return present != nullptr && present->writeImage(path);
}

VelmarPreviewProgress RenderJob::getProgress() const {
    const std::lock_guard<std::mutex> lock(mutex);
    VelmarPreviewProgress progress{};
    progress.state = paused && !isOver(state) ? int{VELMAR_PREVIEW_PAUSED} : state;
    progress.threads = thread_count;
    progress.seconds = state == VELMAR_PREVIEW_IDLE ? 0.0 : activeSeconds();
    progress.halt_samples = halt_samples;
    progress.halt_seconds = halt_seconds;
    progress.pictures = pictures;
    if (render == nullptr) return progress;
    progress.width = render->getStore().getWidth();
    progress.height = render->getStore().getHeight();
    const double factor = render->getStore().getFactor();
    progress.samples = pass == 0 ? 0.0 : static_cast<double>(pass - 1) * factor * factor;
    if (state != VELMAR_PREVIEW_PREPARING)
        progress.memory = static_cast<std::uint64_t>(std::max<std::int64_t>(world->getEmbreeBytes(), 0));
    return progress;
}

/// Of a picture that has been begun, or null.
std::shared_ptr<const PreparedRender> RenderJob::getRender() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return state == VELMAR_PREVIEW_PREPARING ? nullptr : render;
}

bool RenderJob::getPixels(float* pixels, std::size_t count) const {
    const std::shared_ptr<const PreparedRender> present = getRender();
    return present != nullptr && present->copyPixels(pixels, count);
}

bool RenderJob::getBytes(std::uint8_t* bytes, std::size_t count) const {
    const std::shared_ptr<const PreparedRender> present = getRender();
    return present != nullptr && present->copyBytes(bytes, count);
}

bool RenderJob::getChannel(const std::string& name, float* values, std::size_t count) const {
    const std::shared_ptr<const PreparedRender> present = getRender();
    return present != nullptr && present->copyChannel(name, values, count);
}

} // namespace Preview
