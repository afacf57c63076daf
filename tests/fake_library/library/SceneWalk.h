#pragma once

#include "Sdk.h"

namespace FakeSdk {

/// Calls each of the sixteen operations of each node of the scene, runs every pass over it, and records what came of
/// it.
void walkScene(SceneNode& root);

/// Takes each child through the pass of `state`.
void traverseChildren(SceneNode& root, TraversalState& state);

} // namespace FakeSdk
