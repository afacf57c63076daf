#include "tools/MeshPicture.h"

#include "api/Handles.h"
#include "scene/Material.h"
#include "scene/Spectra.h"
#include "tools/Console.h"
#include "tools/SceneBuilder.h"
#include "tools/System.h"
#include "tools/Vec.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>

using Velmar::fromHandle;
using Velmar::Mesh;
using Velmar::Reference;
using Velmar::Vec3d;
using Velmar::Vec3f;

// NOLINTNEXTLINE(misc-unused-using-decls)
using Vec::operator-;

namespace {

// The part of the picture that the mesh may fill.
constexpr double filled_part = 0.9;

// Linear values, of which the background is the brightest: so the outline of the mesh is seen on every side. A face
// that the light reaches in full has 4 times the light of one that it doesn't reach.
constexpr double background = 0.8;
constexpr double key_light = 2.4;
constexpr double albedo = 0.2;

// The light is a square in front of the viewer's upper left: far enough to be even over the mesh, whose size is 1, and
// large enough for soft shadows.
constexpr double light_distance = 100;
constexpr double light_edge = 8;
constexpr Vec3d towards_light = {-0.53, 0.66, 0.53};

/// As many as an edge needs to look smooth.
constexpr double samples = 16;
constexpr double camera_distance = 2;

// ---- the mesh in the picture's space: x to the right, y upwards, z towards the viewer
// -------------------------------------

/// The rotation from the space of the mesh.
Placement makeRotation(const PictureView& view) {
    const Vec3d towards = getViewDirection(view.azimuth, view.elevation);
    const Vec3d right = getViewDirection(view.azimuth + 90, 0);
    const Vec3d up = Vec::cross(towards, right);
    const Placement rotation = {{right.x, right.y, right.z, up.x, up.y, up.z, towards.x, towards.y, towards.z}};
    return rotation.after(view.upright);
}

/// Moves a mesh into the picture's space.
class Framing {
  public:
    Framing(Mesh& framed_mesh, const PictureView& view) : mesh(framed_mesh), rotation(makeRotation(view)) {
        keepFinite(mesh.triangles);
        keepFinite(mesh.quads);
        const Box box = getBounds();
        const Vec3d size = box.max - box.min;
        if (!(size.x >= 0)) throw Failure("there are no faces to draw");
        if (size.x <= 0 && size.y <= 0) throw Failure("the faces have no extent to draw");
        if (!isSeen(mesh.triangles) && !isSeen(mesh.quads))
            throw Failure("all faces are seen from their edges; choose another side");
        const double scale = 1 / std::max({size.x, size.y, size.z});
        const double aspect = static_cast<double>(view.width) / view.height;
        width = std::max(size.x, size.y * aspect) * scale / filled_part;
        move(box.getCentre(), scale);
    }

    /// What the picture shows across, in units of its space.
    double getWidth() const { return width; }

  private:
    Vec3d place(std::uint32_t vertex) const {
        const Vec3f& v = mesh.verts[vertex];
        return rotation.apply({v.x, v.y, v.z});
    }

    template <class Face>
    void keepFinite(Velmar::Vector<Face>& faces) const {
        const auto isFinite = [this](std::uint32_t vertex) {
            const Vec3f& v = mesh.verts[vertex];
            return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
        };
        std::size_t kept = 0;
        for (const Face& face : faces)
            if (std::all_of(std::begin(face.vertex_indices), std::end(face.vertex_indices), isFinite))
                faces[kept++] = face;
        faces.resize(kept);
    }

    Box getBounds() const {
        Box box;
        const auto add = [&](const auto& faces) {
            for (const auto& face : faces)
                for (const std::uint32_t vertex : face.vertex_indices)
                    box.add(place(vertex));
        };
        add(mesh.triangles);
        add(mesh.quads);
        return box;
    }

    /// Whether one of the faces has an area in the picture. Rounding alone would give those seen from their edges one.
    template <class Face>
    bool isSeen(const Velmar::Vector<Face>& faces) const {
        const auto hasArea = [](const Vec3d& a, const Vec3d& b, const Vec3d& c) {
            // Of length 1, because squares of the smallest and the largest floats aren't numbers.
            Vec3d ab = b - a;
            Vec3d ac = c - a;
            for (Vec3d* const edge : {&ab, &ac}) {
                const double length = getLength(*edge);
                *edge = {edge->x / length, edge->y / length, edge->z / length};
            }
            const Vec3d normal = Vec::cross(ab, ac);
            return std::abs(normal.z) > 1e-6 * getLength(normal);
        };
        return std::any_of(faces.begin(), faces.end(), [&](const Face& face) {
            const auto& v = face.vertex_indices;
            for (std::size_t last = 2; last < std::size(v); ++last)
                if (hasArea(place(v[0]), place(v[last - 1]), place(v[last]))) return true;
            return false;
        });
    }

