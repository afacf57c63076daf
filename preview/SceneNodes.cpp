#include "preview/SceneNodes.h"

#include "scene/TraversalState.h"
#include "scene/nodes/SceneNodeMesh.h"

#include <cstdio>
#include <exception>
#include <memory>
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

void runPass(const Velmar::SceneNodeRoot& scene, Velmar::TraversalKind kind, const char* complaint) {
    // By its table, as everything of the host's: the class itself would name the host's code.
    Velmar::SceneNode& root = const_cast<Velmar::SceneNodeRoot&>(scene);
    const Velmar::String nowhere("");
    const auto destroy = [&](Velmar::TraversalState* state) { root.destroyTraversalState(state); };
    const std::unique_ptr<Velmar::TraversalState, decltype(destroy)> state(
        root.createTraversalState(kind, nowhere, nowhere), destroy);
    for (const Velmar::Reference<Velmar::SceneNode>& child : scene.children()) {
        try {
            if (child) child->traverse(*state);
        } catch (const std::exception& exception) {
            report(std::string(complaint) + ": " + exception.what());
        } catch (...) {
            report(complaint);
        }
    }
}

} // namespace

void report(std::string_view text) noexcept {
    try {
        static std::mutex mutex;
        const std::lock_guard<std::mutex> lock(mutex);
        static std::set<std::string, std::less<>> reported;
        // A scene may name any number of objects, each with a text of its own.
        constexpr std::size_t max_reports = 200;
        if (reported.size() >= max_reports || reported.contains(text)) return;
        reported.emplace(text);
    } catch (...) {
        // No memory, which on Windows mutexes need too: then it may be written again.
    }
    std::fprintf(stderr, "velmar preview: %.*s\n", static_cast<int>(text.size()), text.data());
}

void bindAndLoad(const Velmar::SceneNodeRoot& scene) {
    bool unbound = false;
    bool unloaded = false;
    for (const Velmar::Reference<Velmar::SceneNode>& child : scene.children()) {
        if (!child) continue;
        const Velmar::SceneNode* const node = child.getPointer();
        if (node->getType() == Velmar::NodeType::Mesh) {
            const auto* const mesh = static_cast<const Velmar::SceneNodeMesh*>(node);
            unloaded = unloaded || (!mesh->mesh && !mesh->path.empty());
        } else if (node->getType() == Velmar::NodeType::Object) {
            const auto* const model = static_cast<const Velmar::SceneNodeModel*>(node);
            unbound = unbound || !model->geometry || (model->materials.empty() && !model->material_uids.empty());
            for (const Velmar::Reference<Velmar::EmissionScale>& scale : model->emission_scales)
                unbound = unbound || (scale && !scale->material);
        } else if (node->getType() == Velmar::NodeType::Sphere) {
            const auto* const sphere = static_cast<const Velmar::SceneNodeSphere*>(node);
            unbound = unbound || (!sphere->material && sphere->material_uid != Velmar::invalid_uid);
        }
    }
    if (unloaded) runPass(scene, Velmar::TraversalKind::LoadMeshes, "a mesh can't be loaded");
    if (unbound) runPass(scene, Velmar::TraversalKind::BindReferences, "a node refers to nodes that aren't there");
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
