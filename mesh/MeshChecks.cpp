#include "mesh/MeshChecks.h"

#include "velmarexceptions.h"

#include <bit>
#include <string>

namespace Velmar {

static_assert(std::bit_cast<std::uint32_t>(min_triangle_area) == 0x1E3CE508);

namespace {

[[noreturn]] void throwOutOfBounds(FaceKind kind, const char* what, std::uint32_t index) {
    const std::string face = kind == FaceKind::triangle ? "Triangle " : "Quad ";
    throw VelmarException(
        toVelmarString(face + what + " index is out of bounds. (" + what + " index=" + std::to_string(index) + ")"));
}

} // namespace

void throwVertexIndexOutOfBounds(FaceKind kind, std::uint32_t index) {
    throwOutOfBounds(kind, "vertex", index);
}

void throwUVIndexOutOfBounds(FaceKind kind, std::uint32_t index) {
    throwOutOfBounds(kind, "uv", index);
}

Vec3f normalised(const Vec3f& normal) {
    if (!std::isfinite(normal.x) || !std::isfinite(normal.y) || !std::isfinite(normal.z)) [[unlikely]]
        throw VelmarException("Invalid normal");
    const float length = std::sqrt(normal.x * normal.x + normal.y * normal.y + normal.z * normal.z);
    return {normal.x / length, normal.y / length, normal.z / length};
}

} // namespace Velmar
