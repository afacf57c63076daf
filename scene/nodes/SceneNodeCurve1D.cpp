#include "scene/nodes/SceneNodeCurve1D.h"

#include "scene/NumberText.h"
#include "scene/XMLPrimitives.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace Velmar {

static_assert(offsetof(SceneNodeCurve1D, knots) == 96);
static_assert(offsetof(SceneNodeCurve1D, values) == 120);
static_assert(sizeof(SceneNodeCurve1D) == 144);

namespace {

void writeNumberList(OStream& stream, std::uint32_t depth, std::string_view name, const Vector<float>& numbers) {
    std::string text;
    for (const float number : numbers) {
        if (!text.empty()) text += ' ';
        text += NumberText(number).view();
    }
    writeStringElement(stream, depth, name, text);
}

} // namespace

SceneNodeCurve1D::SceneNodeCurve1D(const Vector<float>& knots_, const Vector<float>& values_)
    : Destroyable(NodeType::Curve1D), knots(knots_), values(values_) {}

Reference<SceneNode>* SceneNodeCurve1D::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeCurve1D> copy(new SceneNodeCurve1D(knots, values));
    copyBaseFields(*this, *copy);
    return new (static_cast<void*>(result)) Reference<SceneNode>(copy);
}

void SceneNodeCurve1D::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    writeOpenTag(stream, depth, "curve1d");
    writeStringElement(stream, depth + 1, "name", getName());
    writeNumberList(stream, depth + 1, "knots", knots);
    writeNumberList(stream, depth + 1, "values", values);
    writeCloseTag(stream, depth, "curve1d");
}

bool SceneNodeCurve1D::isEqual(const SceneNode* other) const {
    if (!isBaseEqual(*other) || other->getType() != NodeType::Curve1D) return false;
    const auto& node = static_cast<const SceneNodeCurve1D&>(*other);
    return std::ranges::equal(knots, node.knots) && std::ranges::equal(values, node.values);
}

} // namespace Velmar
