#include "tools/DocumentDiff.h"

#include "scene/reading/ElementVisitor.h"
#include "tools/DocumentReferences.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <string_view>
#include <utility>

using namespace Velmar;

namespace {

constexpr std::size_t unmatched = static_cast<std::size_t>(-1);

template <class... Parts>
Digest combine(const Parts&... parts) {
    std::string bytes;
    const auto add = [&](const auto& part) {
        if constexpr (std::is_convertible_v<decltype(part), std::string_view>) {
            const std::string_view text = part;
            const std::size_t size = text.size();
            bytes.append(reinterpret_cast<const char*>(&size), sizeof size).append(text);
        } else {
            bytes.append(reinterpret_cast<const char*>(&part), sizeof part);
        }
    };
    (add(parts), ...);
    return Digest::of(bytes);
}

/// Matches the nodes of two documents.
class Matcher {
  public:
    Matcher(ComparedDocument& a, ComparedDocument& b, double tolerance_) : tolerance(tolerance_) {
        sides[0].document = &a;
        sides[1].document = &b;
        for (Side& side : sides) {
            side.partners.assign(side.document->size(), unmatched);
            side.contents.resize(side.document->size());
            side.digests.resize(side.document->size());
        }
    }

    std::vector<NodeChange> match() {
        // Nodes come after those that they refer to.
        constexpr auto refersToMaterials = [](NodeType type) {
            return type == NodeType::Object || type == NodeType::Sphere || type == NodeType::BackgroundSettings;
        };
        matchNodes([&](NodeType type) { return type != NodeType::Material && !refersToMaterials(type); });
        matchNodes([](NodeType type) { return type == NodeType::Material; });
        matchNodes(refersToMaterials);
        return listChanges();
    }

  private:
    struct Side {
        ComparedDocument* document = nullptr;
        /// Of each node, the index of the other document's node.
        std::vector<std::size_t> partners;
        /// Of the values without the name, and with it.
        std::vector<Digest> contents;
        std::vector<Digest> digests;
        /// The nodes that are matched now, as far as they have no partner.
        std::vector<std::size_t> open;
    };

    template <class Filter>
    void matchNodes(Filter isMatchedNow) {
        for (Side& side : sides) {
            side.open.clear();
            for (std::size_t i = 0; i < side.document->size(); ++i) {
                const SceneNode& node = side.document->getNode(i);
                if (!isMatchedNow(node.getType())) continue;
                side.open.push_back(i);
                side.contents[i] = side.document->getContent(i);
                side.digests[i] = combine(side.contents[i], node.getName().view());
                side.document->setIdentity(i, side.digests[i]);
            }
        }
        matchInPlace();
        const auto keyOf = [](const SceneNode& node) { return combine(getElement(node), node.getName().view()); };
        matchBy([](Side& side, std::size_t i) { return side.digests[i]; });
        if (tolerance > 0)
            matchBy([&](Side& side, std::size_t i) {
                // Coarse, so that few numbers that are nearly equal are in different cells.
                return combine(side.document->getContent(i, 64 * tolerance), keyOf(side.document->getNode(i)));
            });
        matchBy([&](Side& side, std::size_t i) {
            const SceneNode& node = side.document->getNode(i);
            return combine(keyOf(node), node.getUID());
        });
        matchBy([&](Side& side, std::size_t i) { return keyOf(side.document->getNode(i)); });
        matchBy([](Side& side, std::size_t i) { return side.contents[i]; });
        for (Side& side : sides)
            std::erase_if(side.open, [&](std::size_t i) { return !isSingle(side.document->getNode(i).getType()); });
        matchBy([](Side& side, std::size_t i) { return combine(getElement(side.document->getNode(i))); });
        identifyChanged(isMatchedNow);
    }

    /// Documents of one origin mostly have their nodes in one order.
    void matchInPlace() {
        const std::size_t count = std::min(sides[0].open.size(), sides[1].open.size());
        for (std::size_t k = 0; k < count; ++k) {
            const std::size_t i = sides[0].open[k];
            const std::size_t j = sides[1].open[k];
            if (sides[0].digests[i] == sides[1].digests[j]) pair(i, j);
        }
        closeMatched();
    }

    /// Matches nodes of equal keys, those of one key in their order.
    template <class KeyOf>
    void matchBy(KeyOf keyOf) {
        if (sides[0].open.empty() || sides[1].open.empty()) return;
        std::array<std::vector<std::pair<Digest, std::size_t>>, 2> keys;
        for (std::size_t s = 0; s < 2; ++s) {
            keys[s].reserve(sides[s].open.size());
            for (const std::size_t i : sides[s].open)
                keys[s].emplace_back(keyOf(sides[s], i), i);
            std::ranges::sort(keys[s]);
        }
        std::size_t k = 0;
        for (const auto& [key, i] : keys[0]) {
            while (k < keys[1].size() && keys[1][k].first < key)
                ++k;
            if (k < keys[1].size() && keys[1][k].first == key) pair(i, keys[1][k++].second);
        }
        closeMatched();
    }

