#pragma once

#include "scene/nodes/Matrix4f.h"
#include "scene/nodes/TransformPath.h"

#include <Eigen/Dense>
#include <array>
#include <random>
#include <vector>

/// Motion in double precision by another library's rotations, quaternions and decompositions, to hold ours against.
namespace TestSupport {

inline Eigen::Matrix4d toEigen(const Velmar::Matrix4f& m) {
    return Eigen::Map<const Eigen::Matrix4f>(m.e).cast<double>();
}

inline Eigen::Quaterniond toEigen(const Velmar::Vec4f& q) {
    return {double{q.w}, double{q.x}, double{q.y}, double{q.z}};
}

inline Velmar::Matrix4f fromEigen(const Eigen::Matrix4d& m) {
    Velmar::Matrix4f result;
    Eigen::Map<Eigen::Matrix4f>(result.e) = m.cast<float>();
    return result;
}

inline Velmar::Matrix4f fromEigen(const Eigen::Matrix3d& m) {
    Eigen::Matrix4d whole = Eigen::Matrix4d::Identity();
    whole.topLeftCorner<3, 3>() = m;
    return fromEigen(whole);
}

inline Velmar::Vec4f fromEigen(const Eigen::Quaterniond& q) {
    return {static_cast<float>(q.x()), static_cast<float>(q.y()), static_cast<float>(q.z()), static_cast<float>(q.w())};
}

inline Velmar::Vec4f point(const Eigen::Vector3d& v) {
    return {static_cast<float>(v.x()), static_cast<float>(v.y()), static_cast<float>(v.z()), 1.0f};
}

/// The same sequence from the same seed on every system: the standard distributions aren't pinned.
class Random {
  public:
    explicit Random(std::uint32_t seed) : engine(seed) {}

    double between(double low, double high) {
        return low + (high - low) * static_cast<double>(engine()) / 4294967296.0;
    }
    bool oneIn(std::uint32_t n) { return engine() % n == 0; }

    Eigen::Vector3d vector(double largest) {
        const double x = between(-largest, largest);
        const double y = between(-largest, largest);
        return {x, y, between(-largest, largest)};
    }

    Eigen::Vector3d direction() {
        for (;;) {
            const Eigen::Vector3d v = vector(1.0);
            if (v.norm() > 0.1 && v.norm() < 1.0) return v.normalized();
        }
    }

    Eigen::Quaterniond rotation() {
        const double angle = between(-3.1, 3.1);
        return Eigen::Quaterniond(Eigen::AngleAxisd(angle, direction()));
    }

    /// Well away from singular: stretched along axes that are turned at random, and mirrored now and then.
    Eigen::Matrix3d stretch(double smallest, double greatest) {
        const Eigen::Matrix3d turn = rotation().toRotationMatrix();
        Eigen::Vector3d factors;
        for (int i = 0; i < 3; ++i)
            factors[i] = between(smallest, greatest);
        return turn * factors.asDiagonal() * turn.transpose();
    }

  private:
    std::mt19937 engine;
};

struct BoxD {
    Eigen::Vector3d min;
    Eigen::Vector3d max;
};

/// The box of one position of the body, from its centre and half-diagonal rather than corner by corner.
inline BoxD boxThrough(const Eigen::Matrix3d& linear, const Eigen::Vector3d& translation, const BoxD& box) {
    const Eigen::Vector3d centre = linear * ((box.min + box.max) / 2) + translation;
    const Eigen::Vector3d half = linear.cwiseAbs() * ((box.max - box.min) / 2);
    return {centre - half, centre + half};
}

inline void widen(BoxD& bounds, const BoxD& by) {
    bounds.min = bounds.min.cwiseMin(by.min);
    bounds.max = bounds.max.cwiseMax(by.max);
}

/// A moving body. Between two frames translation and stretch change linearly and the quaternion moves straight from one
/// to the other, by the shorter way, and is brought back to unit length.
class MotionReference {
  public:
    /// `keyframes` must pass the checks of a path that moves.
    MotionReference(const std::vector<Velmar::KeyFrame>& keyframes, const Eigen::Matrix3d& base) {
        for (const Velmar::KeyFrame& key : keyframes)
            frames.push_back(toFrame(key));
        cutToExposure();
        bool rotates = false;
        for (const Frame& frame : frames)
            rotates = rotates || frame.rotation.vec().norm() != 0.0;
        for (Frame& frame : frames) {
            frame.stretch = frame.stretch * base;
            if (!rotates) splitOffRotation(frame);
        }
    }

