#include "scene/nodes/Matrix4f.h"

#include "tests/support/MotionReference.h"
#include "tests/support/SpecialFloats.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

namespace Matrix4fTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

constexpr Vec4f w_only{0, 0, 0, 1};

/// Sixteen different entries: 1 to 16 in column-major order.
Matrix4f numbered() {
    Matrix4f m;
    for (int i = 0; i < 16; ++i)
        m.e[i] = static_cast<float>(i + 1);
    return m;
}

Matrix4f diagonal(float x, float y, float z) {
    return {{x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}};
}

Matrix4f randomAffine(Random& random) {
    Eigen::Matrix4d m = Eigen::Matrix4d::Identity();
    for (int column = 0; column < 4; ++column)
        m.col(column).head<3>() = random.vector(column == 3 ? 100.0 : 2.0);
    return fromEigen(m);
}

/// One step of the iteration that `orthogonalFactor` repeats.
Matrix4f newtonStep(const Matrix4f& m) {
    Matrix4f transposed;
    transpose(m, transposed);
    Matrix4f next;
    float det = 0.0f;
    EXPECT_TRUE(inverseUpperLeft(transposed, next, det));
    for (std::size_t i = 0; i < 12; ++i)
        next.e[i] = 0.5f * (next.e[i] + m.e[i]);
    for (std::size_t i = 12; i < 15; ++i)
        next.e[i] += m.e[i];
    return next;
}

TEST(Matrix4f, IdentityHasUnitColumns) {
    Matrix4f m = numbered();
    identity(m);
    EXPECT_EQ(m.column(0), (Vec4f{1, 0, 0, 0}));
    EXPECT_EQ(m.column(1), (Vec4f{0, 1, 0, 0}));
    EXPECT_EQ(m.column(2), (Vec4f{0, 0, 1, 0}));
    EXPECT_EQ(m.column(3), w_only);
}

TEST(Matrix4f, RowMajorThreeByThreeAndTranslationLandInColumns) {
    Matrix4f m;
    fromMatrix3AndTranslation({1, 2, 3, 4, 5, 6, 7, 8, 9}, {10, 11, 12}, m);
    EXPECT_EQ(m, (Matrix4f{{1, 4, 7, 0, 2, 5, 8, 0, 3, 6, 9, 0, 10, 11, 12, 1}}));
}

TEST(Matrix4f, ProductAppliesTheRightFactorFirst) {
    const Matrix4f a = diagonal(2, 3, 4);
    const Matrix4f b{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 10, 20, 30, 1}};
    Matrix4f product;
    mul(a, b, product);
    EXPECT_EQ(product.column(3), (Vec4f{20, 60, 120, 1}));
    mul(b, a, product);
    EXPECT_EQ(product.column(3), (Vec4f{10, 20, 30, 1}));
}

TEST(Matrix4f, ProductMayOverwriteAFactor) {
    Matrix4f expected;
    mul(numbered(), diagonal(2, 3, 4), expected);
    Matrix4f m = numbered();
    mul(m, diagonal(2, 3, 4), m);
    EXPECT_EQ(m, expected);
    m = diagonal(2, 3, 4);
    mul(numbered(), m, m);
    EXPECT_EQ(m, expected);
}

TEST(Matrix4f, ProductAgreesWithDoublePrecision) {
    Random random(1);
    for (int i = 0; i < 2000; ++i) {
        Matrix4f a = randomAffine(random);
        const Matrix4f b = randomAffine(random);
        a.e[3] = static_cast<float>(random.between(-1, 1));
        Matrix4f product;
        mul(a, b, product);
        EXPECT_LT(distance(toEigen(product), toEigen(a) * toEigen(b)), 2e-4);
    }
}

TEST(Matrix4f, ScaleLeavesTheTranslation) {
    Matrix4f m = numbered();
    scaleUpperColumns(m, 2.0f);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.e[i], static_cast<float>(i + 1) * (i < 12 ? 2.0f : 1.0f)) << "entry " << i;
}

TEST(Matrix4f, TransposeMovesTheTranslationToTheBottomRow) {
    Matrix4f m = numbered();
    transpose(m, m);
    EXPECT_EQ(m, (Matrix4f{{1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16}}));
}

TEST(UpperDeterminant, IgnoresTheFourthRowAndColumn) {
    Matrix4f m = diagonal(2, 3, 4);
    m.e[3] = m.e[7] = m.e[11] = 1e10f;
    m.e[12] = m.e[13] = m.e[14] = -1e10f;
    EXPECT_EQ(upperDeterminant(m), 24.0f);
}

