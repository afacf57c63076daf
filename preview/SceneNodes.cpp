#include "preview/SceneNodes.h"

#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace Preview {

namespace {

template <class Node>
void keepFirst(const Node*& kept, const Velmar::SceneNode* node, const char* kind) {
    if (kept == nullptr)
        kept = static_cast<const Node*>(node);
    else
        report(std::string("the scene has more than one ") + kind + "; the first counts");
}

} // namespace

void report(std::string_view text) noexcept {
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    try {
        static std::set<std::string, std::less<>> reported;
        // A scene may name any number of objects, each with a text of its own.
        constexpr std::size_t max_reports = 200;
        if (reported.size() >= max_reports || reported.contains(text)) return;
        reported.emplace(text);
    } catch (const std::bad_alloc&) {
        // Then it may be written again.
    }
    std::fprintf(stderr, "velmar preview: %.*s\n", static_cast<int>(text.size()), text.data());
}

SceneNodes::SceneNodes(const Velmar::SceneNodeRoot& root) {
    for (const Velmar::Reference<Velmar::SceneNode>& child : root.children()) {
        const Velmar::SceneNode* const node = child.getPointer();
        if (node == nullptr) continue;
        switch (node->getType()) {
        case Velmar::NodeType::Camera:
            keepFirst(camera, node, "camera");
            break;
        case Velmar::NodeType::RenderSettings:
            keepFirst(settings, node, "node of render settings");
            break;
        case Velmar::NodeType::ToneMapping:
            keepFirst(tone_mapping, node, "tone mapping");
            break;
        case Velmar::NodeType::BackgroundSettings:
            keepFirst(background, node, "background");
            break;
        case Velmar::NodeType::Object:
            models.push_back(static_cast<const Velmar::SceneNodeModel*>(node));
            break;
        case Velmar::NodeType::Sphere:
            spheres.push_back(static_cast<const Velmar::SceneNodeSphere*>(node));
            break;
        case Velmar::NodeType::Root:
        case Velmar::NodeType::Material:
        case Velmar::NodeType::Mesh:
        case Velmar::NodeType::Metadata:
        case Velmar::NodeType::Curve1D:
            break;
        case Velmar::NodeType::Medium:
            report("participating media aren't rendered");
            break;
        case Velmar::NodeType::RectangleLight:
            report("rectangle lights aren't rendered");
            break;
        case Velmar::NodeType::SectionPlane:
            report("section planes aren't rendered");
            break;
        default:
            report("nodes of kind " + std::to_string(static_cast<std::uint32_t>(node->getType())) + " aren't rendered");
        }
    }
}

} // namespace Preview
