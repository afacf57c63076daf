#pragma once

#include "velmarvec.h"

#include <cmath>

/// Arithmetic of the pictures.
namespace Vec {

using Velmar::Vec3d;

inline Vec3d of(const Velmar::Vec3f& v) {
    return {v.x, v.y, v.z};
}

inline Vec3d operator+(const Vec3d& a, const Vec3d& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline Vec3d operator-(const Vec3d& a, const Vec3d& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Vec3d operator-(const Vec3d& v) {
    return {-v.x, -v.y, -v.z};
}

inline Vec3d operator*(const Vec3d& v, double factor) {
    return {v.x * factor, v.y * factor, v.z * factor};
}

inline double dot(const Vec3d& a, const Vec3d& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vec3d cross(const Vec3d& a, const Vec3d& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Of length 1; zero for what has no direction.
inline Vec3d normalised(const Vec3d& v) {
    const double length = std::sqrt(dot(v, v));
    return length > 0 && std::isfinite(length) ? v * (1 / length) : Vec3d{};
}

inline bool isFinite(const Vec3d& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

} // namespace Vec
