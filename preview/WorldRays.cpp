// Rays in a world: what Embree calls for each hit and each sphere, and what was hit.

#include "preview/World.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Preview {

/// What a query hands through Embree to the functions below. Embree's part comes first.
struct World::Query {
    RTCIntersectContext embree;
    const World* world;
    RayKind kind;
};

namespace {

/// A few times the rounding of one operation.
constexpr float rounding = 1e-6f;

float sumOfMagnitudes(const Vec3& v) {
    return std::abs(v.x) + std::abs(v.y) + std::abs(v.z);
}

} // namespace

Placement::Placement(const Affine& to_world_)
    : to_world(to_world_),
      rounding(Vec3{sumOfMagnitudes(to_world.x), sumOfMagnitudes(to_world.y), sumOfMagnitudes(to_world.z)} *
               Preview::rounding),
      min_rounding(sumOfMagnitudes(to_world.p) * Preview::rounding) {}

bool World::intersect(RayKind kind, RTCRayHit& hit) const {
    Query query;
    rtcInitIntersectContext(&query.embree);
    query.world = this;
    query.kind = kind;
    if (needs_filter) query.embree.filter = filter;
    rtcIntersect1(scene.get(), &query.embree, &hit);
    return !isMiss(hit);
}

bool World::isOccluded(const Ray& ray) const {
    if (!ray.isValid()) return false;
    Query query;
    rtcInitIntersectContext(&query.embree);
    query.world = this;
    query.kind = RayKind::other;
    if (needs_filter) query.embree.filter = filter;
    RTCRay shadow;
    ray.fill(shadow);
    rtcOccluded1(scene.get(), &query.embree, &shadow);
    return shadow.tfar < 0.0f;
}

void World::filter(const RTCFilterFunctionNArguments* arguments) {
    if (arguments->valid[0] == 0) return;
    const Query& query = *reinterpret_cast<const Query*>(arguments->context);
    const World& world = *query.world;
    const RTCHit hit = rtcGetHitFromHitN(arguments->hit, arguments->N, 0);
    const Surface* surface = nullptr;
    bool invisible_to_camera = false;
    if (hit.instID[0] == RTC_INVALID_GEOMETRY_ID) {
        surface = &world.surfaceOf(world.spheres[hit.primID]);
    } else {
        const Instance& instance = world.instances[hit.instID[0]];
        invisible_to_camera = instance.invisible_to_camera;
        const MeshGeometry::Corners corners = instance.geometry->cornersAt(hit.geomID, hit.primID, hit.u, hit.v);
        surface = &world.surfaceOf(instance, corners.material);
    }
    const bool seen = query.kind == RayKind::camera ? !invisible_to_camera : !surface->shadow_catcher;
    if (!seen) arguments->valid[0] = 0;
}

void World::boundSphere(const RTCBoundsFunctionArguments* arguments) {
    const World& world = *static_cast<const World*>(arguments->geometryUserPtr);
    const SphereShape& sphere = world.spheres[arguments->primID];
    // Embree mixes the boxes of neighbouring moments, so each is widened by what an arc leaves its chord.
    const auto moment = [&](unsigned step) {
        return sphere.centreAt(static_cast<float>(step) / static_cast<float>(world.sphere_segments));
    };
    const Vec3 centre = moment(arguments->timeStep);
    const float widened =
        sphere.motion.isMoving() ? 0.001f * sumOfMagnitudes(moment(arguments->timeStep + 1) - centre) : 0;
    const float radius = sphere.radius * 1.00001f + 1e-6f * sumOfMagnitudes(centre) + widened;
    RTCBounds& box = *arguments->bounds_o;
    box.lower_x = centre.x - radius;
    box.lower_y = centre.y - radius;
    box.lower_z = centre.z - radius;
    box.upper_x = centre.x + radius;
    box.upper_y = centre.y + radius;
    box.upper_z = centre.z + radius;
}

/// The nearest hit beyond the ray's beginning, in double precision: spheres may be as large as a planet.
bool World::isSphereHit(unsigned index, const RTCRay& ray, float& t, Vec3& normal) const {
    const SphereShape& sphere = spheres[index];
    const Vec3 centre = sphere.centreAt(ray.time);
    const double ox = double{ray.org_x} - double{centre.x};
    const double oy = double{ray.org_y} - double{centre.y};
    const double oz = double{ray.org_z} - double{centre.z};
    const auto dx = double{ray.dir_x};
    const auto dy = double{ray.dir_y};
    const auto dz = double{ray.dir_z};
    const double a = dx * dx + dy * dy + dz * dz;
    const double b = ox * dx + oy * dy + oz * dz;
    const double c = ox * ox + oy * oy + oz * oz - double{sphere.radius} * double{sphere.radius};
    const double discriminant = b * b - a * c;
    if (!(discriminant >= 0.0)) return false;
    // The form without cancellation (Press et al., "Numerical Recipes", section 5.6).
    const double q = -b - std::copysign(std::sqrt(discriminant), b);
    double near = q / a;
    double far = q == 0.0 ? near : c / q;
    if (near > far) std::swap(near, far);
    const auto isInside = [&](double distance) { return distance > double{ray.tnear} && distance < double{ray.tfar}; };
    double found = near;
    if (!isInside(found)) found = far;
    if (!isInside(found)) return false;
    t = static_cast<float>(found);
    normal = {static_cast<float>(ox + found * dx), static_cast<float>(oy + found * dy),
              static_cast<float>(oz + found * dz)};
    return true;
}

