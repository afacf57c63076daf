#include "scene/SceneNodeTonemapping.h"

#include "scene/ClassSupport.h"
#include "scene/XMLPrimitives.h"

namespace Velmar {

namespace {

constexpr FieldList fields(&SceneNodeTonemapping::scale, &SceneNodeTonemapping::pre_scale,
                           &SceneNodeTonemapping::post_scale, &SceneNodeTonemapping::burn,
                           &SceneNodeTonemapping::response_function_path, &SceneNodeTonemapping::film_iso,
                           &SceneNodeTonemapping::ev_adjust, &SceneNodeTonemapping::tone_mapper_kind);

} // namespace

SceneNodeTonemapping::SceneNodeTonemapping() : Destroyable(NodeType::ToneMapping) {
    name = "Tone Mapping";
}

Reference<SceneNode>* SceneNodeTonemapping::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeTonemapping> copy(new SceneNodeTonemapping);
    copyBaseFields(*this, *copy);
    fields.copy(*this, *copy);
    return constructResult(result, copy);
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
    return fields.areEqual(*this, static_cast<const SceneNodeTonemapping&>(*other));
}

} // namespace Velmar
