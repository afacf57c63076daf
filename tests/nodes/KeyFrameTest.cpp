#include "velmarvector.h"

#include "scene/nodes/TransformPath.h"
#include "tests/support/MemoryOStream.h"

#include <cmath>
#include <gtest/gtest.h>

namespace KeyFrameTests {

using namespace Velmar;

namespace {

std::string written(const KeyFrame& frame, std::uint32_t depth) {
    return TestSupport::textOf([&](OStream& stream) { writeKeyFrame(frame, stream, depth); });
}

TEST(KeyFrame, DefaultIsIdentityAtStartOfExposure) {
    const KeyFrame frame;
    EXPECT_EQ(frame.pos, (Vec3d{0, 0, 0}));
    EXPECT_EQ(frame.time, 0.0);
    EXPECT_EQ(frame.axis, (Vec3d{0, 0, 1}));
    EXPECT_EQ(frame.angle, 0.0);
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_EQ(frame.S[3 * row + column], row == column ? 1.0 : 0.0);
    EXPECT_TRUE(frame.hasIdentityS());
}

TEST(KeyFrame, VectorFillsNewElementsWithTheDefault) {
    Vector<KeyFrame> frames;
    frames.resize(2);
    EXPECT_EQ(frames[1], KeyFrame{});
}

TEST(KeyFrame, EqualityLooksAtEveryField) {
    const KeyFrame frame{{1, 2, 3}, 0.5, {0, 1, 0}, 0.25, {1, 0, 0, 0, 2, 0, 0, 0, 3}};
    EXPECT_EQ(frame, KeyFrame(frame));
    for (int field = 0; field < 17; ++field) {
        KeyFrame other = frame;
        double* const fields[17] = {&other.pos.x,  &other.pos.y,  &other.pos.z, &other.time, &other.axis.x,
                                    &other.axis.y, &other.axis.z, &other.angle, &other.S[0], &other.S[1],
                                    &other.S[2],   &other.S[3],   &other.S[4],  &other.S[5], &other.S[6],
                                    &other.S[7],   &other.S[8]};
        *fields[field] += 1e-12;
        EXPECT_NE(frame, other) << "field " << field;
    }
}

TEST(KeyFrame, AnyEntryOfSKeepsItFromBeingIdentity) {
    for (int entry = 0; entry < 9; ++entry) {
        KeyFrame frame;
        frame.S[entry] += 1e-12;
        EXPECT_FALSE(frame.hasIdentityS()) << "entry " << entry;
    }
}

TEST(WriteKeyFrame, PositionAndTimeAloneAtDepthZero) {
    EXPECT_EQ(written({.pos = {1, 2.5, -3}, .time = 0.25}, 0), "<keyframe>\n"
                                                               "\t<time>0.25</time>\n"
                                                               "\t<pos>1 2.5 -3</pos>\n"
                                                               "</keyframe>\n");
}

TEST(WriteKeyFrame, RotationHoldsAxisAndAngle) {
    EXPECT_EQ(written({.axis = {0, 2, 0}, .angle = 0.5}, 2), "\t\t<keyframe>\n"
                                                             "\t\t\t<time>0</time>\n"
                                                             "\t\t\t<pos>0 0 0</pos>\n"
                                                             "\t\t\t<rotation_quaternion>\n"
                                                             "\t\t\t\t<axis>0 2 0</axis>\n"
                                                             "\t\t\t\t<angle>0.5</angle>\n"
                                                             "\t\t\t</rotation_quaternion>\n"
                                                             "\t\t</keyframe>\n");
}

TEST(WriteKeyFrame, AngleOfZeroWritesNoRotationWhateverTheAxis) {
    EXPECT_EQ(written({.axis = {3, 4, 5}, .angle = 0.0}, 0), written({}, 0));
    EXPECT_EQ(written({.axis = {3, 4, 5}, .angle = -0.0}, 0), written({}, 0));
    EXPECT_EQ(written({}, 0).find("rotation_quaternion"), std::string::npos);
}

TEST(WriteKeyFrame, AngleThatIsNotANumberIsWritten) {
    EXPECT_NE(written({.angle = std::nan("")}, 0).find("<angle>NaN</angle>"), std::string::npos);
}

TEST(WriteKeyFrame, SIsWrittenRowAfterRowWhenNotIdentity) {
    EXPECT_EQ(written({.S = {1, 0.5, 0, 0, 2, 0, 0, 0, 0.1}}, 1), "\t<keyframe>\n"
                                                                  "\t\t<time>0</time>\n"
                                                                  "\t\t<pos>0 0 0</pos>\n"
                                                                  "\t\t<S>\n"
                                                                  "\t\t\t1 0.5 0 0 2 0 0 0 0.1 \n"
                                                                  "\t\t</S>\n"
                                                                  "\t</keyframe>\n");
}

TEST(WriteKeyFrame, RotationStandsBeforeS) {
    const std::string text = written({.angle = 1, .S = {2, 0, 0, 0, 2, 0, 0, 0, 2}}, 0);
    EXPECT_LT(text.find("</rotation_quaternion>"), text.find("<S>"));
    EXPECT_NE(text.find("<S>"), std::string::npos);
}

} // namespace

} // namespace KeyFrameTests
