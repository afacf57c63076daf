#include "velmarexceptions.h"

#include "scene/Rotations.h"
#include "scene/nodes/Matrix4f.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

namespace Velmar {

namespace {

constexpr Box4f point_at_origin = {{0.0f, 0.0f, 0.0f, 1.0f}, {0.0f, 0.0f, 0.0f, 1.0f}};

Box4f emptyBox() {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    return {{infinity, infinity, infinity, 1.0f}, {-infinity, -infinity, -infinity, 1.0f}};
}

/// The axis and the angle of a rotation of that kind, whose classes live in the renderer library: they lie directly
/// after the fields of `Rotation`.
struct AxisAndAngle {
    double axis[3];
    double angle;
};

/// Row after row.
using Matrix3f = float[9];

void toMatrix(const AxisAndAngle& rotation, Matrix3f& m) {
    const auto ax = static_cast<float>(rotation.axis[0]);
    const auto ay = static_cast<float>(rotation.axis[1]);
    const auto az = static_cast<float>(rotation.axis[2]);
    const float length = std::sqrt(ax * ax + ay * ay + az * az);
    const float x = ax / length;
    const float y = ay / length;
    const float z = az / length;
    const auto [s, c] = sineAndCosine(static_cast<float>(rotation.angle));
    const float t = 1.0f - c;
    const Matrix3f rows = {x * x * t + c,     x * y * t - z * s, x * z * t + y * s, x * y * t + z * s, y * y * t + c,
                           y * z * t - x * s, x * z * t - y * s, y * z * t + x * s, z * z * t + c};
    std::ranges::copy(rows, m);
}

void toMatrix(const Rotation& rotation, Matrix3f& m) {
    switch (rotation.getType()) {
    case Rotation::matrix_kind:
        std::ranges::transform(static_cast<const MatrixRotation&>(rotation).matrix, m,
                               [](double entry) { return static_cast<float>(entry); });
        break;
    case Rotation::axis_and_angle_kind: {
        AxisAndAngle fields;
        std::memcpy(&fields, reinterpret_cast<const char*>(&rotation) + sizeof(Rotation), sizeof fields);
        toMatrix(fields, m);
        break;
    }
    default:
        throw SceneLoaderExcep("Failed to convert rotation. Unknown rotation type.");
    }
}

/// The own fields of displaced quads, after those of `SceneNode`, begin with their two extents.
Box4f displacedQuadBounds(const SceneNode& quad) {
    float extents[2];
    std::memcpy(extents, reinterpret_cast<const char*>(&quad) + sizeof(SceneNode), sizeof extents);
    return {{0.0f, 0.0f, 0.0f, 1.0f}, {extents[0], extents[1], 0.0f, 1.0f}};
}

} // namespace

Box4f SceneNodeModel::getWorldBounds() const {
    if (!geometry) return emptyBox();
    switch (geometry->getType()) {
    case NodeType::Mesh:
        return getMeshBounds(static_cast<const SceneNodeMesh&>(*geometry));
    case NodeType::ParametricSurface:
        return point_at_origin;
    case NodeType::DisplacedQuad:
        return displacedQuadBounds(*geometry);
    default:
        return emptyBox();
    }
}

Box4f SceneNodeModel::getMeshBounds(const SceneNodeMesh& mesh_node) const {
    if (!mesh_node.mesh) return point_at_origin;
    float box[6];
    mesh_node.mesh->getBoundingBox(box);
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float untouched[6] = {infinity, infinity, infinity, -infinity, -infinity, -infinity};
    if (std::ranges::equal(box, untouched)) return point_at_origin;

    try {
        Matrix3f m;
        toMatrix(*rotation, m);
        Matrix4f base;
        fromMatrix3AndTranslation(m, {0.0f, 0.0f, 0.0f}, base);
        scaleUpperColumns(base, static_cast<float>(scale));
        return boundsAlongKeyFrames(keyframes, base, {{box[0], box[1], box[2], 1.0f}, {box[3], box[4], box[5], 1.0f}});
    } catch (const TransformPathExcep&) {
        // A motion that makes no sense must not keep the rest of the scene from being bounded.
        return point_at_origin;
    }
}

} // namespace Velmar
