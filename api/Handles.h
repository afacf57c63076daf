#pragma once

/// A handle of the flat interface is the plain address of an object, seen by hosts as an opaque type.

#include "velmarapi.h"

#include "scene/SceneNode.h"
#include "scene/SceneNodeRoot.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/nodes/SceneNodeMesh.h"

namespace Velmar {

/// The class behind an opaque handle type.
template <class Handle>
struct ObjectOf;

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

template <class Handle>
typename ObjectOf<Handle>::Type* fromHandle(Handle* handle) {
    return reinterpret_cast<typename ObjectOf<Handle>::Type*>(handle);
}

template <class Handle>
Handle* toHandle(typename ObjectOf<Handle>::Type* object) {
    return reinterpret_cast<Handle*>(object);
}

} // namespace Velmar
