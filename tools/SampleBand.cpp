#include "tools/SampleBand.h"

#include "tools/Vec.h"

#include <algorithm>
#include <limits>

using namespace Vec;

namespace {

/// Twice the area between an edge and a point, positive on one side of it.
class EdgeFunction {
  public:
    EdgeFunction(const RasterCorner& from, const RasterCorner& to)
        : x(from.x), y(from.y), dx(std::int64_t{to.x} - from.x), dy(std::int64_t{to.y} - from.y) {}

    std::int64_t at(std::int64_t point_x, std::int64_t point_y) const {
        return dx * (point_y - y) - dy * (point_x - x);
    }

    /// What one sample to the right adds.
    std::int64_t getStep() const { return -dy * RasterCorner::units; }

  private:
    std::int64_t x;
    std::int64_t y;
    std::int64_t dx;
    std::int64_t dy;
};

constexpr std::int32_t half = RasterCorner::units / 2;

/// The first sample whose middle isn't before `position`.
std::int32_t getFirstSample(std::int32_t position) {
    return (std::max(position, 0) + half - 1) / RasterCorner::units;
}

/// Where the middle of a sample is.
std::int64_t getMiddle(std::int32_t sample) {
    return std::int64_t{sample} * RasterCorner::units + half;
}

} // namespace

SampleBand::SampleBand(std::int32_t row_width, std::int32_t max_rows) : width(row_width) {
    const std::size_t samples = static_cast<std::size_t>(row_width) * static_cast<std::size_t>(max_rows);
    nearness.resize(samples);
    light.resize(samples);
}

void SampleBand::begin(std::int32_t first, std::int32_t end, std::int32_t image_height) {
    first_row = first;
    end_row = end;
    std::fill(nearness.begin(), nearness.end(), -std::numeric_limits<float>::infinity());
    for (std::int32_t row = first; row < end; ++row)
        std::fill_n(light.begin() + static_cast<std::ptrdiff_t>(getIndex(0, row)), width,
                    Lighting::lightBackground(1 - (row + 0.5) / image_height));
}

bool SampleBand::draw(const RasterCorner& a, const RasterCorner& b, const RasterCorner& c, const Lighting& lighting) {
    const std::int64_t area = EdgeFunction(a, b).at(c.x, c.y);
    if (area == 0) return false;
    if (area < 0) return draw(a, c, b, lighting);
    const std::int32_t left = getFirstSample(std::min({a.x, b.x, c.x}));
    const std::int32_t right = std::min(getFirstSample(std::max({a.x, b.x, c.x}) + 1), width);
    const std::int32_t top = std::max(getFirstSample(std::min({a.y, b.y, c.y})), first_row);
    const std::int32_t bottom = std::min(getFirstSample(std::max({a.y, b.y, c.y}) + 1), end_row);

    const EdgeFunction opposite_a(b, c);
    const EdgeFunction opposite_b(c, a);
    const EdgeFunction opposite_c(a, b);
    const double scale = 1 / static_cast<double>(area);
    const bool is_flat = a.normal == b.normal && a.normal == c.normal;
    const float flat_light = is_flat ? lighting.light(a.normal) : 0;
    bool shows = false;
    for (std::int32_t row = top; row < bottom; ++row) {
        std::int64_t to_a = opposite_a.at(getMiddle(left), getMiddle(row));
        std::int64_t to_b = opposite_b.at(getMiddle(left), getMiddle(row));
        std::int64_t to_c = opposite_c.at(getMiddle(left), getMiddle(row));
        for (std::int32_t x = left; x < right; ++x) {
            if (to_a >= 0 && to_b >= 0 && to_c >= 0) {
                const double share_a = static_cast<double>(to_a) * scale;
                const double share_b = static_cast<double>(to_b) * scale;
                const double share_c = static_cast<double>(to_c) * scale;
                const auto near =
                    static_cast<float>(a.nearness * share_a + b.nearness * share_b + c.nearness * share_c);
                const std::size_t index = getIndex(x, row);
                if (near > nearness[index]) {
                    nearness[index] = near;
                    light[index] =
                        is_flat
                            ? flat_light
                            : lighting.light(normalised(a.normal * share_a + b.normal * share_b + c.normal * share_c));
                    shows = true;
                }
            }
            to_a += opposite_a.getStep();
            to_b += opposite_b.getStep();
            to_c += opposite_c.getStep();
        }
    }
    return shows;
}
