#include "scene/nodes/TransformPath.h"

#include "velmarexceptions.h"

#include "tests/support/Frames.h"
#include "tests/support/MotionReference.h"
#include "tests/support/Throws.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace TransformPathTests {

using namespace Velmar;
using TestSupport::aboutZ;
using TestSupport::asVector;
using TestSupport::diagonal;
using TestSupport::distance;
using TestSupport::frameAt;
using TestSupport::Frames;
using TestSupport::fromEigen;
using TestSupport::identityMatrix;
using TestSupport::MotionReference;
using TestSupport::point;
using TestSupport::Random;
using TestSupport::toEigen;

namespace {

constexpr Vec4f no_rotation{0, 0, 0, 1};
constexpr double nan_time = std::numeric_limits<double>::quiet_NaN();

void expectFailure(const Frames& frames, const std::string& message, const Matrix4f& base = identityMatrix()) {
    TransformPath path;
    EXPECT_EQ(TestSupport::messageOf<TransformPathExcep>([&] { path.build(base, frames); }), message);
}

std::vector<double> keptTimes(const Frames& frames) {
    TransformPath path;
    path.build(identityMatrix(), frames);
    std::vector<double> times;
    for (const TransformFrame& frame : path.frames)
        times.push_back(frame.time);
    return times;
}

// ---- key frames become frames ---------------------------------------------------------------------------------------

TEST(ConvertKeyFrames, HalfAngleIsNegated) {
    TransformFrames frames;
    convertKeyFrames(asVector({{.axis = {0, 0, 1}, .angle = std::numbers::pi / 2}}), frames);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_LT((toEigen(frames[0].rotation).coeffs() - toEigen(aboutZ(-std::numbers::pi / 2)).coeffs()).norm(), 1e-6);
}

TEST(ConvertKeyFrames, AxisIsNormalised) {
    TransformFrames frames;
    convertKeyFrames(asVector({{.axis = {0, 30, 40}, .angle = 2}}), frames);
    const double s = std::sin(-1.0);
    EXPECT_FLOAT_EQ(frames[0].rotation.x, 0.0f);
    EXPECT_FLOAT_EQ(frames[0].rotation.y, static_cast<float>(0.6 * s));
    EXPECT_FLOAT_EQ(frames[0].rotation.z, static_cast<float>(0.8 * s));
    EXPECT_FLOAT_EQ(frames[0].rotation.w, static_cast<float>(std::cos(-1.0)));
}

TEST(ConvertKeyFrames, ZeroAxisGivesNotANumber) {
    TransformFrames frames;
    convertKeyFrames(asVector({{.axis = {0, 0, 0}, .angle = 1}, {.axis = {0, 0, 0}, .angle = 0}}), frames);
    for (const TransformFrame& frame : frames) {
        EXPECT_TRUE(std::isnan(frame.rotation.x));
        EXPECT_TRUE(std::isnan(frame.rotation.y));
        EXPECT_TRUE(std::isnan(frame.rotation.z));
        EXPECT_FALSE(std::isnan(frame.rotation.w));
    }
}

TEST(ConvertKeyFrames, TimeStaysDoubleAndTheRestBecomesFloat) {
    TransformFrames frames;
    convertKeyFrames(asVector({{{0.1, 0.2, 0.3}, 0.1, {0, 0, 1}, 0, {0.1, 2, 3, 4, 5, 6, 7, 8, 9}}}), frames);
    EXPECT_EQ(frames[0].time, 0.1);
    EXPECT_EQ(frames[0].translation, (Vec4f{0.1f, 0.2f, 0.3f, 0}));
    EXPECT_EQ(frames[0].S, (Matrix4f{{0.1f, 4, 7, 0, 2, 5, 8, 0, 3, 6, 9, 0, 0, 0, 0, 1}}));
}

TEST(ConvertKeyFrames, KeepsOrderAndDropsWhatWasThere) {
    TransformFrames frames;
    convertKeyFrames(asVector({{.time = 3}, {.time = 1}, {.time = 2}}), frames);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[0].time, 3.0);
    EXPECT_EQ(frames[1].time, 1.0);
    EXPECT_EQ(frames[2].time, 2.0);
    convertKeyFrames(asVector({}), frames);
    EXPECT_TRUE(frames.empty());
}

