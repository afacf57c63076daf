#include "scene/reading/SceneXMLReader.h"

#include "velmarexceptions.h"

#include "scene/SceneNodeMaterial.h"
#include "scene/nodes/NodeElements.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "scene/reading/ElementReader.h"
#include "scene/reading/ForeignParts.h"
#include "scene/reading/Markup.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <pugixml.hpp>
#include <string_view>
#include <unordered_map>

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

/// Binds the references of a scene that was read, as far as their nodes are there. Unlike a `BindReferences` pass it
/// never fails: other geometry and lights keep the UID that names nothing, a missing material of a model is replaced by
/// one outside of the scene, and a missing scatter node by one without an element at the scene's end.
class ReferenceBinder {
  public:
    explicit ReferenceBinder(SceneNodeRoot& root_) : root(root_) {}

    void bind() {
        // Binding a material may add nodes at the end.
        for (std::size_t i = 0; i < root.children().size(); ++i) {
            SceneNode& node = *root.children()[i];
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
        SceneNode* const geometry = root.getNodeByUID(model.geometry_uid);
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
        for (const UID uid : node.scatter_uids) {
            SceneNode* found = root.getNodeByUID(uid);
            if (found == nullptr) {
                found = new ForeignNode(NodeType::Scatter);
                found->setUID(uid);
                root.addChildNode(found);
            }
            node.scatter_nodes.push_back(found);
        }
    }

    SceneNodeMaterial* findMaterial(UID uid) {
        SceneNode* const found = root.getNodeByUID(uid);
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

    static bool isGeometry(NodeType type) {
        return type == NodeType::Mesh || type == NodeType::ParametricSurface || type == NodeType::DisplacedQuad;
    }

    SceneNodeRoot& root;
    std::unordered_map<UID, Reference<SceneNodeMaterial>> missing_materials;
};

// ---- the document

class DocumentReader final : public ElementSource {
  public:
    DocumentReader(std::string_view text_, const SceneReadRequest& request_) : request(request_), text(text_) {
        wants_names = request.listener != nullptr && request.listener->wantsNames();
    }

    Reference<SceneNodeRoot> read() {
        try {
            readScene();
        } catch (const Markup::Fault& fault) {
            throw makeErrorAt(fault.offset, fault.text);
        }
        Reference<SceneNodeRoot> root(new SceneNodeRoot);
        addNodes(*root);
        return root;
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
        const auto [line, column] = getLine(getOffset(element));
        request.unknown_elements->push_back({line, column, element.name(), element.parent().name()});
    }

  private:
    /// A document is parsed in parts of whole nodes, so that its tree is never in memory at once.
    static constexpr std::size_t part_size = 128 * 1024;

    void readScene() {
        constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
        std::size_t at = text.starts_with(byte_order_mark) ? byte_order_mark.size() : 0;
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
                at = Markup::skipToTag(text, end);
            }
            if (end != start) readPart(start, end);
            if (at == text.size()) throw Markup::Fault{root_start, "the element 'scene' has no end"};
            if (text.substr(at, 2) != "</") continue;
            if (Markup::nameInTag(text, at + 1) != "scene") throw Markup::Fault{at, "this tag closes nothing"};
            return Markup::skipTag(text, at);
        }
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
        for (const pugi::xml_node element : tree.children())
            if (element.type() == pugi::node_element) readElement(element);
    }

    void readElement(const pugi::xml_node& element) {
        ElementReader elements(*this, element);
        const std::string_view name = element.name();
        const auto* const found = std::ranges::find(node_classes, name, &NodeClass::element);
        if (found != std::end(node_classes)) {
            nodes.push_back(found->read(elements));
        } else {
            const Reference<ForeignNode> node(new ForeignNode(getForeignType(name)));
            node->element = String(name);
            node->content.text = String(elements.takeTextAfterIdentity(*node));
            nodes.emplace_back(node.getPointer());
        }
        elements.finish();
        if (request.listener != nullptr) request.listener->onNode(*nodes.back(), getOffset(element));
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
        // Mostly a little after the last one.
        if (last_part != part_start || offset < last_offset) {
            last_part = last_place = part_start;
            last_offset = 0;
        }
        for (; last_place < part_end; ++last_place) {
            if (text[last_place] == '\r' && last_place + 1 < part_end && text[last_place + 1] == '\n') continue;
            if (last_offset == offset) break;
            ++last_offset;
        }
        return last_place;
    }

    std::size_t getOffset(const pugi::xml_node& element) const {
        return getOffsetInFile(static_cast<std::size_t>(std::max<std::ptrdiff_t>(element.offset_debug() - 1, 0)));
    }

    struct Line {
        std::size_t number;
        std::size_t column;
    };

    Line getLine(std::size_t offset) const {
        const std::string_view before = text.substr(0, offset);
        const auto line_start = before.rfind('\n') + 1;
        const auto isFirstByte = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; };
        return {1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')),
                1 + static_cast<std::size_t>(std::count_if(before.begin() + static_cast<std::ptrdiff_t>(line_start),
                                                           before.end(), isFirstByte))};
    }

    SceneDocumentError makeErrorAt(std::size_t offset, const std::string& fault) const {
        const auto [line, column] = getLine(offset);
        return SceneDocumentError(toStdString(request.path), line, column, fault);
    }

    // ---- the scene

    void addNodes(SceneNodeRoot& root) {
        nameCurves();
        for (const Reference<SceneNode>& node : nodes)
            root.addChildNode(node);
        ReferenceBinder(root).bind();
    }

    /// Gives nodes that have no UID in the document the one that they had in the scene: the next free one.
    void nameCurves() {
        const auto getUID = [](const Reference<SceneNode>& node) { return node->getUID(); };
        if (std::ranges::find(nodes, invalid_uid, getUID) == nodes.end()) return;
        std::vector<UID> used{root_uid};
        std::ranges::transform(nodes, std::back_inserter(used), getUID);
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
    /// The last offset of a part that was looked for in the file, and its place.
    mutable std::size_t last_part = std::string_view::npos;
    mutable std::size_t last_offset = 0;
    mutable std::size_t last_place = 0;
    std::size_t plain_part_start = std::string_view::npos;
    std::string plain_part;
    std::vector<char> buffer;
    pugi::xml_document tree;
    std::vector<Reference<SceneNode>> nodes;
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
