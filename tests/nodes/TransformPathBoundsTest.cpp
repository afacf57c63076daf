#include "velmarexceptions.h"

#include "scene/nodes/TransformPath.h"
#include "tests/support/Frames.h"
#include "tests/support/MotionReference.h"
#include "tests/support/Throws.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <vector>

namespace TransformPathBoundsTests {

using namespace Velmar;
using TestSupport::asVector;
using TestSupport::diagonal;
using TestSupport::frameAt;
using TestSupport::Frames;
using TestSupport::fromEigen;
using TestSupport::identityMatrix;
using TestSupport::MotionReference;
using TestSupport::point;
using TestSupport::Random;
using TestSupport::toEigen;

namespace {

constexpr Vec4f origin{0, 0, 0, 1};

TEST(TransformPathBounds, StraightWayGetsTheBothEndsAndTheMargin) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0), frameAt(1.0, 2)});
    const Box4f bounds = path.getBounds({-1, -1, -1, 1}, {1, 1, 1, 1});
    EXPECT_FLOAT_EQ(bounds.min.x, -1.006f);
    EXPECT_FLOAT_EQ(bounds.max.x, 3.006f);
    EXPECT_FLOAT_EQ(bounds.min.y, -1.003f);
    EXPECT_FLOAT_EQ(bounds.max.y, 1.003f);
    EXPECT_FLOAT_EQ(bounds.min.z, -1.003f);
    EXPECT_FLOAT_EQ(bounds.max.z, 1.003f);
    EXPECT_EQ(bounds.min.w, 1.0f);
    EXPECT_EQ(bounds.max.w, 1.0f);
}

TEST(TransformPathBounds, MarginOfAPointIsNeverNothing) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0), frameAt(1.0, 2)});
    const Box4f bounds = path.getBounds(origin, origin);
    EXPECT_EQ(bounds.min.y, -0.00001f);
    EXPECT_EQ(bounds.max.y, 0.00001f);
}

TEST(TransformPathBounds, PathThatStaysGetsNoMargin) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 2)});
    const Box4f bounds = path.getBounds({-1, -1, -1, 1}, {1, 1, 1, 1});
    EXPECT_EQ(bounds.min, (Vec4f{1, -1, -1, 1}));
    EXPECT_EQ(bounds.max, (Vec4f{3, 1, 1, 1}));
}

/// The greatest x of a point at x = 1000 that turns about z from -half to +half, without the margin.
double furthestReach(double half) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0, -half), frameAt(1.0, 0, half)});
    const Box4f bounds = path.getBounds({1000, 0, 0, 1}, {1000, 0, 0, 1});
    return bounds.max.x;
}

TEST(TransformPathBounds, SamplesBetweenBeginAtTheFirstStepOfAngle) {
    // Between the two quaternions lies the angle `half`; one step is pi / 256 of it.
    const double step = std::numbers::pi / 256;
    EXPECT_NEAR(furthestReach(0.9 * step), 1000 * std::cos(0.9 * step), 2e-3);
    // Two steps have a sample in the middle, where the point is furthest out.
    EXPECT_NEAR(furthestReach(1.1 * step), 1000, 2e-3);
    // Three have none there: the nearest lie a third of half the way off.
    EXPECT_NEAR(furthestReach(2.9 * step),
                1000 * std::cos(2.9 * step / 3) + 0.0015 * 1000 * (std::cos(2.9 * step / 3) - std::cos(2.9 * step)),
                2e-3);
}

TEST(TransformPathBounds, SamplesGoStraightBetweenTheQuaternions) {
    // Between the quaternions lies a right angle less a little, which gives 127 steps. The point falls back by as much
    // as the body drives on, so that the pairing of turn and drive shows.
    const double half = 127.0 / 256 * std::numbers::pi - 1e-3;
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0, 0), frameAt(1.0, 100, 2 * half)});
    const Box4f bounds = path.getBounds({0, -40, 0, 1}, {0, -40, 0, 1});
    double greatest = 0;
    for (int j = 0; j <= 127; ++j) {
        const double t = j / 127.0;
        const double z = t * std::sin(half);
        const double w = (1 - t) + t * std::cos(half);
        const double angle = 2 * std::atan2(z, w);
        greatest = std::max(greatest, 100 * t + 40 * std::sin(angle));
    }
    const double lowest = 0;
    EXPECT_NEAR(bounds.max.x, greatest + 0.0015 * (greatest - lowest), 1e-3);
}

TEST(TransformPathBounds, TurnsTheShorterWay) {
    TransformFrame last = frameAt(1.0, 0, 0.5);
    last.rotation = -last.rotation;
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0), last});
    const Box4f bounds = path.getBounds({1, 0, 0, 1}, {1, 0, 0, 1});
    EXPECT_GT(bounds.min.x, 0.87f);
}

TEST(TransformPathBounds, NotANumberInARotationIsSurvived) {
    TransformFrames frames;
    convertKeyFrames(asVector({{.time = 0, .axis = {0, 0, 0}, .angle = 1}, {.pos = {1, 0, 0}, .time = 1}}), frames);
    TransformPath path;
    path.build(identityMatrix(), frames);
    EXPECT_FALSE(path.is_static);
    EXPECT_TRUE(std::isnan(path.getBounds({-1, -1, -1, 1}, {1, 1, 1, 1}).min.x));
}

