#pragma once

#include "scene/SceneNodeRoot.h"
#include "tools/FileContents.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

/// One value of a node, in a form that can be compared and shown.
struct NodeValue {
    /// What a reference points to.
    struct Target {
        /// Equal for what counts as the same node in both documents.
        Digest identity;
        /// Null for none.
        const Velmar::SceneNode* node;
    };
    struct File {
        const FileContent* content;
        std::string name;
    };
    using Content = std::variant<bool, std::vector<double>, std::string, Target, File>;

    /// The way to the element from the node: "keyframe[1]/pos".
    std::string element;
    Content content;
};

/// Whether the values are the same. Numbers may differ by `tolerance`.
bool areSame(const NodeValue::Content& a, const NodeValue::Content& b, double tolerance);

/// A document that is compared with another one.
class ComparedDocument {
  public:
    /// Reads the document. Throws `Failure` when it can't be read; its text has file, line and column.
    ComparedDocument(const std::string& path_, FileContents::Places& places, Progress& progress);

    const std::string& getPath() const { return path; }

    /// Of its nodes in their order.
    std::size_t size() const { return offsets.size(); }
    const Velmar::SceneNode& getNode(std::size_t index) const { return *root->children()[index]; }
    /// Of the node's element, from 1.
    std::size_t getLine(std::size_t index);

    /// The digest of the values of a node, except for its name. References count by the identities that were set. With
    /// a `grid` above 0 numbers count by the cell of it that they are in.
    Digest getContent(std::size_t index, double grid = 0);
    /// Passes the values of a node to `take`, one by one: a node may have very many.
    void visitValues(std::size_t index, const std::function<void(NodeValue&&)>& take);

    /// What references to the node count by from now on.
    void setIdentity(std::size_t index, const Digest& identity);

    FileContents& getFiles() { return files; }

    /// The identity of what a reference to `node` points to.
    Digest identify(const Velmar::SceneNode* node) const;

  private:
    std::string path;
    Velmar::Reference<Velmar::SceneNodeRoot> root;
    /// Of the elements of the nodes. The scene may have more nodes, which the document only refers to.
    std::vector<std::size_t> offsets;
    std::vector<std::size_t> lines;
    /// Of the nodes that others may refer to.
    std::unordered_map<const Velmar::SceneNode*, Digest> identities;
    FileContents files;
    /// Reused for each digest.
    std::string buffer;
};

/// Whether other nodes may refer to a node of this kind.
bool isReferable(Velmar::NodeType type);
