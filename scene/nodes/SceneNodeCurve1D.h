#pragma once

#include "velmarvector.h"

#include "scene/SceneNode.h"

namespace Velmar {

/// A function of one variable, given by knots. Nothing checks that there are as many values as knots or that the knots
/// ascend. Its name is empty until it is set.
class SceneNodeCurve1D : public Destroyable<SceneNodeCurve1D, PlainSceneNode> {
  public:
    SceneNodeCurve1D(const Vector<float>& knots, const Vector<float>& values);

    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    /// The element has no UID, unlike that of every other node: a curve stands inside another node's element.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    bool isEqual(const SceneNode* other) const override;

    Vector<float> knots;
    Vector<float> values;
};

} // namespace Velmar
