#pragma once

#include "preview/velmarpreview.h"
#include "velmarapi.h"

#include "tests/preview/PreviewScene.h"
#include "tests/support/TempDir.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace TestSupport {

/// Loads the preview as hosts do, from a working directory of the test's own.
class PreviewFolder {
  public:
    PreviewFolder();
    ~PreviewFolder();
    PreviewFolder(const PreviewFolder&) = delete;
    PreviewFolder& operator=(const PreviewFolder&) = delete;

    /// The full path of `name` in the working directory.
    std::filesystem::path path(const std::string& name) const;

    /// A function that the loaded library exports.
    template <class Function>
    Function* get(const char* name) const {
        return reinterpret_cast<Function*>(find(name));
    }

  private:
    void* find(const char* name) const;

    TempDir dir;
    std::filesystem::path former;
};

struct Colour {
    float r = 0, g = 0, b = 0;
};

/// A picture of linear light, and what was shown of it.
struct RenderedPicture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<float> light;
    std::vector<std::uint8_t> bytes;

    Colour at(std::int32_t x, std::int32_t y) const;
    /// The mean of green over a rectangle without its right and lower edges; all of the picture by default.
    double mean(std::int32_t x1, std::int32_t y1, std::int32_t x2, std::int32_t y2) const;
    double mean() const { return mean(0, 0, width, height); }
    /// The middle of the light above `threshold`, weighted with it, in pixels.
    std::array<double, 2> centre(float threshold = 0.0f) const;
};

/// VelmarRenderer_Delete, which is another name of a function inside.
void deleteRenderer(VelmarRenderer* renderer);

/// A renderer with the preview and a scene.
class PreviewRenderer {
  public:
    /// `image` is where pictures are written; empty for no file.
    PreviewRenderer(const PreviewFolder& folder, const PreviewScene& scene, const std::string& image = "");
    ~PreviewRenderer();
    PreviewRenderer(const PreviewRenderer&) = delete;
    PreviewRenderer& operator=(const PreviewRenderer&) = delete;

    void setOption(std::int32_t option, double value) const;
    std::uint64_t start() const { return VelmarRenderer_Start(renderer); }
    std::uint64_t stop() const { return VelmarRenderer_Stop(renderer); }
    std::uint64_t pause() const { return VelmarRenderer_Pause(renderer); }
    std::uint64_t resume() const { return VelmarRenderer_Resume(renderer); }
    std::uint64_t update() const;
    bool wait(double seconds = 120.0) const;
    VelmarPreviewProgress progress() const;
    RenderedPicture picture() const;
    /// Empty when the scene has no such channel.
    std::vector<float> channel(const std::string& name, std::size_t components) const;
    VelmarRenderer* handle() const { return renderer; }

  private:
    const PreviewFolder& folder;
    ::VelmarContext* context = nullptr;
    VelmarRenderer* renderer = nullptr;
};

/// Starts, waits for the end and returns the picture.
RenderedPicture renderPreview(const PreviewScene& scene, double samples = 16, double seed = 0, double threads = 1);

} // namespace TestSupport
