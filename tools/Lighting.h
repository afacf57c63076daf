#pragma once

#include "velmarvec.h"

/// The lamps of a picture, which stand where the viewer is and turn with them.
class Lighting {
  public:
    /// The axes of the view, in the space of the mesh and of length 1.
    Lighting(const Velmar::Vec3d& right, const Velmar::Vec3d& up, const Velmar::Vec3d& towards_viewer);

    /// What light a surface of this normal (of length 1) sends to the viewer: 0 for black, 1 for white.
    float light(const Velmar::Vec3d& normal) const;

    /// The light behind everything at a height of the image: 0 for its bottom, 1 for its top.
    static float lightBackground(double height);

  private:
    Velmar::Vec3d key;
    Velmar::Vec3d fill;
    Velmar::Vec3d sky;
};
