#pragma once

#include "preview/EmbreeDevice.h"
#include "preview/MeshGeometry.h"
#include "preview/Motion.h"
#include "preview/SceneNodes.h"
#include "preview/Surface.h"
#include "preview/Vec.h"

#include <atomic>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Preview {

/// Where a mesh is, with what each hit needs of that.
struct Placement {
    Placement() = default;
    explicit Placement(const Affine& to_world_);

    Affine to_world;
    Linear for_normals = to_world.forNormals();
    /// By how much the magnitudes of a place's coordinates make its rounding errors grow, and what they are at least.
    Vec3 rounding{};
    float min_rounding = 0.0f;
};

/// A model's placement of a mesh.
struct Instance {
    /// For one that moves, that in the middle of the exposure.
    Placement placement;
    const MeshGeometry* geometry = nullptr;
    /// Where its list of surfaces begins; `surface_count` is 0 for a model without materials.
    std::uint32_t first_surface = 0;
    std::uint32_t surface_count = 0;
    /// Index of its placements over the exposure, or -1 at rest.
    std::int32_t path = -1;
    std::uint32_t uid = 0;
    /// Index of its mask channel, or -1.
    std::int32_t mask = -1;
    bool invisible_to_camera = false;
};

struct SphereShape {
    Vec3 centre;
    float radius = 0.0f;
    std::uint32_t surface = 0;
    std::uint32_t uid = 0;
    Motion motion;

    Vec3 centreAt(float time) const { return motion.isMoving() ? motion.at(double{time}).p : centre; }
};

/// Whose rays see what: models may be invisible to the camera, and what only catches shadows is invisible to all other
/// rays.
enum class RayKind { camera, other };

/// What a ray hit.
struct SurfacePoint {
    /// The record of the ray, which must stay as it is while this object is used.
    const RTCRayHit* hit = nullptr;
    /// Unit normal of the geometry, on the outer side. Outer is the side from which the corners of a face appear
    /// counter-clockwise.
    Vec3 normal;
    const Surface* surface = nullptr;
    /// The mesh, null on spheres.
    const MeshGeometry* geometry = nullptr;
    /// Of the model or sphere.
    std::uint32_t uid = 0;
    std::int32_t mask = -1;
    /// The area that a unit of area in the middle of the exposure has at this moment, if it moves.
    float stretch = 1.0f;

    /// Texture coordinates. Spheres have none.
    Vec2 uvOf(std::uint32_t set) const {
        if (geometry == nullptr) return {};
        return geometry->uvAt(geometry->cornersAt(hit->hit.geomID, hit->hit.primID, hit->hit.u, hit->hit.v), set);
    }
};

/// Where that is, as paths that go on from there need it.
struct SurfacePlace {
    Vec3 position;
    /// Unit normal for shading, on the outer side.
    Vec3 shading_normal;
    /// How far from the surface a ray must begin so as not to meet it again through rounding.
    float clearance = 0.0f;
};

struct Ray {
    Vec3 origin;
    Vec3 direction;
    float time = 0.0f;
    float length = std::numeric_limits<float>::infinity();

    /// Whether Embree takes it, also in the space of the smallest mesh: its assertions end the process for others,
    /// which come of places and sizes near the limits of floats.
    bool isValid() const {
        // Squares, so that one comparison serves three numbers.
        constexpr float max_size = 1e10f * 1e10f;
        return dot(origin, origin) <= max_size && dot(direction, direction) <= max_size && length >= 0.0f;
    }

    /// Fills Embree's record.
    void fill(RTCRay& to) const {
        to.org_x = origin.x, to.org_y = origin.y, to.org_z = origin.z;
        to.tnear = 0.0f;
        to.dir_x = direction.x, to.dir_y = direction.y, to.dir_z = direction.z;
        to.time = time;
        to.tfar = length;
        to.mask = 0xFFFFFFFFu;
        to.id = 0;
        to.flags = 0;
    }
};

/// The geometry of a scene, with its surfaces, ready for rays. Rays may be traced from any number of threads.
class World {
  public:
    /// `threads` is the number of threads that may build. Throws `std::bad_alloc`.
    explicit World(unsigned threads);
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Reads the geometry of `nodes`. Meshes that are as they were at an earlier call keep what was built of them, and
    /// if instances have only moved or changed their materials, the rest is kept too. What can't be rendered is
    /// reported and left out. Returns false when `cancelled` became true meanwhile. Throws `std::bad_alloc`.
    bool build(const SceneNodes& nodes, std::vector<std::string> material_masks,
               const std::vector<std::string>& object_masks, const std::atomic<bool>& cancelled);

