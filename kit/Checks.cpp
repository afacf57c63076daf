#include "kit/Checks.h"

#include "velmarexceptions.h"

#include "mesh/MeshBuilder.h"

namespace Velmar::Kit {

namespace {

/// The length of the UTF-8 sequence at the beginning of `text`, which isn't empty; 0 if there is none of a character
/// that XML allows.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(i < text.size() ? text[i] : 0); };
    const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0u) == 0x80u; };
    const unsigned first = byte(0);
    if (first < 0x80) return first >= 0x20 || first == '\t' || first == '\n' || first == '\r' ? 1 : 0;
    if (first >= 0xC2 && first < 0xE0) return follows(1) ? 2 : 0;
    if (first >= 0xE0 && first < 0xF0) {
        if (!follows(1) || !follows(2)) return 0;
        const unsigned code = (first & 0xFu) << 12 | (byte(1) & 0x3Fu) << 6 | (byte(2) & 0x3Fu);
        const bool is_surrogate = code >= 0xD800 && code < 0xE000;
        return code < 0x800 || is_surrogate || code >= 0xFFFE ? 0 : 3;
    }
    if (first >= 0xF0 && first < 0xF5) {
        if (!follows(1) || !follows(2) || !follows(3)) return 0;
        const unsigned code = (first & 7u) << 18 | (byte(1) & 0x3Fu) << 12;
        return code < 0x10000 || code > 0x10FFFF ? 0 : 4;
    }
    return 0;
}

} // namespace

bool isDocumentText(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

void checkText(const char* text, const char* what) {
    checkPointer(text, what);
    if (!isDocumentText(text)) refuse(what, " isn't UTF-8, or holds a character that XML forbids");
}

void checkPath(const char* path, const char* what) {
    checkPointer(path, what);
    if (*path == '\0') refuse(what, " is empty");
}

void checkContext(const ::VelmarContext* context) {
    checkHandle(context, "context");
    if (fromHandle(const_cast<::VelmarContext*>(context))->create_instance == nullptr)
        refuse("context", " has no renderer library: VelmarKit_Context_Initialize didn't succeed");
}

void checkKeyFrame(VelmarModel* model, std::int32_t index) {
    if (index >= 0 && static_cast<std::uint64_t>(index) >= fromHandle(model)->keyframes.size())
        refuse("index", " names a key frame that the model doesn't have");
}

void checkMaterials(std::int32_t count, VelmarMaterialNode* const* materials) {
    for (std::int32_t i = 0; i < count; ++i)
        if (materials[i] != nullptr) checkHandle(materials[i], "an element of materials");
}

void checkFaces(const VelmarMesh* mesh) {
    const SceneNodeMesh& node = *fromHandle(const_cast<VelmarMesh*>(mesh));
    try {
        MeshBuilder::checkFaces(*node.mesh);
    } catch (const VelmarException& exception) {
        // A host builds many meshes.
        throw KitFailure{VELMARKIT_MESH_ERROR,
                         "Mesh '" + toStdString(node.getName()) + "': " + toStdString(exception.getMessage())};
    }
}

SceneNode& nodeOf(void* node, const char* what) {
    checkPointer(node, what);
    auto& object = *static_cast<SceneNode*>(node);
    checkAlive(object, what);
    constexpr auto last_type = static_cast<std::uint32_t>(NodeType::Curve1D);
    if (static_cast<std::uint32_t>(object.getType()) > last_type) refuse(what, " isn't a node");
    return object;
}

} // namespace Velmar::Kit