    void pair(std::size_t i, std::size_t j) {
        sides[0].partners[i] = j;
        sides[1].partners[j] = i;
    }

    void closeMatched() {
        for (Side& side : sides)
            std::erase_if(side.open, [&](std::size_t i) { return side.partners[i] != unmatched; });
    }

    /// References to a node that was changed are the same in both documents.
    template <class Filter>
    void identifyChanged(Filter isMatchedNow) {
        for (std::size_t i = 0; i < sides[0].partners.size(); ++i) {
            const std::size_t j = sides[0].partners[i];
            if (j == unmatched || !isMatchedNow(sides[0].document->getNode(i).getType())) continue;
            if (sides[0].digests[i] == sides[1].digests[j]) continue;
            const Digest identity = combine(std::string_view("changed"), std::uint64_t{i});
            sides[0].document->setIdentity(i, identity);
            sides[1].document->setIdentity(j, identity);
        }
    }

    std::vector<NodeChange> listChanges() {
        std::vector<NodeChange> changes;
        for (std::size_t i = 0; i < sides[0].partners.size(); ++i) {
            const std::size_t j = sides[0].partners[i];
            if (j == unmatched) {
                changes.push_back({i, {}});
            } else if (sides[0].digests[i] != sides[1].digests[j]) {
                const NodeChange change = {i, j};
                const bool may_be_same = tolerance > 0;
                if (!may_be_same || hasChanges(change)) changes.push_back(change);
            }
        }
        for (std::size_t j = 0; j < sides[1].partners.size(); ++j)
            if (sides[1].partners[j] == unmatched) changes.push_back({{}, j});
        return changes;
    }

    bool hasChanges(const NodeChange& change) {
        bool found = false;
        compareValues(*sides[0].document, *sides[1].document, change, tolerance,
                      [&](const ValueChange&) { found = true; });
        return found;
    }

    std::array<Side, 2> sides;
    double tolerance;
};

} // namespace

std::vector<NodeChange> compareDocuments(ComparedDocument& a, ComparedDocument& b, double tolerance) {
    return Matcher(a, b, tolerance).match();
}

void compareValues(ComparedDocument& a, ComparedDocument& b, const NodeChange& change, double tolerance,
                   const std::function<void(const ValueChange&)>& take) {
    // Lists that grow without being copied.
    std::deque<NodeValue> old_values;
    std::deque<NodeValue> new_values;
    a.visitValues(*change.a, [&](NodeValue&& value) { old_values.push_back(std::move(value)); });
    const auto compare = [&](NodeValue& old_value, NodeValue& new_value) {
        if (!areSame(old_value.content, new_value.content, tolerance))
            take({std::move(old_value.element), std::move(old_value.content), std::move(new_value.content)});
    };
    // Mostly both have the same elements.
    b.visitValues(*change.b, [&](NodeValue&& value) {
        if (!new_values.empty() || old_values.empty() || old_values.front().element != value.element)
            return new_values.push_back(std::move(value));
        compare(old_values.front(), value);
        old_values.pop_front();
    });
    // By element, those of one element in their order.
    struct Other {
        NodeValue* value;
        std::size_t index;
        bool is_matched = false;
        /// Of the first of an element: how many of them are matched.
        std::size_t num_matched = 0;
    };
    std::vector<Other> others;
    others.reserve(new_values.size());
    for (NodeValue& value : new_values)
        others.push_back({&value, others.size()});
    const auto elementOf = [](const Other& other) -> const std::string& { return other.value->element; };
    std::ranges::stable_sort(others, {}, elementOf);
    for (; !old_values.empty(); old_values.pop_front()) {
        NodeValue& old_value = old_values.front();
        const auto first = std::ranges::lower_bound(others, old_value.element, {}, elementOf);
        const auto last = std::ranges::upper_bound(others, old_value.element, {}, elementOf);
        if (first == last || first->num_matched == static_cast<std::size_t>(last - first)) {
            take({std::move(old_value.element), std::move(old_value.content), {}});
            continue;
        }
        Other& other = first[static_cast<std::ptrdiff_t>(first->num_matched++)];
        other.is_matched = true;
        compare(old_value, *other.value);
    }
    // Those that are left, in their order again.
    std::erase_if(others, [](const Other& other) { return other.is_matched; });
    std::ranges::sort(others, {}, &Other::index);
    for (const Other& other : others)
        take({std::move(other.value->element), {}, std::move(other.value->content)});
}
