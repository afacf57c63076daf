#include "tools/Command.h"
#include "tools/Failure.h"
#include "tools/MeshInput.h"
#include "tools/Progress.h"
#include "tools/Text.h"

#include <cstdio>
#include <memory>
#include <string>

using Velmar::Mesh;
using Velmar::Reference;
using Velmar::Vec3f;

namespace {

std::string describeKind(const std::string& path) {
    const std::string format = getFormat(path);
    if (format == "obj") return "Wavefront OBJ";
    if (format == "ply") return "PLY";
    if (format == "stl") return "STL";
    const VmmeshHeader header = readVmmeshHeader(path);
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

void printRow(const char* name, const std::string& value) {
    std::printf("%-10s %s\n", name, value.c_str());
}

void printInfo(const std::string& path) {
    const auto mesh = [&] {
        Progress progress(false);
        progress.show("reading " + Text::fileName(path));
        return readMesh(path, 1.0F);
    }();
    printRow("file", path);
    printRow("kind", describeKind(path));
    printRow("vertices", std::to_string(mesh->verts.size()));
    printRow("normals", mesh->normals.empty() ? "none" : std::to_string(mesh->normals.size()));
    printRow("UVs", describeUVs(*mesh));
    printRow("triangles", std::to_string(mesh->triangles.size()));
    printRow("quads", std::to_string(mesh->quads.size()));
    printRow("materials", describeMaterials(*mesh));
    // The box of no vertices is inside out.
    printRow("bounds",
             mesh->verts.empty() ? "none" : describePoint(mesh->aabb_min) + " to " + describePoint(mesh->aabb_max));
    printRow("checksum", std::to_string(mesh->checksum()));
    const std::string fault = findFaultyFace(*mesh);
    if (!fault.empty()) printRow("fault", fault);
}

} // namespace

Command addInfoCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("info", "Tells what a mesh file holds.");
    const auto path = std::make_shared<std::string>();
    app->add_option("FILE", *path, "The mesh file: .obj, .ply, .stl or .vmmesh.")->required();
    app->footer(
        "The checksum names the content: meshes of equal content share it, and a scene's mesh files carry it in "
        "their names. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [path] { printInfo(*path); }};
}
