#pragma once

#include "velmarvec.h"
#include "velmarvector.h"

#include "scene/SceneNode.h"
#include "scene/nodes/ApertureShape.h"
#include "scene/nodes/KeyFrame.h"

#include <cstdint>

namespace Velmar {

/// One camera. Nothing checks its fields: every value reaches the document as it was given.
class SceneNodeCamera : public Destroyable<SceneNodeCamera, PlainSceneNode> {
  public:
    /// Codes of `camera_type`. The field may hold others, which write an empty element.
    enum Type : std::uint32_t { thin_lens_perspective = 0, orthographic = 1, spherical = 2 };

    SceneNodeCamera();

    /// Overwrites the position of the first key frame. Without one, a first is appended that is at rest there.
    void setPosition(const Vec3d& pos);

    /// The copy has an aperture shape of its own, and always a thin lens.
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    /// The camera's position stands in its key frames alone.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    /// Throws `VelmarException` when a path has no new one. A camera without a sound motion adds nothing to bounds.
    void traverse(TraversalState& state) override;
    /// Aperture shape, key frames and camera type take no part.
    bool isEqual(const SceneNode* other) const override;

    /// Lengths are in metres.
    double aperture_radius = 0.001;
    double focus_distance = 20.0;
    double sensor_width = 0.036;
    double lens_sensor_dist = 0.036;
    /// In seconds.
    double exposure_duration = 0.333;
    double lens_shift_up_distance = 0.0;
    double lens_shift_right_distance = 0.0;
    bool autofocus = true;
    /// The path of an image of what sits on the lens; empty for none.
    String obstacle_map;
    /// Never null.
    Reference<ApertureShape> aperture_shape;
    Vector<KeyFrame> keyframes;
    Vec3d up{0.0, 0.0, 1.0};
    Vec3d forwards{0.0, 1.0, 0.0};
    std::uint32_t camera_type = thin_lens_perspective;

  private:
    /// Calls `visit` with each path that the camera depends on.
    template <class Visit>
    void forEachPath(Visit visit);
};

} // namespace Velmar
