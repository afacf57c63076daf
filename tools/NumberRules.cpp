#include "tools/NumberRules.h"

#include "scene/NumberText.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The numbers that an element may have.
struct Range {
    std::string_view element;
    std::string_view parent;
    double min;
    bool has_min;
    double max = infinity;
};

constexpr bool above = false;
constexpr bool at_least = true;

/// Sorted by element.
constexpr Range ranges[] = {
    {"aperture_radius", "camera", 0, at_least},
    {"blur", "mn_cubic", 0, at_least},
    {"burn", "reinhard", 0, above},
    {"displacement_error_threshold", "mesh", 0, at_least},
    {"emission_sampling_factor", "material", 0, at_least},
    {"exponent", "texture", 0, above},
    {"exposure_duration", "camera", 0, at_least},
    {"film_iso", "camera", 0, above},
    {"focus_distance", "camera", 0, above},
    {"gamma", "rgb", 0, above},
    {"gpu_max_depth", "renderer_settings", 0, at_least},
    {"height", "renderer_settings", 1, at_least},
    {"image_save_period", "renderer_settings", 0, above},
    {"large_mutation_prob", "renderer_settings", 0, at_least, 1},
    {"lens_sensor_dist", "camera", 0, above},
    {"max_change", "renderer_settings", 0, at_least},
    {"max_contribution", "renderer_settings", 0, above},
    {"max_depth", "renderer_settings", 0, at_least},
    {"max_num_consec_rejections", "renderer_settings", 0, at_least},
    {"max_num_subdivisions", "mesh", 0, at_least},
    {"num_smoothings", "mesh", 0, at_least},
    {"num_threads", "renderer_settings", 1, at_least},
    {"post_scale", "reinhard", 0, above},
    {"pre_scale", "reinhard", 0, above},
    {"radius", "mn_cubic", 0, above},
    {"radius", "sphere", 0, above},
    {"receiver_num_wavelength_buckets", "renderer_settings", 1, at_least},
    {"rgb", "rgb", 0, at_least},
    {"scale", "filmic", 0, above},
    {"scale", "linear", 0, above},
    {"scale", "mesh", 0, above},
    {"scale", "model2", 0, above},
    {"sensor_width", "camera", 0, above},
    {"subdivide_curvature_threshold", "mesh", 0, at_least},
    {"subdivide_pixel_threshold", "mesh", 0, at_least},
    {"super_sample_factor", "renderer_settings", 1, at_least},
    {"turbidity", "sunsky", 1, at_least},
    {"uv_set_index", "texture", 0, at_least},
    {"value", "emission_scale", 0, at_least},
    {"value", "uniform", 0, at_least},
    {"white_point", "renderer_settings", 0, above, 1},
    {"width", "renderer_settings", 1, at_least},
};
static_assert(std::ranges::is_sorted(ranges, {}, &Range::element));

const Range* findRange(std::string_view parent, std::string_view element) {
    const auto* const end = std::end(ranges);
    for (const Range* range = std::ranges::lower_bound(ranges, element, {}, &Range::element);
         range != end && range->element == element; ++range)
        if (range->parent == parent) return range;
    return nullptr;
}

std::optional<NumberFault> findInRange(const Range& range, std::span<const double> numbers) {
    const std::string limits = (range.has_min ? "from " : "above ") + describeNumber(range.min) +
                               (range.max < infinity ? " to " + describeNumber(range.max) : "");
    for (const double number : numbers) {
        if (number > range.min && number <= range.max) continue;
        if (number == range.min && range.has_min) continue;
        const std::string reason = number > range.max ? " is above " + describeNumber(range.max)
                                   : range.has_min    ? " is below " + describeNumber(range.min)
                                                      : " isn't above " + describeNumber(range.min);
        return NumberFault{true, "out-of-range", describeNumber(number) + reason, "give a number " + limits};
    }
    return {};
}

// ---- vectors and matrices

double lengthOf(std::span<const double> v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

/// Where it need not be of unit length, it may have any other but 0.
std::optional<NumberFault> findInDirection(std::span<const double> direction, bool is_unit) {
    // What a text of few digits keeps of a length.
    constexpr double tolerance = 1e-3;
    const double length = lengthOf(direction);
    if (length == 0.0)
        return NumberFault{true, "zero-vector", "a direction of length 0", "give a vector that points somewhere"};
    if (is_unit && std::fabs(length - 1.0) > tolerance)
        return NumberFault{false, "not-unit-length", "a direction of length " + describeNumber(length),
                           "divide it by its length"};
    return {};
}

bool isSingular(std::span<const double> m) {
    // Of the volume that rows of these lengths would span at right angles.
    constexpr double tolerance = 1e-12;
    const double determinant =
        m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) + m[2] * (m[3] * m[7] - m[4] * m[6]);
    const double volume = lengthOf(m.subspan(0, 3)) * lengthOf(m.subspan(3, 3)) * lengthOf(m.subspan(6, 3));
    return !(std::fabs(determinant) > tolerance * volume);
}

} // namespace

std::string describeNumber(double number) {
    return Velmar::doubleToString(number);
}

std::optional<NumberFault> findNumberFault(std::string_view parent, std::string_view element,
                                           std::span<const double> numbers) {
    for (const double number : numbers)
        if (!std::isfinite(number))
            return NumberFault{true, "not-finite", describeNumber(number) + " isn't a finite number",
                               "give a finite number"};
    if (numbers.size() == 9) {
        if (!isSingular(numbers)) return {};
        return NumberFault{true, "singular-matrix", "the matrix can't be inverted",
                           "give one that doesn't flatten the object"};
    }
    if (numbers.size() == 3) {
        if (parent == "camera" && (element == "up" || element == "forwards")) return findInDirection(numbers, true);
        if (element == "axis" || element == "sundir") return findInDirection(numbers, false);
    }
    const Range* const range = findRange(parent, element);
    return range == nullptr ? std::nullopt : findInRange(*range, numbers);
}
