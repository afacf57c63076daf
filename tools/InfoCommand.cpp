#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/Json.h"
#include "tools/MeshFile.h"
#include "tools/MeshMeasures.h"
#include "tools/MeshPicture.h"
#include "tools/Placement.h"
#include "tools/Preview.h"
#include "tools/SceneDocument.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using Velmar::Mesh;
using Velmar::Reference;
using Velmar::Vec3f;

namespace {

struct InfoOptions {
    std::vector<std::string> paths;
    std::string picture;
    PictureView view;
    std::string up = "auto";
    bool json = false;
    bool quiet = false;
};

// ---- meshes --------------------------------------------------------------------------------------------------------

/// A mesh file as far as it is described.
struct MeshInfo {
    std::string path;
    std::string kind;
    Reference<Mesh> mesh;
    /// Empty when all is well.
    std::string fault;
    /// Of a mesh without fault.
    std::optional<MeshMeasures> measures;
};

std::string describeKind(const std::string& path) {
    const std::string format = Velmar::getMeshFormat(path);
    if (format == "obj") return "Wavefront OBJ";
    if (format == "ply") return "PLY";
    if (format == "stl") return "STL";
    const Velmar::VmmeshHeader header = readVmmeshHeader(path);
    return "vmmesh version " + std::to_string(header.version) +
           (header.compressed ? ", compressed" : ", not compressed");
}

MeshInfo readMeshInfo(const std::string& path, const InfoOptions& options) {
    Progress progress(options.quiet);
    progress.show("reading " + Text::fileName(path));
    const Velmar::ImportedMesh imported = readMesh(path, 1.0F);
    MeshInfo info = {path, describeKind(path), imported.mesh, findFaultyFace(*imported.mesh), {}};
    if (info.fault.empty()) info.fault = findFaultyVertex(*info.mesh);
    progress.show("measuring " + Text::fileName(path));
    if (info.fault.empty()) info.measures = measureMesh(*info.mesh);
    progress.clear();
    printNotes(path, imported.notes, options.quiet);
    return info;
}

std::string describeUVs(const Mesh& mesh) {
    if (mesh.num_uv_mappings == 0) return "none";
    return Text::count(mesh.num_uv_mappings, "set", "sets") + " of " +
           std::to_string(mesh.uv_pairs.size() / mesh.num_uv_mappings);
}

std::string describeMaterials(const Mesh& mesh) {
    std::string text = std::to_string(mesh.used_materials.size());
    const char* separator = ": ";
    for (const Velmar::String& name : mesh.used_materials) {
        text += separator + Text::printable(name.view());
        separator = ", ";
    }
    return text;
}

/// Six digits are as many as floats of this size mean.
std::string describeMeasure(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

void printRow(std::string_view name, const std::string& value) {
    std::printf("%s\n", Text::printable(Text::row(name, value)).c_str());
}

void printMeasures(const MeshMeasures& measures) {
    printRow("area", describeMeasure(measures.area));
    printRow("volume", measures.volume ? describeMeasure(*measures.volume) : "none: not closed");
    std::string edges = std::to_string(measures.open_edges) + " open";
    if (measures.shared_edges != 0) edges += ", " + std::to_string(measures.shared_edges) + " of more than two faces";
    printRow("edges", edges);
    printRow("faces", std::to_string(measures.degenerate_faces) + " degenerate, " +
                          std::to_string(measures.duplicate_faces) + " duplicate");
    printRow("unused", Text::count(measures.unused_vertices, "vertex", "vertices"));
}

void printMesh(const MeshInfo& info) {
    const Mesh& mesh = *info.mesh;
    printRow("file", info.path);
    printRow("kind", info.kind);
    printRow("vertices", std::to_string(mesh.verts.size()));
    printRow("normals", mesh.normals.empty() ? "none" : std::to_string(mesh.normals.size()));
    printRow("UVs", describeUVs(mesh));
    printRow("triangles", std::to_string(mesh.triangles.size()));
    printRow("quads", std::to_string(mesh.quads.size()));
    printRow("materials", describeMaterials(mesh));
    // The box of no vertices is inside out.
    printRow("bounds", mesh.verts.empty() ? "none" : Text::point(mesh.aabb_min) + " to " + Text::point(mesh.aabb_max));
    if (info.measures) printMeasures(*info.measures);
    printRow("checksum", std::to_string(mesh.checksum()));
    if (!info.fault.empty()) printRow("fault", info.fault);
}

void addPoint(JsonWriter& json, std::string_view key, const Vec3f& p) {
    json.beginList(key);
    for (const float number : {p.x, p.y, p.z})
        json.add({}, double{number});
    json.endList();
}

void addMesh(JsonWriter& json, const MeshInfo& info) {
    const Mesh& mesh = *info.mesh;
    json.add("kind", info.kind);
    json.add("vertices", std::uint64_t{mesh.verts.size()});
    json.add("normals", std::uint64_t{mesh.normals.size()});
    json.add("uv_sets", std::uint64_t{mesh.num_uv_mappings});
    json.add("uvs", std::uint64_t{mesh.num_uv_mappings == 0 ? 0 : mesh.uv_pairs.size() / mesh.num_uv_mappings});
    json.add("triangles", std::uint64_t{mesh.triangles.size()});
    json.add("quads", std::uint64_t{mesh.quads.size()});
    json.beginList("materials");
    for (const Velmar::String& name : mesh.used_materials)
        json.add({}, name.view());
    json.endList();
    if (mesh.verts.empty()) {
        json.addNull("bounds");
    } else {
        json.beginObject("bounds");
        addPoint(json, "min", mesh.aabb_min);
        addPoint(json, "max", mesh.aabb_max);
        json.endObject();
    }
    if (info.measures) {
        const MeshMeasures& measures = *info.measures;
        json.add("area", measures.area);
        if (measures.volume)
            json.add("volume", *measures.volume);
        else
            json.addNull("volume");
        json.add("open_edges", measures.open_edges);
        json.add("shared_edges", measures.shared_edges);
        json.add("degenerate_faces", measures.degenerate_faces);
        json.add("duplicate_faces", measures.duplicate_faces);
        json.add("unused_vertices", measures.unused_vertices);
    }
    // A number of 64 bits, of which many readers of JSON lose the last ones.
    json.add("checksum", std::to_string(mesh.checksum()));
    if (!info.fault.empty()) json.add("fault", info.fault);
}

/// Returns the size of the picture's file.
std::uint64_t writePicture(const InfoOptions& options, const MeshInfo& info) {
    const std::string fault = findFaultyFace(*info.mesh);
    if (!fault.empty()) throw Failure(info.path + ": can't be drawn: " + fault);
    OutputFile output(options.picture, ".png");
    PictureView view = options.view;
    view.upright = makeUpright(options.up, info.path);
    VelmarScene* scene = nullptr;
    try {
        scene = makePictureScene(*info.mesh, view);
    } catch (...) {
        throw makeFailureOf(info.path);
    }
    Progress progress(options.quiet);
    renderPicture(scene, {}, output, options.picture, [&](const VelmarPreviewProgress& now) {
        progress.show("drawing " + Text::fileName(options.picture) + ": " + describeProgress(now));
    });
    progress.clear();
    return output.commit();
}

// ---- the command ---------------------------------------------------------------------------------------------------

void describeFile(const std::string& path, const InfoOptions& options, JsonWriter* json) {
    if (Velmar::getMeshFormat(path) == "xml") {
        describeScene(path, options.quiet, json);
        return;
    }
    const MeshInfo info = readMeshInfo(path, options);
    if (json != nullptr)
        addMesh(*json, info);
    else if (!options.quiet)
        printMesh(info);
    if (options.quiet && !info.fault.empty()) throw Failure(path + ": " + info.fault);
    if (options.picture.empty()) return;
    const std::uint64_t size = writePicture(options, info);
    if (json == nullptr && !options.quiet) printRow("picture", options.picture + " (" + Text::size(size) + ')');
}

/// Describes each file. One that fails doesn't keep the others from it.
void describeFiles(const InfoOptions& options) {
    std::optional<JsonReport> report;
    if (options.json) report.emplace("velmar-info-1", "files");
    bool failed = false;
    for (const std::string& path : options.paths) {
        if (&path != &options.paths.front() && !options.json && !options.quiet) std::printf("\n");
        JsonWriter* const json = report ? report->beginFile(path) : nullptr;
        try {
            describeFile(path, options, json);
        } catch (...) {
            failed = true;
            const std::string message = getCurrentMessage();
            if (json != nullptr) json->add("error", message);
            printError(message);
        }
        if (report) report->endFile();
    }
    if (report) report->end();
    if (failed) throw ReportedFailure();
}

void run(const InfoOptions& options) {
    if (!options.picture.empty()) {
        if (options.paths.size() > 1) throw UsageError("--picture takes a single mesh file");
        if (Velmar::getMeshFormat(options.picture) != "png")
            throw UsageError(options.picture + ": the picture must end in .png");
        if (Velmar::getMeshFormat(options.paths.front()) == "xml")
            throw UsageError(options.paths.front() + ": a scene isn't drawn; --picture takes a mesh file");
    }
    describeFiles(options);
}

void addPictureOptions(CLI::App& app, InfoOptions& options) {
    app.option_defaults()->group("Picture");
    CLI::Option* const picture = app.add_option("--picture", options.picture,
                                                "Draw the mesh, shaded and without perspective, into this PNG file. An "
                                                "existing one is replaced.")
                                     ->type_name("FILE.png");
    PictureView& view = options.view;
    using CommandOptions::addValue;
    using CommandOptions::inRange;
    constexpr double max_size = 8192;
    CLI::Option* const others[] = {
        addValue(app, "--azimuth", view.azimuth, "DEGREES",
                 "From where to look, around the mesh: 0 from in front, 90 from the right.")
            ->check(inRange(-360, 360)),
        addValue(app, "--elevation", view.elevation, "DEGREES", "From how high above the horizon.")
            ->check(inRange(-90, 90)),
        CommandOptions::addUp(app, options.up,
                              "Which axis of the file is its height; auto takes y for .obj and z for the others."),
        addValue(app, "--width", view.width, "PIXELS", "Width of the picture.")->check(inRange(1, max_size)),
        addValue(app, "--height", view.height, "PIXELS", "Height of the picture.")->check(inRange(1, max_size)),
    };
    for (CLI::Option* const other : others)
        other->needs(picture);
}

} // namespace

Command addInfoCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("info", "Describes mesh files and scenes, and draws a mesh.");
    const auto options = std::make_shared<InfoOptions>();
    app->add_option("FILE...", options->paths, "Mesh files (.obj, .ply, .stl, .vmmesh) and scene documents (.xml).")
        ->required();
    app->add_flag("--json", options->json, "Print JSON, of the schema that docs/info-json.md describes");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing but what is wrong");
    addPictureOptions(*app, *options);
    app->footer(
        "The checksum names the content: meshes of equal content share it, and a scene's mesh files have it in their "
        "names. Edges, the volume and duplicates are those of the mesh with vertices of equal position joined. Of a "
        "scene the nodes are listed, and with each mesh its file, which must exist: it is looked for from where the "
        "document is, then from the working directory. A picture is drawn by the renderer library in the folder "
        "vs2017_64 beside this program. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { run(*options); }};
}
