#include "tests/models/PackagedModels.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cstdio>
#include <map>
#include <set>
#include <string>

namespace {

Models::Outcome readTheirs(const std::string& file) {
    Assimp::Importer importer;
    // Without joining every corner is a vertex, and without triangulating counts of faces tell little.
    const aiScene* const scene =
        importer.ReadFile(Models::folder() + "/" + file, aiProcess_JoinIdenticalVertices | aiProcess_Triangulate);
    Models::Outcome outcome;
    if (scene == nullptr) {
        outcome.message = importer.GetErrorString();
        if (const std::size_t at = outcome.message.find(Models::folder()); at != std::string::npos)
            outcome.message.erase(at, Models::folder().size() + 1);
        return outcome;
    }
    // A mesh is one material's part of the model.
    std::set<unsigned> used_materials;
    for (unsigned i = 0; i < scene->mNumMeshes; ++i) {
        const aiMesh& mesh = *scene->mMeshes[i];
        outcome.vertices += mesh.mNumVertices;
        for (unsigned face = 0; face < mesh.mNumFaces; ++face)
            outcome.triangles += mesh.mFaces[face].mNumIndices == 3;
        used_materials.insert(mesh.mMaterialIndex);
    }
    outcome.materials = used_materials.size();
    return outcome;
}

std::string cells(const Models::Outcome& outcome) {
    if (!outcome.message.empty()) return outcome.message;
    return std::to_string(outcome.vertices) + " / " + std::to_string(outcome.triangles) + " / " +
           std::to_string(outcome.materials);
}

const char* const split_by_material = "assimp makes a mesh of each material's part and cuts vertices at their seams";
const char* const faces_alone = "points and lines are no faces, and positions without a face aren't kept";
const char* const joined =
    "STL triangles keep vertices of their own; assimp joined those of equal position and normal, "
    "and names a material where the file has none";
const char* const unnamed = "assimp names a material where the file has none";

/// Why a row differs.
const std::map<std::string, std::string> reasons = {
    {"OBJ/box_longline.obj", "of a face of 936 corners the first 256 are read, and its triangles without area dropped"},
    {"OBJ/cube_usemtl.obj", split_by_material},
    {"OBJ/number_formats.obj", "the corners of the one face lie on a line: a triangle without area is dropped"},
    {"OBJ/point_cloud.obj", faces_alone},
    {"OBJ/regr01.obj", "four triangles have no area; assimp joined positions of equal value under different indices"},
    {"OBJ/regr_3429812.obj", "assimp makes a mesh of each group"},
    {"OBJ/spider.obj",
     "56 triangles have no area; assimp makes a mesh of each group and cuts vertices at the seams of UVs"},
    {"OBJ/testline.obj", faces_alone},
    {"OBJ/testpoints.obj", faces_alone},
    {"PLY/Wuson.ply", "the third line lacks its `comment`; assimp reads on, with every corner a vertex"},
    {"PLY/cube.ply", "the list of corners is called `vertex_index`, and only `vertex_indices` is known"},
    {"PLY/cube_uv.ply", "of the quads the first three corners are taken"},
    {"PLY/issue623.ply",
     "the header lacks the line of the faces, so their list belongs to the vertices; assimp reads the vertices alone"},
    {"PLY/pond.0.ply", "69 bytes of the last records are missing: somebody took the carriage returns out of a binary "
                       "file; assimp makes the missing ones up"},
    {"STL/3DSMaxExport.STL", joined},
    {"STL/Spider_ascii.stl", joined},
    {"STL/Spider_binary.stl", joined},
    {"STL/Wuson.stl", joined},
    {"STL/sphereWithHole.stl", unnamed},
    {"STL/triangle.stl", unnamed},
    {"STL/triangle_with_empty_solid.stl", unnamed},
    {"STL/triangle_with_two_solids.stl", "the file ends with its first `endsolid`; assimp reads the second solid too"},
    {"invalid/empty.obj", "a file without a line is a mesh without a face"},
    {"invalid/empty.ply", "both refuse it"},
    {"invalid/malformed.obj", "both refuse it"},
    {"invalid/malformed2.obj", "a face without corners is refused; assimp passes over it"},
};

} // namespace

/// Prints a table of what we and assimp read from the packaged models. Fails when a row differs for no known reason.
int main() {
    bool explained = true;
    std::puts("| file | ours | assimp | why they differ |\n|---|---|---|---|");
    for (const std::string& file : Models::files()) {
        const std::string ours = cells(Models::readOurs(file));
        const std::string theirs = cells(readTheirs(file));
        const auto reason = reasons.find(file);
        if ((ours != theirs) != (reason != reasons.end())) explained = false;
        std::printf("| %s | %s | %s | %s |\n", file.c_str(), ours.c_str(), theirs.c_str(),
                    reason == reasons.end() ? "" : reason->second.c_str());
    }
    return explained ? 0 : 1;
}