    void move(const Vec3d& centre, double scale) {
        const auto store = [](const Vec3d& v) {
            return Vec3f{static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
        };
        for (Vec3f& v : mesh.verts) {
            const Vec3d offset = rotation.apply(Vec::of(v)) - centre;
            v = store({offset.x * scale, offset.y * scale, offset.z * scale});
        }
        for (Vec3f& normal : mesh.normals)
            normal = store(rotation.apply({normal.x, normal.y, normal.z}));
        mesh.build();
    }

    Mesh& mesh;
    const Placement rotation;
    double width = 1;
};

// ---- the scene -----------------------------------------------------------------------------------------------------

Reference<Velmar::WavelengthDependentParam> makeValue(double value) {
    return new Velmar::ConstantWavelengthDependentParam(
        Reference<Velmar::Spectrum>(new Velmar::UniformSpectrum(value)));
}

// Every node is added as soon as it is made: from then on the scene owns it, whatever happens.

void addSettings(VelmarScene* scene, const PictureView& view) {
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    VelmarScene_AddRenderSettings(scene, settings);
    VelmarRenderSettings_Width(settings, view.width);
    VelmarRenderSettings_Height(settings, view.height);
    VelmarRenderSettings_SuperSampleFactor(settings, 1);
    VelmarRenderSettings_HaltSamplesPerPixel(settings, samples);
    VelmarTonemapping* const tone_mapping = VelmarTonemapping_Create();
    VelmarScene_AddTonemapping(scene, tone_mapping);
    VelmarTonemapping_SetType(tone_mapping, VELMAR_TONEMAPPING_LINEAR);
    VelmarTonemapping_SetScale(tone_mapping, 1);
}

void addCamera(VelmarScene* scene, double width) {
    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarScene_AddCamera(scene, camera);
    fromHandle(camera)->camera_type = Velmar::SceneNodeCamera::orthographic;
    VelmarCamera_SetSensorWidth(camera, width);
    VelmarCamera_SetPosition(camera, 0, 0, camera_distance);
    VelmarCamera_SetForwards(camera, 0, 0, -1);
    VelmarCamera_SetUp(camera, 0, 1, 0);
}

VelmarMaterialNode* addMaterial(VelmarScene* scene, const char* name, double reflected, double emitted) {
    VelmarMaterialNode* const node = VelmarMaterial_CreateNode(name);
    VelmarScene_AddMaterial(scene, node);
    VelmarMaterial_AddToNode(node, VelmarMaterial_CreateDiffuse(name, 0, 0, 0));
    auto& material = static_cast<Velmar::DiffuseMaterial&>(*fromHandle(node)->material);
    material.albedo = makeValue(reflected);
    if (emitted > 0) material.base_emission = material.emission = makeValue(std::sqrt(emitted));
    return node;
}

void addModel(VelmarScene* scene, const char* name, const Reference<Mesh>& mesh, VelmarMaterialNode* material) {
    VelmarMesh* const node = VelmarMesh_Create(name);
    VelmarScene_AddMesh(scene, node);
    fromHandle(node)->mesh = mesh;
    VelmarModel* const model = VelmarModel_Create(name, node);
    VelmarScene_AddModel(scene, model);
    // The library prints each list of materials on the standard output.
    const System::SilentOutput silence;
    VelmarModel_SetMaterials(model, 1, &material);
}

void addLight(VelmarScene* scene) {
    const auto toUnit = [](const Vec3d& v) {
        const double size = getLength(v);
        return Vec3d{v.x / size, v.y / size, v.z / size};
    };
    const Vec3d direction = toUnit(towards_light);
    const Vec3d across = toUnit(Vec::cross({0, 1, 0}, direction));
    const Vec3d along = Vec::cross(direction, across);
    const Reference<Mesh> mesh(new Mesh);
    // The outer side, which emits, is the one towards the mesh.
    for (const auto& corner : {std::pair{-1, -1}, {-1, 1}, {1, 1}, {1, -1}}) {
        const auto place = [&](double d, double a, double b) {
            return static_cast<float>(d * light_distance + (a * corner.first + b * corner.second) * light_edge / 2);
        };
        mesh->addVertex({place(direction.x, across.x, along.x), place(direction.y, across.y, along.y),
                         place(direction.z, across.z, along.z)});
    }
    mesh->quads.push_back({{0, 1, 2, 3}, {0, 0, 0, 0}, 0});
    mesh->build();
    // A surface that faces the light gets its radiance times its solid angle, and reflects that over pi.
    const double solid_angle = light_edge * light_edge / (light_distance * light_distance);
    addModel(scene, "light", mesh, addMaterial(scene, "light", 0, key_light * std::numbers::pi / solid_angle));
}

} // namespace

VelmarScene* makePictureScene(Mesh& mesh, const PictureView& view) {
    const Framing framing(mesh, view);
    OwnedScene scene(VelmarScene_Create());
    addSettings(scene.get(), view);
    addCamera(scene.get(), framing.getWidth());
    VelmarScene_AddBackground(scene.get(), VelmarBackground_CreateUniform(1, 1, 1, background));
    addLight(scene.get());
    addModel(scene.get(), "mesh", Reference<Mesh>(&mesh), addMaterial(scene.get(), "mesh", albedo, 0));
    return scene.release();
}
