#include "tools/DocumentCheck.h"

#include "scene/reading/ElementVisitor.h"
#include "scene/reading/Markup.h"
#include "scene/reading/NodeFinder.h"
#include "scene/reading/SceneXMLReader.h"
#include "tools/CameraView.h"
#include "tools/Console.h"
#include "tools/DocumentFiles.h"
#include "tools/DocumentReferences.h"
#include "tools/ElementFinder.h"
#include "tools/MeshFile.h"
#include "tools/NumberRules.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>

using namespace Velmar;

namespace {

/// Gathers findings and gives them their places.
class Findings {
  public:
    Findings(std::string_view document_, std::size_t limit_) : document(document_), limit(limit_) {}

    /// Counts a finding. Returns whether it is to be kept.
    bool count(bool is_error, const char* code) {
        ++(is_error ? report.errors : report.warnings);
        if (++counts[code] <= limit) return true;
        ++report.omitted[code];
        return false;
    }

    void keep(Finding&& finding) { report.findings.push_back(std::move(finding)); }

    CheckReport take() {
        std::ranges::stable_sort(report.findings, {}, &Finding::offset);
        Markup::Places places(document);
        for (Finding& finding : report.findings) {
            const auto [line, column] = places.find(finding.offset);
            finding.line = line;
            finding.column = column;
        }
        return std::move(report);
    }

  private:
    std::string_view document;
    std::size_t limit;
    std::unordered_map<std::string_view, std::size_t> counts;
    CheckReport report;
};

std::string describeUID(UID uid) {
    return std::to_string(uid);
}

// ---- light

bool isZero(const Spectrum& spectrum) {
    if (const auto* const uniform = dynamic_cast<const UniformSpectrum*>(&spectrum)) return uniform->value == 0.0;
    if (const auto* const rgb = dynamic_cast<const RGBSpectrum*>(&spectrum)) return rgb->rgb == Vec3d{};
    return false;
}

bool isZero(const Reference<WavelengthDependentParam>& param) {
    if (!param) return false;
    const auto* const constant = dynamic_cast<const ConstantWavelengthDependentParam*>(param.getPointer());
    return constant != nullptr && (!constant->spectrum || isZero(*constant->spectrum));
}

bool givesLight(const Material& material) {
    if (dynamic_cast<const SunSkyMaterial*>(&material) != nullptr) return true;
    if (const auto* const foreign = dynamic_cast<const ForeignMaterial*>(&material))
        return foreign->content.text.view().find("emission") != std::string_view::npos;
    // Their product.
    return (material.base_emission || material.emission) && !isZero(material.base_emission) &&
           !isZero(material.emission);
}

// ---- the check

class Checker final : public ReadingListener {
  public:
    Checker(const std::string& path_, std::string_view document_, std::size_t limit, Progress& progress_)
        : path(path_), document(document_), progress(progress_), files_of_document(path_), finder(document_),
          findings(document_, limit) {}

    CheckReport check() {
        SceneReadRequest request;
        request.path = toVelmarString(path);
        request.listener = this;
        try {
            root = parseSceneXML(document, request);
        } catch (const SceneDocumentError& error) {
            addUnread(error);
        }
        checkUnknown();
        if (root) checkScene();
        return findings.take();
    }

    // ---- while it is read

    void onNode(const SceneNode&, std::size_t at) override { node_offsets.push_back(at); }
    void onUnknown(std::size_t at) override {
        if (findings.count(false, unknown_element)) unknown_offsets.push_back(at);
    }

    // ---- the values of the node that is checked, from its visitor

    void enter(std::string_view element, std::size_t index) {
        steps.push_back({element, index});
        if (element == element_of<KeyFrame> && index <= 1) has_frame_time = false;
    }
    void leave() { steps.pop_back(); }

    void flag(std::string_view, bool) {}
    void text(std::string_view, std::string_view, std::size_t) {}
    void markup(std::string_view element, std::string_view elements, std::size_t index) {
        TraversalState state(TraversalKind::GetDependencies, {}, {});
        ForeignText(elements).traverse(state);
        for (const String& name : state.dependencies)
            checkFile({element, index}, toStdString(name), false);
    }

    void numbers(std::string_view element, std::span<const double> values) {
        const std::string_view parent = steps.empty() ? node_element : steps.back().element;
        if (const auto fault = findNumberFault(parent, element, values))
            addAt({element, 0}, fault->is_error, fault->code, fault->text, fault->advice);
        if (parent == element_of<KeyFrame> && element == "time") checkFrameTime(values[0]);
    }

    void numbers(std::string_view element, std::span<const float> values) {
        const auto found = std::ranges::find_if(values, [](float value) { return !std::isfinite(value); });
        if (found == values.end()) return;
        const double value = *found;
        numbers(element, std::span<const double>(&value, 1));
    }