TEST(TransformFrames, UpToFourLieInTheObject) {
    TransformFrames frames;
    const auto liesInside = [&frames] {
        const auto* const begin = reinterpret_cast<const char*>(&frames);
        const auto* const data = reinterpret_cast<const char*>(frames.data());
        return data >= begin && data < begin + sizeof frames;
    };
    convertKeyFrames(asVector(std::vector<KeyFrame>(4)), frames);
    EXPECT_TRUE(liesInside());
    convertKeyFrames(asVector(std::vector<KeyFrame>(5)), frames);
    EXPECT_FALSE(liesInside());
    ASSERT_EQ(frames.size(), 5u);
}

TEST(TransformFrames, AreAlignedWhereverTheyLie) {
    for (std::size_t count = 0; count < 40; ++count) {
        TransformFrames frames;
        frames.reset(count);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(frames.data()) % 16, 0u) << count << " frames";
    }
}

TEST(TransformFrames, CountThatWouldWrapIsABadAllocation) {
    TransformFrames frames;
    EXPECT_THROW(frames.reset(std::numeric_limits<std::size_t>::max() / sizeof(TransformFrame) + 2), BadAlloc);
    EXPECT_TRUE(frames.empty());
}

// ---- what is refused
// --------------------------------------------------------------------------------------------------

TEST(TransformPath, NoFramesAreRefusedBeforeTheBaseIsLookedAt) {
    expectFailure({}, "Must be at least one frame.", diagonal(1, 0, 1));
}

TEST(TransformPath, SingularBaseIsRefusedBeforeTheFramesAreLookedAt) {
    expectFailure({frameAt(0.0, 0), frameAt(0.5, 1)}, "base transformation matrix is not invertible",
                  diagonal(1, 0, 1));
}

TEST(TransformPath, SingularSOfAPathThatStaysIsRefused) {
    TransformFrame frame = frameAt(0.0, 0);
    frame.S = diagonal(1, 1, 0);
    expectFailure({frame}, "frame 0 S matrix is not invertible");
}

TEST(TransformPath, FirstFrameMustBeAtTheStartOrBefore) {
    expectFailure({frameAt(0.1, 0), frameAt(0.5, 1)}, "First frame must have time <= 0.0");
    expectFailure({frameAt(nan_time, 0), frameAt(1.0, 1)}, "First frame must have time <= 0.0");
}

TEST(TransformPath, LastFrameMustBeAtTheEndOrAfter) {
    expectFailure({frameAt(0.0, 0), frameAt(0.5, 1)}, "Last frame must have time >= 1.0");
    expectFailure({frameAt(0.0, 0), frameAt(0.0, 1), frameAt(0.5, 1)}, "Last frame must have time >= 1.0");
}

TEST(TransformPath, TimesMustRise) {
    const std::string message = "Frame times must be strictly increasing.";
    expectFailure({frameAt(0.0, 0), frameAt(0.5, 1), frameAt(0.5, 2), frameAt(1.0, 3)}, message);
    expectFailure({frameAt(0.0, 0), frameAt(2.0, 1), frameAt(1.0, 2)}, message);
    expectFailure({frameAt(-1.0, 0), frameAt(-1.0, 1), frameAt(1.0, 2)}, message);
}

TEST(TransformPath, SingularSOfAPathWithoutRotationIsRefused) {
    TransformFrame singular = frameAt(1.0, 0);
    singular.S = diagonal(1, 1, 0);
    expectFailure({frameAt(0.0, 0), singular}, "polarDecomposition failed");
}

TEST(TransformPath, SingularSOfAPathWithRotationIsTaken) {
    TransformFrame singular = frameAt(1.0, 0, 1.0);
    singular.S = diagonal(1, 1, 0);
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0), singular});
    EXPECT_EQ(path.frames[1].S, diagonal(1, 1, 0));
}

TEST(TransformPath, TimeThatIsNotANumberPassesTheComparisons) {
    EXPECT_EQ(keptTimes({frameAt(0.0, 0), frameAt(0.5, 1), frameAt(nan_time, 2)}).size(), 3u);
    EXPECT_EQ(keptTimes({frameAt(0.0, 0), frameAt(nan_time, 1), frameAt(1.0, 2)}).size(), 3u);
    EXPECT_EQ(keptTimes({frameAt(-1.0, 0), frameAt(nan_time, 1), frameAt(3.0, 2)}).size(), 3u);
    EXPECT_EQ(keptTimes({frameAt(0.0, 0), frameAt(nan_time, 1)}).size(), 2u);
}

// ---- paths that stay
// --------------------------------------------------------------------------------------------------

TEST(TransformPath, OneFrameAtAnyTimeStays) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.7, 3)});
    EXPECT_TRUE(path.is_static);
    EXPECT_TRUE(path.frames.empty());
    EXPECT_EQ(path.local_to_world.column(3), (Vec4f{3, 0, 0, 1}));
}

