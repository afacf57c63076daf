#pragma once

#include <algorithm>
#include <cmath>

namespace Preview {

struct Vec2 {
    float x = 0.0f;
    float y = 0.0f;
};

/// A point, a direction or a colour with red, green and blue.
struct Vec3 {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

inline Vec3 operator+(const Vec3& a, const Vec3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec3 operator-(const Vec3& a, const Vec3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec3 operator-(const Vec3& a) {
    return {-a.x, -a.y, -a.z};
}
inline Vec3 operator*(const Vec3& a, float s) {
    return {a.x * s, a.y * s, a.z * s};
}
/// Component by component, as colours multiply.
inline Vec3 operator*(const Vec3& a, const Vec3& b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
inline Vec3& operator+=(Vec3& a, const Vec3& b) {
    return a = a + b;
}
inline bool operator==(const Vec3& a, const Vec3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

inline float dot(const Vec3& a, const Vec3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(const Vec3& a) {
    return std::sqrt(dot(a, a));
}
inline Vec3 normalised(const Vec3& a) {
    return a * (1.0f / length(a));
}
inline float maxComponent(const Vec3& a) {
    return std::max(a.x, std::max(a.y, a.z));
}
inline bool isFinite(const Vec3& a) {
    return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}
inline bool isBlack(const Vec3& a) {
    return a.x == 0.0f && a.y == 0.0f && a.z == 0.0f;
}

/// Relative luminance of linear colours with the primaries of sRGB (ITU-R BT.709).
inline float luminance(const Vec3& colour) {
    return 0.2126f * colour.x + 0.7152f * colour.y + 0.0722f * colour.z;
}

/// A linear map. `x`, `y` and `z` are its columns.
struct Linear {
    Vec3 x;
    Vec3 y;
    Vec3 z;

    Vec3 vector(const Vec3& v) const { return x * v.x + y * v.y + z * v.z; }
};

/// A linear map and a translation. `x`, `y` and `z` are the columns of the map.
struct Affine {
    Vec3 x{1.0f, 0.0f, 0.0f};
    Vec3 y{0.0f, 1.0f, 0.0f};
    Vec3 z{0.0f, 0.0f, 1.0f};
    Vec3 p;

    Vec3 vector(const Vec3& v) const { return x * v.x + y * v.y + z * v.z; }
    Vec3 point(const Vec3& v) const { return vector(v) + p; }

    float determinant() const { return dot(x, cross(y, z)); }

    /// The linear map that gives the directions of a transformed surface's normals: the inverse transpose times a
    /// positive number.
    Linear forNormals() const {
        const Vec3 yz = cross(y, z);
        const float sign = dot(x, yz) < 0.0f ? -1.0f : 1.0f;
        return {yz * sign, cross(z, x) * sign, cross(x, y) * sign};
    }
    Vec3 normal(const Vec3& n) const { return forNormals().vector(n); }

    bool operator==(const Affine& other) const { return x == other.x && y == other.y && z == other.z && p == other.p; }
};

inline bool isFinite(const Affine& m) {
    return isFinite(m.x) && isFinite(m.y) && isFinite(m.z) && isFinite(m.p);
}

/// A linear mix: `a` at 0, `b` at 1.
inline Vec3 mix(const Vec3& a, const Vec3& b, float t) {
    return a * (1.0f - t) + b * t;
}
inline Affine mix(const Affine& a, const Affine& b, float t) {
    return {mix(a.x, b.x, t), mix(a.y, b.y, t), mix(a.z, b.z, t), mix(a.p, b.p, t)};
}

/// Two directions that are perpendicular to the unit vector `n` and to each other, without a branch near the poles.
/// Duff et al., "Building an Orthonormal Basis, Revisited", JCGT 6(1), 2017.
inline void basisAround(const Vec3& n, Vec3& s, Vec3& t) {
    const float sign = std::copysign(1.0f, n.z);
    const float a = -1.0f / (sign + n.z);
    const float b = n.x * n.y * a;
    s = {1.0f + sign * n.x * n.x * a, sign * b, -sign * n.x};
    t = {b, sign + n.y * n.y * a, -n.y};
}

} // namespace Preview
