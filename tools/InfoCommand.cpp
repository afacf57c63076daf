#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "tools/MeshPicture.h"
#include "tools/PngFile.h"
#include "tools/SceneDocument.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

using Velmar::Mesh;
using Velmar::Reference;
using Velmar::Vec3f;

namespace {

std::string describeKind(const std::string& path) {
    const std::string format = Velmar::getMeshFormat(path);
    if (format == "obj") return "Wavefront OBJ";
    if (format == "ply") return "PLY";
    if (format == "stl") return "STL";
    const Velmar::VmmeshHeader header = readVmmeshHeader(path);
    return "vmmesh version " + std::to_string(header.version) +
           (header.compressed ? ", compressed" : ", not compressed");
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

std::string describePoint(const Vec3f& p) {
    return '(' + Text::number(p.x) + ", " + Text::number(p.y) + ", " + Text::number(p.z) + ')';
}

void printRow(std::string_view name, const std::string& value) {
    std::printf("%s\n", Text::row(name, value).c_str());
}

struct InfoOptions {
    std::string path;
    std::string picture;
    PictureView view;
    std::string up = "auto";
};

void printMesh(const std::string& path, const Mesh& mesh, const std::string& fault) {
    printRow("file", path);
    printRow("kind", describeKind(path));
    printRow("vertices", std::to_string(mesh.verts.size()));
    printRow("normals", mesh.normals.empty() ? "none" : std::to_string(mesh.normals.size()));
    printRow("UVs", describeUVs(mesh));
    printRow("triangles", std::to_string(mesh.triangles.size()));
    printRow("quads", std::to_string(mesh.quads.size()));
    printRow("materials", describeMaterials(mesh));
    // The box of no vertices is inside out.
    printRow("bounds",
             mesh.verts.empty() ? "none" : describePoint(mesh.aabb_min) + " to " + describePoint(mesh.aabb_max));
    printRow("checksum", std::to_string(mesh.checksum()));
    if (!fault.empty()) printRow("fault", fault);
}

/// Returns the size of the picture's file.
std::uint64_t writePicture(const InfoOptions& options, const Mesh& mesh, const std::string& fault) {
    if (!fault.empty()) throw Failure(options.path + ": can't be drawn: " + fault);
    PictureView view = options.view;
    view.y_up = CommandOptions::isYUp(options.up, options.path);
    GreyImage image;
    try {
        image = drawMesh(mesh, view);
    } catch (...) {
        throw makeFailureOf(options.path);
    }
    return writePng(image, options.picture);
}

void tellMesh(const InfoOptions& options) {
    Progress progress(false);
    progress.show("reading " + Text::fileName(options.path));
    const Reference<Mesh> mesh = readMesh(options.path, 1.0F).mesh;
    const std::string fault = findFaultyFace(*mesh);
    progress.clear();
    printMesh(options.path, *mesh, fault);
    if (options.picture.empty()) return;
    progress.show("drawing " + Text::fileName(options.picture));
    const std::uint64_t size = writePicture(options, *mesh, fault);
    progress.clear();
    printRow("picture", options.picture + " (" + Text::size(size) + ')');
}

void addPictureOptions(CLI::App& app, InfoOptions& options) {
    app.option_defaults()->group("Picture");
    CLI::Option* const picture = app.add_option("--picture", options.picture,
                                                "Draw the mesh, shaded and without perspective, into this PNG file. "
                                                "What stands there is replaced.")
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
        CommandOptions::addUp(app, options.up),
        addValue(app, "--width", view.width, "PIXELS", "Width of the picture.")->check(inRange(1, max_size)),
        addValue(app, "--height", view.height, "PIXELS", "Height of the picture.")->check(inRange(1, max_size)),
    };
    for (CLI::Option* const other : others)
        other->needs(picture);
}

void tell(const InfoOptions& options) {
    if (!options.picture.empty() && Velmar::getMeshFormat(options.picture) != "png")
        throw UsageError(options.picture + ": the picture must end in .png");
    if (Velmar::getMeshFormat(options.path) != "xml") {
        tellMesh(options);
    } else if (options.picture.empty()) {
        printSceneInfo(options.path);
    } else {
        throw UsageError(options.path + ": a scene isn't drawn; --picture takes a mesh file");
    }
}

} // namespace

Command addInfoCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("info", "Tells what a mesh file or a scene holds, and draws a mesh.");
    const auto options = std::make_shared<InfoOptions>();
    app->add_option("FILE", options->path, "The mesh file (.obj, .ply, .stl, .vmmesh) or scene document (.xml).")
        ->required();
    addPictureOptions(*app, *options);
    app->footer(
        "The checksum names the content: meshes of equal content share it, and a scene's mesh files carry it in "
        "their names. Of a scene the nodes are told, and with each mesh its file, which must be there: it is looked "
        "for from where the document is, then from the working directory. Exit codes: 0 done, 1 failed, 2 wrong "
        "usage.");
    return {app, [options] { tell(*options); }};
}