    /// Fills Embree's record of a ray that hasn't hit anything yet. Rays that begin 1e10 metres away or aren't finite
    /// will hit nothing.
    static void setRay(const Ray& ray, RTCRayHit& hit) {
        ray.fill(hit.ray);
        // One that ends before it begins.
        if (!ray.isValid()) Ray{{}, {1.0f, 0.0f, 0.0f}, 0.0f, -std::numeric_limits<float>::infinity()}.fill(hit.ray);
        hit.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        hit.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    }
    static bool isMiss(const RTCRayHit& hit) { return hit.hit.geomID == RTC_INVALID_GEOMETRY_ID; }
    /// Returns whether the ray of a record hits something; then the record says what.
    bool intersect(RayKind kind, RTCRayHit& hit) const;
    /// Both.
    bool intersect(const Ray& ray, RayKind kind, RTCRayHit& hit) const {
        setRay(ray, hit);
        return intersect(kind, hit);
    }
    /// What was hit, by a record of `intersect`.
    SurfacePoint pointAt(const RTCRayHit& hit) const;
    SurfacePlace placeOf(const SurfacePoint& point) const;
    /// Whether something is between the ray's origin and its length.
    bool isOccluded(const Ray& ray) const;

    const std::vector<Instance>& getInstances() const { return instances; }
    const std::vector<SphereShape>& getSpheres() const { return spheres; }
    const Surface& surfaceOf(const Instance& instance, std::uint32_t material) const {
        return surfaces[surface_lists[material < instance.surface_count ? instance.first_surface + material : 0]];
    }
    const Surface& surfaceOf(const SphereShape& sphere) const { return surfaces[sphere.surface]; }
    /// The placement of an instance at a moment of the exposure, as rays find it.
    Affine placementAt(const Instance& instance, float time) const;

    bool hasMotion() const { return has_motion; }
    bool hasShadowCatchers() const { return has_shadow_catchers; }
    RTCScene getScene() const { return scene.get(); }
    /// Bytes that Embree has allocated.
    std::int64_t getEmbreeBytes() const { return device.getBytes(); }

  private:
    struct Query;

    static void filter(const RTCFilterFunctionNArguments* arguments);
    static void boundSphere(const RTCBoundsFunctionArguments* arguments);
    static void intersectSphere(const RTCIntersectFunctionNArguments* arguments);
    static void occludeSphere(const RTCOccludedFunctionNArguments* arguments);
    static SurfacePlace placeOnMesh(const SurfacePoint& point, const Placement& placement);
    bool isSphereHit(unsigned index, const RTCRay& ray, float& t, Vec3& normal) const;

    bool tryToBuild(const SceneNodes& nodes, std::vector<std::string> material_masks,
                    const std::vector<std::string>& object_masks, const std::atomic<bool>& cancelled);
    void readModel(const Velmar::SceneNodeModel& model, const std::vector<std::string>& object_masks);
    void readSphere(const Velmar::SceneNodeSphere& node);
    void readSurfaces(const Velmar::SceneNodeModel& model, Instance& instance);
    double areaOf(const Instance& instance, std::uint32_t material) const;
    const MeshGeometry* geometryOf(const Velmar::SceneNodeModel& model);
    void attachInstances(const std::vector<Instance>& former);
    void attachSpheres();

    SurfaceTable surfaces{{}};
    /// In front of what is made by it, and after what allocates: a device that is released when memory has run out may
    /// end the process.
    EmbreeDevice device;
    struct KnownGeometry {
        std::unique_ptr<MeshGeometry> geometry;
        bool used = false;
    };
    std::map<const Velmar::SceneNode*, KnownGeometry> geometries;
    /// Lists of surfaces, one after the other; instances share equal ones that follow each other.
    std::vector<std::uint32_t> surface_lists;
    std::vector<const Velmar::SceneNodeMaterial*> last_materials;
    std::vector<Instance> instances;
    /// Placements at the ends of equal parts of the exposure.
    std::vector<std::vector<Affine>> paths;
    std::vector<SphereShape> spheres;
    /// Equal parts of the exposure for which the moving spheres are bounded.
    unsigned sphere_segments = 1;
    bool has_motion = false;
    bool has_shadow_catchers = false;
    bool needs_filter = false;
    SceneOwner scene;
};

} // namespace Preview
