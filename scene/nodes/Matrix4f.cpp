#include "scene/nodes/Matrix4f.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Velmar {

namespace {

/// Sets the upper 3 by 3 of `out` to the inverse of that of `m`, and its last row and column to those of the identity.
bool invertUpper3(const Matrix4f& m, float det, Matrix4f& out) {
    if (det == 0.0f || std::isnan(det)) return false;
    const Vec4f a = m.column(0);
    const Vec4f b = m.column(1);
    const Vec4f c = m.column(2);
    const float reciprocal = 1.0f / det;
    // The cross products are the rows of the inverse.
    const Vec4f row0 = cross(b, c) * reciprocal;
    const Vec4f row1 = cross(c, a) * reciprocal;
    const Vec4f row2 = cross(a, b) * reciprocal;
    out.setColumn(0, {row0.x, row1.x, row2.x, 0.0f});
    out.setColumn(1, {row0.y, row1.y, row2.y, 0.0f});
    out.setColumn(2, {row0.z, row1.z, row2.z, 0.0f});
    out.setColumn(3, {0.0f, 0.0f, 0.0f, 1.0f});
    return true;
}

float greatestDifference(const Matrix4f& a, const Matrix4f& b) {
    float greatest = 0.0f;
    for (std::size_t i = 0; i < 16; ++i)
        greatest = std::max(greatest, std::fabs(a.e[i] - b.e[i]));
    return greatest;
}

bool sameBits(const Matrix4f& a, const Matrix4f& b) {
    return std::memcmp(a.e, b.e, sizeof a.e) == 0;
}

} // namespace

void identity(Matrix4f& out) {
    out = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
}

void fromMatrix3AndTranslation(const float (&m)[9], const float (&t)[3], Matrix4f& out) {
    out.setColumn(0, {m[0], m[3], m[6], 0.0f});
    out.setColumn(1, {m[1], m[4], m[7], 0.0f});
    out.setColumn(2, {m[2], m[5], m[8], 0.0f});
    out.setColumn(3, {t[0], t[1], t[2], 1.0f});
}

Vec4f mul(const Matrix4f& m, const Vec4f& v) {
    return m.column(0) * v.x + m.column(1) * v.y + m.column(2) * v.z + m.column(3) * v.w;
}

void mul(const Matrix4f& a, const Matrix4f& b, Matrix4f& out) {
    Matrix4f product;
    for (std::size_t c = 0; c < 4; ++c)
        product.setColumn(c, mul(a, b.column(c)));
    out = product;
}

void scaleUpperColumns(Matrix4f& m, float s) {
    for (std::size_t i = 0; i < 12; ++i)
        m.e[i] *= s;
}

void transpose(const Matrix4f& m, Matrix4f& out) {
    Matrix4f transposed;
    for (std::size_t r = 0; r < 4; ++r)
        transposed.setColumn(r, {m.e[r], m.e[r + 4], m.e[r + 8], m.e[r + 12]});
    out = transposed;
}

float upperDeterminant(const Matrix4f& m) {
    const Vec4f a = m.column(0);
    const Vec4f b = m.column(1);
    const Vec4f c = m.column(2);
    return (a.x * b.y * c.z + a.z * b.x * c.y + a.y * b.z * c.x) -
           (a.z * b.y * c.x + a.y * b.x * c.z + a.x * b.z * c.y);
}

bool inverseAffine(const Matrix4f& m, Matrix4f& out) {
    Matrix4f inverse;
    if (!invertUpper3(m, upperDeterminant(m), inverse)) return false;
    const Vec4f t = m.column(3);
    inverse.setColumn(3, mul(inverse, Vec4f{-t.x, -t.y, -t.z, 1.0f}));
    out = inverse;
    return true;
}

bool inverseUpperLeft(const Matrix4f& m, Matrix4f& out, float& det_out) {
    det_out = upperDeterminant(m);
    Matrix4f inverse;
    if (!invertUpper3(m, det_out, inverse)) return false;
    out = inverse;
    return true;
}

void quaternionToMatrix(const Vec4f& q, Matrix4f& out) {
    const float xx = q.x * q.x;
    const float yy = q.y * q.y;
    const float zz = q.z * q.z;
    const float xy = q.x * q.y;
    const float xz = q.x * q.z;
    const float yz = q.y * q.z;
    const float wx = q.w * q.x;
    const float wy = q.w * q.y;
    const float wz = q.w * q.z;
    out.setColumn(0, {1.0f - 2.0f * (yy + zz), 2.0f * (xy + wz), 2.0f * (xz - wy), 0.0f});
    out.setColumn(1, {2.0f * (xy - wz), 1.0f - 2.0f * (xx + zz), 2.0f * (yz + wx), 0.0f});
    out.setColumn(2, {2.0f * (xz + wy), 2.0f * (yz - wx), 1.0f - 2.0f * (xx + yy), 0.0f});
    out.setColumn(3, {0.0f, 0.0f, 0.0f, 1.0f});
}

