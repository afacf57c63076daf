#pragma once

#include "velmarapi.h"

#include "mesh/Mesh.h"
#include "tools/Placement.h"

#include <cstdint>

/// How to look at a mesh.
struct PictureView {
    std::int32_t width = 800;
    std::int32_t height = 600;
    /// Degrees around the mesh, from in front of it to its right.
    double azimuth = 30;
    /// Degrees above the horizon.
    double elevation = 20;
    /// Turns the mesh so that its height is z.
    Placement upright;
};

/// A scene for the preview renderer: the mesh in even grey before a brighter background, lit from the viewer's upper
/// left, seen without perspective and filling the picture. The mesh is turned, moved and scaled into the picture's
/// space; the scene takes it as it is then. The faces must refer to vertices that are there; those with a vertex that
/// isn't finite are left out. The caller owns the scene. Throws `Failure` when nothing is left to see.
VelmarScene* makePictureScene(Velmar::Mesh& mesh, const PictureView& view);
