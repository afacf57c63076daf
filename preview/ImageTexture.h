#pragma once

#include "preview/Vec.h"

#include <memory>
#include <string>
#include <vector>

namespace Preview {

/// The pixels of an image file.
///
/// Lookup: (0, 0) is the lower left corner of the image and (1, 1) its upper right one. The centres of texels are at
/// half steps; between them values are mixed bilinearly. The image repeats in both directions.
class ImageTexture {
  public:
    /// Reads PNG, JPEG, HDR and the other formats of stb_image. Returns null and says why in `complaint` when the file
    /// is missing or broken.
    static std::shared_ptr<const ImageTexture> load(const std::string& path, std::string& complaint);

    /// The value at (u, v). Values of files with 8 or 16 bits are between 0 and 1, as they are encoded.
    Vec3 lookUp(float u, float v) const;

    /// Whether the file held linear light, as HDR files do, rather than encoded values.
    bool isLinear() const { return linear; }
    int getWidth() const { return width; }
    int getHeight() const { return height; }

  private:
    Vec3 texel(int x, int y) const;

    int width = 0;
    int height = 0;
    bool linear = false;
    /// Of one of the two kinds, three for each pixel, from the top left on.
    std::vector<unsigned char> bytes;
    std::vector<float> floats;
};

} // namespace Preview