TEST(TransformPathBounds, TimesWithoutEndAreSurvived) {
    const double endless = std::numeric_limits<double>::infinity();
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(-endless, 0, 0.1), frameAt(endless, 1, 0.2)});
    EXPECT_EQ(path.frames[0].time, 0.0);
    EXPECT_EQ(path.frames[1].time, 1.0);
    EXPECT_TRUE(std::isnan(path.getBounds(origin, origin).min.x));
}

enum class Turning { every_frame, base_only };

/// A path of two to six frames, some of which may lie outside the exposure.
std::vector<KeyFrame> randomKeyFrames(Random& random, Turning turning) {
    std::vector<KeyFrame> keyframes;
    double time = random.oneIn(2) ? 0.0 : -random.between(0.01, 2);
    for (;;) {
        const Eigen::Vector3d pos = random.vector(3);
        const Eigen::Vector3d axis = random.direction() * random.between(0.1, 10);
        KeyFrame key{{pos.x(), pos.y(), pos.z()}, time, {axis.x(), axis.y(), axis.z()}, 0.0, {}};
        if (turning == Turning::every_frame) key.angle = random.between(-3, 3);
        Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(key.S) = random.stretch(0.5, 2);
        keyframes.push_back(key);
        if (time >= 1.0 && keyframes.size() > 1 && random.oneIn(2)) return keyframes;
        time += random.between(0.05, 0.9);
        if (time < 1.0 && random.oneIn(4)) time = 1.0;
        if (time > 0.0 && keyframes.back().time < 0.0 && random.oneIn(4)) time = 0.0;
    }
}

/// Bounds of random moving bodies hold everything that the body passes and hardly more.
void compareWithReference(Turning turning, std::uint32_t seed, int paths) {
    Random random(seed);
    int compared = 0;
    for (int i = 0; i < paths; ++i) {
        const std::vector<KeyFrame> keyframes = randomKeyFrames(random, turning);
        const Eigen::Quaterniond turn = random.rotation();
        const Eigen::Matrix3d base = turn.toRotationMatrix() * random.stretch(0.5, 2);
        const MotionReference reference(keyframes, base);
        const Eigen::Vector3d centre = random.vector(0.5);
        const Eigen::Vector3d half = random.vector(1).cwiseAbs() + Eigen::Vector3d::Constant(0.2);
        const TestSupport::BoxD box{centre - half, centre + half};
        // Where both ways round are equally long, the last bit decides.
        if (reference.leastAmbiguity() < 1e-3) continue;
        ++compared;

        TransformFrames frames;
        convertKeyFrames(asVector(keyframes), frames);
        TransformPath path;
        path.build(fromEigen(base), frames);
        ASSERT_EQ(path.frames.size(), reference.frames.size());
        for (std::size_t f = 0; f < path.frames.size(); ++f)
            EXPECT_EQ(path.frames[f].time, reference.frames[f].time);

        const Box4f bounds = path.getBounds(point(box.min), point(box.max));
        const TestSupport::BoxD passed = reference.bounds(box, 500);
        const Eigen::Vector3d extent = passed.max - passed.min;
        for (int axis = 0; axis < 3; ++axis) {
            const double low = toEigen(bounds.min).vec()[axis];
            const double high = toEigen(bounds.max).vec()[axis];
            const double margin = 0.0015 * extent[axis] + 1e-4;
            EXPECT_LE(low, passed.min[axis]) << "path " << i << " axis " << axis;
            EXPECT_GE(high, passed.max[axis]) << "path " << i << " axis " << axis;
            EXPECT_GE(low, passed.min[axis] - margin) << "path " << i << " axis " << axis;
            EXPECT_LE(high, passed.max[axis] + margin) << "path " << i << " axis " << axis;
        }
    }
    EXPECT_GT(compared, paths * 9 / 10);
}

TEST(TransformPathBounds, TurningBodiesAreEnclosedClosely) {
    compareWithReference(Turning::every_frame, 21, 2000);
}

TEST(TransformPathBounds, BodiesTurnedByTheirBaseAreEnclosedClosely) {
    compareWithReference(Turning::base_only, 22, 2000);
}

TEST(BoundsAlongKeyFrames, GivesTheBoundsOfThePath) {
    const Box4f bounds =
        boundsAlongKeyFrames(asVector({{.pos = {5, 6, 7}}}), diagonal(2, 2, 2), {{-1, -1, -1, 1}, {1, 1, 1, 1}});
    EXPECT_EQ(bounds.min, (Vec4f{3, 4, 5, 1}));
    EXPECT_EQ(bounds.max, (Vec4f{7, 8, 9, 1}));
}

TEST(BoundsAlongKeyFrames, NoKeyFramesAreRefused) {
    EXPECT_EQ(TestSupport::messageOf<TransformPathExcep>([] {
                  boundsAlongKeyFrames(asVector({}), identityMatrix(), {origin, origin});
              }),
              "Must be at least one frame.");
}

} // namespace

} // namespace TransformPathBoundsTests
