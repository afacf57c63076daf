#pragma once

#include "preview/Picture.h"
#include "preview/Vec.h"

#include "scene/SceneNodeTonemapping.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeCurve1D.h"
#include "scene/nodes/SceneNodeRenderSettings.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Preview {

/// How a film or sensor turns exposure into a picture: for each colour, display values by exposure, both from 0 to 1.
class ResponseCurve {
  public:
    /// The curve of the sRGB encoding.
    ResponseCurve();

    /// Reads the text of the Database of Response Functions (Grossberg and Nayar, "What is the Space of Camera Response
    /// Functions?", CVPR 2003): lines of numbers after "I =" and after "B =", once for all colours or once for each.
    /// Returns false, and leaves the object as it is, when the text has no such curve.
    bool parse(const std::string& text);

    /// The display value of an exposure for colour 0, 1 or 2.
    float at(std::size_t colour, float exposure) const;

  private:
    struct Curve {
        std::vector<float> exposures;
        std::vector<float> values;
    };
    std::array<Curve, 3> curves;
};

/// Turns linear light into display values. Each pixel's colour is first divided by that of the white point.
///
/// - linear: scale times light.
/// - Reinhard ("Photographic Tone Reproduction for Digital Images", SIGGRAPH 2002, equations 1 and 4): the luminance L
///   is 0.18 pre_scale / (the geometric mean of the picture's luminance) times light, its display value post_scale L
///   (1 + L / burn^2) / (1 + L). Black pixels don't count for the mean.
/// - camera: the exposure H = pi/4 luminance t / N^2 in lux seconds, with t the exposure duration and N the distance
///   from lens to sensor divided by the lens's diameter, relative to 78 / ISO, the exposure that saturates the film
///   (ISO 12232), and 2^EV times that; then the response curve.
/// - filmic: scale times light by the curve of Hable ("Uncharted 2: HDR Lighting", GDC 2010) with its white at 11.2.
///
/// All but the camera's response are encoded for sRGB (IEC 61966-2-1). At last come the colour curves of the settings.
class ToneMapping {
  public:
    /// Null arguments count as nodes with their defaults. A missing response function is reported.
    ToneMapping(const Velmar::SceneNodeTonemapping* node, const Velmar::SceneNodeCamera* camera,
                const Velmar::SceneNodeRenderSettings* settings);

    /// The picture with 8 bits, three or, with alpha, four bytes for each pixel. Colours are multiplied with alpha
    /// already and stay so.
    std::vector<unsigned char> apply(const Picture& picture) const;

    /// The display value, from 0 to 1, of light in a picture of this mean luminance.
    Vec3 displayOf(Vec3 light, float mean_luminance) const;

  private:
    std::array<unsigned char, 3> bytesOf(const Vec3& light, float mean_luminance) const;

    std::uint32_t kind = 1000;
    float scale = 1.0f;
    float pre_scale = 4.0f;
    float post_scale = 1.0f;
    float burn = 6.0f;
    float exposure = 1.0f;
    Vec3 gain{1.0f, 1.0f, 1.0f};
    ResponseCurve response;
    struct Curve {
        std::vector<float> knots;
        std::vector<float> values;
        float at(float x) const;
    };
    /// Overall, red, green, blue; without knots they change nothing.
    std::array<Curve, 4> curves;
};

/// The sRGB encoding of a linear value, from 0 to 1.
float encodeForDisplay(float value);

/// The geometric mean of the luminance of a picture's pixels that aren't black; 1 if all are.
float meanLuminance(const Picture& picture);

} // namespace Preview
