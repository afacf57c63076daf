#include "scene/Rotations.h"

#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace MatrixRotationTests {

using namespace Velmar;
using TestSupport::expectGolden;
using TestSupport::textOf;

namespace {

constexpr double quarter_turn[9] = {0, -1, 0, 1, 0, 0, 0, 0, 1};

TEST(MatrixRotation, IsTheIdentityByDefault) {
    EXPECT_TRUE(Reference<Rotation>(new MatrixRotation)->isIdentity());
}

TEST(MatrixRotation, NumbersStandOnOneLineThatEndsInASpace) {
    const Reference<Rotation> rotation(new MatrixRotation);
    expectGolden(textOf([&](OStream& stream) { rotation->writeXML(stream, 1); }), "\t<matrix>\n"
                                                                                  "\t\t1 0 0 0 1 0 0 0 1 \n"
                                                                                  "\t</matrix>\n");
}

TEST(MatrixRotation, NumbersGoRowAfterRow) {
    const double values[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9.5};
    const Reference<Rotation> rotation(new MatrixRotation(values));
    expectGolden(textOf([&](OStream& stream) { rotation->writeXML(stream, 0); }),
                 "<matrix>\n\t1 2 3 4 5 6 7 8 9.5 \n</matrix>\n");
}

TEST(MatrixRotation, HasType0) {
    EXPECT_EQ(Reference<Rotation>(new MatrixRotation)->getType(), 0u);
}

TEST(MatrixRotation, IsNotTheIdentityByAnyEntry) {
    for (std::size_t i = 0; i < 9; ++i) {
        const Reference<MatrixRotation> rotation(new MatrixRotation);
        rotation->matrix[i] = std::nextafter(rotation->matrix[i], 2.0);
        EXPECT_FALSE(rotation->isIdentity()) << i;
    }
}

TEST(MatrixRotation, EntryThatIsNaNCountsAsThatOfTheIdentity) {
    const Reference<MatrixRotation> rotation(new MatrixRotation);
    rotation->matrix[4] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(rotation->isIdentity());
}

TEST(MatrixRotation, NegativeZeroCountsAsZero) {
    const Reference<MatrixRotation> rotation(new MatrixRotation);
    rotation->matrix[1] = -0.0;
    EXPECT_TRUE(rotation->isIdentity());
}

TEST(MatrixRotation, CloneHoldsTheSameMatrix) {
    const Reference<Rotation> rotation(new MatrixRotation(quarter_turn));
    const Reference<Rotation> copy = rotation->clone();
    EXPECT_NE(copy.getPointer(), rotation.getPointer());
    EXPECT_TRUE(std::ranges::equal(static_cast<const MatrixRotation&>(*copy).matrix, quarter_turn));
}

TEST(MatrixRotation, HashesTheBytesOfTheMatrix) {
    const Reference<Rotation> rotation(new MatrixRotation(quarter_turn));
    XXH64_state_t* const state = XXH64_createState();
    XXH64_reset(state, 1);
    rotation->updateHash(state);
    EXPECT_EQ(XXH64_digest(state), XXH64(quarter_turn, sizeof quarter_turn, 1));
    XXH64_freeState(state);
}

} // namespace

} // namespace MatrixRotationTests