TEST(TransformPath, FramesThatDifferInTimeOnlyStay) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.5, 3), frameAt(0.2, 3)});
    EXPECT_TRUE(path.is_static);
    EXPECT_TRUE(path.frames.empty());
}

TEST(TransformPath, AnyDifferenceMakesItMove) {
    TransformFrame last[3] = {frameAt(1.0, 0), frameAt(1.0, 0), frameAt(1.0, 0)};
    last[0].translation.w = 1e-30f;
    last[1].rotation.x = 1e-30f;
    last[2].S.e[3] = 1e-30f;
    for (const TransformFrame& frame : last) {
        TransformPath path;
        path.build(identityMatrix(), Frames{frameAt(0.0, 0), frameAt(0.5, 0), frame});
        EXPECT_FALSE(path.is_static);
        EXPECT_EQ(path.frames.size(), 3u);
    }
}

TEST(TransformPath, ZerosOfEitherSignAreEqual) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0.0f), frameAt(0.0, -0.0f)});
    EXPECT_TRUE(path.is_static);
}

TEST(TransformPath, TranslationOfTheBaseIsLostWhenItStays) {
    Matrix4f base = diagonal(2, 2, 2);
    base.setColumn(3, {100, 200, 300, 1});
    TransformPath path;
    path.build(base, Frames{frameAt(0.0, 3)});
    EXPECT_EQ(path.local_to_world, (Matrix4f{{2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 3, 0, 0, 1}}));
}

TEST(TransformPath, WorldToLocalMultipliesInItsOwnOrder) {
    // With a stretch that doesn't commute with the base, the inverse of the product would be another matrix.
    TransformFrame frame = frameAt(0.0, 8);
    frame.S = diagonal(2, 4, 1);
    const Matrix4f swap_x_and_y{{0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    TransformPath path;
    path.build(swap_x_and_y, Frames{frame});
    EXPECT_EQ(path.local_to_world, (Matrix4f{{0, 4, 0, 0, 2, 0, 0, 0, 0, 0, 1, 0, 8, 0, 0, 1}}));
    EXPECT_EQ(path.world_to_local, (Matrix4f{{0, 0.25f, 0, 0, 0.5f, 0, 0, 0, 0, 0, 1, 0, 0, -2, 0, 1}}));
}

TEST(TransformPath, DeterminantsAreAbsolute) {
    TransformPath path;
    path.build(diagonal(-2, 2, 2), Frames{frameAt(0.0, 0)});
    EXPECT_EQ(path.local_to_world_det, 8.0f);
    EXPECT_EQ(path.world_to_local_det, 0.125f);
}

TEST(TransformPath, UniformScaleAllowsALittleAndNoMirror) {
    const auto built = [](const Matrix4f& base) {
        TransformPath path;
        path.build(base, Frames{frameAt(0.0, 0, 0.3)});
        return path.is_uniform_scale;
    };
    EXPECT_TRUE(built(diagonal(3, 3, 3)));
    // It is the squared lengths that may differ by a ten-thousandth.
    EXPECT_TRUE(built(diagonal(1, 1, 1.000048f)));
    EXPECT_FALSE(built(diagonal(1, 1, 1.000052f)));
    EXPECT_FALSE(built(diagonal(1, 1, 2)));
    EXPECT_FALSE(built(diagonal(-3, 3, 3)));
}

TEST(TransformPath, MaxScaleIsTheLongestColumn) {
    TransformPath path;
    path.build(diagonal(2, -5, 3), Frames{frameAt(0.0, 0)});
    EXPECT_EQ(path.max_scale, 5.0f);
}

TEST(TransformPath, PathsThatStayAgreeWithDoublePrecision) {
    Random random(20);
    for (int i = 0; i < 3000; ++i) {
        const Eigen::Vector3d pos = random.vector(20);
        const Eigen::Vector3d axis = random.direction() * random.between(0.1, 10);
        const Eigen::Matrix3d S = random.stretch(0.3, 3);
        const Eigen::Matrix3d base = random.rotation() * random.stretch(0.3, 3);
        KeyFrame key{{pos.x(), pos.y(), pos.z()}, 0.7, {axis.x(), axis.y(), axis.z()}, random.between(-7, 7), {}};
        Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(key.S) = S;

        TransformFrames frames;
        convertKeyFrames(asVector({key}), frames);
        TransformPath path;
        path.build(fromEigen(base), frames);

        const Eigen::Matrix3d R = Eigen::AngleAxisd(-key.angle, axis.normalized()).toRotationMatrix();
        Eigen::Matrix4d to_world = Eigen::Matrix4d::Identity();
        to_world.topLeftCorner<3, 3>() = R * S * base;
        to_world.col(3).head<3>() = pos;
        EXPECT_LT(distance(toEigen(path.local_to_world), to_world), 2e-5);
        Eigen::Matrix4d to_local = Eigen::Matrix4d::Identity();
        to_local.topLeftCorner<3, 3>() = S.inverse() * base.inverse() * R.inverse();
        to_local.col(3).head<3>() = -(to_local.topLeftCorner<3, 3>() * pos);
        EXPECT_LT(distance(toEigen(path.world_to_local), to_local), 1e-3);
        const double det = std::abs((S * base).determinant());
        EXPECT_NEAR(path.local_to_world_det, det, 1e-4 * det);
        EXPECT_NEAR(path.world_to_local_det, 1 / det, 1e-4 / det);
        EXPECT_NEAR(path.max_scale, (R * S * base).colwise().norm().maxCoeff(), 1e-4);

        const Eigen::Vector3d low = random.vector(5);
        const TestSupport::BoxD box{low, low + random.vector(5).cwiseAbs()};
        const Box4f bounds = path.getBounds(point(box.min), point(box.max));
        const TestSupport::BoxD expected = TestSupport::boxThrough(R * S * base, pos, box);
        EXPECT_LT((toEigen(bounds.min).vec() - expected.min).norm(), 5e-4);
        EXPECT_LT((toEigen(bounds.max).vec() - expected.max).norm(), 5e-4);
    }
}

TEST(TransformPath, BuildingAgainDropsTheFramesOfBefore) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0), frameAt(1.0, 2)});
    ASSERT_EQ(path.frames.size(), 2u);
    path.build(identityMatrix(), Frames{frameAt(0.0, 0)});
    EXPECT_TRUE(path.frames.empty());
    EXPECT_TRUE(path.is_static);
}

