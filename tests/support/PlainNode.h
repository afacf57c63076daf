#pragma once

#include "scene/SceneNode.h"
#include "scene/XMLPrimitives.h"

#include <string>

namespace TestSupport {

/// A node of any kind that writes its identity, counts its passes and reports when it is destroyed.
class PlainNode : public Velmar::Destroyable<PlainNode, Velmar::PlainSceneNode> {
  public:
    explicit PlainNode(Velmar::NodeType kind = Velmar::NodeType::Metadata, int* destructions = nullptr)
        : Destroyable(kind), destructions_(destructions) {}
    ~PlainNode() {
        if (destructions_ != nullptr) ++*destructions_;
    }

    Velmar::Reference<Velmar::SceneNode>* cloneInto(Velmar::Reference<Velmar::SceneNode>* result) const override {
        const Velmar::Reference<PlainNode> copy(new PlainNode(getType()));
        copyBaseFields(*this, *copy);
        return new (static_cast<void*>(result)) Velmar::Reference<Velmar::SceneNode>(copy);
    }
    void writeXML(Velmar::OStream& stream, std::uint32_t depth, const Velmar::XMLWriteOptions&) const override {
        Velmar::writeOpenTag(stream, depth, "plain");
        Velmar::writeNodeIdentity(stream, depth + 1, *this);
        Velmar::writeCloseTag(stream, depth, "plain");
    }
    std::uint32_t getMaxLayerIndex() const override { return layer; }
    void getMaterialMaskNames(Velmar::MaskNameMap& map) const override {
        if (map.find(mask) == nullptr) map.insert(mask, static_cast<std::uint32_t>(map.size()));
    }
    void getModelMaskNames(Velmar::MaskNameMap& map) const override { getMaterialMaskNames(map); }

    std::uint32_t layer = 0;
    Velmar::String mask = "mask";

  private:
    int* destructions_;
};

} // namespace TestSupport
