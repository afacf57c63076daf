#include "tools/CameraView.h"

#include "velmarexceptions.h"

#include "scene/TraversalState.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "tools/Vec.h"

#include <algorithm>
#include <array>
#include <cmath>

using namespace Velmar;

namespace {

/// What a camera sees: the points in front of some planes through its eye.
class View {
  public:
    View(const SceneNodeCamera& camera, double height_of_width) : eye(camera.keyframes[0].pos) {
        const Vec3d& forwards = camera.forwards;
        planes[count++] = forwards;
        const Vec3d right = Vec::cross(forwards, camera.up);
        const Vec3d up = Vec::cross(right, forwards);
        const double lengths = std::sqrt(Vec::dot(right, right) * Vec::dot(up, up) * Vec::dot(forwards, forwards));
        const bool is_perspective = camera.camera_type == SceneNodeCamera::thin_lens_perspective;
        const double distance = std::fabs(camera.lens_sensor_dist);
        if (!is_perspective || !(lengths > 0.0) || !(distance > 0.0)) return;
        // An aperture sees a little past the edges.
        constexpr double margin = 1.05;
        const double half_width = margin * std::fabs(camera.sensor_width) / 2.0;
        addSides(forwards, right, (half_width + std::fabs(camera.lens_shift_right_distance)) / distance);
        addSides(forwards, up, (half_width * height_of_width + std::fabs(camera.lens_shift_up_distance)) / distance);
    }

    /// False when all corners of the box are outside of one plane.
    bool mayContain(const float (&box_min)[3], const float (&box_max)[3]) const {
        if (!(box_min[0] <= box_max[0])) return false;
        return std::all_of(planes.begin(), planes.begin() + static_cast<std::ptrdiff_t>(count),
                           [&](const Vec3d& normal) {
                               // The corner farthest along the normal decides.
                               const double x = normal.x > 0 ? box_max[0] : box_min[0];
                               const double y = normal.y > 0 ? box_max[1] : box_min[1];
                               const double z = normal.z > 0 ? box_max[2] : box_min[2];
                               return !(Vec::dot(normal, {x - eye.x, y - eye.y, z - eye.z}) < 0.0);
                           });
    }

  private:
    /// Two planes whose tangent of the angle to the axis is `slope`.
    void addSides(const Vec3d& forwards, const Vec3d& side, double slope) {
        using namespace Vec;
        const Vec3d axis = forwards * (slope * std::sqrt(dot(side, side) / dot(forwards, forwards)));
        planes[count++] = axis + side;
        planes[count++] = axis - side;
    }

    Vec3d eye;
    std::array<Vec3d, 5> planes{};
    std::size_t count = 0;
};

/// The height of the picture, seen from its width; 1 where the document leaves it open.
double getHeightOfWidth(const SceneNodeRoot& root) {
    const auto* const settings = static_cast<const SceneNodeRenderSettings*>(root.getRenderSettingsNode());
    if (settings == nullptr || !settings->width.has_value || !settings->height.has_value) return 1.0;
    if (settings->width.value <= 0 || settings->height.value <= 0) return 1.0;
    return static_cast<double>(settings->height.value) / settings->width.value;
}

bool isShown(const SceneNode& node) {
    return node.getType() == NodeType::Sphere ||
           (node.getType() == NodeType::Object && !static_cast<const SceneNodeModel&>(node).invisible_to_camera);
}

/// Whether its bounds can be had. Otherwise it may be anywhere.
bool hasBounds(const SceneNode& node) {
    if (node.getType() != NodeType::Object) return true;
    const Reference<SceneNode>& geometry = static_cast<const SceneNodeModel&>(node).geometry;
    return geometry && geometry->getType() == NodeType::Mesh && static_cast<const SceneNodeMesh&>(*geometry).mesh;
}

} // namespace

bool seesSomething(const SceneNodeRoot& root, const SceneNodeCamera& camera) {
    const KeyFrame& frame = camera.keyframes[0];
    const bool is_turned = camera.keyframes.size() > 1 || frame.angle != 0.0 || !frame.hasIdentityS();
    const bool sees_all = is_turned || camera.camera_type == SceneNodeCamera::spherical;
    const View view(camera, getHeightOfWidth(root));
    return std::ranges::any_of(root.children(), [&](const Reference<SceneNode>& node) {
        if (!isShown(*node)) return false;
        if (sees_all || !hasBounds(*node)) return true;
        try {
            TraversalState state(TraversalKind::GetBounds, {}, {});
            node->traverse(state);
            return view.mayContain(state.bounds_min, state.bounds_max);
        } catch (const VelmarException&) {
            // Of a motion that makes no sense.
            return true;
        } catch (const SceneLoaderExcep&) {
            // Of a rotation of the renderer library.
            return true;
        }
    });
}