// ---- paths that move: the frames that are kept
// --------------------------------------------------------------------------

TEST(TransformPath, FramesAtStartAndEndStayAsTheyAre) {
    const Frames frames{frameAt(0.0, 0, 0.5), frameAt(1.0, 2, 1.0)};
    TransformPath path;
    path.build(identityMatrix(), frames);
    ASSERT_EQ(path.frames.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(path.frames[i].translation, frames[i].translation);
        EXPECT_EQ(path.frames[i].rotation, frames[i].rotation);
        EXPECT_EQ(path.frames[i].S, frames[i].S);
        EXPECT_EQ(path.frames[i].time, frames[i].time);
    }
}

TEST(TransformPath, MovingPathHasTheMarkersOfOne) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(0.0, 0)});
    EXPECT_TRUE(path.is_static && path.is_uniform_scale);
    path.build(identityMatrix(), Frames{frameAt(0.0, 0), frameAt(1.0, 2)});
    EXPECT_FALSE(path.is_static);
    EXPECT_FALSE(path.is_uniform_scale);
    EXPECT_EQ(path.max_scale, -666.0f);
}

TEST(TransformPath, FramesOutsideTheExposureAreTrimmed) {
    TransformPath path;
    path.build(identityMatrix(),
               Frames{frameAt(-1.0, 10, 1), frameAt(0.0, 20, 2), frameAt(1.0, 30, 3), frameAt(2.0, 40, 4)});
    ASSERT_EQ(path.frames.size(), 2u);
    EXPECT_EQ(path.frames[0].translation, (Vec4f{20, 0, 0, 0}));
    EXPECT_EQ(path.frames[0].rotation, aboutZ(2));
    EXPECT_EQ(path.frames[0].time, 0.0);
    EXPECT_EQ(path.frames[1].translation, (Vec4f{30, 0, 0, 0}));
    EXPECT_EQ(path.frames[1].rotation, aboutZ(3));
    EXPECT_EQ(path.frames[1].time, 1.0);
}

TEST(TransformPath, OnlyTheFramesNextToTheExposureAreKept) {
    EXPECT_EQ(
        keptTimes({frameAt(-3, 1), frameAt(-2, 2), frameAt(-1, 3), frameAt(0.5, 4), frameAt(2, 5), frameAt(3, 6)}),
        (std::vector<double>{0, 0.5, 1}));
    EXPECT_EQ(keptTimes({frameAt(-3, 1), frameAt(5, 6)}), (std::vector<double>{0, 1}));
    EXPECT_EQ(
        keptTimes({frameAt(0, 1), frameAt(0.25, 2), frameAt(0.5, 3), frameAt(0.75, 4), frameAt(1, 5), frameAt(9, 6)}),
        (std::vector<double>{0, 0.25, 0.5, 0.75, 1}));
}

