#pragma once

/// A handle of the flat interface is the plain address of an object, seen by hosts as an opaque type.

#include "velmarapi.h"

#include "renderer/Renderer.h"
#include "renderer/VelmarContext.h"
#include "scene/SceneNode.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/SceneNodeRoot.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/nodes/SceneNodeBackgroundSettings.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeRenderSettings.h"

#include <cstddef>
#include <cstring>

namespace Velmar {

/// The class behind an opaque handle type.
template <class Handle>
struct ObjectOf;

template <>
struct ObjectOf<VelmarRenderer> {
    using Type = Renderer;
};
template <>
struct ObjectOf<::VelmarContext> {
    using Type = VelmarContext;
};
template <>
struct ObjectOf<VelmarScene> {
    using Type = SceneNodeRoot;
};
template <>
struct ObjectOf<VelmarMesh> {
    using Type = SceneNodeMesh;
};
template <>
struct ObjectOf<VelmarTonemapping> {
    using Type = SceneNodeTonemapping;
};
template <>
struct ObjectOf<VelmarCamera> {
    using Type = SceneNodeCamera;
};
template <>
struct ObjectOf<VelmarRenderSettings> {
    using Type = SceneNodeRenderSettings;
};
template <>
struct ObjectOf<VelmarMaterialNode> {
    using Type = SceneNodeMaterial;
};
template <>
struct ObjectOf<VelmarMaterial> {
    using Type = Material;
};
template <>
struct ObjectOf<VelmarBackground> {
    using Type = SceneNodeBackgroundSettings;
};
template <>
struct ObjectOf<VelmarModel> {
    using Type = SceneNodeModel;
};

template <class Handle>
typename ObjectOf<Handle>::Type* fromHandle(Handle* handle) {
    return reinterpret_cast<typename ObjectOf<Handle>::Type*>(handle);
}

template <class Handle>
Handle* toHandle(typename ObjectOf<Handle>::Type* object) {
    return reinterpret_cast<Handle*>(object);
}

/// Stores into the field at `offset` of the object behind a handle: for functions that serve several classes, in which
/// the field stands at one place.
template <class T>
void storeField(void* handle, std::size_t offset, T value) {
    std::memcpy(static_cast<std::byte*>(handle) + offset, &value, sizeof value);
}

} // namespace Velmar
