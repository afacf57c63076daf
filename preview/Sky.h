#pragma once

#include "preview/Vec.h"

namespace Preview {

/// Luminance in candela per square metre of light of value 1: the efficacy that defines the candela, 683 lumens per
/// watt, for light values in watts per square metre and steradian.
constexpr double candelas_per_unit = 683.0;

/// The light of the sun and of a clear sky.
///
/// The sky is the analytic model of Preetham, Shirley and Smits, "A Practical Analytic Model for Daylight", SIGGRAPH
/// 1999: Perez' distribution with coefficients and zenith values by turbidity, as luminance and chromaticity. The sun's
/// light is attenuated as in its appendix: Rayleigh scattering, aerosols by Angstrom's formula and ozone, over the
/// relative optical mass of Kasten, for one wavelength of each of red, green and blue.
class Sky {
  public:
    struct Settings {
        /// Towards the sun; any length but 0.
        Vec3 sun_direction{0.0f, 0.0f, 1.0f};
        /// Clamped to 1.7 to 10, where the model is sound.
        double turbidity = 2.0;
        /// Without air: a black sky and the sun as it is outside.
        bool extra_atmospheric = false;
        bool sky_enabled = true;
    };

    explicit Sky(const Settings& settings);

    /// Radiance of the sky towards the unit vector `direction`. Below the horizon it is that of the horizon there.
    Vec3 radiance(const Vec3& direction) const;

    /// Unit vector.
    const Vec3& getSunDirection() const { return sun; }
    /// Of the sun's disc; 0 when the sun is below the horizon.
    const Vec3& getSunRadiance() const { return sun_radiance; }
    /// The cosine of the angle between the centre and the edge of the sun, 0.00465 radians.
    static constexpr float cosineOfSunEdge() { return 0.9999892f; }
    /// In steradians.
    static constexpr float sunSolidAngle() { return 6.792896e-5f; }

  private:
    struct Distribution {
        double a, b, c, d, e;
        /// The value at the zenith divided by the formula there.
        double scale;

        double at(double cosine_of_zenith_angle, double angle_to_sun, double cosine_to_sun) const;
    };

    void setUpSky(double turbidity);
    void setUpSun(double turbidity, bool extra_atmospheric);

    Vec3 sun;
    Vec3 sun_radiance;
    bool has_sky = false;
    Distribution luminance_of{};
    Distribution x_of{};
    Distribution y_of{};
};

/// Linear colour with the primaries and the white point of sRGB (IEC 61966-2-1) from CIE x, y and a luminance.
Vec3 colourFromChromaticity(double x, double y, double luminance);

} // namespace Preview
