#include "preview/Sky.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Preview {

namespace {

/// Illuminance of the sun outside the atmosphere, in lux.
constexpr double solar_illuminance_constant = 128000.0;

} // namespace

Vec3 colourFromChromaticity(double x, double y, double luminance) {
    if (!(y > 0.0)) return {};
    const double X = luminance * x / y;
    const double Y = luminance;
    const double Z = luminance * (1.0 - x - y) / y;
    return {static_cast<float>(3.2404542 * X - 1.5371385 * Y - 0.4985314 * Z),
            static_cast<float>(-0.9692660 * X + 1.8760108 * Y + 0.0415560 * Z),
            static_cast<float>(0.0556434 * X - 0.2040259 * Y + 1.0572252 * Z)};
}

Sky::Sky(const Settings& settings) : sun(normalised(settings.sun_direction)) {
    if (!isFinite(sun)) sun = {0.0f, 0.0f, 1.0f};
    const double turbidity = std::isfinite(settings.turbidity) ? std::clamp(settings.turbidity, 1.7, 10.0) : 2.0;
    has_sky = settings.sky_enabled && !settings.extra_atmospheric && sun.z > 0.0f;
    if (has_sky) setUpSky(turbidity);
    setUpSun(turbidity, settings.extra_atmospheric);
}

double Sky::Distribution::at(double cosine_of_zenith_angle, double angle_to_sun, double cosine_to_sun) const {
    return scale * (1 + a * std::exp(b / cosine_of_zenith_angle)) *
           (1 + c * std::exp(d * angle_to_sun) + e * cosine_to_sun * cosine_to_sun);
}

void Sky::setUpSky(double t) {
    const double cosine = std::min(double{sun.z}, 1.0);
    const double theta = std::acos(cosine);
    luminance_of = {0.1787 * t - 1.4630, -0.3554 * t + 0.4275, -0.0227 * t + 5.3251,
                    0.1206 * t - 2.5771, -0.0670 * t + 0.3703, 1.0};
    x_of = {-0.0193 * t - 0.2592, -0.0665 * t + 0.0008, -0.0004 * t + 0.2125,
            -0.0641 * t - 0.8989, -0.0033 * t + 0.0452, 1.0};
    y_of = {-0.0167 * t - 0.2608, -0.0950 * t + 0.0092, -0.0079 * t + 0.2102,
            -0.0441 * t - 1.6537, -0.0109 * t + 0.0529, 1.0};

    const double chi = (4.0 / 9.0 - t / 120.0) * (std::numbers::pi - 2 * theta);
    const double kilocandelas = std::max(0.0, (4.0453 * t - 4.9710) * std::tan(chi) - 0.2155 * t + 2.4192);
    const double theta2 = theta * theta;
    const double theta3 = theta2 * theta;
    const double x = t * t * (0.00166 * theta3 - 0.00375 * theta2 + 0.00209 * theta) +
                     t * (-0.02903 * theta3 + 0.06377 * theta2 - 0.03202 * theta + 0.00394) +
                     (0.11693 * theta3 - 0.21196 * theta2 + 0.06052 * theta + 0.25886);
    const double y = t * t * (0.00275 * theta3 - 0.00610 * theta2 + 0.00317 * theta) +
                     t * (-0.04214 * theta3 + 0.08970 * theta2 - 0.04153 * theta + 0.00516) +
                     (0.15346 * theta3 - 0.26756 * theta2 + 0.06670 * theta + 0.26688);
    luminance_of.scale = kilocandelas * 1000.0 / candelas_per_unit / luminance_of.at(1.0, theta, cosine);
    x_of.scale = x / x_of.at(1.0, theta, cosine);
    y_of.scale = y / y_of.at(1.0, theta, cosine);
}

void Sky::setUpSun(double turbidity, bool extra_atmospheric) {
    const double radiance = solar_illuminance_constant / candelas_per_unit / double{sunSolidAngle()};
    if (extra_atmospheric) {
        const auto white = static_cast<float>(radiance);
        sun_radiance = {white, white, white};
        return;
    }
    if (sun.z <= 0.0f) return;
    const double theta = std::acos(std::min(double{sun.z}, 1.0));
    const double mass = 1.0 / (std::cos(theta) + 0.15 * std::pow(93.885 - theta * 180.0 / std::numbers::pi, -1.253));
    const double beta = 0.04608365822050 * turbidity - 0.04586025928522;
    // Micrometres, and the absorption of ozone per centimetre.
    constexpr double wavelengths[3] = {0.610, 0.550, 0.465};
    constexpr double ozone[3] = {0.122, 0.085, 0.0095};
    float transmitted[3];
    for (int i = 0; i < 3; ++i) {
        const double rayleigh = std::exp(-mass * 0.008735 * std::pow(wavelengths[i], -4.08));
        const double aerosol = std::exp(-mass * beta * std::pow(wavelengths[i], -1.3));
        const double by_ozone = std::exp(-mass * ozone[i] * 0.35);
        transmitted[i] = static_cast<float>(radiance * rayleigh * aerosol * by_ozone);
    }
    sun_radiance = {transmitted[0], transmitted[1], transmitted[2]};
}

Vec3 Sky::radiance(const Vec3& direction) const {
    if (!has_sky) return {};
    // At the horizon itself the formula divides by 0.
    constexpr double min_cosine = 0.01;
    const double cosine = std::max(double{direction.z}, min_cosine);
    const double to_sun = std::clamp(double{dot(direction, sun)}, -1.0, 1.0);
    const double angle = std::acos(to_sun);
    const double value = luminance_of.at(cosine, angle, to_sun);
    const Vec3 colour =
        colourFromChromaticity(x_of.at(cosine, angle, to_sun), y_of.at(cosine, angle, to_sun), std::max(value, 0.0));
    return {std::max(colour.x, 0.0f), std::max(colour.y, 0.0f), std::max(colour.z, 0.0f)};
}

} // namespace Preview
