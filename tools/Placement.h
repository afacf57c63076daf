#pragma once

#include "velmarvec.h"

#include "mesh/Mesh.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Where models are in a scene, whose height is z, and how the user says so.

inline double getLength(const Velmar::Vec3d& v) {
    return std::hypot(v.x, v.y, v.z);
}

/// An upright box in the scene.
struct Box {
    static constexpr double infinity = std::numeric_limits<double>::infinity();

    Velmar::Vec3d min = {infinity, infinity, infinity};
    Velmar::Vec3d max = {-infinity, -infinity, -infinity};

    void add(const Velmar::Vec3d& point);
    void add(const Box& other);
    Velmar::Vec3d getCentre() const;
    /// Of the sphere around the box; 1 for a point, so that it can be looked at.
    double getRadius() const;
};

/// A place in the scene: a 3 by 3 matrix, row after row, and then a translation.
struct Placement {
    double matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    Velmar::Vec3d position = {0, 0, 0};

    Velmar::Vec3d apply(const Velmar::Vec3d& point) const;
    /// The placement that applies `first` and then this one.
    Placement after(const Placement& first) const;
    /// Of a mesh in this place, all vertices included.
    Box getBounds(const Velmar::Mesh& mesh) const;
    bool turns() const;
    bool moves() const;
};

/// The axes that `--up` knows, "auto" included.
const std::vector<std::string>& getUpAxes();

/// The rotation that turns the axis `up` of the mesh file `path` to z. "auto" takes y for OBJ files and z for others,
/// as programs that write them mostly do.
Placement makeUpright(std::string_view up, std::string_view path);

/// Turns the positions and normals of a mesh, by the inverse rotation if `inverse`, and builds it again.
void turnMesh(Velmar::Mesh& mesh, const Placement& rotation, bool inverse = false);

/// Where the user wants a model.
struct PlacementRequest {
    std::optional<Velmar::Vec3d> at;
    /// Degrees around x, then around y, then around z.
    std::optional<Velmar::Vec3d> rotate;
    bool on_ground = false;
};

/// The place of a mesh whose file has `upright` as its rotation.
Placement place(const Velmar::Mesh& mesh, const Placement& upright, const PlacementRequest& request);

/// The place of a group of models with these bounds, all upright already, which is scaled first.
Placement placeTogether(const Box& bounds, double scale, const PlacementRequest& request);

/// Three numbers with commas between, as in "1,0,-2.5". Throws `UsageError` that names the option.
Velmar::Vec3d parsePoint(const std::string& option, const std::string& text);

/// A rotation: three numbers of degrees, or one around the height. Throws `UsageError` that names the option.
Velmar::Vec3d parseRotation(const std::string& option, const std::string& text);

/// The words of a line of a placement file: separated by blanks, with blanks only in double quotes, up to a "#".
std::vector<std::string> splitWords(std::string_view line);
