#include "tools/Console.h"
#include "tools/DocumentFiles.h"
#include "tools/Json.h"
#include "tools/MeshFile.h"
#include "tools/SceneDocument.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

/// Numbers of which only the set matters, in little memory.
class UidSet {
  public:
    void add(std::uint32_t uid) {
        uids.push_back(uid);
        if (uids.size() < 2 * distinct + 4096) return;
        sort();
    }

    void sort() {
        std::sort(uids.begin(), uids.end());
        uids.erase(std::unique(uids.begin(), uids.end()), uids.end());
        distinct = uids.size();
    }

    /// After `sort`.
    bool contains(std::uint32_t uid) const { return std::binary_search(uids.begin(), uids.end(), uid); }
    const std::vector<std::uint32_t>& get() const { return uids; }

  private:
    std::vector<std::uint32_t> uids;
    std::size_t distinct = 0;
};

/// What was found of a file that a document names.
struct FileReport {
    std::string text;
    bool usable = false;
};

struct MeshTotals {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t quads = 0;
};

/// The nodes of one kind.
struct NodeList {
    std::string kind;
    std::uint64_t count = 0;
    /// The first ones; nobody reads a list of millions.
    std::vector<DocumentNode> first;
};

class SceneInfo {
  public:
    SceneInfo(std::string document_path, bool quiet) : path(std::move(document_path)), places(path), progress(quiet) {
        progress.show("reading " + Text::fileName(path));
        size = readSceneDocument(path, [this](DocumentNode&& node) { take(std::move(node)); });
        uids.sort();
        references.sort();
        for (const std::uint32_t uid : references.get())
            if (uid != no_uid && !uids.contains(uid)) ++dangling;
        progress.clear();
    }

    void print() const {
        printResult(Text::row("file", path));
        printResult(Text::row("kind", "scene document"));
        printResult(Text::row("size", Text::size(size)));
        printResult(Text::row("nodes", std::to_string(node_count)));
        printResult("");
        printNodes();
        printResult("");
        printResult(Text::row("meshes", Text::count(totals.files, "file", "files") + ", " + Text::size(totals.bytes) +
                                            ", " + Text::faceCounts(totals.vertices, totals.triangles, totals.quads)));
    }

    void addTo(JsonWriter& json) const {
        json.add("kind", "scene document");
        json.add("size", size);
        json.beginObject("nodes");
        for (const NodeList& list : lists)
            json.add(list.kind, list.count);
        json.endObject();
        json.beginObject("meshes");
        json.add("files", totals.files);
        json.add("bytes", totals.bytes);
        json.add("vertices", totals.vertices);
        json.add("triangles", totals.triangles);
        json.add("quads", totals.quads);
        json.endObject();
        json.beginList("external_files");
        for (const auto& [name, report] : files) {
            json.beginObject();
            json.add("name", name);
            json.add("usable", report.usable);
            json.add("state", report.text);
            json.endObject();
        }
        json.endList();
        json.add("dangling_uids", dangling);
    }

    /// What is wrong, in words; empty when all is well.
    std::string describeFaults() const {
        std::uint64_t unusable = 0;
        for (const auto& [name, report] : files)
            if (!report.usable) ++unusable;
        std::string text;
        if (unusable != 0) text = Text::count(unusable, "file is", "files are") + " missing or damaged";
        if (dangling != 0)
            text += (text.empty() ? "" : ", ") + Text::count(dangling, "uid names", "uids name") + " no node";
        return text;
    }

  private:
    void take(DocumentNode&& node) {
        ++node_count;
        if (node.uid) uids.add(*node.uid);
        if (node.geometry) references.add(*node.geometry);
        for (const std::uint32_t material : node.materials)
            references.add(material);
        if (node.mesh_file) {
            progress.show("reading " + *node.mesh_file);
            lookAt(*node.mesh_file, true);
        }
        for (const std::string& file : node.other_files)
            lookAt(file, false);
        NodeList& list = getList(node.kind);
        ++list.count;
        if (list.first.size() < max_listed) list.first.push_back(std::move(node));
    }

