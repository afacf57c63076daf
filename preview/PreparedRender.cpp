#include "preview/PreparedRender.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace Preview {

namespace {

constexpr std::uint32_t tile_edge = 32;
/// Pixels of the picture, in both directions, of a block of the coarse pass.
constexpr std::uint32_t coarse_block = 4;
/// Smaller pictures need no coarse pass.
constexpr std::uint32_t max_pixels_without_coarse_pass = 128 * 128;

PathSettings readPathSettings(const Velmar::SceneNodeRenderSettings* node, std::uint64_t seed) {
    PathSettings settings;
    settings.seed = seed;
    if (node == nullptr) return settings;
    settings.max_bounces = static_cast<std::uint32_t>(std::max(valueOr(node->max_depth, 10000), 0));
    settings.hide_background = node->render_foreground_alpha.value;
    if (valueOr(node->clamp_contributions, false))
        settings.max_contribution = static_cast<float>(valueOr(node->max_contribution, 10.0));
    return settings;
}

} // namespace

std::shared_ptr<const PreparedRender> PreparedRender::make(const SceneNodes& nodes, Velmar::RenderBuffer& buffer,
                                                           World& world, std::uint64_t seed,
                                                           const std::atomic<bool>& cancelled) {
    const std::shared_ptr<PreparedRender> made(new PreparedRender);
    std::string complaint;
    made->store = std::make_unique<ImageStore>(buffer, complaint);
    if (!complaint.empty()) {
        report(complaint);
        return nullptr;
    }
    if (nodes.camera == nullptr) {
        report("the scene has no camera; nothing is rendered");
        return nullptr;
    }
    ImageStore& store = *made->store;
    store.clear();
    if (!world.build(nodes, store.getChannels().material_mask_names, store.getChannels().object_mask_names, cancelled))
        return nullptr;

    made->background = Background(nodes.background);
    made->lights = Lights(world);
    if (made->background.isBlackEverywhere() && made->lights.empty())
        report("the scene has no light; the picture is black");
    const bool vignetting = nodes.settings == nullptr || valueOr(nodes.settings->vignetting, true);
    made->camera = Camera(*nodes.camera, store.getWidth(), store.getHeight(), vignetting);
    made->camera.focusOn(world);
    made->tracer = std::make_unique<PathTracer>(world, made->camera, made->lights, made->background, store,
                                                readPathSettings(nodes.settings, seed));
    made->tone_mapping = std::make_unique<ToneMapping>(nodes.tone_mapping, nodes.camera, nodes.settings);
    made->picture = std::make_unique<PictureSettings>(nodes.settings, store.getChannels().layers.size());
    made->makeTiles();
    if (std::uint64_t{store.getWidth()} * store.getHeight() > max_pixels_without_coarse_pass)
        made->block = coarse_block * store.getFactor();
    return made;
}

/// The tiles of a layer that the render regions need, with what the filter for downsizing sees around them.
void PreparedRender::makeTiles() {
    const std::uint32_t factor = store->getFactor();
    const std::uint32_t margin = store->getMargin();
    const auto reach = factor == 1 ? 0u : static_cast<std::uint32_t>(std::ceil(picture->radius));
    std::vector<PixelBox> needed;
    for (const PixelBox& region : store->getRegions()) {
        const auto low = [&](std::uint32_t at) { return (at + margin - std::min(reach, at + margin)) * factor; };
        const auto high = [&](std::uint32_t at, std::uint32_t size) {
            return std::min(at + margin + reach, size + 2 * margin) * factor;
        };
        needed.push_back(
            {low(region.x1), low(region.y1), high(region.x2, store->getWidth()), high(region.y2, store->getHeight())});
    }
    for (std::uint32_t y = 0; y < store->getLayerHeight(); y += tile_edge) {
        for (std::uint32_t x = 0; x < store->getLayerWidth(); x += tile_edge) {
            const PixelBox tile = {x, y, std::min(x + tile_edge, store->getLayerWidth()),
                                   std::min(y + tile_edge, store->getLayerHeight())};
            if (std::any_of(needed.begin(), needed.end(), [&](const PixelBox& box) {
                    return tile.x1 < box.x2 && box.x1 < tile.x2 && tile.y1 < box.y2 && box.y1 < tile.y2;
                }))
                tiles.push_back(tile);
        }
    }
}

std::vector<float> PreparedRender::makeTileValues() const {
    return std::vector<float>(std::size_t{tile_edge} * tile_edge * store->getChannels().floats_per_pixel);
}

void PreparedRender::renderTile(const PixelBox& tile, std::uint32_t pass, std::vector<float>& values,
                                const std::atomic<bool>& cancelled) const {
    const std::size_t n = store->getChannels().floats_per_pixel;
    const std::span<float> all(values);
    if (pass == 0) {
        for (std::uint32_t y = tile.y1; y < tile.y2; y += block) {
            for (std::uint32_t x = tile.x1; x < tile.x2; x += block) {
                if (cancelled) return;
                const PixelBox part = {x, y, std::min(x + block, tile.x2), std::min(y + block, tile.y2)};
                tracer->trace((part.x1 + part.x2) / 2, (part.y1 + part.y2) / 2, 1, 0, all.first(n));
                store->fill(part, all.first(n));
            }
        }
        return;
    }
    std::size_t at = 0;
    for (std::uint32_t y = tile.y1; y < tile.y2; ++y) {
        if (cancelled) return;
        const std::uint32_t width = tile.x2 - tile.x1;
        tracer->trace(tile.x1, y, width, pass - 1, all.subspan(at, width * n));
        at += width * n;
    }
    store->merge(tile, all.first(at), pass);
}

bool PreparedRender::isPixelCount(std::size_t count) const {
    return count == std::size_t{3} * store->getWidth() * store->getHeight();
}

bool PreparedRender::copyPixels(float* pixels, std::size_t count) const {
    if (!isPixelCount(count)) return false;
    const Picture made = makePicture(*store, *picture);
    std::copy(made.light.begin(), made.light.end(), pixels);
    return true;
}

bool PreparedRender::copyBytes(std::uint8_t* bytes, std::size_t count) const {
    if (!isPixelCount(count)) return false;
    Picture made = makePicture(*store, *picture);
    made.alpha.clear();
    const std::vector<unsigned char> mapped = tone_mapping->apply(made);
    std::copy(mapped.begin(), mapped.end(), bytes);
    return true;
}

bool PreparedRender::copyChannel(const std::string& name, float* values, std::size_t count) const {
    return Preview::copyChannel(*store, name, values, count);
}

bool PreparedRender::writeImage(const std::string& path) const {
    const Picture made = makePicture(*store, *picture);
    std::vector<unsigned char> bytes;
    if (!holdsLinearLight(path)) bytes = tone_mapping->apply(made);
    const std::string complaint = writePicture(path, made, bytes);
    if (!complaint.empty()) report("'" + path + "': " + complaint);
    return complaint.empty();
}

} // namespace Preview
