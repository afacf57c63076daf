#include "scene/reading/SceneXMLReader.h"

#include "velmarexceptions.h"

#include "scene/SceneNodeMaterial.h"
#include "scene/nodes/NodeElements.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "scene/reading/ElementReader.h"
#include "scene/reading/ForeignParts.h"
#include "scene/reading/Markup.h"
#include "scene/reading/NodeFinder.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <pugixml.hpp>
#include <string_view>
#include <utility>

namespace Velmar {

namespace {

// ---- one function for each class of nodes

template <class Node>
Reference<SceneNode> readNode(ElementReader& elements) {
    const Reference<Node> node(new Node);
    describe(elements, *node);
    return Reference<SceneNode>(node.getPointer());
}

Reference<SceneNode> readModel(ElementReader& elements) {
    const Reference<SceneNodeModel> model(new SceneNodeModel);
    model->rotation = new MatrixRotation;
    describe(elements, *model);
    return Reference<SceneNode>(model.getPointer());
}

Reference<SceneNode> readMesh(ElementReader& elements) {
    const Reference<SceneNodeMesh> mesh(new SceneNodeMesh);
    describeSettings(elements, *mesh);
    describeFile(elements, mesh->path);
    if (mesh->path.empty()) elements.fail("a mesh without the path of its file");
    return Reference<SceneNode>(mesh.getPointer());
}

Reference<SceneNode> readCurve(ElementReader& elements) {
    const Reference<SceneNodeCurve1D> curve(new SceneNodeCurve1D({}, {}));
    describe(elements, *curve);
    return Reference<SceneNode>(curve.getPointer());
}

struct NodeClass {
    std::string_view element;
    Reference<SceneNode> (*read)(ElementReader& elements);
};

// The most frequent first.
constexpr NodeClass node_classes[] = {
    {element_of<SceneNodeModel>, readModel},
    {element_of<SceneNodeMesh>, readMesh},
    {element_of<SceneNodeMaterial>, readNode<SceneNodeMaterial>},
    {element_of<SceneNodeSphere>, readNode<SceneNodeSphere>},
    {element_of<SceneNodeCamera>, readNode<SceneNodeCamera>},
    {element_of<SceneNodeTonemapping>, readNode<SceneNodeTonemapping>},
    {element_of<SceneNodeRenderSettings>, readNode<SceneNodeRenderSettings>},
    {element_of<SceneNodeBackgroundSettings>, readNode<SceneNodeBackgroundSettings>},
    {element_of<SceneNodeCurve1D>, readCurve},
};

/// The kind of a node whose class is one of the renderer library, as far as its element says it.
NodeType getForeignType(std::string_view element) {
    for (const NodeType type : {NodeType::Medium, NodeType::RectangleLight, NodeType::ParametricSurface,
                                NodeType::DisplacedQuad, NodeType::Scatter, NodeType::SectionPlane}) {
        std::string name = FileUtils::toLowerCase(getNodeTypeName(type).view());
        FileUtils::replaceChar(name, ' ', '_');
        if (name == element) return type;
    }
    return NodeType::Metadata;
}

// ---- references

/// Adds a `MissingNode` for each scatter node that materials name and that isn't there.
void addMissingScatterNodes(Vector<Reference<SceneNode>>& nodes) {
    struct Missing {
        UID uid;
        std::size_t order;
    };
    std::vector<Missing> named;
    for (const Reference<SceneNode>& node : nodes) {
        if (node->getType() != NodeType::Material) continue;
        for (const UID uid : static_cast<const SceneNodeMaterial&>(*node).scatter_uids)
            named.push_back({uid, named.size()});
    }
    std::ranges::sort(named, {}, [](const Missing& one) { return std::pair(one.uid, one.order); });
    const auto of_one_node = [](const Missing& a, const Missing& b) { return a.uid == b.uid; };
    named.erase(std::unique(named.begin(), named.end(), of_one_node), named.end());
    std::vector<UID> known{root_uid};
    for (const Reference<SceneNode>& node : nodes)
        known.push_back(node->getUID());
    std::ranges::sort(known);
    std::erase_if(named, [&](const Missing& one) { return std::ranges::binary_search(known, one.uid); });
    std::ranges::sort(named, {}, &Missing::order);
    nodes.reserve(nodes.size() + named.size());
    for (const Missing& one : named)
        nodes.push_back(Reference<SceneNode>(new MissingNode(one.uid)));
}

/// Binds the references of a scene that was read, as far as their nodes are there. Unlike a `BindReferences` pass it
/// never fails: other geometry and lights keep the UID that names nothing, and a missing material of a model is
/// replaced by one outside of the scene.
class ReferenceBinder {
  public:
    explicit ReferenceBinder(SceneNodeRoot& root_) : root(root_), finder(root_) {}

