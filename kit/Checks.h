#pragma once

/// What calls of the kit ask of their arguments before they touch anything.

#include "kit/Failures.h"

#include "api/Handles.h"

#include <cstdint>
#include <string_view>

namespace Velmar::Kit {

/// The kind of node that a handle type means, and what messages call it.
template <class Handle>
struct NodeKind;
template <>
struct NodeKind<VelmarScene> {
    static constexpr NodeType type = NodeType::Root;
    static constexpr const char* refusal = " isn't a scene";
};
template <>
struct NodeKind<VelmarMesh> {
    static constexpr NodeType type = NodeType::Mesh;
    static constexpr const char* refusal = " isn't a mesh node";
};
template <>
struct NodeKind<VelmarModel> {
    static constexpr NodeType type = NodeType::Object;
    static constexpr const char* refusal = " isn't a model";
};
template <>
struct NodeKind<VelmarMaterialNode> {
    static constexpr NodeType type = NodeType::Material;
    static constexpr const char* refusal = " isn't a material node";
};
template <>
struct NodeKind<VelmarBackground> {
    static constexpr NodeType type = NodeType::BackgroundSettings;
    static constexpr const char* refusal = " isn't a background";
};
template <>
struct NodeKind<VelmarCamera> {
    static constexpr NodeType type = NodeType::Camera;
    static constexpr const char* refusal = " isn't a camera";
};
template <>
struct NodeKind<VelmarRenderSettings> {
    static constexpr NodeType type = NodeType::RenderSettings;
    static constexpr const char* refusal = " isn't a render settings node";
};
template <>
struct NodeKind<VelmarTonemapping> {
    static constexpr NodeType type = NodeType::ToneMapping;
    static constexpr const char* refusal = " isn't a tone mapping node";
};

template <class Handle>
concept IsNode = requires {
    NodeKind<Handle>::type;
};

/// Refuses an object whose count can't be one: as a rule one that was deleted. No more can be seen of it.
inline void checkAlive(const ThreadSafeRefCounted& object, const char* what) {
    constexpr std::int64_t implausible = std::int64_t{1} << 40;
    const std::int64_t count = object.getRefCount();
    if (count < 0 || count > implausible) [[unlikely]]
        refuse(what, " was deleted");
}

inline void checkPointer(const void* pointer, const char* what) {
    if (pointer == nullptr) [[unlikely]]
        refuse(what, " is null");
}

template <class Handle>
void checkHandle(const Handle* handle, const char* what) {
    checkPointer(handle, what);
    const auto* const object = reinterpret_cast<const typename ObjectOf<Handle>::type*>(handle);
    checkAlive(*object, what);
    if constexpr (IsNode<Handle>) {
        if (object->getType() != NodeKind<Handle>::type) [[unlikely]]
            refuse(what, NodeKind<Handle>::refusal);
        if constexpr (std::is_same_v<Handle, VelmarMesh>) {
            if (!object->mesh) [[unlikely]]
                refuse(what, " has no mesh");
        }
    }
}

/// The checked object of a handle.
template <class Handle>
typename ObjectOf<Handle>::type& objectOf(Handle* handle, const char* what) {
    checkHandle(handle, what);
    return *fromHandle(handle);
}
template <class Handle>
const typename ObjectOf<Handle>::type& objectOf(const Handle* handle, const char* what) {
    return objectOf(const_cast<Handle*>(handle), what);
}

/// For deletion: null, or an object that nothing else holds.
template <class Handle>
void checkUnowned(const Handle* handle) {
    if (handle == nullptr) return;
    if constexpr (std::is_same_v<Handle, VelmarMesh>)
        checkAlive(*fromHandle(const_cast<Handle*>(handle)), "the object");
    else
        checkHandle(handle, "the object");
    if (fromHandle(const_cast<Handle*>(handle))->getRefCount() != 0)
        refuse("the object", " belongs to another one, which destroys it");
}

/// `count` elements at `array`: negative counts are refused, and null if there are any.
inline void checkArray(std::int32_t count, const void* array, const char* what) {
    if (count < 0) [[unlikely]]
        refuse("count", " is negative");
    if (count > 0) checkPointer(array, what);
}

/// Whether a document can hold the text: UTF-8 without characters that XML forbids.
bool isDocumentText(std::string_view text);

/// Refuses text that a document can't hold: what isn't UTF-8, and characters that XML forbids.
void checkText(const char* text, const char* what);

/// A path may hold any bytes; an empty one is refused.
void checkPath(const char* path, const char* what);

/// A context whose renderer library is loaded.
void checkContext(const ::VelmarContext* context);

/// A key frame that the model has; a negative index means none.
void checkKeyFrame(VelmarModel* model, std::int32_t index);

/// Material nodes, or null.
void checkMaterials(std::int32_t count, VelmarMaterialNode* const* materials);

/// Fails if a face of the mesh refers to a vertex or texture coordinate that isn't there.
void checkFaces(const VelmarMesh* mesh);

/// A node of any kind.
SceneNode& nodeOf(void* node, const char* what);
inline const SceneNode& nodeOf(const void* node, const char* what) {
    return nodeOf(const_cast<void*>(node), what);
}

} // namespace Velmar::Kit
