#pragma once

#include "velmarvec.h"

#include "tools/SceneSettings.h"

/// An upright box in the scene, whose height is z.
struct Box {
    Velmar::Vec3d min;
    Velmar::Vec3d max;

    void add(const Box& other);
    Velmar::Vec3d getCentre() const;
    /// Of the sphere around the box; 1 for a point, so that it can be looked at.
    double getRadius() const;
};

/// Where a camera stands, and its lens.
struct Frame {
    Velmar::Vec3d position;
    Velmar::Vec3d forwards;
    double focus_distance;
    double lens_sensor_dist;
    double lens_radius;
};

/// Towards whoever looks from the side told in degrees: `azimuth` around, from in front to the right, and `elevation`
/// above the horizon. Of length 1.
Velmar::Vec3d getViewDirection(double azimuth, double elevation);

constexpr double sensor_width = 0.036;

/// The camera that sees the whole of `box` from the side that the settings tell. The numbers are rounded to six digits
/// of the box's size: sines and cosines differ in their last bits between systems, and scenes mustn't.
Frame frameBox(const Box& box, const SceneSettings& settings);

/// `value` in steps of a millionth of the power of ten at or above `size`.
double roundToSize(double value, double size);