    void bind() {
        for (const Reference<SceneNode>& child : root.children()) {
            SceneNode& node = *child;
            if (node.getType() == NodeType::Object)
                bindModel(static_cast<SceneNodeModel&>(node));
            else if (node.getType() == NodeType::Sphere)
                bindMaterial(static_cast<SceneNodeSphere&>(node));
            else if (node.getType() == NodeType::Material)
                bindScatterNodes(static_cast<SceneNodeMaterial&>(node));
        }
    }

  private:
    void bindModel(SceneNodeModel& model) {
        SceneNode* const geometry = finder.find(model.geometry_uid);
        if (geometry != nullptr && isGeometry(geometry->getType())) model.geometry = geometry;
        model.materials.reserve(model.material_uids.size());
        for (const UID uid : model.material_uids)
            model.materials.push_back(getMaterial(uid));
        // They would only repeat what is bound now.
        Vector<UID>().swap(model.material_uids);
        for (const Reference<EmissionScale>& scale : model.emission_scales)
            bindMaterial(*scale);
        for (const Reference<IESProfile>& profile : model.ies_profiles)
            bindMaterial(*profile);
    }

    template <class Holder>
    void bindMaterial(Holder& holder) {
        if (SceneNodeMaterial* const found = findMaterial(holder.material_uid)) holder.material = found;
    }

    void bindScatterNodes(SceneNodeMaterial& node) {
        node.scatter_nodes.reserve(node.scatter_uids.size());
        for (const UID uid : node.scatter_uids)
            node.scatter_nodes.push_back(finder.find(uid));
    }

    SceneNodeMaterial* findMaterial(UID uid) {
        SceneNode* const found = finder.find(uid);
        return found != nullptr && found->getType() == NodeType::Material ? static_cast<SceneNodeMaterial*>(found)
                                                                          : nullptr;
    }

    Reference<SceneNodeMaterial> getMaterial(UID uid) {
        if (uid == invalid_uid) return nullptr;
        if (SceneNodeMaterial* const found = findMaterial(uid)) return found;
        Reference<SceneNodeMaterial>& missing = missing_materials[uid];
        if (!missing) {
            missing = new SceneNodeMaterial;
            missing->material = nullptr;
            missing->setUID(uid);
        }
        return missing;
    }

    SceneNodeRoot& root;
    NodeFinder finder;
    // Ordered: uids can be chosen to collide in a table.
    std::map<UID, Reference<SceneNodeMaterial>> missing_materials;
};

// ---- the document

class DocumentReader final : public ElementSource {
  public:
    DocumentReader(std::string_view text_, const SceneReadRequest& request_)
        : request(request_), text(text_), places(text_) {
        wants_names = request.listener != nullptr && request.listener->wantsNames();
    }

    Reference<SceneNodeRoot> read() {
        try {
            readScene();
        } catch (const Markup::Fault& fault) {
            throw makeErrorAt(fault.offset, fault.text);
        }
        // Not needed any more, while the scene still grows.
        tree.reset();
        std::vector<InnerElement>().swap(inner_elements);
        std::vector<char>().swap(buffer);
        std::string().swap(plain_part);
        return makeScene();
    }

    std::string_view getText() override {
        if (!has_line_pairs) return text.substr(part_start, part_end - part_start);
        if (plain_part_start != part_start) {
            plain_part.assign(part_end - part_start, '\0');
            plain_part.resize(copyPart(plain_part.data()));
            plain_part_start = part_start;
        }
        return plain_part;
    }

    SceneDocumentError makeError(const pugi::xml_node& element, const std::string& fault) override {
        return makeErrorAt(getOffset(element), fault);
    }

    void noteName(const pugi::xml_node& element, std::string_view name, ElementForm form) override {
        request.listener->onName(element.name(), name, form);
    }

    void noteUnknown(const pugi::xml_node& element) override {
        if (request.listener != nullptr) request.listener->onUnknown(getOffset(element));
        if (request.unknown_elements == nullptr) return;
        if (++request.unknown_elements->count > UnknownElements::max_listed) return;
        const auto [line, column] = places.find(getOffset(element));
        request.unknown_elements->listed.push_back({line, column, element.name(), element.parent().name()});
    }

  private:
    /// A document is parsed in parts of whole nodes, so that its tree is never in memory at once.
    static constexpr std::size_t part_size = 128 * 1024;

