#include "preview/RenderJob.h"

#include "preview/SceneNodes.h"
#include "preview/System.h"

#include "scene/nodes/SceneNodeMesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <new>

namespace Preview {

namespace {

constexpr std::uint32_t tile_edge = 32;
/// Pixels of the picture, in both directions, of a block of the coarse pass.
constexpr std::uint32_t coarse_block = 4;
/// Smaller pictures need no coarse pass.
constexpr std::uint32_t max_pixels_without_coarse_pass = 128 * 128;
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
    : scene(scene_), buffer(buffer_) {}

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
    paused = halted = save_due = false;
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

/// What a document knows by UIDs and file names alone: the host's own passes bind and load it.
void RenderJob::bindAndLoad() {
    bool unbound = false;
    bool unloaded = false;
    for (const Velmar::Reference<Velmar::SceneNode>& child : scene.children()) {
        if (!child) continue;
        const Velmar::SceneNode* const node = child.getPointer();
        if (node->getType() == Velmar::NodeType::Mesh) {
            const auto* const mesh = static_cast<const Velmar::SceneNodeMesh*>(node);
            unloaded = unloaded || (!mesh->mesh && !mesh->path.empty());
        } else if (node->getType() == Velmar::NodeType::Object) {
            const auto* const model = static_cast<const Velmar::SceneNodeModel*>(node);
            unbound = unbound || !model->geometry || (model->materials.empty() && !model->material_uids.empty());
            for (const Velmar::Reference<Velmar::EmissionScale>& scale : model->emission_scales)
                unbound = unbound || (scale && !scale->material);
        } else if (node->getType() == Velmar::NodeType::Sphere) {
            const auto* const sphere = static_cast<const Velmar::SceneNodeSphere*>(node);
            unbound = unbound || (!sphere->material && sphere->material_uid != Velmar::invalid_uid);
        }
    }
    if (unloaded) runPass(Velmar::TraversalKind::LoadMeshes, "a mesh can't be loaded");
    if (unbound) runPass(Velmar::TraversalKind::BindReferences, "a node refers to nodes that aren't there");
}

void RenderJob::runPass(Velmar::TraversalKind kind, const char* complaint) {
    // By its table, as everything of the host's: the class itself would name the host's code.
    Velmar::SceneNode& root = const_cast<Velmar::SceneNodeRoot&>(scene);
    const Velmar::String nowhere("");
    Velmar::TraversalState* const state_of_pass = root.createTraversalState(kind, nowhere, nowhere);
    for (const Velmar::Reference<Velmar::SceneNode>& child : scene.children()) {
        try {
            if (child) child->traverse(*state_of_pass);
        } catch (const std::exception& exception) {
            report(std::string(complaint) + ": " + exception.what());
        } catch (...) {
            report(complaint);
        }
    }
    root.destroyTraversalState(state_of_pass);
}

bool RenderJob::prepare() {
    bindAndLoad();
    const SceneNodes nodes(scene);
    const auto made = std::make_shared<Parts>();
    std::string complaint;
    made->store = std::make_unique<ImageStore>(buffer, complaint);
    if (!complaint.empty()) {
        report(complaint);
        return false;
    }
    if (nodes.camera == nullptr) {
        report("the scene has no camera; nothing is rendered");
        return false;
    }
    ImageStore& store = *made->store;
    store.clear();
    PathSettings path_settings;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        thread_count = chooseThreads(nodes.settings);
        path_settings.seed = seed;
    }
    if (world == nullptr) world = std::make_unique<World>(thread_count);
    if (!world->build(nodes, store.getChannels().material_mask_names, store.getChannels().object_mask_names, stopping))
        return false;

    made->background = Background(nodes.background);
    made->lights = Lights(*world);
    if (made->background.isBlackEverywhere() && made->lights.empty())
        report("the scene has no light; the picture is black");
    bool vignetting = true;
    if (nodes.settings != nullptr) {
        const Velmar::SceneNodeRenderSettings& settings = *nodes.settings;
        vignetting = valueOr(settings.vignetting, true);
        path_settings.max_bounces = static_cast<std::uint32_t>(std::max(valueOr(settings.max_depth, 10000), 0));
        path_settings.hide_background = settings.render_foreground_alpha.value;
        if (valueOr(settings.clamp_contributions, false))
            path_settings.max_contribution = static_cast<float>(valueOr(settings.max_contribution, 10.0));
    }
    made->camera = std::make_unique<Camera>(*nodes.camera, store.getWidth(), store.getHeight(), vignetting);
    made->camera->focusOn(*world);
    made->tracer =
        std::make_unique<PathTracer>(*world, *made->camera, made->lights, made->background, store, path_settings);
    made->tone_mapping = std::make_unique<ToneMapping>(nodes.tone_mapping, nodes.camera, nodes.settings);
    made->picture = std::make_unique<PictureSettings>(nodes.settings, store.getChannels().layers.size());