    void file(std::string_view element, std::string_view name) {
        const bool is_mesh = node->getType() == NodeType::Mesh;
        const std::string place = checkFile({element, 0}, std::string(name), is_mesh);
        if (is_mesh && !place.empty()) checkMesh({element, 0}, place, static_cast<SceneNodeMesh&>(*node));
    }

    void reference(std::string_view element, const SceneNode* target, UID uid, std::size_t index) {
        const bool is_scatter = element == "uid" && steps.back().element == "scatter_uids";
        const bool is_geometry = element == "geometry_uid";
        const bool is_none = target == nullptr && uid == invalid_uid;
        // The whole background has one material, which is no node.
        if (is_none && node->getType() == NodeType::BackgroundSettings) return;
        if (target == nullptr && !is_none) target = nodes_by_uid->find(uid);
        const char* const wanted = is_scatter ? "scatter" : is_geometry ? "mesh" : "material";
        const VisitedElement step = {element, index};
        if (target == nullptr || isMissing(*target)) {
            // A bound one that isn't there takes the place of one of another kind, too.
            target = is_none ? nullptr : nodes_by_uid->find(uid);
            if (target == nullptr || isMissing(*target))
                return addAt(step, true, "dangling-reference",
                             is_none ? "it names no node" : "no node has uid " + describeUID(uid),
                             std::string("name a ") + wanted + " of the document");
        }
        const NodeType type = target->getType();
        if (is_scatter ? type == NodeType::Scatter : is_geometry ? isGeometry(type) : type == NodeType::Material)
            return;
        addAt(step, true, "wrong-reference",
              "the node of uid " + describeUID(uid) + " is a " + std::string(getElement(*target)) + ", no " + wanted,
              std::string("name a ") + wanted);
    }

  private:
    static constexpr const char* unknown_element = "unknown-element";

    // ---- findings

    void addUnread(const SceneDocumentError& error) {
        findings.count(true, "unreadable");
        std::size_t at = 0;
        for (std::size_t line = 1; line < error.line; ++line)
            at = document.find('\n', at) + 1;
        // Its column counts characters.
        for (std::size_t column = 0; at < document.size(); ++at) {
            if ((static_cast<unsigned char>(document[at]) & 0xC0U) == 0x80U) continue;
            if (++column == error.column) break;
        }
        findings.keep({true, "unreadable", at, {}, error.fault, "correct the document or write it again"});
    }

    /// A finding about an element of the node that is checked, inside of the one that was entered last.
    void addAt(const VisitedElement& step, bool is_error, const char* code, const std::string& text,
               const std::string& advice) {
        if (!findings.count(is_error, code)) return;
        steps.push_back(step);
        findings.keep({is_error, code, finder.find(offset, steps), describePath(nameOf(*node), steps), text, advice});
        steps.pop_back();
    }

    /// A finding about the document as a whole, or about a node.
    void add(bool is_error, const char* code, std::size_t at, const std::string& element, const std::string& text,
             const std::string& advice) {
        if (findings.count(is_error, code)) findings.keep({is_error, code, at, element, text, advice});
    }

    static std::string nameOf(const SceneNode& node) {
        const std::string element(getElement(node));
        // What a curve has was made up by the reader.
        if (node.getType() == NodeType::Curve1D) return element;
        return element + "[uid=" + describeUID(node.getUID()) + "]";
    }

    void checkUnknown() {
        std::ranges::sort(unknown_offsets);
        std::size_t node_end = 0;
        for (const std::size_t at : unknown_offsets) {
            const auto next = std::ranges::upper_bound(node_offsets, at);
            const std::size_t start = next == node_offsets.begin() ? std::string_view::npos : *(next - 1);
            if (start != std::string_view::npos && node_end <= start) node_end = Markup::skipElement(document, start);
            ElementFinder::Found found;
            // A node that couldn't be read isn't in the list.
            if (start != std::string_view::npos && at < node_end) {
                found = finder.describe(start, at);
                const auto index = static_cast<std::size_t>(next - 1 - node_offsets.begin());
                found.path.insert(0, root ? nameOf(*root->children()[index])
                                          : std::string(Markup::nameInTag(document, start)));
            } else {
                found.path = Markup::nameInTag(document, at);
            }
            findings.keep({false, unknown_element, at, found.path,
                           found.is_repeated ? "another one of this name, which readers skip"
                                             : "an unknown element, which readers skip",
                           found.is_repeated ? "remove one of them" : "remove it or correct its name"});
        }
    }

    // ---- the scene

