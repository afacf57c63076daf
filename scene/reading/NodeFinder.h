#pragma once

#include "scene/SceneNodeRoot.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace Velmar {

/// Finds the nodes of a scene by UID in a bounded time, whatever the UIDs are. The scene's own table, whose form the
/// renderer library shares, is the quickest way, unless UIDs were chosen to collide in it: then a sorted list is made.
/// The scene must have the same nodes as long as it lives.
class NodeFinder {
  public:
    explicit NodeFinder(SceneNodeRoot& scene_) : scene(scene_) {
        if (!hasLongBuckets()) return;
        sorted.reserve(scene.children().size());
        for (const Reference<SceneNode>& child : scene.children())
            sorted.emplace_back(child->getUID(), child.getPointer());
        std::ranges::stable_sort(sorted, {}, &Entry::first);
    }

    /// As `SceneNodeRoot::getNodeByUID`.
    SceneNode* find(UID uid) {
        if (sorted.empty() || uid == scene.getUID()) return scene.getNodeByUID(uid);
        // Of several the last.
        const auto after = std::ranges::upper_bound(sorted, uid, {}, &Entry::first);
        return after != sorted.begin() && std::prev(after)->first == uid ? std::prev(after)->second : nullptr;
    }

  private:
    using Entry = std::pair<UID, SceneNode*>;

    /// Whether many UIDs have the same lowest bits, by which the scene's table has them.
    bool hasLongBuckets() const {
        constexpr std::size_t max_in_bucket = 64;
        std::vector<std::uint8_t> counts(std::bit_ceil(scene.children().size() / max_in_bucket * 8 + 1));
        return std::ranges::any_of(scene.children(), [&](const Reference<SceneNode>& child) {
            return ++counts[child->getUID() & (counts.size() - 1)] > max_in_bucket;
        });
    }

    SceneNodeRoot& scene;
    std::vector<Entry> sorted;
};

} // namespace Velmar
