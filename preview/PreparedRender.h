#pragma once

#include "preview/Camera.h"
#include "preview/ImageStore.h"
#include "preview/Lights.h"
#include "preview/PathTracer.h"
#include "preview/Picture.h"
#include "preview/SceneNodes.h"
#include "preview/ToneMapping.h"
#include "preview/World.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Preview {

/// What a render is made of, as the scene was when it began. Tiles may be rendered and pictures made from any number of
/// threads at once.
class PreparedRender {
  public:
    /// Builds `world` for the scene. Returns null when nothing can be rendered, which is reported, or when `cancelled`
    /// became true meanwhile. `buffer` and `world` must outlive the result. Throws `std::bad_alloc`.
    static std::shared_ptr<const PreparedRender> make(const SceneNodes& nodes, Velmar::RenderBuffer& buffer,
                                                      World& world, std::uint64_t seed,
                                                      const std::atomic<bool>& cancelled);

    ImageStore& getStore() const { return *store; }

    /// Whether a pass that fills blocks of pixels comes before the first.
    bool hasCoarsePass() const { return block > 1; }
    /// The parts of a layer to render.
    const std::vector<PixelBox>& getTiles() const { return tiles; }
    /// Memory for `renderTile`. Throws `std::bad_alloc`.
    std::vector<float> makeTileValues() const;
    /// Takes one sample of each pixel of a tile into the store; pass 0 is the coarse one. A tile that isn't complete
    /// when `cancelled` becomes true is left out. `values` is overwritten.
    void renderTile(const PixelBox& tile, std::uint32_t pass, std::vector<float>& values,
                    const std::atomic<bool>& cancelled) const;

    // The picture so far. The first two return false when `count` isn't the number of its values. All throw
    // `std::bad_alloc`.

    bool copyPixels(float* pixels, std::size_t count) const;
    bool copyBytes(std::uint8_t* bytes, std::size_t count) const;
    /// See `Preview::copyChannel`.
    bool copyChannel(const std::string& name, float* values, std::size_t count) const;
    /// Returns whether that worked; a reason is reported.
    bool writeImage(const std::string& path) const;

  private:
    PreparedRender() = default;
    void makeTiles();
    bool isPixelCount(std::size_t count) const;

    std::unique_ptr<ImageStore> store;
    Camera camera;
    Background background;
    Lights lights;
    std::unique_ptr<PathTracer> tracer;
    std::unique_ptr<ToneMapping> tone_mapping;
    std::unique_ptr<PictureSettings> picture;
    std::vector<PixelBox> tiles;
    /// Pixels of a layer, in both directions, of a block of the coarse pass; 1 when there is none.
    std::uint32_t block = 1;
};

} // namespace Preview