    void checkScene() {
        progress.show("checking " + Text::fileName(path));
        nodes_by_uid.emplace(*root);
        for (std::size_t i = 0; i < node_offsets.size(); ++i) {
            node = root->children()[i].getPointer();
            offset = node_offsets[i];
            node_element = getElement(*node);
            visitNode(*this, *node);
            checkNode();
        }
        checkUIDs();
        for (const auto& [model, at] : models)
            checkMaterialCount(*model, at);
        checkView();
        if (!has_light)
            add(false, "no-light", getSceneOffset(), {}, "nothing gives light",
                "add a background, or a model of a material that emits");
    }

    void checkNode() {
        switch (node->getType()) {
        case NodeType::Object:
            takeModel(static_cast<SceneNodeModel&>(*node));
            break;
        case NodeType::Sphere:
            takeMaterial(static_cast<const SceneNodeSphere&>(*node).material);
            break;
        case NodeType::Camera:
            checkCamera(static_cast<const SceneNodeCamera&>(*node));
            break;
        case NodeType::BackgroundSettings: {
            const auto& material = static_cast<const SceneNodeBackgroundSettings&>(*node).background_material;
            has_light = has_light || (material && givesLight(*material));
            break;
        }
        case NodeType::RectangleLight:
            has_light = true;
            break;
        case NodeType::Metadata:
            if (node_element != "metadata")
                add(false, unknown_element, offset, nameOf(*node), "a node of an unknown kind, which readers skip",
                    "remove it or correct its name");
            break;
        default:
            break;
        }
    }

    void checkUIDs() {
        std::vector<std::pair<UID, std::size_t>> uids;
        uids.reserve(node_offsets.size());
        for (std::size_t i = 0; i < node_offsets.size(); ++i)
            if (root->children()[i]->getType() != NodeType::Curve1D)
                uids.emplace_back(root->children()[i]->getUID(), i);
        if (!std::ranges::is_sorted(uids)) std::ranges::sort(uids);
        for (std::size_t i = 0; i < uids.size(); ++i) {
            const auto [uid, index] = uids[i];
            const bool is_repeated = i > 0 && uids[i - 1].first == uid;
            if (uid != root_uid && !is_repeated) continue;
            node = root->children()[index].getPointer();
            offset = node_offsets[index];
            if (uid == root_uid)
                addAt({"uid", 0}, true, "reserved-uid", "uid 0 is that of the scene", "give the node another one");
            if (is_repeated)
                addAt({"uid", 0}, true, "duplicate-uid",
                      "a " + std::string(getElement(*root->children()[uids[i - 1].second])) +
                          " before has this uid too",
                      "give one of them another one, and change what refers to it");
        }
    }

    void checkFrameTime(double time) {
        if (has_frame_time && !(frame_time < time))
            addAt({"time", 0}, true, "key-frame-order",
                  describeNumber(time) + " isn't later than " + describeNumber(frame_time) + " of the one before",
                  "order the key frames by time");
        frame_time = time;
        has_frame_time = true;
    }

    void checkCamera(const SceneNodeCamera& found) {
        if (camera == nullptr) {
            camera = &found;
            camera_offset = offset;
        }
        const Vec3d& a = found.up;
        const Vec3d& b = found.forwards;
        const double squared = (a.x * a.x + a.y * a.y + a.z * a.z) * (b.x * b.x + b.y * b.y + b.z * b.z);
        const double along = a.x * b.x + a.y * b.y + a.z * b.z;
        constexpr double tolerance = 1e-12;
        if (squared > 0.0 && squared - along * along <= tolerance * squared)
            addAt({"up", 0}, true, "parallel-directions", "up and forwards are parallel",
                  "give an upward direction that isn't the one of view");
    }

    void takeModel(SceneNodeModel& model) {
        models.emplace_back(&model, offset);
        for (const Reference<SceneNodeMaterial>& material : model.materials)
            takeMaterial(material);
    }

    void takeMaterial(const Reference<SceneNodeMaterial>& material) {
        if (has_light || !material || !material->material) return;
        // A material is looked at once, not for each of its models.
        if (last_material == material.getPointer()) return;
        last_material = material.getPointer();
        has_light = givesLight(*material->material);
    }

    void checkMaterialCount(const SceneNodeModel& model, std::size_t at) {
        if (!model.geometry || model.geometry->getType() != NodeType::Mesh) return;
        const Reference<Mesh>& mesh = static_cast<const SceneNodeMesh&>(*model.geometry).mesh;
        if (!mesh || mesh->num_materials_referenced <= model.materials.size()) return;
        if (!findings.count(true, "too-few-materials")) return;
        const VisitedElement step[] = {{"materials", 0}};
        findings.keep({true, "too-few-materials", finder.find(at, step), describePath(nameOf(model), step),
                       "the model has " + Text::count(model.materials.size(), "material", "materials") +
                           ", its mesh uses " + std::to_string(mesh->num_materials_referenced),
                       "name a material for each of the mesh"});
    }

    // ---- files