    const std::lock_guard<std::mutex> lock(mutex);
    const auto positive = [](double value) { return std::isfinite(value) && value > 0.0 ? value : 0.0; };
    halt_seconds = halt_samples = 0.0;
    save_period = 1800.0;
    if (nodes.settings != nullptr) {
        halt_seconds = positive(valueOr(nodes.settings->halt_time, -1.0));
        halt_samples = positive(valueOr(nodes.settings->halt_samples_per_pixel, -1.0));
        save_period = positive(valueOr(nodes.settings->image_save_period, 1800.0));
    }
    parts = made;
    makeTiles();
    const bool coarse = std::uint64_t{store.getWidth()} * store.getHeight() > max_pixels_without_coarse_pass;
    block = coarse ? coarse_block * store.getFactor() : 1;
    pass = coarse ? 0 : 1;
    return true;
}

/// The tiles of a layer that the render regions need, with what the filter for downsizing sees around them.
void RenderJob::makeTiles() {
    const ImageStore& store = *parts->store;
    const std::uint32_t factor = store.getFactor();
    const std::uint32_t margin = store.getMargin();
    const auto reach = factor == 1 ? 0u : static_cast<std::uint32_t>(std::ceil(parts->picture->radius));
    std::vector<PixelBox> needed;
    for (const PixelBox& region : store.getRegions()) {
        const auto low = [&](std::uint32_t at) { return (at + margin - std::min(reach, at + margin)) * factor; };
        const auto high = [&](std::uint32_t at, std::uint32_t size) {
            return std::min(at + margin + reach, size + 2 * margin) * factor;
        };
        needed.push_back(
            {low(region.x1), low(region.y1), high(region.x2, store.getWidth()), high(region.y2, store.getHeight())});
    }
    tiles.clear();
    for (std::uint32_t y = 0; y < store.getLayerHeight(); y += tile_edge) {
        for (std::uint32_t x = 0; x < store.getLayerWidth(); x += tile_edge) {
            const PixelBox tile = {x, y, std::min(x + tile_edge, store.getLayerWidth()),
                                   std::min(y + tile_edge, store.getLayerHeight())};
            if (std::any_of(needed.begin(), needed.end(), [&](const PixelBox& box) {
                    return tile.x1 < box.x2 && box.x1 < tile.x2 && tile.y1 < box.y2 && box.y1 < tile.y2;
                }))
                tiles.push_back(tile);
        }
    }
}

void RenderJob::renderAll() {
    setState(VELMAR_PREVIEW_RENDERING);
    std::vector<std::thread> helpers;
    std::thread saver;
    const auto join = [&] {
        for (std::thread& helper : helpers)
            helper.join();
        if (saver.joinable()) saver.join();
    };
    try {
        saver = std::thread(&RenderJob::savePictures, this);
        while (helpers.size() + 1 < thread_count)
            helpers.emplace_back(&RenderJob::work, this);
    } catch (const std::exception&) {
        report("fewer threads than asked for can be started");
    }
    work();
    join();
    bool with_picture = false;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        with_picture = save_at_end && pass > 0;
    }
    if (with_picture) savePicture();
}

