#include "preview/Motion.h"

#include "preview/SceneNodes.h"

#include "scene/Rotations.h"

#include <cmath>

namespace Preview {

namespace {

Matrix3 multiply(const Matrix3& a, const Matrix3& b) {
    Matrix3 result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            for (std::size_t k = 0; k < 3; ++k)
                result[3 * row + column] += a[3 * row + k] * b[3 * k + column];
    return result;
}

/// Rodrigues' rotation by a unit quaternion x, y, z, w.
Matrix3 toMatrix(const std::array<double, 4>& q) {
    const auto [x, y, z, w] = q;
    return {1 - 2 * (y * y + z * z), 2 * (x * y - w * z),     2 * (x * z + w * y),
            2 * (x * y + w * z),     1 - 2 * (x * x + z * z), 2 * (y * z - w * x),
            2 * (x * z - w * y),     2 * (y * z + w * x),     1 - 2 * (x * x + y * y)};
}

double dotOf(const std::array<double, 4>& a, const std::array<double, 4>& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}

/// The fields of a rotation of kind 1, which the renderer's side of the seam may make: axis and angle in radians.
struct AxisAngleRotation : Velmar::Rotation {
    Velmar::Vec3d axis;
    double angle;
};

Matrix3 rotationAround(const Velmar::Vec3d& axis, double angle) {
    const double length = std::sqrt(axis.x * axis.x + axis.y * axis.y + axis.z * axis.z);
    const double s = std::sin(angle / 2) / length;
    return toMatrix({axis.x * s, axis.y * s, axis.z * s, std::cos(angle / 2)});
}

} // namespace

Matrix3 baseMatrix(const Velmar::Rotation* rotation, double scale) {
    Matrix3 result = identity_matrix;
    if (rotation != nullptr) {
        switch (rotation->getType()) {
        case Velmar::Rotation::matrix_kind: {
            const auto& matrix = static_cast<const Velmar::MatrixRotation*>(rotation)->matrix;
            for (std::size_t i = 0; i < 9; ++i)
                result[i] = matrix[i];
            break;
        }
        case Velmar::Rotation::axis_and_angle_kind: {
            const auto* const turned = static_cast<const AxisAngleRotation*>(rotation);
            result = rotationAround(turned->axis, turned->angle);
            break;
        }
        default:
            report("a rotation of an unknown kind is left out");
        }
    }
    for (double& entry : result)
        entry *= scale;
    return result;
}

Motion::Station Motion::makeStation(const Velmar::KeyFrame& frame, const Matrix3& base) {
    Station station{{0, 0, 0, 1}, base, {frame.pos.x, frame.pos.y, frame.pos.z}, frame.time};
    if (!frame.hasIdentityS()) {
        Matrix3 shape;
        for (std::size_t i = 0; i < 9; ++i)
            shape[i] = frame.S[i];
        station.shape = multiply(shape, base);
    }
    if (frame.angle != 0.0) {
        const Velmar::Vec3d& axis = frame.axis;
        const double size = std::sqrt(axis.x * axis.x + axis.y * axis.y + axis.z * axis.z);
        // Key frames count angles clockwise: the quaternion is that of minus the angle.
        const double s = std::sin(-0.5 * frame.angle) / size;
        station.rotation = {axis.x * s, axis.y * s, axis.z * s, std::cos(-0.5 * frame.angle)};
    }
    return station;
}

Affine Motion::place(const Station& station) {
    const bool turned = station.rotation != std::array<double, 4>{0, 0, 0, 1};
    const Matrix3 m = turned ? multiply(toMatrix(station.rotation), station.shape) : station.shape;
    const auto f = [](double value) { return static_cast<float>(value); };
    return {{f(m[0]), f(m[3]), f(m[6])},
            {f(m[1]), f(m[4]), f(m[7])},
            {f(m[2]), f(m[5]), f(m[8])},
            {f(station.position[0]), f(station.position[1]), f(station.position[2])}};
}

Motion::Motion(std::span<const Velmar::KeyFrame> frames, const Matrix3& base, std::string& complaint) {
    complaint.clear();
    if (frames.empty()) {
        rest = place(makeStation(Velmar::KeyFrame{}, base));
        return;
    }
    rest = place(makeStation(frames[0], base));
    bool moves = false;
    for (const Velmar::KeyFrame& frame : frames.subspan(1)) {
        Velmar::KeyFrame same_time = frame;
        same_time.time = frames[0].time;
        moves = moves || !(same_time == frames[0]);
    }
    if (!moves) return;
    bool increasing = true;
    for (std::size_t i = 1; i < frames.size(); ++i)
        increasing = increasing && frames[i - 1].time < frames[i].time;
    if (!increasing || !(frames.front().time <= 0.0) || !(frames.back().time >= 1.0)) {
        complaint = "its key frames don't cover the exposure from 0 to 1 in increasing order";
        return;
    }
    for (const Velmar::KeyFrame& frame : frames)
        stations.push_back(makeStation(frame, base));
    // Neighbours on one half of the sphere of quaternions, so that mixes take the short way.
    for (std::size_t i = 1; i < stations.size(); ++i)
        if (dotOf(stations[i - 1].rotation, stations[i].rotation) < 0.0)
            for (double& component : stations[i].rotation)
                component = -component;
}

Affine Motion::at(double time) const {
    if (stations.empty()) return rest;
    std::size_t after = 1;
    while (after + 1 < stations.size() && stations[after].time < time)
        ++after;
    const Station& a = stations[after - 1];
    const Station& b = stations[after];
    const double t = std::min(std::max((time - a.time) / (b.time - a.time), 0.0), 1.0);
    Station mixed;
    for (std::size_t i = 0; i < 9; ++i)
        mixed.shape[i] = (1 - t) * a.shape[i] + t * b.shape[i];
    for (std::size_t i = 0; i < 3; ++i)
        mixed.position[i] = (1 - t) * a.position[i] + t * b.position[i];
    // Spherical interpolation, so that a rotation has a constant speed (Shoemake, "Animating Rotation with Quaternion
    // Curves", SIGGRAPH 1985).
    const double cosine = std::min(dotOf(a.rotation, b.rotation), 1.0);
    const double angle = std::acos(cosine);
    const double wa = cosine > 0.9999999 ? 1 - t : std::sin((1 - t) * angle) / std::sin(angle);
    const double wb = cosine > 0.9999999 ? t : std::sin(t * angle) / std::sin(angle);
    for (std::size_t i = 0; i < 4; ++i)
        mixed.rotation[i] = wa * a.rotation[i] + wb * b.rotation[i];
    const double size = std::sqrt(dotOf(mixed.rotation, mixed.rotation));
    for (double& component : mixed.rotation)
        component /= size;
    return place(mixed);
}

unsigned Motion::countSegments() const {
    if (stations.empty()) return 1;
    constexpr unsigned max_segments = 128;
    // Arcs of 1/64 turn: the chord is then closer than 0.13 % of the radius.
    double finest = 1.0;
    for (std::size_t i = 1; i < stations.size(); ++i) {
        const double cosine = std::min(std::abs(dotOf(stations[i - 1].rotation, stations[i].rotation)), 1.0);
        const double arcs = std::max(1.0, std::ceil(2 * std::acos(cosine) * 64 / 6.283185307179586));
        finest = std::max(finest, arcs / (stations[i].time - stations[i - 1].time));
    }
    const auto least = static_cast<unsigned>(std::min(std::ceil(finest), double{max_segments}));
    // Ends of segments on every key frame, where that is possible.
    for (unsigned count = least; count <= max_segments; ++count) {
        bool fits = true;
        for (const Station& station : stations) {
            if (station.time <= 0.0 || station.time >= 1.0) continue;
            const double end = station.time * count;
            fits = fits && std::abs(end - std::round(end)) < 1e-6;
        }
        if (fits) return count;
    }
    return max_segments;
}

} // namespace Preview
