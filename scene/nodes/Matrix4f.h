#pragma once

#include <cmath>
#include <cstddef>

namespace Velmar {

/// Four lanes: a point (w 1), a direction (w 0), or a quaternion with w the real part.
struct alignas(16) Vec4f {
    float x;
    float y;
    float z;
    float w;

    bool operator==(const Vec4f&) const = default;
};

/// A 4 by 4 matrix in column-major order: row r of column c is `e[r + 4 * c]`. A point is a column vector on the
/// right, so entries 12, 13 and 14 are the translation.
struct alignas(16) Matrix4f {
    float e[16];

    Vec4f column(std::size_t c) const { return {e[4 * c], e[4 * c + 1], e[4 * c + 2], e[4 * c + 3]}; }
    void setColumn(std::size_t c, const Vec4f& v) {
        e[4 * c] = v.x;
        e[4 * c + 1] = v.y;
        e[4 * c + 2] = v.z;
        e[4 * c + 3] = v.w;
    }

    bool operator==(const Matrix4f&) const = default;
};

static_assert(sizeof(Vec4f) == 16 && alignof(Vec4f) == 16);
static_assert(sizeof(Matrix4f) == 64 && alignof(Matrix4f) == 16);

inline Vec4f operator+(const Vec4f& a, const Vec4f& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
}

inline Vec4f operator-(const Vec4f& a, const Vec4f& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w};
}

inline Vec4f operator-(const Vec4f& a) {
    return {-a.x, -a.y, -a.z, -a.w};
}

inline Vec4f operator*(const Vec4f& a, float s) {
    return {a.x * s, a.y * s, a.z * s, a.w * s};
}

inline Vec4f operator/(const Vec4f& a, float s) {
    return {a.x / s, a.y / s, a.z / s, a.w / s};
}

/// The smaller of each pair of lanes. A lane of `b` that is NaN leaves that of `a`.
inline Vec4f min(const Vec4f& a, const Vec4f& b) {
    return {b.x < a.x ? b.x : a.x, b.y < a.y ? b.y : a.y, b.z < a.z ? b.z : a.z, b.w < a.w ? b.w : a.w};
}

/// The greater of each pair of lanes. A lane of `b` that is NaN leaves that of `a`.
inline Vec4f max(const Vec4f& a, const Vec4f& b) {
    return {b.x > a.x ? b.x : a.x, b.y > a.y ? b.y : a.y, b.z > a.z ? b.z : a.z, b.w > a.w ? b.w : a.w};
}

/// The dot product of all four lanes.
inline float dot(const Vec4f& a, const Vec4f& b) {
    return (a.x * b.x + a.y * b.y) + (a.z * b.z + a.w * b.w);
}

/// `a` divided by its length over all four lanes.
inline Vec4f normalised(const Vec4f& a) {
    return a / std::sqrt(dot(a, a));
}

/// (1 - t) a + t b, lane by lane.
inline Vec4f mix(const Vec4f& a, const Vec4f& b, float t) {
    return a * (1.0f - t) + b * t;
}

/// The cross product of the first three lanes, with w 0.
inline Vec4f cross(const Vec4f& a, const Vec4f& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x, 0.0f};
}

struct SineAndCosine {
    float sine;
    float cosine;
};

/// Both of one angle in radians; compilers merge the two calls into one.
inline SineAndCosine sineAndCosine(float angle) {
    return {std::sin(angle), std::cos(angle)};
}

// Every `out` below may be one of the inputs.

/// Makes `out` the identity.
void identity(Matrix4f& out);

/// Makes `out` of the row-major 3 by 3 matrix `m` and the translation `t`; its bottom row is (0, 0, 0, 1).
void fromMatrix3AndTranslation(const float (&m)[9], const float (&t)[3], Matrix4f& out);

/// out = a times b.
void mul(const Matrix4f& a, const Matrix4f& b, Matrix4f& out);

/// m times v.
Vec4f mul(const Matrix4f& m, const Vec4f& v);

/// Multiplies columns 0, 1 and 2 of `m` by `s` in all four components; column 3 stays.
void scaleUpperColumns(Matrix4f& m, float s);

/// Transposes all sixteen entries, so the bottom row becomes the translation.
void transpose(const Matrix4f& m, Matrix4f& out);

/// The determinant of the upper 3 by 3.
float upperDeterminant(const Matrix4f& m);

/// Inverts an affine matrix; the bottom row of `m` isn't looked at, that of `out` is (0, 0, 0, 1).
/// Returns false, with `out` as it was, when `upperDeterminant` is exactly zero or NaN. There is no other threshold: a
/// matrix that is nearly singular succeeds, though its inverse may not be finite.
bool inverseAffine(const Matrix4f& m, Matrix4f& out);

/// As `inverseAffine`, but without the translation: column 3 of `out` is (0, 0, 0, 1). `det_out` is set to the
/// determinant on failure too.
bool inverseUpperLeft(const Matrix4f& m, Matrix4f& out, float& det_out);

/// The rotation matrix of the quaternion `q`, which isn't normalised first.
void quaternionToMatrix(const Vec4f& q, Matrix4f& out);

/// The quaternion of the rotation in the upper 3 by 3 of `m`. It is as near to unit length as `m` is to a rotation.
Vec4f matrixToQuaternion(const Matrix4f& m);

/// Interpolates from `a` (t 0) to `b` or its negative (t 1) along the shorter arc. Both must be of unit length.
Vec4f slerp(const Vec4f& a, const Vec4f& b, float t);

/// Finds the orthogonal factor of the upper 3 by 3 of `m` by Newton's iteration, a reflection if `m` mirrors; the
/// translation is carried along. It ends when no entry changes by more than `tolerance`, however long that takes.
/// Returns false, with `out` as it was, when an iterate is singular, or when an iterate comes back bit for bit and the
/// iteration would therefore run for ever.
bool orthogonalFactor(const Matrix4f& m, float tolerance, Matrix4f& out);

/// Splits `m` into a proper rotation and what remains: m = rot_out times rest_out, as far as `m` has no translation.
/// A reflection ends up in `rest_out`.
/// Returns false, with both results as they were, when `orthogonalFactor` fails.
bool polarDecomposition(const Matrix4f& m, Matrix4f& rot_out, Matrix4f& rest_out);

/// The box around the eight corners of the given box after `m`, w included. A corner takes its w from the side that it
/// takes its z from.
void boxBounds(const Vec4f& box_min, const Vec4f& box_max, const Matrix4f& m, Vec4f& out_min, Vec4f& out_max);

} // namespace Velmar
