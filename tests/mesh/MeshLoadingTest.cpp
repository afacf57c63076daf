#include "mesh/MeshLoading.h"

#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/TextFile.h"
#include "tests/support/Throws.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

namespace MeshLoadingTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

const std::string obj_text = "v 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 2 3\n";
const std::string ply_text = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                             "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
                             "1 0 0\n0 1 0\n0 0 1\n3 0 1 2\n";
const std::string stl_text = "solid\nfacet normal 1 1 1 outer loop vertex 1 0 0 vertex 0 1 0 vertex 0 0 1 endloop "
                             "endfacet endsolid";

std::string messageFor(std::string_view path) {
    Mesh mesh;
    return messageOf<Velmar::Exception>([&] { loadMesh(path, mesh, 1.0f); });
}

TEST(LoadMesh, ChoosesTheReaderByTheExtensionInAnyCase) {
    for (const auto& [name, text] : std::vector<std::pair<std::string, std::string>>{{"m.obj", obj_text},
                                                                                     {"MODEL.OBJ", obj_text},
                                                                                     {"model.Obj", obj_text},
                                                                                     {"file.mesh.obj", obj_text},
                                                                                     {"m.ply", ply_text},
                                                                                     {"m.PLY", ply_text},
                                                                                     {"m.stl", stl_text},
                                                                                     {"m.sTl", stl_text}}) {
        const TextFile file(name, text);
        Mesh mesh;
        loadMesh(file.path(), mesh, 3.0f);
        EXPECT_EQ(mesh.triangles.size(), 1u) << name;
        EXPECT_EQ(mesh.aabb_max.x, 3.0f) << name << ": scaled and built";
    }
}

TEST(LoadMesh, ReadsVmmeshFilesUnscaled) {
    const TempDir dir;
    Mesh written;
    fillSample(written);
    writeToFile(toVelmarString(dir.file("m.vmmesh")), written, true);
    Mesh mesh;
    loadMesh(dir.file("m.vmmesh"), mesh, 3.0f);
    expectSameContent(mesh, written);
}

TEST(LoadMesh, TakesSlashesAsBackslashes) {
    const TextFile file("m.stl", stl_text);
    std::string path = file.path();
    std::replace(path.begin(), path.end(), '\\', '/');
    Mesh mesh;
    loadMesh(path, mesh, 1.0f);
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_TRUE(messageFor("no folder/missing.stl").starts_with("Failed to open file 'no folder\\missing.stl': "));
}

TEST(LoadMesh, RefusesOtherExtensions) {
    EXPECT_EQ(messageFor("model.FBX"), "Unsupported mesh format 'fbx'.");
    EXPECT_EQ(messageFor("model"), "Unsupported mesh format ''.");
    EXPECT_EQ(messageFor("model."), "Unsupported mesh format ''.");
    EXPECT_EQ(messageFor("dir.old/File"), "Unsupported mesh format 'old\\file'.");
    EXPECT_EQ(messageFor("model.obj "), "Unsupported mesh format 'obj '.");
}

TEST(LoadMesh, NamesTheFileAsGivenWhenTheFormatOrTheMeshFails) {
    const TextFile vmmesh("m.vmmesh", "no such magic");
    std::string path = vmmesh.path();
    std::replace(path.begin(), path.end(), '\\', '/');
    EXPECT_EQ(messageFor(path), "Error while reading mesh '" + path + ": Invalid magic number.");

    const TextFile obj("m.obj", "vt 0 0\n" + obj_text + "f 1/7 2/7 3/7\n");
    EXPECT_EQ(messageFor(obj.path()),
              "Error while reading mesh '" + obj.path() + ": Triangle uv index is out of bounds. (uv index=6)");
}

TEST(LoadMesh, PassesParseErrorsOnAsTheyAre) {
    const TextFile obj("m.obj", "v 1\n");
    EXPECT_EQ(messageFor(obj.path()), "Parse error while reading position on line 1");
}

TEST(LoadMesh, DoesNotReadMaterialLibraries) {
    const TextFile obj("m.obj", "mtllib broken.mtl\n" + obj_text);
    writeFileBytes(obj.directory().file("broken.mtl"), "Kd before any material");
    Mesh mesh;
    loadMesh(obj.path(), mesh, 1.0f);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

} // namespace

} // namespace MeshLoadingTests