    void readScene() {
        std::size_t at = text.size() - FileUtils::withoutByteOrderMark(text).size();
        // Such is the line end of a stream of Windows, which precedes every line feed, also those in texts.
        const std::size_t line_end = text.find('\n');
        has_line_pairs = line_end != std::string_view::npos && line_end > 0 && text[line_end - 1] == '\r';

        at = Markup::skipToTag(text, at);
        if (at == text.size()) throw Markup::Fault{at, "not a scene document: no element"};
        const std::string_view root_name = Markup::nameInTag(text, at);
        if (root_name != "scene") throw Markup::Fault{at, "not a scene document: another root element"};
        const std::size_t root_start = at;
        at = Markup::skipTag(text, at);
        if (text[at - 2] != '/') at = readNodes(at, root_start);
        at = Markup::skipToTag(text, at);
        if (at != text.size()) throw Markup::Fault{at, "an element after the end of the scene"};
    }

    /// Returns the offset after the scene's closing tag.
    std::size_t readNodes(std::size_t at, std::size_t root_start) {
        for (;;) {
            at = Markup::skipToTag(text, at);
            const std::size_t start = at;
            std::size_t end = at;
            while (at < text.size() && text.substr(at, 2) != "</" && end - start < part_size) {
                end = Markup::skipElement(text, at);
                if (end - at > part_size) checkTree(at, end);
                at = Markup::skipToTag(text, end);
            }
            if (end != start) readPart(start, end);
            if (at == text.size()) throw Markup::Fault{root_start, "the element 'scene' has no end"};
            if (text.substr(at, 2) != "</") continue;
            if (Markup::nameInTag(text, at + 1) != "scene") throw Markup::Fault{at, "this tag closes nothing"};
            return Markup::skipTag(text, at);
        }
    }

    /// Each node of the tree takes 64 bytes and each attribute 40. Values take more text than that, but markup that
    /// says nothing could be made of as little as 4 bytes for a node.
    void checkTree(std::size_t start, std::size_t end) const {
        constexpr std::size_t min_bytes_of_node = 10;
        constexpr std::size_t min_bytes_of_attribute = 5;
        const Markup::TreeSize size = Markup::measureTree(text.substr(start, end - start));
        if (size.nodes * min_bytes_of_node + size.attributes * min_bytes_of_attribute > end - start)
            throw Markup::Fault{start, "a node with too many elements: more than one for each 10 bytes"};
    }

    void readPart(std::size_t start, std::size_t end) {
        part_start = start;
        part_end = end;
        const std::string_view part = text.substr(start, end - start);
        const std::size_t zero = part.find('\0');
        if (zero != std::string_view::npos) throw Markup::Fault{start + zero, "a zero byte"};

        buffer.resize(part.size());
        const std::size_t size = copyPart(buffer.data());
        const pugi::xml_parse_result result = tree.load_buffer_inplace(
            buffer.data(), size,
            pugi::parse_cdata | pugi::parse_escapes | pugi::parse_embed_pcdata | pugi::parse_fragment,
            pugi::encoding_utf8);
        if (result.status == pugi::status_out_of_memory) throw BadAlloc();
        if (!result)
            throw makeErrorAt(getOffsetInFile(static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0))),
                              FileUtils::toLowerCase(result.description()));
        const bool is_first = nodes.empty();
        for (const pugi::xml_node element : tree.children())
            if (element.type() == pugi::node_element) readElement(element);
        // A list that grows visits all its nodes, so the first part's number is the measure for the whole.
        if (is_first) nodes.reserve(nodes.size() * (text.size() / part.size() + 1));
    }

    void readElement(const pugi::xml_node& element) {
        ElementReader elements(*this, element);
        const std::string_view name = element.name();
        const auto* const found = std::ranges::find(node_classes, name, &NodeClass::element);
        if (found != std::end(node_classes)) {
            nodes.push_back(found->read(elements));
        } else {
            const Reference<ForeignNode> node(new ForeignNode(getForeignType(name), name, {}));
            node->content.text = String(elements.takeTextAfterIdentity(*node));
            nodes.push_back(Reference<SceneNode>(node.getPointer()));
        }
        elements.finish();
        SceneNode& node = *nodes[nodes.size() - 1];
        all_have_uids = all_have_uids && node.getUID() != invalid_uid;
        names_scatter_nodes = names_scatter_nodes || (node.getType() == NodeType::Material &&
                                                      !static_cast<SceneNodeMaterial&>(node).scatter_uids.empty());
        if (request.listener != nullptr) request.listener->onNode(node, getOffset(element));
    }

    /// Copies the part with line feeds as its only line ends. Returns the size.
    std::size_t copyPart(char* out) const {
        const char* from = text.data() + part_start;
        const char* const end = text.data() + part_end;
        if (!has_line_pairs) {
            std::memcpy(out, from, part_end - part_start);
            return part_end - part_start;
        }
        char* to = out;
        for (; from != end; ++from)
            if (*from != '\r' || from + 1 == end || from[1] != '\n') *to++ = *from;
        return static_cast<std::size_t>(to - out);
    }

