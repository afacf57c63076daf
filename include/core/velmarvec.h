#pragma once

namespace Velmar {

/// Positions and directions of scene nodes, in metres where they are lengths.
struct Vec3d {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    bool operator==(const Vec3d&) const = default;
};

/// A position or normal of a mesh, in memory and in mesh files.
struct Vec3f {
    float x;
    float y;
    float z;
};

/// A texture coordinate pair of a mesh, in memory and in mesh files.
struct Vec2f {
    float x;
    float y;
};

static_assert(sizeof(Vec3d) == 24);
static_assert(sizeof(Vec3f) == 12);
static_assert(sizeof(Vec2f) == 8);

} // namespace Velmar
