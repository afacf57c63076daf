#pragma once

#include "Sdk.h"

namespace FakeSdk {

/// A node class that only the library knows. The host holds it, writes it and ends it as any other.
class OwnNode final : public SceneNode {
  public:
    OwnNode();

#ifdef _MSC_VER
    ~OwnNode() override;
    Reference<SceneNode> clone() const override;
    Vector<UID> getDependencyUIDs() const override;
#else
    void* destroy(unsigned flags) override;
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const override;
    ~OwnNode();
#endif
    void setName(const String& new_name) override;
    void updateNodeReferences(const HashTable<NodeEntry>& map) override;
    void writeXML(OStream& stream, uint32_t depth, const XMLWriteOptions& options) const override;
    void traverse(TraversalState& state) override;
    uint32_t getMaxLayerIndex() const override {
        return layer;
    }
    void getMaterialMaskNames(HashTable<NameEntry>& map) const override;
    void getModelMaskNames(HashTable<NameEntry>& map) const override;
    bool refersToNode(const SceneNode* node) const override;
    bool isEqual(const SceneNode* other) const override;

    uint32_t layer = 2;
    double weight = 0.5;
};

/// Settings of a light layer. Hosts copy, write and destroy them but make none.
class OwnLayerSetting final : public LayerSetting {
  public:
#ifdef _MSC_VER
    ~OwnLayerSetting() override;
    Reference<LayerSetting> clone() const override;
#else
    void* destroy(unsigned flags) override;
    Reference<LayerSetting>* cloneInto(Reference<LayerSetting>* result) const override;
    ~OwnLayerSetting();
#endif
};

} // namespace FakeSdk
