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
#include <type_traits>

namespace Velmar {

/// The class behind an opaque handle type, as its `type`.
template <class Handle>
struct ObjectOf;

template <>
struct ObjectOf<VelmarRenderer> : std::type_identity<Renderer> {};
template <>
struct ObjectOf<::VelmarContext> : std::type_identity<VelmarContext> {};
template <>
struct ObjectOf<VelmarScene> : std::type_identity<SceneNodeRoot> {};
template <>
struct ObjectOf<VelmarMesh> : std::type_identity<SceneNodeMesh> {};
template <>
struct ObjectOf<VelmarTonemapping> : std::type_identity<SceneNodeTonemapping> {};
template <>
struct ObjectOf<VelmarCamera> : std::type_identity<SceneNodeCamera> {};
template <>
struct ObjectOf<VelmarRenderSettings> : std::type_identity<SceneNodeRenderSettings> {};
template <>
struct ObjectOf<VelmarMaterialNode> : std::type_identity<SceneNodeMaterial> {};
template <>
struct ObjectOf<VelmarMaterial> : std::type_identity<Material> {};
template <>
struct ObjectOf<VelmarBackground> : std::type_identity<SceneNodeBackgroundSettings> {};
template <>
struct ObjectOf<VelmarModel> : std::type_identity<SceneNodeModel> {};

template <class Handle>
typename ObjectOf<Handle>::type* fromHandle(Handle* handle) {
    return reinterpret_cast<typename ObjectOf<Handle>::type*>(handle);
}

template <class Handle>
Handle* toHandle(typename ObjectOf<Handle>::type* object) {
    return reinterpret_cast<Handle*>(object);
}

/// Stores into the field at `offset` of the object behind a handle: for functions that serve several classes, in which
/// the field stands at one place.
template <class T>
void storeField(void* handle, std::size_t offset, T value) {
    std::memcpy(static_cast<std::byte*>(handle) + offset, &value, sizeof value);
}

} // namespace Velmar