void World::intersectSphere(const RTCIntersectFunctionNArguments* arguments) {
    if (arguments->valid[0] == 0) return;
    const World& world = *static_cast<const World*>(arguments->geometryUserPtr);
    auto& ray_hit = *reinterpret_cast<RTCRayHit*>(arguments->rayhit);
    float t = 0.0f;
    Vec3 normal;
    if (!world.isSphereHit(arguments->primID, ray_hit.ray, t, normal)) return;
    RTCHit hit;
    hit.Ng_x = normal.x;
    hit.Ng_y = normal.y;
    hit.Ng_z = normal.z;
    hit.u = 0.0f;
    hit.v = 0.0f;
    hit.primID = arguments->primID;
    hit.geomID = arguments->geomID;
    hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    int valid = -1;
    const float former = ray_hit.ray.tfar;
    ray_hit.ray.tfar = t;
    RTCFilterFunctionNArguments filtered{&valid,
                                         arguments->geometryUserPtr,
                                         arguments->context,
                                         reinterpret_cast<RTCRayN*>(&ray_hit.ray),
                                         reinterpret_cast<RTCHitN*>(&hit),
                                         1};
    if (arguments->context->filter != nullptr) filter(&filtered);
    if (valid == 0)
        ray_hit.ray.tfar = former;
    else
        ray_hit.hit = hit;
}

void World::occludeSphere(const RTCOccludedFunctionNArguments* arguments) {
    if (arguments->valid[0] == 0) return;
    const World& world = *static_cast<const World*>(arguments->geometryUserPtr);
    auto& ray = *reinterpret_cast<RTCRay*>(arguments->ray);
    float t = 0.0f;
    Vec3 normal;
    if (!world.isSphereHit(arguments->primID, ray, t, normal)) return;
    if (world.needs_filter && world.surfaceOf(world.spheres[arguments->primID]).shadow_catcher) return;
    ray.tfar = -std::numeric_limits<float>::infinity();
}

Affine World::placementAt(const Instance& instance, float time) const {
    if (instance.path < 0) return instance.placement.to_world;
    const std::vector<Affine>& path = paths[static_cast<std::size_t>(instance.path)];
    const float at = std::clamp(time, 0.0f, 1.0f) * static_cast<float>(path.size() - 1);
    const std::size_t part = std::min(static_cast<std::size_t>(at), path.size() - 2);
    return mix(path[part], path[part + 1], at - static_cast<float>(part));
}

SurfacePoint World::pointAt(const RTCRayHit& hit) const {
    const Vec3 normal = {hit.hit.Ng_x, hit.hit.Ng_y, hit.hit.Ng_z};
    SurfacePoint point;
    point.hit = &hit;
    if (hit.hit.instID[0] == RTC_INVALID_GEOMETRY_ID) {
        const SphereShape& sphere = spheres[hit.hit.primID];
        point.normal = normalised(normal);
        point.surface = &surfaceOf(sphere);
        point.uid = sphere.uid;
        return point;
    }
    const Instance& instance = instances[hit.hit.instID[0]];
    point.geometry = instance.geometry;
    point.surface = &surfaceOf(instance, instance.geometry->materialOf(hit.hit.geomID, hit.hit.primID));
    point.uid = instance.uid;
    point.mask = instance.mask;
    const Vec3 at_rest = instance.placement.for_normals.vector(normal);
    if (instance.path < 0) {
        point.normal = normalised(at_rest);
        return point;
    }
    const Vec3 moved = placementAt(instance, hit.ray.time).normal(normal);
    point.normal = normalised(moved);
    point.stretch = length(moved) / length(at_rest);
    return point;
}

SurfacePlace World::placeOf(const SurfacePoint& point) const {
    const RTCRayHit& hit = *point.hit;
    if (point.geometry == nullptr) {
        const SphereShape& sphere = spheres[hit.hit.primID];
        const Vec3 centre = sphere.centreAt(hit.ray.time);
        return {centre + point.normal * sphere.radius, point.normal,
                rounding * (sumOfMagnitudes(centre) + sphere.radius)};
    }
    const Instance& instance = instances[hit.hit.instID[0]];
    if (instance.path < 0) return placeOnMesh(point, instance.placement);
    return placeOnMesh(point, Placement(placementAt(instance, hit.ray.time)));
}

SurfacePlace World::placeOnMesh(const SurfacePoint& point, const Placement& placement) {
    const MeshGeometry& geometry = *point.geometry;
    const RTCHit& hit = point.hit->hit;
    const MeshGeometry::Corners corners = geometry.cornersAt(hit.geomID, hit.primID, hit.u, hit.v);
    const float weights[3] = {1.0f - corners.u - corners.v, corners.u, corners.v};
    // Not along the ray: its rounding errors grow with its length.
    const Vec3 a = geometry.vertex(corners.vertices[0]);
    const Vec3 inside = a + (geometry.vertex(corners.vertices[1]) - a) * corners.u +
                        (geometry.vertex(corners.vertices[2]) - a) * corners.v;
    const Vec3 size = {std::abs(inside.x), std::abs(inside.y), std::abs(inside.z)};
    SurfacePlace place{placement.to_world.point(inside), point.normal,
                       dot(placement.rounding, size) + placement.min_rounding};
    if (!geometry.hasNormals()) return place;
    const Vec3 n = geometry.normal(corners.vertices[0]) * weights[0] +
                   geometry.normal(corners.vertices[1]) * weights[1] +
                   geometry.normal(corners.vertices[2]) * weights[2];
    const Vec3 smooth = normalised(placement.for_normals.vector(n));
    // Normals of a file may be zero, not finite, or on the other side of the face.
    const float cosine = dot(smooth, point.normal);
    if (cosine > 0.0f && std::isfinite(cosine)) place.shading_normal = smooth;
    return place;
}

} // namespace Preview
