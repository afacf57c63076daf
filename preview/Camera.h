#pragma once

#include "preview/Motion.h"
#include "preview/Sampler.h"
#include "preview/World.h"

#include "scene/nodes/SceneNodeCamera.h"

#include <cstddef>
#include <cstdint>

namespace Preview {

/// The rays of neighbouring pixels, number by number, so that the processor computes several at once.
struct RayRow {
    using Numbers = float[SamplerRow::capacity];

    /// Where they are in the picture, which is given.
    Numbers x, y;
    Numbers origin_x, origin_y, origin_z;
    Numbers direction_x, direction_y, direction_z;
    Numbers time;
    /// The fraction of light that reaches the picture.
    Numbers weight;

    void set(std::size_t i, const Ray& ray, float weight_) {
        origin_x[i] = ray.origin.x, origin_y[i] = ray.origin.y, origin_z[i] = ray.origin.z;
        direction_x[i] = ray.direction.x, direction_y[i] = ray.direction.y, direction_z[i] = ray.direction.z;
        time[i] = ray.time;
        weight[i] = weight_;
    }
    Ray operator[](std::size_t i) const {
        return {{origin_x[i], origin_y[i], origin_z[i]}, {direction_x[i], direction_y[i], direction_z[i]}, time[i]};
    }
};

/// Makes the rays of a picture.
///
/// Pixels: x from 0 at the left edge to the width at the right one, y from 0 at the upper edge. The horizontal axis of
/// the picture is `forwards` x `up`.
///
/// - Thin lens: the sensor of `sensor_width` metres is `lens_sensor_dist` from the lens, so a pixel at (s, t) metres
///   right of and above the centre of the sensor's picture looks along forwards * lens_sensor_dist + right * (s + shift
///   right) + up * (t + shift up): a lens that is shifted up looks up. Its rays begin on the disc of `aperture_radius`
///   and meet in the plane at `focus_distance`. With vignetting the light falls off by the fourth power of the cosine
///   between ray and axis.
/// - Orthographic: parallel rays from a window of `sensor_width` metres, moved by the shifts.
/// - Spherical: all directions; the width is 360 degrees of longitude with `forwards` in the middle, the height 180
///   degrees of latitude with `up` at the upper edge.
class Camera {
  public:
    Camera() = default;
    /// For a picture of `width` by `height` pixels. Numbers that make no sense are reported and replaced by defaults.
    Camera(const Velmar::SceneNodeCamera& node, std::uint32_t width, std::uint32_t height, bool vignetting);

    /// Focuses on what is in the middle of the picture in the middle of the exposure, if the camera is to do so by
    /// itself and there is something.
    void focusOn(const World& world);

    /// The ray through (x, y). `weight` is the fraction of light that reaches the picture there. Takes numbers of the
    /// sampler for the lens, if it is open, and for the time, if `moving` or the camera moves.
    Ray sampleRay(float x, float y, bool moving, Sampler& sampler, float& weight) const;

    /// The same for the first `count` places of a row.
    void sampleRow(std::uint32_t count, bool moving, SamplerRow& samplers, RayRow& rays) const;

    /// The ray through the middle of the lens in the middle of the exposure.
    Ray centralRay(float x, float y) const;

    float getFocusDistance() const { return focus_distance; }

  private:
    struct Frame {
        Vec3 right, up, forwards, position;
    };

    struct Optics {
        float lens_radius = 0.0f;
        float inverse_focus_distance = 1.0f;
        float inverse_lens_sensor_dist = 1.0f;
        float squared_lens_sensor_dist = 1.0f;
        float shift_right = 0.0f;
        float shift_up = 0.0f;
        /// Metres for each pixel, and the picture's middle in pixels.
        float pixel_size = 0.0f;
        float middle_x = 0.0f;
        float middle_y = 0.0f;
        bool vignetting = false;

        // Where a pixel is on the sensor's picture, in metres from the axis of the lens.
        float rightOf(float x) const { return (x - middle_x) * pixel_size + shift_right; }
        float aboveOf(float y) const { return (middle_y - y) * pixel_size + shift_up; }
        Ray throughLens(const Frame& frame, float x, float y, const Vec2& lens) const;
        float vignettingAt(float x, float y) const;
    };

    Frame frameAt(float time) const;
    Ray makeRay(const Frame& frame, float x, float y, const Vec2& lens, float time, float& weight) const;
    float sampleTime(bool moving, Sampler& sampler) const {
        return moving || motion.isMoving() ? sampler.next1() : 0.5f;
    }
    bool hasOpenLens() const {
        return type == Velmar::SceneNodeCamera::thin_lens_perspective && optics.lens_radius > 0.0f;
    }

    std::uint32_t type = Velmar::SceneNodeCamera::thin_lens_perspective;
    Optics optics;
    float focus_distance = 1.0f;
    bool autofocus = false;
    Vec3 right{1.0f, 0.0f, 0.0f};
    Vec3 up{0.0f, 0.0f, 1.0f};
    Vec3 forwards{0.0f, 1.0f, 0.0f};
    Motion motion;
    Frame at_rest{};
};

} // namespace Preview
