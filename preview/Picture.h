#pragma once

#include "preview/ImageStore.h"
#include "preview/Vec.h"

#include "scene/nodes/SceneNodeRenderSettings.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Preview {

/// A picture of linear light with the size of the render settings, from the top left on.
struct Picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Three for each pixel.
    std::vector<float> light;
    /// One for each pixel, or empty.
    std::vector<float> alpha;
};

/// How a picture is made of the layers of a store, read from the render settings once: the host may change them later.
struct PictureSettings {
    /// Those of getDefaults() of the settings for null. `layers` is the number of light layers.
    PictureSettings(const Velmar::SceneNodeRenderSettings* settings, std::size_t layers);

    /// The filter of Mitchell and Netravali ("Reconstruction Filters in Computer Graphics", SIGGRAPH 1988) with B the
    /// settings' `blur` and C their `ring`. Its support is stretched from 2 pixels to `radius`.
    float filterAt(float distance) const;

    /// The factors of the layers, for red, green and blue.
    std::vector<Vec3> layer_weights;
    float blur = 1.0f;
    float ring = 0.0f;
    float radius = 1.6f;
    bool with_alpha = false;
    bool transparent_outside_regions = false;
};

/// The weighted sum of the light layers of a store, brought down to the picture's size by the filter of the settings. A
/// super sample factor of 1 needs no filter. Pixels outside the render regions are black. Throws `std::bad_alloc`.
Picture makePicture(const ImageStore& store, const PictureSettings& settings);

/// Copies a channel of a store, by the name that `velmarpreview.h` gives it, in the picture's size: means over the
/// samples of a pixel, or for auxiliary channels the value in its middle. Returns false when the store has no such
/// channel or `count` isn't its number of values.
bool copyChannel(const ImageStore& store, const std::string& name, float* values, std::size_t count);

/// Writes a picture, whole or not at all: `.hdr` and `.pfm` hold the linear light, anything else is a PNG of `bytes`,
/// which have three or four components as the picture has no alpha or has. Returns an empty text, or what went wrong.
/// Throws `std::bad_alloc`.
std::string writePicture(const std::string& path, const Picture& picture, const std::vector<unsigned char>& bytes);

/// Whether `writePicture` looks at the linear light alone.
bool holdsLinearLight(const std::string& path);

} // namespace Preview
