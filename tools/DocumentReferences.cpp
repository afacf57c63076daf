#include "tools/DocumentReferences.h"

#include "scene/nodes/NodeElements.h"
#include "scene/reading/ElementVisitor.h"
#include "scene/reading/NodeFinder.h"

#include <span>
#include <string_view>

using namespace Velmar;

bool isSingle(NodeType type) {
    return type == NodeType::Camera || type == NodeType::RenderSettings || type == NodeType::ToneMapping ||
           type == NodeType::BackgroundSettings;
}

namespace {

/// Visits the description of a node, of which it notes the references alone.
class ReferenceFinder {
  public:
    /// For descriptions: what a reader may change. Nothing is.
    static constexpr bool reads = true;

    ReferenceFinder(NodeFinder& finder_, const SceneNode& holder_,
                    const std::function<void(const NodeReference&)>& take_)
        : finder(finder_), holder(holder_), take(take_) {}

    template <class Node>
    void reference(std::string_view element, const Reference<Node>& node, UID unbound) {
        add<Node>(element, node ? node->getUID() : unbound);
    }
    template <class Node>
    void references(std::string_view group_element, std::string_view element, const Vector<Reference<Node>>& nodes,
                    const Vector<UID>& unbound) {
        group(group_element, [&](ReferenceFinder& inside) {
            for (const Reference<Node>& node : nodes)
                inside.template add<Node>(element, node ? node->getUID() : invalid_uid);
            for (const UID uid : unbound)
                inside.template add<Node>(element, uid);
        });
    }
    template <class Node>
    void boundReferences(std::string_view group_element, std::string_view element, const Vector<Node*>& nodes,
                         const Vector<UID>&) {
        group(group_element, [&](ReferenceFinder& inside) {
            for (const Node* const node : nodes)
                inside.add<Node>(element, node->getUID());
        });
    }

    // What holds others.
    static bool has(std::string_view, bool written = false) { return written; }
    static bool variant(std::string_view, std::uint32_t code, std::uint32_t own_code) { return code == own_code; }
    static void noVariant(std::uint32_t) {}
    template <class Describe>
    void group(std::string_view element, Describe describeContent) {
        ReferenceFinder inside(*this);
        inside.prefix.append(element).append(".");
        describeContent(inside);
    }
    template <class Object>
    void record(std::string_view element, Reference<Object>& object) {
        if (object) group(element, [&](ReferenceFinder& inside) { describe(inside, *object); });
    }
    template <class Object>
    void records(std::string_view element, Vector<Reference<Object>>& objects) {
        for (Reference<Object>& object : objects)
            record(element, object);
    }

    // What refers to nothing.
    template <class... Arguments>
    static void identity(Arguments&&...) {}
    template <class... Arguments>
    static void name(Arguments&&...) {}
    template <class... Arguments>
    static void materialUID(Arguments&&...) {}
    template <class... Arguments>
    static void value(Arguments&&...) {}
    template <class... Arguments>
    static void required(Arguments&&...) {}
    template <class... Arguments>
    static void valueIf(Arguments&&...) {}
    template <class... Arguments>
    static void valueOr(Arguments&&...) {}
    template <class... Arguments>
    static void signedValue(Arguments&&...) {}
    template <class... Arguments>
    static void signedValueOr(Arguments&&...) {}
    template <class... Arguments>
    static void option(Arguments&&...) {}
    template <class... Arguments>
    static void flag(Arguments&&...) {}
    template <class... Arguments>
    static void path(Arguments&&...) {}
    template <class... Arguments>
    static void requiredPath(Arguments&&...) {}
    template <class... Arguments>
    static void word(Arguments&&...) {}
    template <class... Arguments>
    static void list(Arguments&&...) {}
    template <class... Arguments>
    static void part(Arguments&&...) {}

  private:
    template <class Node>
    static bool fits(NodeType type) {
        if constexpr (std::is_same_v<Node, SceneNodeMaterial>)
            return type == NodeType::Material;
        else if constexpr (std::is_same_v<Node, SceneNode>)
            return isGeometry(type) || type == NodeType::Scatter;
    }

    template <class Node>
    void add(std::string_view element, UID uid) {
        if (uid == invalid_uid) return;
        const SceneNode* const node = finder.find(uid);
        const bool is_there = node != nullptr && fits<Node>(node->getType()) && !isMissing(*node);
        take({&holder, prefix + std::string(element), uid, is_there});
    }

    NodeFinder& finder;
    const SceneNode& holder;
    const std::function<void(const NodeReference&)>& take;
    std::string prefix;
};

template <class Node>
void visit(ReferenceFinder& finder, SceneNode& node) {
    describe(finder, static_cast<Node&>(node));
}

} // namespace

void visitReferences(SceneNodeRoot& scene, const std::function<void(const NodeReference&)>& take) {
    NodeFinder nodes_by_uid(scene);
    for (const Reference<SceneNode>& child : scene.children()) {
        ReferenceFinder finder(nodes_by_uid, *child, take);
        switch (child->getType()) {
        case NodeType::Object:
            visit<SceneNodeModel>(finder, *child);
            break;
        case NodeType::Sphere:
            visit<SceneNodeSphere>(finder, *child);
            break;
        case NodeType::Material:
            visit<SceneNodeMaterial>(finder, *child);
            break;
        default:
            break;
        }
    }
}

std::string describeNode(const SceneNode& node) {
    return std::string(getElement(node)) + " '" + toStdString(node.getName()) + "' (uid " +
           std::to_string(node.getUID()) + ")";
}
