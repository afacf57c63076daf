#include "preview/ToneMapping.h"

#include "preview/SceneNodes.h"
#include "preview/Sky.h"
#include "preview/System.h"

#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeCurve1D.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Preview {

namespace {

enum Kind : std::uint32_t { linear = 1000, reinhard = 1001, camera_response = 1002, filmic = 1003 };

/// The value between neighbouring points of a curve whose `xs` ascend.
float interpolate(const std::vector<float>& xs, const std::vector<float>& ys, float x) {
    const auto after = std::upper_bound(xs.begin(), xs.end(), x);
    if (after == xs.begin()) return ys.front();
    if (after == xs.end()) return ys.back();
    const auto i = static_cast<std::size_t>(after - xs.begin());
    const float t = (x - xs[i - 1]) / (xs[i] - xs[i - 1]);
    return ys[i - 1] * (1.0f - t) + ys[i] * t;
}

float hable(float x) {
    constexpr float a = 0.15f, b = 0.50f, c = 0.10f, d = 0.20f, e = 0.02f, f = 0.30f;
    return (x * (a * x + c * b) + d * e) / (x * (a * x + b) + d * f) - e / f;
}

/// A value of 0 to 1 as a byte; 0 for what isn't a number.
unsigned char toByte(float value) {
    const float rounded = std::min(value, 1.0f) * 255.0f + 0.5f;
    return value > 0.0f ? static_cast<unsigned char>(rounded) : 0;
}

/// Whether values at ascending places can be mixed.
bool isCurve(const std::vector<float>& xs, const std::vector<float>& ys) {
    const auto finite = [](float value) { return std::isfinite(value); };
    return xs.size() == ys.size() && std::all_of(xs.begin(), xs.end(), finite) &&
           std::all_of(ys.begin(), ys.end(), finite) && std::is_sorted(xs.begin(), xs.end());
}

float finiteOr(double value, float otherwise) {
    const auto single = static_cast<float>(value);
    return std::isfinite(single) ? single : otherwise;
}

/// Numbers of a line, or none if it isn't a line of numbers.
std::vector<float> numbersOf(const std::string& line) {
    std::vector<float> numbers;
    const char* at = line.data();
    const char* const end = at + line.size();
    for (;;) {
        while (at != end && (*at == ' ' || *at == '\t' || *at == '\r' || *at == ','))
            ++at;
        if (at == end) return numbers;
        float number = 0.0f;
        const auto [next, error] = std::from_chars(at, end, number);
        if (error != std::errc()) return {};
        numbers.push_back(number);
        at = next;
    }
}

} // namespace

float encodeForDisplay(float value) {
    if (!(value > 0.0f)) return 0.0f;
    if (value >= 1.0f) return 1.0f;
    return value <= 0.0031308f ? 12.92f * value : 1.055f * std::pow(value, 1.0f / 2.4f) - 0.055f;
}

float meanLuminance(const Picture& picture) {
    double sum = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i + 2 < picture.light.size(); i += 3) {
        const float value = luminance({picture.light[i], picture.light[i + 1], picture.light[i + 2]});
        if (!(value > 0.0f)) continue;
        sum += std::log(double{value});
        ++count;
    }
    return count == 0 ? 1.0f : static_cast<float>(std::exp(sum / static_cast<double>(count)));
}

ResponseCurve::ResponseCurve() {
    constexpr int steps = 1024;
    for (Curve& curve : curves) {
        for (int i = 0; i <= steps; ++i) {
            const float exposure = static_cast<float>(i) / steps;
            curve.exposures.push_back(exposure);
            curve.values.push_back(encodeForDisplay(exposure));
        }
    }
}

bool ResponseCurve::parse(const std::string& text) {
    std::vector<Curve> found;
    std::vector<float>* into = nullptr;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, end - at);
        at = end + 1;
        const std::size_t first = line.find_first_not_of(" \t");
        const bool is_exposure = first != std::string::npos && line.compare(first, 1, "I") == 0;
        const bool is_value = first != std::string::npos && line.compare(first, 1, "B") == 0;
        const std::size_t equals = line.find('=');
        if ((is_exposure || is_value) && equals != std::string::npos &&
            line.find_first_not_of(" \t", first + 1) == equals) {
            if (is_exposure) found.emplace_back();
            if (found.empty()) return false;
            into = is_exposure ? &found.back().exposures : &found.back().values;
            line.erase(0, equals + 1);
        }
        const std::vector<float> numbers = numbersOf(line);
        if (into != nullptr) into->insert(into->end(), numbers.begin(), numbers.end());
        // A name: the next curve.
        if (numbers.empty() && line.find_first_not_of(" \t\r") != std::string::npos) into = nullptr;
    }
    if (found.empty()) return false;
    for (const Curve& curve : found)
        if (curve.exposures.size() < 2 || !isCurve(curve.exposures, curve.values)) return false;
    for (std::size_t colour = 0; colour < 3; ++colour)
        curves[colour] = found.size() >= 3 ? found[colour] : found[0];
    return true;
}

float ResponseCurve::at(std::size_t colour, float exposure) const {
    return interpolate(curves[colour].exposures, curves[colour].values, exposure);
}

float ToneMapping::Curve::at(float x) const {
    return knots.empty() ? x : interpolate(knots, values, x);
}

