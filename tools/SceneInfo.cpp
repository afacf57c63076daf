#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "tools/SceneDocument.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

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

class SceneInfo {
  public:
    explicit SceneInfo(std::string document_path)
        : path(std::move(document_path)), folder(Text::folderOf(path)), document(readSceneDocument(path)) {
        for (const DocumentNode& node : document.nodes)
            if (node.uid) uids.insert(*node.uid);
        Progress progress(false);
        for (const DocumentNode& node : document.nodes) {
            if (node.mesh_file) {
                progress.show("reading " + *node.mesh_file);
                lookAt(*node.mesh_file, true);
            }
            for (const std::string& file : node.other_files)
                lookAt(file, false);
        }
    }

    void print() {
        printLine(Text::row("file", path));
        printLine(Text::row("kind", "scene document"));
        printLine(Text::row("size", Text::size(document.size)));
        printLine(Text::row("nodes", std::to_string(document.nodes.size())));
        printLine("");
        printNodes();
        printLine("");
        printLine(Text::row("meshes", Text::count(totals.files, "file", "files") + ", " + Text::size(totals.bytes) +
                                          ", " + Text::faceCounts(totals.vertices, totals.triangles, totals.quads)));
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
    /// Where a file may be that the document calls `name`: as seen from the document, which is where a reader looks, or
    /// from here.
    std::vector<std::string> getPlaces(std::string name) const {
        FileUtils::replaceChar(name, '\\', '/');
        const bool is_absolute = FileUtils::join("folder", name) == name;
        if (is_absolute || folder.empty()) return {name};
        return {folder + name, name};
    }

    void lookAt(const std::string& name, bool is_mesh) {
        if (files.contains(name)) return;
        FileReport& report = files[name];
        const std::vector<std::string> places = getPlaces(name);
        std::string looked_for;
        for (const std::string& place : places) {
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
            const std::uint64_t size = MappedFile(place).getSize();
            const auto mesh = readMesh(place, 1.0F).mesh;
            ++totals.files;
            totals.bytes += size;
            totals.vertices += mesh->verts.size();
            totals.triangles += mesh->triangles.size();
            totals.quads += mesh->quads.size();
            const std::string faces = Text::faceCounts(mesh->verts.size(), mesh->triangles.size(), mesh->quads.size());
            const std::string fault = isNamedByContent(place, *mesh) ? findFaultyFace(*mesh)
                                                                     : "its content isn't the one that its name tells";
            return {Text::size(size) + ", " + faces + (fault.empty() ? "" : "; damaged: " + fault), fault.empty()};
        } catch (...) {
            return {"damaged: " + getCurrentMessage(), false};
        }
    }

    void printNodes() {
        std::vector<std::string> kinds;
        std::map<std::string, std::vector<const DocumentNode*>> nodes_of;
        for (const DocumentNode& node : document.nodes) {
            std::vector<const DocumentNode*>& nodes = nodes_of[node.kind];
            if (nodes.empty()) kinds.push_back(node.kind);
            nodes.push_back(&node);
        }
        for (const std::string& kind : kinds) {
            const std::vector<const DocumentNode*>& nodes = nodes_of[kind];
            printLine(kind + (nodes.size() == 1 ? "" : " (" + std::to_string(nodes.size()) + ')'));
            for (const DocumentNode* const node : nodes)
                printNode(*node);
        }
    }

    void printNode(const DocumentNode& node) {
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
        printLine(line);
        if (node.mesh_file) printFile(*node.mesh_file);
        for (const std::string& file : node.other_files)
            printFile(file);
    }

    void printFile(const std::string& name) const {
        printLine(std::string(uid_width + 4, ' ') + name + " (" + files.at(name).text + ')');
    }

    std::string describeUID(std::uint32_t uid) {
        if (uid == no_uid) return "none";
        if (uids.contains(uid)) return std::to_string(uid);
        ++dangling;
        return std::to_string(uid) + " (which isn't there)";
    }

    /// What stands in a document may be meant for the terminal.
    static void printLine(const std::string& line) { std::printf("%s\n", Text::printable(line).c_str()); }

    static constexpr std::size_t uid_width = 6;

    std::string path;
    /// Of the document, with the separator; empty when that is here.
    std::string folder;
    SceneDocument document;
    std::set<std::uint32_t> uids;
    /// By their names in the document.
    std::map<std::string, FileReport> files;
    MeshTotals totals;
    std::uint64_t dangling = 0;
};

} // namespace

void printSceneInfo(const std::string& path) {
    SceneInfo info(path);
    info.print();
    const std::string faults = info.describeFaults();
    if (!faults.empty()) throw Failure(path + ": " + faults);
}