TEST(UpperDeterminant, ChangesSignWithTwoColumnsExchanged) {
    EXPECT_EQ(upperDeterminant({{0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}), -1.0f);
    EXPECT_EQ(upperDeterminant({{0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 1}}), 1.0f);
}

TEST(UpperDeterminant, AgreesWithDoublePrecision) {
    Random random(2);
    for (int i = 0; i < 2000; ++i) {
        const Matrix4f m = randomAffine(random);
        EXPECT_NEAR(upperDeterminant(m), (toEigen(m).topLeftCorner<3, 3>().determinant()), 1e-5);
    }
}

TEST(InverseAffine, FailsOnAZeroColumnAndLeavesTheResult) {
    for (std::size_t column = 0; column < 3; ++column) {
        Matrix4f m = diagonal(2, 3, 4);
        m.setColumn(column, {0, 0, 0, 0});
        Matrix4f out = numbered();
        EXPECT_FALSE(inverseAffine(m, out)) << "column " << column;
        EXPECT_EQ(out, numbered());
    }
}

TEST(InverseAffine, FailsOnNotANumber) {
    Matrix4f out;
    EXPECT_FALSE(inverseAffine(diagonal(1, not_a_number, 1), out));
}

TEST(InverseAffine, SucceedsOnATinyDeterminant) {
    const float tiny = 0x1p-42f;
    Matrix4f out;
    ASSERT_TRUE(inverseAffine(diagonal(tiny, tiny, tiny), out));
    EXPECT_EQ(out, diagonal(0x1p42f, 0x1p42f, 0x1p42f));
}

TEST(InverseAffine, SucceedsOnTheSmallestDeterminantThatThereIs) {
    Matrix4f out;
    EXPECT_TRUE(inverseAffine(diagonal(std::numeric_limits<float>::denorm_min(), 1, 1), out));
}

TEST(InverseAffine, MovesTheTranslationBack) {
    const Matrix4f m{{2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 8, 0, 2, 4, 16, 1}};
    Matrix4f out;
    ASSERT_TRUE(inverseAffine(m, out));
    EXPECT_EQ(out, (Matrix4f{{0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0.125f, 0, -1, -1, -2, 1}}));
}

TEST(InverseAffine, LeavesTheBottomRowOut) {
    Matrix4f m = diagonal(2, 4, 8);
    m.e[3] = m.e[7] = m.e[11] = m.e[15] = 5.0f;
    Matrix4f out;
    ASSERT_TRUE(inverseAffine(m, out));
    EXPECT_EQ(out, diagonal(0.5f, 0.25f, 0.125f));
}

TEST(InverseAffine, AgreesWithDoublePrecision) {
    Random random(3);
    int compared = 0;
    for (int i = 0; i < 5000; ++i) {
        const Matrix4f m = randomAffine(random);
        const Eigen::Matrix4d expected = toEigen(m).inverse();
        if (expected.topLeftCorner<3, 3>().norm() > 10.0) continue;
        Matrix4f out;
        ASSERT_TRUE(inverseAffine(m, out));
        EXPECT_LT(distance(toEigen(out), expected), 1e-5 * expected.norm() * 10.0);
        ++compared;
    }
    EXPECT_GT(compared, 2500);
}

TEST(InverseUpperLeft, DropsTheTranslationAndTellsTheDeterminant) {
    const Matrix4f m{{2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 8, 0, 2, 4, 16, 1}};
    Matrix4f out;
    float det = 0.0f;
    ASSERT_TRUE(inverseUpperLeft(m, out, det));
    EXPECT_EQ(out, diagonal(0.5f, 0.25f, 0.125f));
    EXPECT_EQ(det, 64.0f);
}

TEST(InverseUpperLeft, TellsTheDeterminantOfASingularMatrixToo) {
    Matrix4f out;
    float det = 5.0f;
    EXPECT_FALSE(inverseUpperLeft(diagonal(1, 0, 1), out, det));
    EXPECT_EQ(det, 0.0f);
    EXPECT_FALSE(inverseUpperLeft(diagonal(1, not_a_number, 1), out, det));
    EXPECT_TRUE(std::isnan(det));
}

TEST(QuaternionToMatrix, QuarterTurnAboutZTakesXToY) {
    const float half = std::sqrt(0.5f);
    Matrix4f m;
    quaternionToMatrix({0, 0, half, half}, m);
    EXPECT_LT(distance(toEigen(m), toEigen({{0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}})), 1e-6);
}

TEST(QuaternionToMatrix, DoesNotNormaliseFirst) {
    Matrix4f m;
    quaternionToMatrix({2, 0, 0, 0}, m);
    EXPECT_EQ(m, diagonal(1, -7, -7));
}

TEST(QuaternionToMatrix, AgreesWithDoublePrecision) {
    Random random(4);
    for (int i = 0; i < 5000; ++i) {
        const Eigen::Quaterniond q = random.rotation();
        Matrix4f m;
        quaternionToMatrix(fromEigen(q), m);
        EXPECT_LT(distance(toEigen(m), toEigen(fromEigen(q.toRotationMatrix()))), 1e-6);
    }
}

TEST(MatrixToQuaternion, HalfTurnsAboutEachAxis) {
    EXPECT_EQ(matrixToQuaternion(diagonal(1, -1, -1)), (Vec4f{1, 0, 0, 0}));
    EXPECT_EQ(matrixToQuaternion(diagonal(-1, 1, -1)), (Vec4f{0, 1, 0, 0}));
    EXPECT_EQ(matrixToQuaternion(diagonal(-1, -1, 1)), (Vec4f{0, 0, 1, 0}));
    EXPECT_EQ(matrixToQuaternion(diagonal(1, 1, 1)), w_only);
}

TEST(MatrixToQuaternion, TraceOfZeroStillGoesByTheRealPart) {
    // Going by an axis instead would give the negative of this.
    EXPECT_EQ(matrixToQuaternion({{0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}}),
              (Vec4f{-0.5f, -0.5f, -0.5f, 0.5f}));
}

TEST(MatrixToQuaternion, EqualDiagonalEntriesGoToTheLaterAxis) {
    // x and y are equally great, so x isn't strictly the greatest; y is greater than z. The two ways differ in sign.
    const Vec4f about_y = matrixToQuaternion({{0, -1, 0, 0, -1, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}});
    EXPECT_LT(about_y.x, 0.0f);
    EXPECT_GT(about_y.y, 0.0f);
    const Vec4f about_z = matrixToQuaternion({{-1, 0, 0, 0, 0, 0, -1, 0, 0, -1, 0, 0, 0, 0, 0, 1}});
    EXPECT_LT(about_z.y, 0.0f);
    EXPECT_GT(about_z.z, 0.0f);
}

TEST(MatrixToQuaternion, EachWayAgreesWithDoublePrecision) {
    Random random(5);
    int by_greatest[4] = {};
    for (int i = 0; i < 5000; ++i) {
        const Eigen::Quaterniond q = random.rotation();
        const Vec4f ours = matrixToQuaternion(fromEigen(q.toRotationMatrix()));
        EXPECT_GT(std::abs(toEigen(ours).dot(q)), 1.0 - 1e-6);
        EXPECT_NEAR(toEigen(ours).norm(), 1.0, 1e-6);
        Eigen::Index greatest = 0;
        q.coeffs().cwiseAbs().maxCoeff(&greatest);
        ++by_greatest[greatest];
        // The component that the others are divided by is never negative.
        if (greatest < 3 && std::abs(q.w()) < 0.4) {
            EXPECT_GT(toEigen(ours).coeffs()[greatest], 0.0);
        }
    }
    for (const int count : by_greatest)
        EXPECT_GT(count, 200);
}

TEST(Slerp, QuaternionAndItsNegativeStayInPlace) {
    const Vec4f q = normalised({1, 2, 3, 4});
    for (int i = 0; i <= 10; ++i) {
        const Vec4f between = slerp(q, -q, static_cast<float>(i) * 0.1f);
        EXPECT_LT((toEigen(between).coeffs() - toEigen(q).coeffs()).norm(), 1e-6);
    }
}

TEST(Slerp, NotANumberGivesNotANumber) {
    EXPECT_TRUE(std::isnan(slerp({not_a_number, 0, 0, 1}, w_only, 0.5f).w));
}

TEST(Slerp, RightAngleDividesTheArcEvenly) {
    const Vec4f third = slerp({1, 0, 0, 0}, {0, 1, 0, 0}, 1.0f / 3.0f);
    EXPECT_NEAR(third.x, std::cos(std::numbers::pi / 6), 1e-6);
    EXPECT_NEAR(third.y, std::sin(std::numbers::pi / 6), 1e-6);
}

TEST(Slerp, NearlyEqualRotationsGoStraightAndAreNormalised) {
    const Eigen::Quaterniond a(Eigen::AngleAxisd(0.3, Eigen::Vector3d(1, 2, 3).normalized()));
    const Eigen::Quaterniond b = a * Eigen::Quaterniond(Eigen::AngleAxisd(0.06, Eigen::Vector3d::UnitX()));
    ASSERT_GT(a.dot(b), 0.9995);
    const Vec4f ours = slerp(fromEigen(a), fromEigen(b), 0.25f);
    EXPECT_LT((toEigen(ours).coeffs() - a.slerp(0.25, b).coeffs()).norm(), 2e-6);
    EXPECT_NEAR(toEigen(ours).norm(), 1.0, 1e-6);
}

TEST(Slerp, AgreesWithDoublePrecision) {
    Random random(6);
    for (int i = 0; i < 5000; ++i) {
        const Eigen::Quaterniond a = random.rotation();
        const Eigen::Quaterniond b = random.rotation();
        if (std::abs(a.dot(b)) < 1e-4) continue;
        const double t = random.between(0, 1);
        const Vec4f ours = slerp(fromEigen(a), fromEigen(b), static_cast<float>(t));
        EXPECT_LT((toEigen(ours).coeffs() - a.slerp(t, b).coeffs()).norm(), 1e-5);
    }
}

TEST(PolarDecomposition, PureRotationSettlesInOneOrTwoSteps) {
    Random random(7);
    for (int i = 0; i < 1000; ++i) {
        const Matrix4f m = fromEigen(random.rotation().toRotationMatrix());
        Matrix4f rotation;
        Matrix4f rest;
        ASSERT_TRUE(polarDecomposition(m, rotation, rest));
        const Matrix4f first = newtonStep(m);
        EXPECT_TRUE(rotation == first || rotation == newtonStep(first));
        EXPECT_LT(distance(toEigen(rest), Eigen::Matrix4d::Identity()), 1e-6);
    }
}

TEST(PolarDecomposition, MirrorEndsUpInTheRest) {
    Matrix4f rotation;
    Matrix4f rest;
    ASSERT_TRUE(polarDecomposition(diagonal(1, 1, -1), rotation, rest));
    EXPECT_EQ(upperDeterminant(rotation), 1.0f);
    EXPECT_EQ(rotation, diagonal(-1, -1, 1));
    EXPECT_EQ(rest, diagonal(-1, -1, -1));
}

TEST(PolarDecomposition, FailsOnASingularMatrixAndLeavesTheResults) {
    Matrix4f rotation = numbered();
    Matrix4f rest = numbered();
    EXPECT_FALSE(polarDecomposition(diagonal(1, 0, 1), rotation, rest));
    EXPECT_EQ(rotation, numbered());
    EXPECT_EQ(rest, numbered());
}

TEST(PolarDecomposition, FailsOnNotANumberWhereverItStands) {
    for (std::size_t entry : {0u, 1u, 2u, 4u, 5u, 6u, 8u, 9u, 10u}) {
        Matrix4f m{{1, 2, 3, 0, 3, 1, 2, 0, 2, 3, 4, 0, 0, 0, 0, 1}};
        m.e[entry] = not_a_number;
        Matrix4f rotation;
        Matrix4f rest;
        EXPECT_FALSE(polarDecomposition(m, rotation, rest)) << "entry " << entry;
    }
}

TEST(PolarDecomposition, ReturnsOnInfiniteEntries) {
    for (std::size_t entry = 0; entry < 16; ++entry) {
        Matrix4f m{{1, 2, 3, 0, 3, 1, 2, 0, 2, 3, 4, 0, 0, 0, 0, 1}};
        m.e[entry] = std::numeric_limits<float>::infinity();
        Matrix4f rotation;
        Matrix4f rest;
        const bool decomposed = polarDecomposition(m, rotation, rest);
        EXPECT_EQ(decomposed, entry >= 12 || entry % 4 == 3) << "entry " << entry;
    }
}

TEST(PolarDecomposition, CarriesTheTranslationInTheRotation) {
    Matrix4f m = diagonal(2, 4, 8);
    m.setColumn(3, {10, 20, 30, 1});
    Matrix4f rotation;
    Matrix4f rest;
    ASSERT_TRUE(polarDecomposition(m, rotation, rest));
    EXPECT_EQ(rotation.column(3), (Vec4f{10, 20, 30, 1}));
    // All sixteen entries of the product of the transpose with the matrix.
    EXPECT_EQ(rest.column(0), (Vec4f{2, 0, 0, 20}));
    EXPECT_EQ(rest.column(3), (Vec4f{10, 20, 30, 1401}));
}

TEST(PolarDecomposition, AgreesWithSingularValues) {
    Random random(8);
    int mirrored = 0;
    for (int i = 0; i < 5000; ++i) {
        Eigen::Matrix3d m = random.rotation().toRotationMatrix() * random.stretch(0.2, 5.0);
        if (random.oneIn(3)) {
            m.col(0) *= -1.0;
            ++mirrored;
        }
        Matrix4f rotation;
        Matrix4f rest;
        ASSERT_TRUE(polarDecomposition(fromEigen(m), rotation, rest));
        const Eigen::JacobiSVD<Eigen::Matrix3d> svd(m, Eigen::ComputeFullU | Eigen::ComputeFullV);
        Eigen::Matrix3d expected = svd.matrixU() * svd.matrixV().transpose();
        if (expected.determinant() < 0) expected = -expected;
        EXPECT_LT(distance(toEigen(rotation), toEigen(fromEigen(expected))), 2e-5);
        EXPECT_LT(distance(toEigen(rest), toEigen(fromEigen(Eigen::Matrix3d(expected.transpose() * m)))), 1e-4);
    }
    EXPECT_GT(mirrored, 1000);
}

TEST(OrthogonalFactor, SettlesOverTwelveOrdersOfMagnitude) {
    Random random(9);
    for (int i = 0; i < 1000; ++i) {
        Matrix4f m = fromEigen(random.rotation().toRotationMatrix());
        const Matrix4f expected = m;
        scaleUpperColumns(m, static_cast<float>(std::pow(10.0, random.between(-6, 6))));
        Matrix4f out;
        ASSERT_TRUE(orthogonalFactor(m, 2e-7f, out));
        EXPECT_LT(distance(toEigen(out), toEigen(expected)), 1e-6);
    }
}

TEST(OrthogonalFactor, GivesUpWhenItGoesRoundInACircle) {
    // A tolerance of zero asks for more than rounding allows: many matrices end up in a circle of last bits.
    Random random(10);
    int circles = 0;
    for (int i = 0; i < 1000; ++i) {
        const Eigen::Matrix3d turned = random.rotation() * random.stretch(0.2, 5.0);
        const Matrix4f m = fromEigen(turned);
        Matrix4f out = numbered();
        if (orthogonalFactor(m, 0.0f, out)) {
            EXPECT_EQ(newtonStep(out), out);
            continue;
        }
        ++circles;
        EXPECT_EQ(out, numbered());
        EXPECT_TRUE(orthogonalFactor(m, 2e-7f, out));
    }
    EXPECT_GT(circles, 10);
    EXPECT_LT(circles, 990);
}

TEST(BoxBounds, EncloseAllEightCorners) {
    Random random(11);
    for (int i = 0; i < 2000; ++i) {
        const Matrix4f m = randomAffine(random);
        const Eigen::Vector3d low = random.vector(5.0);
        const TestSupport::BoxD box{low, low + random.vector(5.0).cwiseAbs()};
        const auto point = [](const Eigen::Vector3d& v) {
            return Vec4f{static_cast<float>(v.x()), static_cast<float>(v.y()), static_cast<float>(v.z()), 1.0f};
        };
        Vec4f out_min;
        Vec4f out_max;
        boxBounds(point(box.min), point(box.max), m, out_min, out_max);
        const Eigen::Matrix4d exact = toEigen(m);
        const TestSupport::BoxD expected =
            TestSupport::boxThrough(exact.topLeftCorner<3, 3>(), exact.col(3).head<3>(), box);
        EXPECT_LT((toEigen(out_min).vec() - expected.min).norm(), 1e-4);
        EXPECT_LT((toEigen(out_max).vec() - expected.max).norm(), 1e-4);
        EXPECT_EQ(out_min.w, 1.0f);
        EXPECT_EQ(out_max.w, 1.0f);
    }
}

TEST(BoxBounds, CornersKeepTheirW) {
    Vec4f out_min;
    Vec4f out_max;
    boxBounds({-1, -1, -1, 0}, {1, 1, 1, 2}, {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 10, 0, 0, 1}}, out_min, out_max);
    EXPECT_EQ(out_min, (Vec4f{-1, -1, -1, 0}));
    EXPECT_EQ(out_max, (Vec4f{21, 1, 1, 2}));
}

TEST(BoxBounds, ResultsMayOverwriteTheBox) {
    Vec4f low{-1, -2, -3, 1};
    Vec4f high{1, 2, 3, 1};
    boxBounds(low, high, diagonal(-2, 2, 2), low, high);
    EXPECT_EQ(low, (Vec4f{-2, -4, -6, 1}));
    EXPECT_EQ(high, (Vec4f{2, 4, 6, 1}));
}

} // namespace

} // namespace Matrix4fTests