void RenderJob::work() {
    try {
        std::vector<float> values(std::size_t{tile_edge} * tile_edge * parts->store->getChannels().floats_per_pixel);
        while (const std::optional<Ticket> ticket = nextTile()) {
            renderTile(*ticket, values);
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
    const double factor = parts->store->getFactor();
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
        if (next_tile < tiles.size()) {
            // A time that is over ends the render within a pass too: the store holds means.
            if (halt_seconds > 0.0 && pass > 1 && activeSeconds() >= halt_seconds) {
                halted = true;
                changed.notify_all();
                return std::nullopt;
            }
            ++outstanding;
            return Ticket{pass, tiles[next_tile++]};
        }
        if (outstanding > 0) {
            changed.wait(lock);
            continue;
        }
        // The pass is complete.
        next_tile = 0;
        ++pass;
        parts->store->setSampleCount(pass - 1);
        const double now = activeSeconds();
        if (pass == 1 || (save_period > 0.0 && now >= last_saved + save_period)) {
            save_due = true;
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

void RenderJob::renderTile(const Ticket& ticket, std::vector<float>& values) const {
    const std::size_t n = parts->store->getChannels().floats_per_pixel;
    const PixelBox& box = ticket.box;
    const std::span<float> all(values);
    if (ticket.pass == 0) {
        for (std::uint32_t y = box.y1; y < box.y2; y += block) {
            for (std::uint32_t x = box.x1; x < box.x2; x += block) {
                if (stopping) return;
                const PixelBox part = {x, y, std::min(x + block, box.x2), std::min(y + block, box.y2)};
                parts->tracer->trace((part.x1 + part.x2) / 2, (part.y1 + part.y2) / 2, 0, all.first(n));
                parts->store->fill(part, all.first(n));
            }
        }
        return;
    }
    std::size_t at = 0;
    for (std::uint32_t y = box.y1; y < box.y2; ++y) {
        // A tile that isn't complete isn't merged.
        if (stopping) return;
        for (std::uint32_t x = box.x1; x < box.x2; ++x, at += n)
            parts->tracer->trace(x, y, ticket.pass - 1, all.subspan(at, n));
    }
    parts->store->merge(box, all.first(at), ticket.pass);
}

// ---- pictures -------------------------------------------------------------------------------------------------------

/// Writes the pictures that are due before the end, beside the threads that render.
void RenderJob::savePictures() {
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait(lock, [this] { return save_due || halted || stopping; });
            if (halted || stopping) return;
            save_due = false;
        }
        savePicture();
    }
}

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
    const std::shared_ptr<const Parts> present = getParts();
    if (present == nullptr) return false;
    const Picture picture = makePicture(*present->store, *present->picture);
    std::vector<unsigned char> bytes;
    if (!holdsLinearLight(path)) bytes = present->tone_mapping->apply(picture);
    const std::string complaint = writePicture(path, picture, bytes);
    if (!complaint.empty()) report("'" + path + "': " + complaint);
    return complaint.empty();
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
    if (parts == nullptr) return progress;
    progress.width = parts->store->getWidth();
    progress.height = parts->store->getHeight();
    const double factor = parts->store->getFactor();
    progress.samples = pass == 0 ? 0.0 : static_cast<double>(pass - 1) * factor * factor;
    if (state != VELMAR_PREVIEW_PREPARING)
        progress.memory = static_cast<std::uint64_t>(std::max<std::int64_t>(world->getEmbreeBytes(), 0));
    return progress;
}

/// Those of a picture that has been begun, or null.
std::shared_ptr<const RenderJob::Parts> RenderJob::getParts() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return state == VELMAR_PREVIEW_PREPARING ? nullptr : parts;
}

bool RenderJob::getPixels(float* pixels, std::size_t count) const {
    const std::shared_ptr<const Parts> present = getParts();
    if (present == nullptr) return false;
    if (count != std::size_t{3} * present->store->getWidth() * present->store->getHeight()) return false;
    const Picture picture = makePicture(*present->store, *present->picture);
    std::copy(picture.light.begin(), picture.light.end(), pixels);
    return true;
}

bool RenderJob::getBytes(std::uint8_t* bytes, std::size_t count) const {
    const std::shared_ptr<const Parts> present = getParts();
    if (present == nullptr) return false;
    if (count != std::size_t{3} * present->store->getWidth() * present->store->getHeight()) return false;
    Picture picture = makePicture(*present->store, *present->picture);
    picture.alpha.clear();
    const std::vector<unsigned char> mapped = present->tone_mapping->apply(picture);
    std::copy(mapped.begin(), mapped.end(), bytes);
    return true;
}

bool RenderJob::getChannel(const std::string& name, float* values, std::size_t count) const {
    const std::shared_ptr<const Parts> present = getParts();
    return present != nullptr && copyChannel(*present->store, name, values, count);
}

} // namespace Preview
