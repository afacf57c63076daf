#include "preview/World.h"

#include "preview/SceneNodes.h"

#include "scene/nodes/SceneNodeMesh.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>

namespace Preview {

namespace {

std::string nameOf(const Velmar::SceneNode& node) {
    return std::string(node.getName().view());
}

void setTransform(RTCGeometry geometry, unsigned step, const Affine& m) {
    const float columns[12] = {m.x.x, m.x.y, m.x.z, m.y.x, m.y.y, m.y.z, m.z.x, m.z.y, m.z.z, m.p.x, m.p.y, m.p.z};
    rtcSetGeometryTransform(geometry, step, RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR, columns);
}

/// Whether rays can be transformed by the inverse: what is valid in the scene must be valid for Embree in the mesh too.
bool isUsable(const Affine& m) {
    const float determinant = m.determinant();
    if (!isFinite(m) || !std::isfinite(determinant) || determinant == 0.0f) return false;
    // Together with the limit of rays within Embree's, 1.844e18.
    constexpr float max_enlargement = 1e8f / 3.0f;
    constexpr float max_offset = 5e17f;
    const Vec3 rows[] = {cross(m.y, m.z), cross(m.z, m.x), cross(m.x, m.y)};
    return std::all_of(std::begin(rows), std::end(rows), [&](const Vec3& row) {
        return length(row) <= max_enlargement * std::abs(determinant) &&
               std::abs(dot(row, m.p)) <= max_offset * std::abs(determinant);
    });
}

} // namespace

World::World(unsigned threads) : device(threads) {}

bool World::build(const SceneNodes& nodes, std::vector<std::string> material_masks,
                  const std::vector<std::string>& object_masks, const std::atomic<bool>& cancelled) {
    // Nothing is known about what a build that was broken off leaves.
    const auto forget = [this] {
        scene.reset();
        instances.clear();
        spheres.clear();
        device.forgetErrors();
    };
    try {
        const bool built = tryToBuild(nodes, std::move(material_masks), object_masks, cancelled);
        if (!built) forget();
        return built;
    } catch (const EmbreeDevice::Cancelled&) {
        forget();
        return false;
    } catch (...) {
        forget();
        throw;
    }
}

bool World::tryToBuild(const SceneNodes& nodes, std::vector<std::string> material_masks,
                       const std::vector<std::string>& object_masks, const std::atomic<bool>& cancelled) {
    device.setCancelled(&cancelled);
    surfaces.reset(std::move(material_masks));
    surface_lists.assign(1, 0);
    last_materials.clear();
    std::vector<Instance> former;
    former.swap(instances);
    paths.clear();
    const bool had_spheres = !spheres.empty();
    spheres.clear();
    for (auto& [node, known] : geometries)
        known.used = false;

    instances.reserve(nodes.models.size());
    for (const Velmar::SceneNodeModel* const model : nodes.models) {
        if (cancelled) return false;
        readModel(*model, object_masks);
    }
    for (const Velmar::SceneNodeSphere* const sphere : nodes.spheres)
        readSphere(*sphere);

    has_shadow_catchers = false;
    for (std::uint32_t i = 0; i < surfaces.size(); ++i)
        has_shadow_catchers = has_shadow_catchers || surfaces[i].shadow_catcher;
    needs_filter = has_shadow_catchers || std::any_of(instances.begin(), instances.end(), [](const Instance& instance) {
                       return instance.invisible_to_camera;
                   });
    has_motion = !paths.empty() || std::any_of(spheres.begin(), spheres.end(),
                                               [](const SphereShape& sphere) { return sphere.motion.isMoving(); });

    if (scene == nullptr || had_spheres || !spheres.empty() || former.size() != instances.size()) {
        scene = device.makeScene();
        former.clear();
    }
    attachInstances(former);
    attachSpheres();
    device.throwIfFailed();
    device.commit(scene.get(), instances.size() + spheres.size());
    std::erase_if(geometries, [](const auto& entry) { return !entry.second.used; });
    return true;
}

const MeshGeometry* World::geometryOf(const Velmar::SceneNodeModel& model) {
    const Velmar::SceneNode* const node = model.geometry.getPointer();
    if (node == nullptr) {
        report("model '" + nameOf(model) + "' has no geometry");
        return nullptr;
    }
    const auto known = geometries.find(node);
    if (known != geometries.end() && known->second.used) return known->second.geometry.get();
    if (node->getType() != Velmar::NodeType::Mesh) {
        report("model '" + nameOf(model) + "' has a geometry that isn't a mesh; left out");
        return nullptr;
    }
    const auto* const mesh_node = static_cast<const Velmar::SceneNodeMesh*>(node);
    const Velmar::Mesh* const mesh = mesh_node->mesh.getPointer();
    if (mesh == nullptr) {
        report("mesh '" + nameOf(*mesh_node) + "' isn't loaded; left out");
        return nullptr;
    }
    if (mesh_node->max_num_subdivisions > 0) report("subdivision isn't rendered");
    KnownGeometry& entry = geometries[node];
    if (entry.geometry == nullptr || !entry.geometry->isMadeOf(*mesh, mesh_node->normal_smoothing))
        entry.geometry = std::make_unique<MeshGeometry>(device, *mesh, mesh_node->normal_smoothing, nameOf(*mesh_node));
    entry.used = true;
    return entry.geometry.get();
}

void World::readModel(const Velmar::SceneNodeModel& model, const std::vector<std::string>& object_masks) {
    Instance instance;
    instance.geometry = geometryOf(model);
    if (instance.geometry == nullptr) return;
    std::string complaint;
    const Motion motion({model.keyframes.data(), model.keyframes.size()},
                        baseMatrix(model.rotation.getPointer(), model.scale), complaint);
    if (!complaint.empty()) report("model '" + nameOf(model) + "': " + complaint + "; drawn at rest");
    Affine to_world = motion.at(0.5);
    if (motion.isMoving()) {
        const unsigned segments = motion.countSegments();
        std::vector<Affine> path(segments + 1);
        for (unsigned i = 0; i <= segments; ++i)
            path[i] = motion.at(double{static_cast<float>(i) / static_cast<float>(segments)});
        if (!std::all_of(path.begin(), path.end(), isUsable)) {
            report("model '" + nameOf(model) +
                   "' has a transformation that isn't finite, can't be inverted or makes it too small");
            return;
        }
        instance.path = static_cast<std::int32_t>(paths.size());
        paths.push_back(std::move(path));
        to_world = placementAt(instance, 0.5f);
    } else if (!isUsable(to_world)) {
        report("model '" + nameOf(model) +
               "' has a transformation that isn't finite, can't be inverted or makes it too small");
        return;
    }
    instance.placement = Placement(to_world);
    if (!model.ies_profiles.empty()) report("IES profiles aren't rendered");
    instance.uid = model.getUID();
    instance.invisible_to_camera = model.invisible_to_camera;
    const auto mask = std::find(object_masks.begin(), object_masks.end(), model.mask_name.view());
    if (mask != object_masks.end()) instance.mask = static_cast<std::int32_t>(mask - object_masks.begin());
    readSurfaces(model, instance);
    instances.push_back(instance);
}

void World::readSurfaces(const Velmar::SceneNodeModel& model, Instance& instance) {
    const Velmar::Reference<Velmar::SceneNodeMaterial>* const materials = model.materials.data();
    const std::size_t count = model.materials.size();
    const bool same =
        model.emission_scales.empty() && !instances.empty() && last_materials.size() == count &&
        std::equal(last_materials.begin(), last_materials.end(), materials,
                   [](const auto* known, const auto& reference) { return known == reference.getPointer(); });
    if (same) {
        instance.first_surface = instances.back().first_surface;
        instance.surface_count = instances.back().surface_count;
        return;
    }
    if (count == 0) report("a model without materials is drawn grey");
    last_materials.clear();
    instance.first_surface = static_cast<std::uint32_t>(surface_lists.size());
    instance.surface_count = static_cast<std::uint32_t>(count);
    for (std::size_t i = 0; i < count; ++i) {
        last_materials.push_back(materials[i].getPointer());
        surface_lists.push_back(surfaces.indexOf(materials[i].getPointer()));
    }
    if (model.emission_scales.empty()) return;
    last_materials.assign(1, reinterpret_cast<const Velmar::SceneNodeMaterial*>(&model));
    for (std::size_t i = 0; i < count; ++i)
        for (const Velmar::Reference<Velmar::EmissionScale>& scale : model.emission_scales)
            if (scale && scale->material.getPointer() == materials[i].getPointer())
                surface_lists[instance.first_surface + i] = surfaces.addScaled(
                    materials[i].getPointer(), *scale, areaOf(instance, static_cast<std::uint32_t>(i)));
}

/// In square metres, of the faces of one material in the middle of the exposure.
double World::areaOf(const Instance& instance, std::uint32_t material) const {
    double area = 0.0;
    const MeshGeometry& geometry = *instance.geometry;
    const std::size_t vertex_count = geometry.getMesh().verts.size();
    const auto add = [&](const MeshGeometry::Corners& corners) {
        if (corners.material != material) return;
        if (std::any_of(corners.vertices.begin(), corners.vertices.end(),
                        [=](std::uint32_t index) { return index >= vertex_count; }))
            return;
        const Vec3 a = geometry.vertex(corners.vertices[0]);
        const float doubled =
            length(cross(instance.placement.to_world.vector(geometry.vertex(corners.vertices[1]) - a),
                         instance.placement.to_world.vector(geometry.vertex(corners.vertices[2]) - a)));
        if (std::isfinite(doubled)) area += 0.5 * double{doubled};
    };
    for (std::size_t i = 0; i < geometry.countFaces(MeshGeometry::triangle_kind); ++i)
        add(geometry.cornersAt(MeshGeometry::triangle_kind, static_cast<unsigned>(i), 0.0f, 0.0f));
    for (std::size_t i = 0; i < geometry.countFaces(MeshGeometry::quad_kind); ++i) {
        add(geometry.cornersAt(MeshGeometry::quad_kind, static_cast<unsigned>(i), 0.0f, 0.0f));
        add(geometry.cornersAt(MeshGeometry::quad_kind, static_cast<unsigned>(i), 1.0f, 1.0f));
    }
    return area;
}

void World::readSphere(const Velmar::SceneNodeSphere& node) {
    SphereShape sphere;
    std::string complaint;
    sphere.motion = Motion({node.keyframes.data(), node.keyframes.size()}, identity_matrix, complaint);
    if (!complaint.empty()) report("sphere '" + nameOf(node) + "': " + complaint + "; drawn at rest");
    sphere.centre = sphere.motion.at(0.5).p;
    sphere.radius = static_cast<float>(node.radius);
    if (!isFinite(sphere.motion.at(0.0)) || !isFinite(sphere.motion.at(1.0)) || !std::isfinite(sphere.radius) ||
        !(sphere.radius > 0.0f)) {
        report("sphere '" + nameOf(node) + "' has a placement or radius that makes no sense; left out");
        return;
    }
    sphere.surface = surfaces.indexOf(node.material.getPointer());
    sphere.uid = node.getUID();
    spheres.push_back(std::move(sphere));
}

void World::attachInstances(const std::vector<Instance>& former) {
    for (std::size_t i = 0; i < instances.size(); ++i) {
        const Instance& instance = instances[i];
        const auto id = static_cast<unsigned>(i);
        const bool known = i < former.size();
        if (known && former[i].path < 0 && instance.path < 0 && former[i].geometry == instance.geometry) {
            if (former[i].placement.to_world == instance.placement.to_world) continue;
            auto* const geometry = rtcGetGeometry(scene.get(), id);
            setTransform(geometry, 0, instance.placement.to_world);
            rtcCommitGeometry(geometry);
            continue;
        }
        if (known) rtcDetachGeometry(scene.get(), id);
        const GeometryOwner geometry = device.makeGeometry(RTC_GEOMETRY_TYPE_INSTANCE);
        rtcSetGeometryInstancedScene(geometry.get(), instance.geometry->getScene());
        if (instance.path < 0) {
            setTransform(geometry.get(), 0, instance.placement.to_world);
        } else {
            const std::vector<Affine>& path = paths[static_cast<std::size_t>(instance.path)];
            rtcSetGeometryTimeStepCount(geometry.get(), static_cast<unsigned>(path.size()));
            for (std::size_t step = 0; step < path.size(); ++step)
                setTransform(geometry.get(), static_cast<unsigned>(step), path[step]);
        }
        rtcCommitGeometry(geometry.get());
        rtcAttachGeometryByID(scene.get(), geometry.get(), id);
    }
}

void World::attachSpheres() {
    if (spheres.empty()) return;
    const GeometryOwner geometry = device.makeGeometry(RTC_GEOMETRY_TYPE_USER);
    rtcSetGeometryUserPrimitiveCount(geometry.get(), static_cast<unsigned>(spheres.size()));
    rtcSetGeometryUserData(geometry.get(), this);
    sphere_segments = 1;
    for (const SphereShape& sphere : spheres)
        sphere_segments = std::max(sphere_segments, sphere.motion.countSegments());
    const bool move =
        std::any_of(spheres.begin(), spheres.end(), [](const SphereShape& sphere) { return sphere.motion.isMoving(); });
    if (move) rtcSetGeometryTimeStepCount(geometry.get(), sphere_segments + 1);
    rtcSetGeometryBoundsFunction(geometry.get(), boundSphere, this);
    rtcSetGeometryIntersectFunction(geometry.get(), intersectSphere);
    rtcSetGeometryOccludedFunction(geometry.get(), occludeSphere);
    rtcCommitGeometry(geometry.get());
    rtcAttachGeometryByID(scene.get(), geometry.get(), static_cast<unsigned>(instances.size()));
}

} // namespace Preview
