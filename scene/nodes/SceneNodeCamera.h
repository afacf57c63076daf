#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvec.h"
#include "velmarvector.h"

#include "scene/SceneNode.h"
#include "scene/XMLPrimitives.h"
#include "scene/nodes/TransformPath.h"
#include "utils/OStream.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// The shape of a camera's aperture. Called by slot number from the renderer library, which may have shapes of its
/// own.
class ApertureShape : public ThreadSafeRefCounted {
  public:
    /// Kinds that `getType` returns.
    static constexpr std::int32_t circular_kind = 0;
    static constexpr std::int32_t image_kind = 2;

    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1.
    virtual std::int32_t getType() const = 0;
    /// Slot 2. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const = 0;
    /// Slot 3. A copy.
    virtual Reference<ApertureShape>* cloneInto(Reference<ApertureShape>* result) const = 0;
    /// Slot 4. Does nothing.
    virtual void reservedSlot4() {}

    /// The natural form of slot 3.
    Reference<ApertureShape> clone() const;

  protected:
    ApertureShape() = default;
    ~ApertureShape() = default;
};

static_assert(sizeof(ApertureShape) == 16);

class ApertureCircular : public Destroyable<ApertureCircular, ApertureShape> {
  public:
    std::int32_t getType() const override { return circular_kind; }
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    Reference<ApertureShape>* cloneInto(Reference<ApertureShape>* result) const override;
};

static_assert(sizeof(ApertureCircular) == 16);

/// What is known of every shape of `image_kind`: it is read from a file. No class of this library is one.
class ApertureImage : public ApertureShape {
  public:
    String path;

  protected:
    ApertureImage() = default;
    ~ApertureImage() = default;
};

static_assert(offsetof(ApertureImage, path) == 16);
static_assert(sizeof(ApertureImage) == 56);

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
    /// Only the key frames have the camera's position.
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

static_assert(offsetof(SceneNodeCamera, aperture_radius) == 96);
static_assert(offsetof(SceneNodeCamera, focus_distance) == 104);
static_assert(offsetof(SceneNodeCamera, sensor_width) == 112);
static_assert(offsetof(SceneNodeCamera, lens_sensor_dist) == 120);
static_assert(offsetof(SceneNodeCamera, exposure_duration) == 128);
static_assert(offsetof(SceneNodeCamera, lens_shift_up_distance) == 136);
static_assert(offsetof(SceneNodeCamera, lens_shift_right_distance) == 144);
static_assert(offsetof(SceneNodeCamera, autofocus) == 152);
static_assert(offsetof(SceneNodeCamera, obstacle_map) == 160);
static_assert(offsetof(SceneNodeCamera, aperture_shape) == 200);
static_assert(offsetof(SceneNodeCamera, keyframes) == 208);
static_assert(offsetof(SceneNodeCamera, up) == 232);
static_assert(offsetof(SceneNodeCamera, forwards) == 256);
static_assert(offsetof(SceneNodeCamera, camera_type) == 280);
static_assert(sizeof(SceneNodeCamera) == 288);

} // namespace Velmar