TEST(TransformPath, StartIsClippedHalfWay) {
    TransformFrame from = frameAt(-1.0, 10, 0.4);
    from.S = diagonal(1, 2, 3);
    TransformFrame to = frameAt(1.0, 30, 1.2);
    to.S = diagonal(3, 4, 7);
    TransformPath path;
    path.build(identityMatrix(), Frames{from, to});
    ASSERT_EQ(path.frames.size(), 2u);
    EXPECT_EQ(path.frames[0].time, 0.0);
    EXPECT_EQ(path.frames[0].translation, (Vec4f{20, 0, 0, 0}));
    EXPECT_EQ(path.frames[0].S, diagonal(2, 3, 5));
    EXPECT_LT((toEigen(path.frames[0].rotation).coeffs() - toEigen(aboutZ(0.8)).coeffs()).norm(), 1e-6);
    EXPECT_EQ(path.frames[1].rotation, to.rotation);
    EXPECT_EQ(path.frames[1].time, 1.0);
}

TEST(TransformPath, EndIsClippedFromWhatTheStartHasLeft) {
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(-1.0, 0, 0.0), frameAt(3.0, 40, 1.6)});
    ASSERT_EQ(path.frames.size(), 2u);
    EXPECT_EQ(path.frames[0].translation, (Vec4f{10, 0, 0, 0}));
    EXPECT_EQ(path.frames[1].time, 1.0);
    EXPECT_FLOAT_EQ(path.frames[1].translation.x, 20.0f);
    EXPECT_LT((toEigen(path.frames[0].rotation).coeffs() - toEigen(aboutZ(0.4)).coeffs()).norm(), 1e-6);
    EXPECT_LT((toEigen(path.frames[1].rotation).coeffs() - toEigen(aboutZ(0.8)).coeffs()).norm(), 1e-6);
}

TEST(TransformPath, ClippingFollowsTheArcEvenly) {
    // A straight line between the quaternions would give 0.94 instead of a tenth of the 2.8 radians and more.
    TransformPath path;
    path.build(identityMatrix(), Frames{frameAt(-1.0, 0, 0.0), frameAt(9.0, 40, 2.8)});
    EXPECT_LT((toEigen(path.frames[0].rotation).coeffs() - toEigen(aboutZ(0.28)).coeffs()).norm(), 1e-6);
}

TEST(TransformPath, BaseGoesIntoSWhenAnyFrameIsTurned) {
    const Matrix4f base{{0, 1, 0, 0, -2, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    TransformFrame last = frameAt(1.0, 0, 0.5);
    last.S = diagonal(1, 3, 1);
    TransformPath path;
    path.build(base, Frames{frameAt(0.0, 0), last});
    EXPECT_EQ(path.frames[0].S, base);
    EXPECT_EQ(path.frames[0].rotation, no_rotation);
    EXPECT_EQ(path.frames[1].S, (Matrix4f{{0, 3, 0, 0, -2, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}));
    EXPECT_EQ(path.frames[1].rotation, last.rotation);
}

TEST(TransformPath, RotationOfTheBaseIsSplitOffWhenNoFrameIsTurned) {
    Matrix4f base;
    quaternionToMatrix(aboutZ(1.0), base);
    mul(base, diagonal(2, 3, 4), base);
    TransformPath path;
    path.build(base, Frames{frameAt(0.0, 0), frameAt(1.0, 5)});
    for (const TransformFrame& frame : path.frames) {
        EXPECT_LT((toEigen(frame.rotation).coeffs() - toEigen(aboutZ(1.0)).coeffs()).norm(), 1e-6);
        EXPECT_LT(distance(toEigen(frame.S), toEigen(diagonal(2, 3, 4))), 1e-5);
    }
}

TEST(TransformPath, FrameThatWasTrimmedDoesNotCountAsTurned) {
    TransformPath path;
    path.build(diagonal(-2, -2, 2), Frames{frameAt(-1.0, 0, 1.0), frameAt(0.0, 0), frameAt(1.0, 5)});
    EXPECT_EQ(path.frames[0].S, diagonal(2, 2, 2));
    EXPECT_EQ(path.frames[0].rotation, (Vec4f{0, 0, 1, 0}));
}

} // namespace

} // namespace TransformPathTests
