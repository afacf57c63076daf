#include "tools/Framing.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using Velmar::Vec3d;

namespace {

// Small enough to keep everything in focus, large enough not to be a pinhole.
constexpr double lens_radius_per_distance = 0.0005;

double toRadians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

} // namespace

void Box::add(const Box& other) {
    min = {std::min(min.x, other.min.x), std::min(min.y, other.min.y), std::min(min.z, other.min.z)};
    max = {std::max(max.x, other.max.x), std::max(max.y, other.max.y), std::max(max.z, other.max.z)};
}

Vec3d Box::getCentre() const {
    return {(min.x + max.x) / 2, (min.y + max.y) / 2, (min.z + max.z) / 2};
}

double Box::getRadius() const {
    const double radius = std::hypot(max.x - min.x, max.y - min.y, max.z - min.z) / 2;
    return radius > 0 ? radius : 1;
}

Vec3d getViewDirection(double azimuth, double elevation) {
    const double around = toRadians(azimuth);
    const double above = toRadians(elevation);
    return {std::sin(around) * std::cos(above), -std::cos(around) * std::cos(above), std::sin(above)};
}

double roundToSize(double value, double size) {
    // By multiplication alone, which is the same everywhere.
    double steps = 1e6;
    for (double power = 1; power < size; power *= 10)
        steps /= 10;
    for (double power = 0.1; power >= size && power > 1e-30; power /= 10)
        steps *= 10;
    return std::round(value * steps) / steps;
}

Frame frameBox(const Box& box, const SceneSettings& settings) {
    const double radius = box.getRadius();
    const Vec3d centre = box.getCentre();
    const double lens_sensor_dist = 0.5 * sensor_width / std::tan(toRadians(settings.fov) / 2);
    const double sensor_height = sensor_width * settings.height / settings.width;
    const double half_angle = std::atan(0.5 * std::min(sensor_width, sensor_height) / lens_sensor_dist);
    const double distance = radius / std::sin(half_angle);

    const Vec3d towards_camera = getViewDirection(settings.azimuth, settings.elevation);
    const auto place = [&](double middle, double direction) {
        return roundToSize(middle + distance * direction, radius);
    };
    const auto turn = [](double direction) { return roundToSize(-direction, 1); };
    return {{place(centre.x, towards_camera.x), place(centre.y, towards_camera.y), place(centre.z, towards_camera.z)},
            {turn(towards_camera.x), turn(towards_camera.y), turn(towards_camera.z)},
            roundToSize(distance, radius),
            roundToSize(lens_sensor_dist, sensor_width),
            roundToSize(distance * lens_radius_per_distance, radius)};
}
