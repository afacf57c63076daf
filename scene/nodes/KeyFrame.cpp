#include "scene/nodes/KeyFrame.h"

#include "scene/XMLPrimitives.h"

namespace Velmar {

void writeKeyFrame(const KeyFrame& frame, OStream& stream, std::uint32_t depth) {
    writeOpenTag(stream, depth, "keyframe");
    writeDoubleElement(stream, depth + 1, "time", frame.time);
    writeVec3Element(stream, depth + 1, "pos", frame.pos);
    if (frame.angle != 0.0) {
        // The element is called a quaternion but holds axis and angle: readers rely on both.
        writeOpenTag(stream, depth + 1, "rotation_quaternion");
        writeVec3Element(stream, depth + 2, "axis", frame.axis);
        writeDoubleElement(stream, depth + 2, "angle", frame.angle);
        writeCloseTag(stream, depth + 1, "rotation_quaternion");
    }
    if (!frame.hasIdentityS()) writeMatrix3Element(stream, depth + 1, "S", frame.S);
    writeCloseTag(stream, depth, "keyframe");
}

} // namespace Velmar
