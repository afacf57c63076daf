#include "tools/Lighting.h"

#include "tools/Vec.h"

#include <algorithm>

using namespace Vec;

Lighting::Lighting(const Vec3d& right, const Vec3d& up, const Vec3d& towards_viewer)
    : key(normalised(right * -0.6 + up * 0.75 + towards_viewer * 0.6)),
      fill(normalised(right * 0.9 + up * 0.1 + towards_viewer * 0.45)), sky(up) {}

float Lighting::light(const Vec3d& normal) const {
    const double direct = 0.62 * std::max(0.0, dot(normal, key)) + 0.1 * std::max(0.0, dot(normal, fill));
    const double ambient = 0.05 + 0.04 * (1 + dot(normal, sky));
    return static_cast<float>(direct + ambient);
}

float Lighting::lightBackground(double height) {
    return static_cast<float>(0.62 + 0.25 * height);
}