Vec4f matrixToQuaternion(const Matrix4f& m) {
    const auto at = [&m](std::size_t row, std::size_t column) { return m.e[row + 4 * column]; };
    const float trace = at(0, 0) + at(1, 1) + at(2, 2);
    if (trace >= 0.0f) {
        const float s = std::sqrt(trace + 1.0f);
        const float k = 0.5f / s;
        return {(at(2, 1) - at(1, 2)) * k, (at(0, 2) - at(2, 0)) * k, (at(1, 0) - at(0, 1)) * k, 0.5f * s};
    }
    if (at(0, 0) > at(1, 1) && at(0, 0) > at(2, 2)) {
        const float s = std::sqrt(at(0, 0) + 1.0f - at(1, 1) - at(2, 2));
        const float k = 0.5f / s;
        return {0.5f * s, (at(0, 1) + at(1, 0)) * k, (at(0, 2) + at(2, 0)) * k, (at(2, 1) - at(1, 2)) * k};
    }
    if (at(1, 1) > at(2, 2)) {
        const float s = std::sqrt(at(1, 1) + 1.0f - at(0, 0) - at(2, 2));
        const float k = 0.5f / s;
        return {(at(0, 1) + at(1, 0)) * k, 0.5f * s, (at(1, 2) + at(2, 1)) * k, (at(0, 2) - at(2, 0)) * k};
    }
    const float s = std::sqrt(at(2, 2) + 1.0f - at(0, 0) - at(1, 1));
    const float k = 0.5f / s;
    return {(at(0, 2) + at(2, 0)) * k, (at(1, 2) + at(2, 1)) * k, 0.5f * s, (at(1, 0) - at(0, 1)) * k};
}

Vec4f slerp(const Vec4f& a, const Vec4f& b, float t) {
    constexpr float nearly_parallel = 0.9995f;
    Vec4f end = b;
    float d = dot(a, b);
    if (!(d >= 0.0f)) {
        end = -end;
        d = -d;
    }
    if (d > nearly_parallel) return normalised(mix(a, end, t));
    const Vec4f perpendicular = normalised(end - a * d);
    const auto [sine, cosine] = sineAndCosine(std::acos(d) * t);
    return a * cosine + perpendicular * sine;
}

bool orthogonalFactor(const Matrix4f& m, float tolerance, Matrix4f& out) {
    Matrix4f iterate = m;
    // An iteration that doesn't converge must repeat an earlier iterate, since there are finitely many. Comparing each
    // with one earlier iterate, replaced after 1, 2, 4, 8... steps, finds a cycle of any length and never stops an
    // iteration that converges (Brent's cycle detection).
    Matrix4f remembered = m;
    std::uint64_t steps = 0;
    std::uint64_t remember_after = 1;
    for (;;) {
        Matrix4f transposed;
        transpose(iterate, transposed);
        Matrix4f inverse;
        float det = 0.0f;
        if (!inverseUpperLeft(transposed, inverse, det)) return false;

        Matrix4f next;
        for (std::size_t i = 0; i < 12; ++i)
            next.e[i] = 0.5f * (inverse.e[i] + iterate.e[i]);
        next.setColumn(3, inverse.column(3) + iterate.column(3));
        next.e[15] = 1.0f;

        const bool has_settled = !(greatestDifference(next, iterate) > tolerance);
        iterate = next;
        if (has_settled) break;
        if (sameBits(iterate, remembered)) return false;
        if (++steps == remember_after) {
            remembered = iterate;
            steps = 0;
            remember_after *= 2;
        }
    }
    out = iterate;
    return true;
}

bool polarDecomposition(const Matrix4f& m, Matrix4f& rot_out, Matrix4f& rest_out) {
    constexpr float tolerance = 2e-7f;
    Matrix4f rotation;
    if (!orthogonalFactor(m, tolerance, rotation)) return false;
    if (upperDeterminant(rotation) < 0.0f) scaleUpperColumns(rotation, -1.0f);
    Matrix4f transposed;
    transpose(rotation, transposed);
    mul(transposed, m, rest_out);
    rot_out = rotation;
    return true;
}

void boxBounds(const Vec4f& box_min, const Vec4f& box_max, const Matrix4f& m, Vec4f& out_min, Vec4f& out_max) {
    const Vec4f x[2] = {m.column(0) * box_min.x, m.column(0) * box_max.x};
    const Vec4f y[2] = {m.column(1) * box_min.y, m.column(1) * box_max.y};
    const Vec4f z[2] = {m.column(2) * box_min.z, m.column(2) * box_max.z};
    const Vec4f w[2] = {m.column(3) * box_min.w, m.column(3) * box_max.w};
    Vec4f low = x[0] + y[0] + z[0] + w[0];
    Vec4f high = low;
    for (std::size_t corner = 1; corner < 8; ++corner) {
        const std::size_t i = corner & 1;
        const std::size_t j = corner >> 1 & 1;
        const std::size_t k = corner >> 2;
        const Vec4f moved = x[i] + y[j] + z[k] + w[k];
        low = min(low, moved);
        high = max(high, moved);
    }
    out_min = low;
    out_max = high;
}

} // namespace Velmar