    // ---- places

    /// The offset in the file of an offset in the part.
    std::size_t getOffsetInFile(std::size_t offset) const {
        if (!has_line_pairs) return std::min(part_start + offset, text.size());
        if (marked_part != part_start) markPart();
        constexpr std::size_t distance = mark_distance;
        const std::size_t mark = std::min(offset / distance, marks.size() - 1);
        std::size_t place = marks[mark];
        for (std::size_t passed = mark * distance; place < part_end; ++place) {
            if (isOfPair(place)) continue;
            if (passed++ == offset) break;
        }
        return place;
    }

    /// Notes the places of some characters of the part.
    void markPart() const {
        marks.assign(1, part_start);
        std::size_t passed = 0;
        for (std::size_t place = part_start; place < part_end; ++place) {
            if (isOfPair(place)) continue;
            if (passed != 0 && passed % mark_distance == 0) marks.push_back(place);
            ++passed;
        }
        marked_part = part_start;
    }

    /// Whether a carriage return is a part of a line end.
    bool isOfPair(std::size_t place) const {
        return text[place] == '\r' && place + 1 < part_end && text[place + 1] == '\n';
    }

    std::size_t getOffset(const pugi::xml_node& element) const {
        return getOffsetInFile(static_cast<std::size_t>(std::max<std::ptrdiff_t>(element.offset_debug() - 1, 0)));
    }

    SceneDocumentError makeErrorAt(std::size_t offset, const std::string& fault) {
        const auto [line, column] = places.find(offset);
        return SceneDocumentError(toStdString(request.path), line, column, fault);
    }

    // ---- the scene

    Reference<SceneNodeRoot> makeScene() {
        if (!all_have_uids) nameCurves();
        if (names_scatter_nodes) addMissingScatterNodes(nodes);
        const Reference<SceneNodeRoot> root(new SceneNodeRoot);
        root->addFirstChildNodes(nodes);
        ReferenceBinder(*root).bind();
        return root;
    }

    /// Gives nodes that have no UID in the document the one that they had in the scene: the next free one.
    void nameCurves() {
        std::vector<UID> used{root_uid};
        for (const Reference<SceneNode>& node : nodes)
            used.push_back(node->getUID());
        std::ranges::sort(used);
        UID last = root_uid;
        UID last_given = root_uid;
        for (const Reference<SceneNode>& node : nodes) {
            if (node->getUID() == invalid_uid) {
                last = std::max(last, last_given);
                for (auto next = std::ranges::upper_bound(used, last); next != used.end() && *next == last + 1; ++next)
                    ++last;
                last_given = last + 1;
                node->setUID(last_given);
            }
            last = node->getUID();
        }
    }

    const SceneReadRequest& request;
    std::string_view text;
    /// Every line feed of the file follows a carriage return that isn't part of the text.
    bool has_line_pairs = false;
    std::size_t part_start = 0;
    std::size_t part_end = 0;
    /// The part whose places are noted: every so many of its characters one, line ends counted as one character.
    static constexpr std::size_t mark_distance = 128;
    mutable std::size_t marked_part = std::string_view::npos;
    mutable std::vector<std::size_t> marks;
    Markup::Places places;
    std::size_t plain_part_start = std::string_view::npos;
    std::string plain_part;
    std::vector<char> buffer;
    pugi::xml_document tree;
    Vector<Reference<SceneNode>> nodes;
    bool all_have_uids = true;
    bool names_scatter_nodes = false;
};

} // namespace

void ReadingListener::onName(std::string_view, std::string_view, ElementForm) {}

std::string SceneDocumentError::getMessage() const {
    return path + ":" + std::to_string(line) + ":" + std::to_string(column) + ": error: " + fault;
}

Reference<SceneNodeRoot> readSceneXML(const SceneReadRequest& request) {
    const MappedFile file(request.path.view());
    return parseSceneXML(file.getText(), request);
}

Reference<SceneNodeRoot> parseSceneXML(std::string_view text, const SceneReadRequest& request) {
    const Reference<SceneNodeRoot> root = DocumentReader(text, request).read();
    if (request.load_meshes) loadMeshes(*root, request.path);
    return root;
}

Reference<SceneNodeRoot> readSceneXML(const String& path) {
    SceneReadRequest request;
    request.path = path;
    return readSceneXML(request);
}

void loadMeshes(SceneNodeRoot& root, const String& path) {
    TraversalState state(TraversalKind::LoadMeshes, path, toVelmarString(FileUtils::getDirectory(path.view())));
    for (const Reference<SceneNode>& child : root.children())
        child->traverse(state);
}

} // namespace Velmar
