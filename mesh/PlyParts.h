#pragma once

#include "velmarcompiler.h"

#include "mesh/MeshBuilder.h"
#include "mesh/PlyInput.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

/// What the fast paths for binary PLY files and for texts share.
namespace Velmar::PlyParts {

inline constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

inline std::size_t sizeOf(PlyType type) {
    static constexpr std::array<std::size_t, 8> sizes = {1, 1, 2, 2, 4, 4, 4, 8};
    return sizes[static_cast<std::size_t>(type)];
}

constexpr bool isFloat(PlyType type) {
    return type == PlyType::float32 || type == PlyType::float64;
}

/// The first property `name`, which is the one that RPly takes, or `none`.
inline std::size_t findProperty(const PlyElement& element, std::string_view name) {
    const auto& properties = element.properties;
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [name](const PlyProperty& property) { return property.name == name; });
    return found == properties.end() ? none : static_cast<std::size_t>(found - properties.begin());
}

/// What is read of a file.
struct Plan {
    const PlyElement* vertices = nullptr;
    /// The properties of the coordinates.
    std::array<std::size_t, 3> axes = {};
    /// Null if no element has a list of indices.
    const PlyElement* faces = nullptr;
    /// The property of the list of indices.
    std::size_t indices = none;
};

inline bool planVertices(const PlyElement& element, Plan& plan) {
    constexpr std::array<std::string_view, 3> names = {"x", "y", "z"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::size_t at = findProperty(element, names[axis]);
        if (at == none || !isFloat(element.properties[at].type)) return false;
        plan.axes[axis] = at;
    }
    plan.vertices = &element;
    // RPly's callback for z completes a vertex.
    return std::is_sorted(plan.axes.begin(), plan.axes.end()) &&
           std::none_of(element.properties.begin(), element.properties.end(),
                        [](const PlyProperty& property) { return property.is_list; });
}

inline bool planFaces(const PlyElement& element, Plan& plan) {
    const std::size_t at = findProperty(element, "vertex_indices");
    if (at == none || !element.properties[at].is_list) return true;
    plan.faces = &element;
    plan.indices = at;
    return plan.vertices != nullptr && !isFloat(element.properties[at].type);
}

inline std::optional<Plan> planOf(const PlyHeader& header) {
    if (header.format == PlyFormat::none) return {};
    Plan plan;
    bool faces_seen = false;
    for (const PlyElement& element : header.elements) {
        for (const PlyProperty& property : element.properties)
            if (property.is_list && isFloat(property.length_type)) return {};
        if (element.name == "vertex" && plan.vertices == nullptr && !planVertices(element, plan)) return {};
        if (element.name == "face" && !std::exchange(faces_seen, true) && !planFaces(element, plan)) return {};
    }
    if (plan.vertices == nullptr) return {};
    return plan;
}

/// How many instances of `element` fit into `body_size` bytes if each takes `min_size`: no more than it claims.
inline std::size_t maxInstances(const PlyElement& element, std::size_t body_size, std::size_t min_size) {
    return std::min(static_cast<std::size_t>(element.count), body_size / std::max<std::size_t>(min_size, 1));
}

/// The mesh that is filled. Triangles wait until the processor has fetched their vertices, which may be anywhere.
class Target {
  public:
    Target(MeshBuilder& filled, float position_scale) : mesh(filled), scale(position_scale) {}
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void tryReserveVertices(std::size_t count) { mesh.tryReserveVertices(count); }
    void tryReserveTriangles(std::size_t count) { mesh.tryReserveTriangles(count); }

    VELMAR_ALWAYS_INLINE void addVertex(float x, float y, float z) {
        mesh.addVertex({x * scale, y * scale, z * scale});
    }

    /// False if a vertex doesn't exist.
    VELMAR_ALWAYS_INLINE bool addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        const std::size_t count = mesh.numVertices();
        if (a >= count || b >= count || c >= count) [[unlikely]]
            return false;
        mesh.prefetchVertices(a, b, c);
        waiting[num_waiting++] = {a, b, c};
        if (num_waiting == waiting.size()) [[unlikely]]
            addWaiting();
        return true;
    }

    /// Adds the triangles that still wait.
    void addWaiting() {
        for (const auto& [a, b, c] : std::span(waiting).first(num_waiting))
            mesh.addTriangleOfVertices({a, b, c}, {0, 0, 0}, 0);
        num_waiting = 0;
    }

  private:
    MeshBuilder& mesh;
    float scale;
    std::size_t num_waiting = 0;
    std::array<std::array<std::uint32_t, 3>, 64> waiting;
};

} // namespace Velmar::PlyParts