ToneMapping::ToneMapping(const Velmar::SceneNodeTonemapping* node, const Velmar::SceneNodeCamera* camera,
                         const Velmar::SceneNodeRenderSettings* settings) {
    if (node != nullptr) {
        kind = node->tone_mapper_kind;
        scale = finiteOr(node->scale, 1.0f);
        pre_scale = finiteOr(node->pre_scale, 4.0f);
        post_scale = finiteOr(node->post_scale, 1.0f);
        burn = finiteOr(node->burn, 6.0f);
        if (kind < linear || kind > filmic) {
            report("a tone mapping of an unknown kind is taken as linear");
            kind = linear;
        }
    }
    if (kind == camera_response) {
        const double duration = camera == nullptr ? 0.333 : camera->exposure_duration;
        const double distance = camera == nullptr ? 0.036 : camera->lens_sensor_dist;
        const double radius = camera == nullptr ? 0.001 : camera->aperture_radius;
        // pi / 4 t / N^2 with N = distance / (2 radius).
        const double per_luminance =
            3.14159265358979323846 * duration * radius * radius / (distance * distance) * node->film_iso / 78.0;
        exposure = finiteOr(candelas_per_unit * per_luminance * std::exp2(node->ev_adjust), 1.0f);
        std::string text;
        const std::string path(node->response_function_path.view());
        constexpr std::uint64_t max_size = 1 << 24;
        const std::string complaint = System::readFile(path, max_size, text);
        if (!complaint.empty())
            report("camera response '" + path + "': " + complaint + "; the curve of sRGB is taken");
        else if (!response.parse(text))
            report("camera response '" + path + "' holds no curve; that of sRGB is taken");
    }
    if (settings == nullptr) return;
    if (settings->white_point) {
        // Light of this chromaticity is to look white. Colours of the scene have (1/3, 1/3) for white, so the rows of
        // the matrix to sRGB are taken relative to that.
        const Vec3 white = colourFromChromaticity(settings->white_point->x, settings->white_point->y, 1.0);
        const Vec3 equal = colourFromChromaticity(1.0 / 3.0, 1.0 / 3.0, 1.0);
        const Vec3 relative = {white.x / equal.x, white.y / equal.y, white.z / equal.z};
        if (isFinite(relative) && relative.x > 0.0f && relative.y > 0.0f && relative.z > 0.0f)
            gain = {1.0f / relative.x, 1.0f / relative.y, 1.0f / relative.z};
        else
            report("a white point outside the colours of a display isn't rendered");
    }
    if (settings->colour_curves) {
        const Velmar::ColourCurves& all = *settings->colour_curves;
        const Velmar::SceneNodeCurve1D* const nodes[4] = {all.overall.getPointer(), all.red.getPointer(),
                                                          all.green.getPointer(), all.blue.getPointer()};
        for (std::size_t i = 0; i < 4; ++i) {
            if (nodes[i] == nullptr || nodes[i]->knots.empty()) continue;
            Curve curve{{nodes[i]->knots.begin(), nodes[i]->knots.end()},
                        {nodes[i]->values.begin(), nodes[i]->values.end()}};
            if (isCurve(curve.knots, curve.values))
                curves[i] = std::move(curve);
            else
                report("a colour curve whose knots don't ascend or don't match its values, or aren't finite, isn't "
                       "rendered");
        }
    }
}

Vec3 ToneMapping::displayOf(Vec3 light, float mean) const {
    light = light * gain;
    Vec3 shown;
    switch (kind) {
    case reinhard: {
        const float key = 0.18f * pre_scale / mean;
        const float size = key * luminance(light);
        const float factor = key * post_scale * (1.0f + size / (burn * burn)) / (1.0f + size);
        shown = light * factor;
        break;
    }
    case camera_response:
        return {response.at(0, exposure * light.x), response.at(1, exposure * light.y),
                response.at(2, exposure * light.z)};
    case filmic: {
        constexpr float exposure_bias = 2.0f;
        const float white = 1.0f / hable(11.2f);
        const auto map = [&](float x) { return hable(std::max(exposure_bias * scale * x, 0.0f)) * white; };
        shown = {map(light.x), map(light.y), map(light.z)};
        break;
    }
    default:
        shown = light * scale;
    }
    return {encodeForDisplay(shown.x), encodeForDisplay(shown.y), encodeForDisplay(shown.z)};
}

std::array<unsigned char, 3> ToneMapping::bytesOf(const Vec3& light, float mean) const {
    const Vec3 shown = displayOf(light, mean);
    const auto byteOf = [this](float encoded, std::size_t colour) {
        return toByte(curves[colour + 1].at(curves[0].at(encoded)));
    };
    return {byteOf(shown.x, 0), byteOf(shown.y, 1), byteOf(shown.z, 2)};
}

std::vector<unsigned char> ToneMapping::apply(const Picture& picture) const {
    const std::size_t pixels = std::size_t{picture.width} * picture.height;
    const bool with_alpha = !picture.alpha.empty();
    const float mean = kind == reinhard ? meanLuminance(picture) : 1.0f;
    std::vector<unsigned char> bytes;
    bytes.reserve(pixels * (with_alpha ? 4 : 3));
    Vec3 last;
    std::array<unsigned char, 3> last_bytes = bytesOf(last, mean);
    for (std::size_t i = 0; i < pixels; ++i) {
        const Vec3 light = {picture.light[3 * i], picture.light[3 * i + 1], picture.light[3 * i + 2]};
        // Neighbours are often alike: in the blocks of the first picture and in even backgrounds.
        if (!(light == last)) {
            last = light;
            last_bytes = bytesOf(light, mean);
        }
        bytes.insert(bytes.end(), last_bytes.begin(), last_bytes.end());
        if (with_alpha) bytes.push_back(toByte(picture.alpha[i]));
    }
    return bytes;
}

} // namespace Preview
