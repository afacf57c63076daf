#include "kit/Checks.h"
#include "kit/Failures.h"
#include "kit/velmarkit.h"

#include "scene/nodes/RenderOptions.h"
#include "scene/reading/SceneXMLReader.h"

#include <string>
#include <string_view>

using namespace Velmar;
using namespace Velmar::Kit;

namespace {

VelmarKitNodeKind kindOf(const SceneNode& node) {
    switch (node.getType()) {
    case NodeType::Mesh:
        return VELMARKIT_NODE_MESH;
    case NodeType::Object:
        return VELMARKIT_NODE_MODEL;
    case NodeType::Material:
        return VELMARKIT_NODE_MATERIAL;
    case NodeType::BackgroundSettings:
        return VELMARKIT_NODE_BACKGROUND;
    case NodeType::Camera:
        return VELMARKIT_NODE_CAMERA;
    case NodeType::RenderSettings:
        return VELMARKIT_NODE_RENDER_SETTINGS;
    case NodeType::ToneMapping:
        return VELMARKIT_NODE_TONEMAPPING;
    default:
        return VELMARKIT_NODE_OTHER;
    }
}

Reference<SceneNodeRoot> readScene(const char* path) {
    SceneReadRequest request;
    request.path = String(path);
    try {
        return readSceneXML(request);
    } catch (const SceneDocumentError& error) {
        throw KitFailure{VELMARKIT_DOCUMENT_ERROR, error.getMessage()};
    }
}

} // namespace

extern "C" {

int32_t VelmarKit_Scene_Read(const char* path, VelmarScene** scene) {
    return guarded(Subject::mesh, [&] {
        checkPath(path, "path");
        checkPointer(scene, "scene");
        Reference<SceneNodeRoot> root = readScene(path);
        loadMeshes(*root, String(path));
        SceneNodeRoot* const object = root.getPointer();
        {
            // Nothing holds it from here on, like a scene that a host creates.
            const HeldForCall held(object);
            root = nullptr;
        }
        *scene = toHandle<VelmarScene>(object);
    });
}

int32_t VelmarKit_Scene_GetNode(const VelmarScene* scene, uint64_t index, void** node, int32_t* kind) {
    return guarded(Subject::scene, [&] {
        const auto children = objectOf(scene, "scene").children();
        if (index >= children.size()) refuse("index", " names a node that the scene doesn't have");
        SceneNode* const child = children[index].getPointer();
        store(kind, kindOf(*child));
        store(node, static_cast<void*>(child));
    });
}

int32_t VelmarKit_RenderSettings_IsSet(const VelmarRenderSettings* settings, const char* option, VelmarBool* is_set) {
    return guarded(Subject::rendersettings, [&] {
        const SceneNodeRenderSettings& node = objectOf(settings, "settings");
        checkPointer(option, "option");
        const std::string_view element(option);
        bool is_known = false;
        forEachRenderOption([&](const auto& known) {
            if (known.element != element) return;
            is_known = true;
            store(is_set, (node.*known.field).has_value);
        });
        if (!is_known) refuse("option", " isn't the element of an option");
    });
}

} // extern "C"