    /// Returns where the file is; empty when it isn't there or can't be read, which is a finding.
    std::string checkFile(const VisitedElement& step, const std::string& name, bool is_mesh) {
        // An empty path is that of a file that isn't used.
        if (name.empty()) return {};
        const auto [known, is_new] = files.try_emplace(name);
        if (is_new) {
            known->second.place = files_of_document.find(name);
            if (!is_mesh && !known->second.place.empty()) known->second.fault = findReadingFault(known->second.place);
        }
        if (known->second.place.empty())
            addAt(step, true, "missing-file", "there is no file " + name,
                  "put it at " + files_of_document.getPlaces(name).front() + ", or name another one");
        else if (!known->second.fault.empty())
            addAt(step, true, "damaged-file", known->second.fault, "replace the file");
        return known->second.place;
    }

    static std::string findReadingFault(const std::string& place) {
        try {
            const MappedFile opened(place);
            return {};
        } catch (...) {
            return getCurrentMessage();
        }
    }

    struct MeshState {
        /// What is known of it but the faces: they are many.
        Reference<Mesh> outline;
        const char* code = nullptr;
        std::string fault;
    };

    void checkMesh(const VisitedElement& step, const std::string& place, SceneNodeMesh& mesh_node) {
        MeshState& state = meshes[place + '\n' + describeNumber(mesh_node.scale)];
        if (!state.outline && state.code == nullptr) readOutline(place, static_cast<float>(mesh_node.scale), state);
        if (state.code != nullptr)
            addAt(step, true, state.code, place + ": " + state.fault, "write the scene again, or replace the file");
        mesh_node.mesh = state.outline;
    }

    void readOutline(const std::string& place, float scale, MeshState& state) {
        progress.show("reading " + Text::fileName(place));
        try {
            const Reference<Mesh> mesh = readMesh(place, scale).mesh;
            state.fault = findFaultyFace(*mesh);
            if (state.fault.empty()) state.fault = findFaultyVertex(*mesh);
            if (!state.fault.empty()) state.code = "damaged-file";
            if (!isNamedByContent(place, *mesh)) {
                state.code = "changed-file";
                state.fault = "its content isn't the one that its name says";
            }
            state.outline = new Mesh;
            state.outline->aabb_min = mesh->aabb_min;
            state.outline->aabb_max = mesh->aabb_max;
            state.outline->num_materials_referenced = mesh->num_materials_referenced;
        } catch (...) {
            state.code = "damaged-file";
            state.fault = getCurrentMessage();
            // Messages that begin with the file's name do so already.
            if (state.fault.starts_with(place + ": ")) state.fault.erase(0, place.size() + 2);
        }
    }

    // ---- what the camera sees

    void checkView() {
        if (camera == nullptr)
            add(false, "no-camera", getSceneOffset(), {}, "there is no camera", "add one");
        else if (camera->keyframes.empty())
            add(false, "no-camera", camera_offset, nameOf(*camera), "the camera has no position", "add a key frame");
        else if (!seesSomething(*root, *camera))
            add(false, "nothing-seen", camera_offset, nameOf(*camera), "no model and no sphere is in its view",
                "move or turn the camera, or add models");
    }

    std::size_t getSceneOffset() const {
        const std::size_t at = document.find("<scene");
        return at == std::string_view::npos ? 0 : at;
    }

    struct FileState {
        std::string place;
        std::string fault;
    };

    const std::string& path;
    std::string_view document;
    Progress& progress;
    DocumentFiles files_of_document;
    ElementFinder finder;
    Findings findings;
    Reference<SceneNodeRoot> root;
    std::optional<NodeFinder> nodes_by_uid;
    /// Of the document's nodes, in their order. The scene may have more of them after these.
    std::vector<std::size_t> node_offsets;
    std::vector<std::size_t> unknown_offsets;

    /// The node that is checked, and the way to the element in it.
    SceneNode* node = nullptr;
    std::size_t offset = 0;
    std::string_view node_element;
    std::vector<VisitedElement> steps;
    double frame_time = 0.0;
    bool has_frame_time = false;

    std::vector<std::pair<const SceneNodeModel*, std::size_t>> models;
    std::unordered_map<std::string, FileState> files;
    std::unordered_map<std::string, MeshState> meshes;
    const SceneNodeCamera* camera = nullptr;
    std::size_t camera_offset = 0;
    const SceneNodeMaterial* last_material = nullptr;
    bool has_light = false;
};

} // namespace

CheckReport checkDocument(const std::string& path, std::size_t limit, bool quiet) {
    Progress progress(quiet);
    progress.show("reading " + Text::fileName(path));
    try {
        const MappedFile file(path);
        return Checker(path, file.getText(), limit, progress).check();
    } catch (...) {
        throw makeFailureOf(path);
    }
}