    NodeList& getList(const std::string& kind) {
        const auto found =
            std::find_if(lists.begin(), lists.end(), [&](const NodeList& list) { return list.kind == kind; });
        if (found != lists.end()) return *found;
        lists.push_back({kind, 0, {}});
        return lists.back();
    }

    void lookAt(const std::string& name, bool is_mesh) {
        if (files.contains(name)) return;
        FileReport& report = files[name];
        std::string looked_for;
        for (const std::string& place : places.getPlaces(name)) {
            if (FileUtils::fileExists(place)) {
                report = is_mesh ? lookAtMesh(place) : lookAtFile(place);
                return;
            }
            looked_for += (looked_for.empty() ? "" : " and ") + place;
        }
        report.text = "missing: looked for " + looked_for;
    }

    static FileReport lookAtFile(const std::string& place) {
        try {
            return {Text::size(MappedFile(place).getSize()), true};
        } catch (...) {
            return {getCurrentMessage(), false};
        }
    }

    FileReport lookAtMesh(const std::string& place) {
        try {
            const std::uint64_t bytes = MappedFile(place).getSize();
            const auto mesh = readMesh(place, 1.0F).mesh;
            ++totals.files;
            totals.bytes += bytes;
            totals.vertices += mesh->verts.size();
            totals.triangles += mesh->triangles.size();
            totals.quads += mesh->quads.size();
            const std::string faces = Text::faceCounts(mesh->verts.size(), mesh->triangles.size(), mesh->quads.size());
            const std::string fault =
                isNamedByContent(place, *mesh) ? findFaultyFace(*mesh) : "its content isn't the one that its name says";
            return {Text::size(bytes) + ", " + faces + (fault.empty() ? "" : "; damaged: " + fault), fault.empty()};
        } catch (...) {
            return {"damaged: " + getCurrentMessage(), false};
        }
    }

    void printNodes() const {
        for (const NodeList& list : lists) {
            printResult(list.kind + (list.count == 1 ? "" : " (" + std::to_string(list.count) + ')'));
            for (const DocumentNode& node : list.first)
                printNode(node);
            if (list.count > list.first.size())
                printResult("     ... and " + std::to_string(list.count - list.first.size()) + " more");
        }
    }

    void printNode(const DocumentNode& node) const {
        std::string line = node.uid ? std::to_string(*node.uid) : "-";
        line.insert(0, line.size() < uid_width ? uid_width - line.size() : 0, ' ');
        line += "  " + (node.name.empty() ? "(no name)" : node.name);
        if (!node.detail.empty()) line += ": " + node.detail;
        if (node.geometry) {
            line += ": geometry " + describeUID(*node.geometry) + ", materials";
            for (const std::uint32_t material : node.materials)
                line += ' ' + describeUID(material);
            if (node.materials.empty()) line += " none";
        }
        printResult(line);
        if (node.mesh_file) printFile(*node.mesh_file);
        for (const std::string& file : node.other_files)
            printFile(file);
    }

    void printFile(const std::string& name) const {
        std::string shown = name;
        FileUtils::replaceChar(shown, '\\', '/');
        printResult(std::string(uid_width + 4, ' ') + shown + " (" + files.at(name).text + ')');
    }

    std::string describeUID(std::uint32_t uid) const {
        if (uid == no_uid) return "none";
        if (uids.contains(uid)) return std::to_string(uid);
        return std::to_string(uid) + " (which doesn't exist)";
    }

    /// Texts of a document may be meant for the terminal.

    static constexpr std::size_t uid_width = 6;
    static constexpr std::size_t max_listed = 1000;

    std::string path;
    DocumentFiles places;
    Progress progress;
    std::uint64_t size = 0;
    std::uint64_t node_count = 0;
    /// In the order of their first nodes.
    std::vector<NodeList> lists;
    UidSet uids;
    UidSet references;
    /// By their names in the document.
    std::map<std::string, FileReport> files;
    MeshTotals totals;
    std::uint64_t dangling = 0;
};

} // namespace

void describeScene(const std::string& path, bool quiet, JsonWriter* json) {
    const SceneInfo info(path, quiet);
    if (json != nullptr)
        info.addTo(*json);
    else if (!quiet)
        info.print();
    const std::string faults = info.describeFaults();
    if (!faults.empty()) throw Failure(path + ": " + faults);
}