    struct Frame {
        Eigen::Vector3d translation;
        Eigen::Quaterniond rotation;
        Eigen::Matrix3d stretch;
        double time;
    };

    std::vector<Frame> frames;

    /// How far the nearest pair of neighbours is from having two equally short ways between their rotations.
    double leastAmbiguity() const {
        double least = 1.0;
        for (std::size_t i = 1; i < frames.size(); ++i)
            least = std::min(least, std::abs(frames[i - 1].rotation.dot(frames[i].rotation)));
        return least;
    }

    /// Around everything that the box passes, from `samples` places between each two frames.
    BoxD bounds(const BoxD& box, int samples) const {
        BoxD result = boxThrough(linear(frames[0]), frames[0].translation, box);
        for (std::size_t i = 1; i < frames.size(); ++i) {
            const Frame& a = frames[i - 1];
            const Frame& b = frames[i];
            const double sign = a.rotation.dot(b.rotation) < 0 ? -1 : 1;
            for (int j = 1; j <= samples; ++j) {
                const double t = double(j) / samples;
                Frame mixed;
                mixed.rotation.coeffs() = (1 - t) * a.rotation.coeffs() + t * sign * b.rotation.coeffs();
                mixed.rotation.normalize();
                mixed.stretch = (1 - t) * a.stretch + t * b.stretch;
                widen(result, boxThrough(linear(mixed), (1 - t) * a.translation + t * b.translation, box));
            }
        }
        return result;
    }

    static Frame toFrame(const Velmar::KeyFrame& key) {
        const Eigen::Vector3d axis(key.axis.x, key.axis.y, key.axis.z);
        Frame frame;
        frame.translation = {key.pos.x, key.pos.y, key.pos.z};
        frame.rotation = Eigen::AngleAxisd(-key.angle, axis.normalized());
        frame.stretch = Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(key.S);
        frame.time = key.time;
        return frame;
    }

  private:
    static Eigen::Matrix3d linear(const Frame& frame) { return frame.rotation.toRotationMatrix() * frame.stretch; }

    static Frame at(const Frame& a, const Frame& b, double time) {
        const double t = (time - a.time) / (b.time - a.time);
        return {(1 - t) * a.translation + t * b.translation, a.rotation.slerp(t, b.rotation),
                (1 - t) * a.stretch + t * b.stretch, time};
    }

    void cutToExposure() {
        std::vector<Frame> kept;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            const double time = frames[i].time;
            if (i > 0 && frames[i - 1].time < 0 && time > 0) kept.push_back(at(frames[i - 1], frames[i], 0));
            // The end is cut from what the start has left, which lies on the same way.
            if (i > 0 && frames[i - 1].time < 1 && time > 1)
                kept.push_back(at(kept.empty() ? frames[i - 1] : kept.back(), frames[i], 1));
            if (time >= 0 && time <= 1) kept.push_back(frames[i]);
        }
        frames = kept;
    }

    static void splitOffRotation(Frame& frame) {
        const Eigen::JacobiSVD<Eigen::Matrix3d> svd(frame.stretch, Eigen::ComputeFullU | Eigen::ComputeFullV);
        Eigen::Matrix3d rotation = svd.matrixU() * svd.matrixV().transpose();
        if (rotation.determinant() < 0) rotation = -rotation;
        frame.stretch = rotation.transpose() * frame.stretch;
        frame.rotation = Eigen::Quaterniond(rotation);
    }
};

/// The greatest difference of two entries.
inline double distance(const Eigen::Matrix4d& a, const Eigen::Matrix4d& b) {
    return (a - b).cwiseAbs().maxCoeff();
}

} // namespace TestSupport
