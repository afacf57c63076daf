#include "scene/SceneNodeTonemapping.h"

#include "scene/ClassSupport.h"
#include "scene/MaterialElements.h"

namespace Velmar {

namespace {

constexpr FieldList tonemapping_fields(&SceneNodeTonemapping::scale, &SceneNodeTonemapping::pre_scale,
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
    tonemapping_fields.copy(*this, *copy);
    return constructResult(result, copy);
}

void SceneNodeTonemapping::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeDescribed(stream, depth, *this, &options);
}

bool SceneNodeTonemapping::isEqual(const SceneNode* other) const {
    if (!isBaseEqual(*other) || other->getType() != NodeType::ToneMapping) return false;
    return tonemapping_fields.areEqual(*this, static_cast<const SceneNodeTonemapping&>(*other));
}

} // namespace Velmar
