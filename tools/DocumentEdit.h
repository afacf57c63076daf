#pragma once

#include "reference.h"

#include "scene/SceneNodeRoot.h"
#include "tools/ElementPath.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Changes values and nodes of a scene document. Each changed node is read again by the descriptions of the elements,
/// which decide what may be there and of which type it is. Paths name nodes and elements of the document as it was.
class DocumentEdit {
  public:
    /// Throws `Failure`.
    explicit DocumentEdit(std::string path);

    /// Sets the value of an element, which is added where it isn't there. Throws `Failure`.
    void set(const ElementPath& element, const std::string& value);
    /// Removes nodes, or elements of a node. Throws `Failure`.
    void remove(const ElementPath& element);

    /// The changed scene. Throws `Failure` when a node that is left refers to one that isn't there any more.
    Velmar::Reference<Velmar::SceneNodeRoot> finish();

    std::size_t getValueCount() const { return value_count; }
    std::size_t getRemovedCount() const { return removed.size(); }
    /// What the user may not expect, a sentence each.
    const std::vector<std::string>& getNotes() const { return notes; }

  private:
    struct Node {
        std::string_view element;
        std::string name;
        Velmar::UID uid = Velmar::invalid_uid;
        std::size_t offset = 0;
    };
    struct Change;
    class NodeCollector;

    std::vector<std::size_t> findNodes(const ElementStep& step) const;
    std::string_view getText(std::size_t node) const;
    void changeNode(std::size_t node, const ElementPath& element, const std::string* value);
    void checkReferences(Velmar::SceneNodeRoot& scene) const;
    void noteUnused(Velmar::SceneNodeRoot& scene);
    [[noreturn]] void fail(const std::string& fault) const;

    std::string path;
    std::string text;
    std::vector<Node> nodes;
    /// The new texts of nodes, by their index; empty for one that is removed.
    std::map<std::size_t, std::string> changed;
    std::set<std::size_t> removed;
    std::size_t value_count = 0;
    std::vector<std::string> notes;
    /// UIDs that were named, but had no node of the right kind.
    std::vector<Velmar::UID> dangling;
    /// Those of nodes that others refer to. Both are sorted.
    std::vector<Velmar::UID> used;
};
