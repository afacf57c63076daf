#pragma once

#include "scene/SceneNode.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// How linear light becomes an image. One node carries the parameters of all kinds of tone mapper; `tone_mapper_kind`
/// selects the one in force, and only that one reaches the document.
class SceneNodeTonemapping : public Destroyable<SceneNodeTonemapping, PlainSceneNode> {
  public:
    /// Codes of `tone_mapper_kind`. The field may hold others, which write nothing.
    enum Kind : std::uint32_t { linear = 1000, reinhard = 1001, camera = 1002, filmic = 1003 };

    SceneNodeTonemapping();

    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    /// All fields count, also those of kinds that aren't in force.
    bool isEqual(const SceneNode* other) const override;

    double scale = 1.0;
    double pre_scale = 4.0;
    double post_scale = 1.0;
    double burn = 6.0;
    String response_function_path = "data/camera_response_functions/dscs315.txt";
    double film_iso = 200.0;
    double ev_adjust = 0.0;
    std::uint32_t tone_mapper_kind = linear;
};

static_assert(offsetof(SceneNodeTonemapping, scale) == 96);
static_assert(offsetof(SceneNodeTonemapping, pre_scale) == 104);
static_assert(offsetof(SceneNodeTonemapping, post_scale) == 112);
static_assert(offsetof(SceneNodeTonemapping, burn) == 120);
static_assert(offsetof(SceneNodeTonemapping, response_function_path) == 128);
static_assert(offsetof(SceneNodeTonemapping, film_iso) == 168);
static_assert(offsetof(SceneNodeTonemapping, ev_adjust) == 176);
static_assert(offsetof(SceneNodeTonemapping, tone_mapper_kind) == 184);
static_assert(sizeof(SceneNodeTonemapping) == 192);

} // namespace Velmar
