#include "OwnNode.h"

#include "Record.h"

namespace FakeSdk {

namespace {

constexpr uint32_t metadata = 11;

} // namespace

OwnNode::OwnNode() {
    type = metadata;
    name = String("A node of the library's own");
}

OwnNode::~OwnNode() {
    Record() << "own node ended";
}

#ifdef _MSC_VER
Reference<SceneNode> OwnNode::clone() const {
    return Reference<SceneNode>(new OwnNode);
}

Vector<UID> OwnNode::getDependencyUIDs() const {
    Vector<UID> uids;
    uids.append(7);
    return uids;
}
#else
void* OwnNode::destroy(unsigned flags) {
    this->~OwnNode();
    if ((flags & 1) != 0) host_memory.free(this);
    return this;
}

Reference<SceneNode>* OwnNode::cloneInto(Reference<SceneNode>* result) const {
    return new (result, Placed()) Reference<SceneNode>(new OwnNode);
}

Vector<UID>* OwnNode::getDependencyUIDsInto(Vector<UID>* result) const {
    Vector<UID>* const uids = new (result, Placed()) Vector<UID>;
    uids->append(7);
    return uids;
}
#endif

void OwnNode::setName(const String& new_name) {
    Record() << "own node named " << new_name;
    SceneNode::setName(new_name);
}

void OwnNode::updateNodeReferences(const HashTable<NodeEntry>& map) {
    Record() << "own node sees " << map.count << " nodes";
}

void OwnNode::writeXML(OStream& stream, uint32_t depth, const XMLWriteOptions& options) const {
    Record() << "own node writes itself at depth " << depth << " into " << options.scene_path;
    for (uint32_t i = 0; i < depth; ++i)
        stream.writeText("\t");
    stream.writeText("<own_node weight=\"");
    stream.writeNumber(weight);
    stream.writeText("\"/>\n");
}

void OwnNode::traverse(TraversalState& state) {
    Record() << "own node takes part in pass " << state.kind;
}

void OwnNode::getMaterialMaskNames(HashTable<NameEntry>& map) const {
    const String mask("own material mask");
    map.insert(hashOf(mask), NameEntry{mask, static_cast<uint32_t>(map.count)});
}

void OwnNode::getModelMaskNames(HashTable<NameEntry>& map) const {
    const String mask("own object mask");
    map.insert(hashOf(mask), NameEntry{mask, static_cast<uint32_t>(map.count)});
}

bool OwnNode::refersToNode(const SceneNode*) const {
    return false;
}

bool OwnNode::isEqual(const SceneNode* other) const {
    return other->type == metadata && other->uid == uid;
}

OwnLayerSetting::~OwnLayerSetting() {
    Record() << "own layer setting " << name << " ended";
}

#ifdef _MSC_VER
Reference<LayerSetting> OwnLayerSetting::clone() const {
#else
void* OwnLayerSetting::destroy(unsigned flags) {
    this->~OwnLayerSetting();
    if ((flags & 1) != 0) host_memory.free(this);
    return this;
}

Reference<LayerSetting>* OwnLayerSetting::cloneInto(Reference<LayerSetting>* result) const {
#endif
    Record() << "own layer setting " << name << " cloned";
    OwnLayerSetting* const copy = new OwnLayerSetting;
    copy->name = String("copy");
#ifdef _MSC_VER
    return Reference<LayerSetting>(copy);
#else
    return new (result, Placed()) Reference<LayerSetting>(copy);
#endif
}

} // namespace FakeSdk
