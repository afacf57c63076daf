#include "scene/NumberText.h"
#include "scene/reading/ElementVisitor.h"
#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/DocumentDiff.h"
#include "tools/Json.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

using namespace Velmar;

namespace {

struct DiffOptions {
    std::string a;
    std::string b;
    double tolerance = 0;
    bool json = false;
    bool quiet = false;
};

// ---- as text

/// "camera "Camera"".
std::string titleOf(const SceneNode& node) {
    return std::string(getElement(node)) + " \"" + toStdString(node.getName()) + '"';
}

struct ShownValue {
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(const std::vector<double>& numbers) const {
        std::string text;
        for (const double number : numbers)
            text.append(text.empty() ? "" : " ").append(NumberText(number).view());
        return text.empty() ? "no numbers" : text;
    }
    std::string operator()(const std::string& text) const { return '"' + text + '"'; }
    std::string operator()(const NodeValue::Target& target) const {
        if (target.node == nullptr) return "nothing";
        if (target.identity == Digest{}) return "nothing, uid " + std::to_string(target.node->getUID());
        return titleOf(*target.node) + " (uid " + std::to_string(target.node->getUID()) + ')';
    }
    std::string operator()(const NodeValue::File& file) const {
        const FileContent& content = *file.content;
        if (!content.is_read) return file.name + " (missing or damaged)";
        if (!content.mesh) return file.name + " (" + Text::size(content.size) + ')';
        const MeshFacts& mesh = *content.mesh;
        return "mesh " + std::to_string(mesh.checksum) + " (" +
               Text::faceCounts(mesh.vertices, mesh.triangles, mesh.quads) +
               (mesh.bounds ? ", " + Text::point(mesh.bounds->first) + " to " + Text::point(mesh.bounds->second) : "") +
               ')';
    }
};

std::string show(const std::optional<NodeValue::Content>& value) {
    constexpr std::size_t max_size = 120;
    if (!value) return "none";
    std::string text = std::visit(ShownValue(), *value);
    if (text.size() <= max_size) return text;
    std::size_t end = max_size;
    while ((static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    return text.substr(0, end) + "...";
}

/// "scene.xml:3".
std::string placeOf(ComparedDocument& document, std::size_t index) {
    return document.getPath() + ':' + std::to_string(document.getLine(index));
}

class Printer {
  public:
    Printer(ComparedDocument& a_, ComparedDocument& b_, double tolerance_) : a(a_), b(b_), tolerance(tolerance_) {}

    void print(const NodeChange& change) {
        if (!change.b)
            printResult("- " + titleOf(a.getNode(*change.a)) + " (" + placeOf(a, *change.a) + ')');
        else if (!change.a)
            printResult("+ " + titleOf(b.getNode(*change.b)) + " (" + placeOf(b, *change.b) + ')');
        else
            printChanged(change);
    }

  private:
    void printChanged(const NodeChange& change) {
        printResult("~ " + titleOf(a.getNode(*change.a)) + " (" + placeOf(a, *change.a) + ", " + placeOf(b, *change.b) +
                    ')');
        compareValues(a, b, change, tolerance, [](const ValueChange& value) {
            const std::string name = value.element.empty() ? "content" : value.element;
            printResult("    " + name + ": " + show(value.a) + " -> " + show(value.b));
        });
    }

    ComparedDocument& a;
    ComparedDocument& b;
    double tolerance;
};

// ---- as JSON

/// Adds a value to an object or a list.
struct ValueInJson {
    JsonWriter& json;
    std::string_view key;

    void operator()(bool value) const { json.add(key, value); }
    void operator()(const std::vector<double>& numbers) const {
        if (numbers.size() == 1) return addNumber(key, numbers[0]);
        json.beginList(key);
        for (const double number : numbers)
            addNumber({}, number);
        json.endList();
    }
    void operator()(const std::string& text) const { json.add(key, text); }
    void operator()(const NodeValue::Target& target) const {
        if (target.node == nullptr) return json.addNull(key);
        json.beginObject(key);
        json.add("element", getElement(*target.node));
        json.add("name", target.node->getName().view());
        json.add("uid", target.node->getUID());
        json.add("exists", target.identity != Digest{});
        json.endObject();
    }
    void operator()(const NodeValue::File& file) const {
        const FileContent& content = *file.content;
        json.beginObject(key);
        json.add("file", file.name);
        json.add("readable", content.is_read);
        if (content.is_read) json.add("size", content.size);
        if (content.mesh) {
            // As a text: many readers of JSON lose the last digits of 64 bits.
            json.add("checksum", std::to_string(content.mesh->checksum));
            json.add("vertices", content.mesh->vertices);
            json.add("triangles", content.mesh->triangles);
            json.add("quads", content.mesh->quads);
            if (content.mesh->bounds) {
                json.beginObject("bounds");
                addPoint("min", content.mesh->bounds->first);
                addPoint("max", content.mesh->bounds->second);
                json.endObject();
            }
        }
        json.endObject();
    }

  private:
    /// A number that JSON has no word for is a text.
    void addNumber(std::string_view name, double number) const {
        if (std::isfinite(number))
            json.add(name, number);
        else
            json.add(name, NumberText(number).view());
    }
    void addPoint(std::string_view name, const Vec3f& p) const {
        json.beginList(name);
        for (const float number : {p.x, p.y, p.z})
            json.add({}, double{number});
        json.endList();
    }
};

void add(JsonWriter& json, std::string_view key, const std::optional<NodeValue::Content>& value) {
    if (value)
        std::visit(ValueInJson{json, key}, *value);
    else
        json.addNull(key);
}

void addNode(JsonWriter& json, std::string_view key, ComparedDocument& document,
             const std::optional<std::size_t>& index) {
    if (!index) return json.addNull(key);
    const SceneNode& node = document.getNode(*index);
    json.beginObject(key);
    json.add("name", node.getName().view());
    json.add("uid", node.getUID());
    json.add("line", std::uint64_t{document.getLine(*index)});
    json.endObject();
}

void printJson(ComparedDocument& a, ComparedDocument& b, const std::vector<NodeChange>& changes, double tolerance) {
    JsonWriter json;
    json.beginObject();
    json.add("schema", "velmar-diff-1");
    json.add("a", a.getPath());
    json.add("b", b.getPath());
    json.add("same", changes.empty());
    json.beginList("nodes");
    for (const NodeChange& change : changes) {
        json.beginObject();
        json.add("change", !change.b ? "removed" : !change.a ? "added" : "changed");
        json.add("element", getElement(change.a ? a.getNode(*change.a) : b.getNode(*change.b)));
        addNode(json, "a", a, change.a);
        addNode(json, "b", b, change.b);
        if (change.a && change.b) {
            json.beginList("values");
            compareValues(a, b, change, tolerance, [&](const ValueChange& value) {
                json.beginObject();
                json.add("element", value.element);
                add(json, "a", value.a);
                add(json, "b", value.b);
                json.endObject();
                std::printf("%s", json.take().c_str());
            });
            json.endList();
        }
        json.endObject();
        std::printf("%s", json.take().c_str());
    }
    json.endList();
    json.endObject();
    std::printf("%s\n", json.take().c_str());
}

// ---- the command

/// Notes files that couldn't be compared by their contents.
void noteUnread(ComparedDocument& document) {
    constexpr std::size_t max_noted = 20;
    const std::vector<std::string>& unread = document.getFiles().getUnread();
    for (std::size_t i = 0; i < unread.size() && i < max_noted; ++i)
        printNote(document.getPath() + ": can't read " + unread[i] + ", which is compared by its name");
    if (unread.size() > max_noted)
        printNote(document.getPath() + ": " + std::to_string(unread.size() - max_noted) + " more such files");
}

/// Returns whether the documents are the same.
bool compare(const DiffOptions& options) {
    FileContents::Places places;
    Progress progress(options.quiet || options.json);
    ComparedDocument a(options.a, places, progress);
    ComparedDocument b(options.b, places, progress);
    progress.show("comparing");
    const std::vector<NodeChange> changes = compareDocuments(a, b, options.tolerance);
    progress.clear();
    if (options.json) {
        printJson(a, b, changes, options.tolerance);
    } else if (!options.quiet) {
        Printer printer(a, b, options.tolerance);
        for (const NodeChange& change : changes)
            printer.print(change);
    }
    if (!options.quiet) {
        noteUnread(a);
        noteUnread(b);
    }
    return changes.empty();
}

void run(const DiffOptions& options) {
    bool is_same = false;
    try {
        is_same = compare(options);
        // A full disk under a redirected output shows only here, and mustn't pass for a difference.
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) throw Failure("the output couldn't be written");
    } catch (...) {
        printError(getCurrentMessage());
        throw ReportedTrouble();
    }
    if (!is_same) throw ReportedFailure();
}

} // namespace

Command addDiffCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("diff", "Compares scene documents by what they mean.");
    const auto options = std::make_shared<DiffOptions>();
    app->add_option("A.xml", options->a, "A scene document.")->required();
    app->add_option("B.xml", options->b, "The other one.")->required();
    constexpr double max_tolerance = 1e9;
    CommandOptions::addValue(*app, "--tolerance", options->tolerance, "DISTANCE",
                             "By how much numbers may differ and still be the same.")
        ->check(CommandOptions::inRange(0, max_tolerance));
    app->add_flag("--json", options->json, "Print JSON, of the schema that docs/diff.md describes");
    app->add_flag("-q,--quiet", options->quiet, "Print no differences: the exit code says whether there are any");
    app->footer("Nodes are matched by kind, name and content. UIDs, the order of nodes, the names of files of equal "
                "content and the form of the text are no differences. Lines that begin with - are about nodes of A "
                "alone, those with + of B alone, those with ~ of nodes that were changed. Exit codes: 0 the same, 1 "
                "different, 2 wrong usage or a document that can't be read.");
    return {app, [options] { run(*options); }};
}
