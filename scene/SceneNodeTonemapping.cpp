#include "scene/SceneNodeTonemapping.h"

#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(SceneNodeTonemapping, scale) == 96);
static_assert(offsetof(SceneNodeTonemapping, pre_scale) == 104);
static_assert(offsetof(SceneNodeTonemapping, post_scale) == 112);
static_assert(offsetof(SceneNodeTonemapping, burn) == 120);
static_assert(offsetof(SceneNodeTonemapping, response_function_path) == 128);
static_assert(offsetof(SceneNodeTonemapping, film_iso) == 168);
static_assert(offsetof(SceneNodeTonemapping, ev_adjust) == 176);
static_assert(offsetof(SceneNodeTonemapping, tone_mapper_kind) == 184);
static_assert(sizeof(SceneNodeTonemapping) == 192);

SceneNodeTonemapping::SceneNodeTonemapping() : Destroyable(NodeType::ToneMapping) {
    name = "Tone Mapping";
}

Reference<SceneNode>* SceneNodeTonemapping::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeTonemapping> copy(new SceneNodeTonemapping);
    copyBaseFields(*this, *copy);
    copy->scale = scale;
    copy->pre_scale = pre_scale;
    copy->post_scale = post_scale;
    copy->burn = burn;
    copy->response_function_path = response_function_path;
    copy->film_iso = film_iso;
    copy->ev_adjust = ev_adjust;
    copy->tone_mapper_kind = tone_mapper_kind;
    return new (static_cast<void*>(result)) Reference<SceneNode>(copy);
}

void SceneNodeTonemapping::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    const auto writeKind = [&](std::string_view element, auto writeFields) {
        writeOpenTag(stream, depth + 1, element);
        writeFields();
        writeCloseTag(stream, depth + 1, element);
    };

    writeOpenTag(stream, depth, "tonemapping");
    writeNodeIdentity(stream, depth + 1, *this);
    switch (tone_mapper_kind) {
    case linear:
        writeKind("linear", [&] { writeDoubleElement(stream, depth + 2, "scale", scale); });
        break;
    case reinhard:
        writeKind("reinhard", [&] {
            writeDoubleElement(stream, depth + 2, "pre_scale", pre_scale);
            writeDoubleElement(stream, depth + 2, "post_scale", post_scale);
            writeDoubleElement(stream, depth + 2, "burn", burn);
        });
        break;
    case camera:
        writeKind("camera", [&] {
            // A string and not a path: it is looked up in the renderer's own data folder and must stay relative.
            writeStringElement(stream, depth + 2, "response_function_path", response_function_path);
            writeDoubleElement(stream, depth + 2, "film_iso", film_iso);
            writeDoubleElement(stream, depth + 2, "ev_adjust", ev_adjust);
        });
        break;
    case filmic:
        writeKind("filmic", [&] { writeDoubleElement(stream, depth + 2, "scale", scale); });
        break;
    default:
        break;
    }
    writeCloseTag(stream, depth, "tonemapping");
}

bool SceneNodeTonemapping::isEqual(const SceneNode* other) const {
    if (!isBaseEqual(*other) || other->getType() != NodeType::ToneMapping) return false;
    const auto& node = static_cast<const SceneNodeTonemapping&>(*other);
    return scale == node.scale && pre_scale == node.pre_scale && post_scale == node.post_scale && burn == node.burn &&
           response_function_path == node.response_function_path && film_iso == node.film_iso &&
           ev_adjust == node.ev_adjust && tone_mapper_kind == node.tone_mapper_kind;
}

} // namespace Velmar
