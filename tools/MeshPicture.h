#pragma once

#include "mesh/Mesh.h"
#include "tools/PngFile.h"

#include <cstdint>

/// How to look at a mesh.
struct PictureView {
    std::int32_t width = 800;
    std::int32_t height = 600;
    /// Degrees around the mesh, from in front of it to its right.
    double azimuth = 30;
    /// Degrees above the horizon.
    double elevation = 20;
    /// Whether the height of the mesh is y, else z.
    bool y_up = false;
};

/// Draws the faces of a mesh, shaded, seen without perspective and filling the image. The faces must refer to vertices
/// that are there; those with a vertex that isn't finite are left out. Throws `Failure` when nothing is left to see.
GreyImage drawMesh(const Velmar::Mesh& mesh, const PictureView& view);
