#pragma once

#include "velmarvec.h"

#include "tools/Lighting.h"

#include <cstdint>
#include <vector>

/// A corner of a triangle on the raster of samples.
struct RasterCorner {
    /// In 1/`units` of a sample, from the left and from the top.
    std::int32_t x = 0;
    std::int32_t y = 0;
    /// Greater is nearer.
    double nearness = 0;
    /// Of length 1.
    Velmar::Vec3d normal;

    static constexpr std::int32_t units = 256;
};

/// Some rows of an image's samples, on which triangles are drawn: the nearest shows. Positions are whole numbers, so
/// that triangles beside one another leave no gap.
class SampleBand {
  public:
    /// Room for `max_rows` rows.
    SampleBand(std::int32_t row_width, std::int32_t max_rows);

    /// Starts anew with the rows from `first` to before `end`, of an image of `image_height` rows.
    void begin(std::int32_t first, std::int32_t end, std::int32_t image_height);

    /// Returns whether anything of it shows.
    bool draw(const RasterCorner& a, const RasterCorner& b, const RasterCorner& c, const Lighting& lighting);

    /// The light of a sample; `row` counts from the top of the image.
    float getLight(std::int32_t x, std::int32_t row) const { return light[getIndex(x, row)]; }

  private:
    std::size_t getIndex(std::int32_t x, std::int32_t row) const {
        return static_cast<std::size_t>(row - first_row) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x);
    }

    std::int32_t width;
    std::int32_t first_row = 0;
    std::int32_t end_row = 0;
    std::vector<float> nearness;
    std::vector<float> light;
};
