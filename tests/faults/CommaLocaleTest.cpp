#include "tests/support/CommaLocale.h"

#include "mesh/MeshLoading.h"
#include "mesh/MeshReaders.h"
#include "scene/SceneXMLWriter.h"
#include "tests/faults/SampleScene.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "tests/support/TextFile.h"

#include <clocale>
#include <cstdio>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

using namespace Velmar;
using namespace TestSupport;

namespace {

void expectCommaOfTheHost() {
    char text[8] = {};
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    EXPECT_STREQ(text, "1,5");
    std::ostringstream stream;
    stream << 1234.5;
    EXPECT_EQ(stream.str(), "1.234,5");
}

std::vector<Vec3f> positionsOf(const std::string& path) {
    Mesh mesh;
    loadMesh(path, mesh, 1.0f);
    return {mesh.verts.begin(), mesh.verts.end()};
}

} // namespace

TEST(CommaLocale, OfTheHostChangesNoNumberThatIsRead) {
    const std::string obj = "v 0.5 1.25 -2.75\nv 1.5 0.0 1e-3\nv 0.0 7.5 .5\nf 1 2 3\n";
    const std::string ply = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                            "property float z\nend_header\n0.5 1.25 -2.75\n1.5 0.0 1e-3\n0.0 7.5 .5\n";
    const std::string stl = "solid\nfacet normal 0.0 0.5 1.0\nouter loop\nvertex 0.5 1.25 -2.75\nvertex 1.5 0.0 1e-3\n"
                            "vertex 0.0 7.5 .5\nendloop\nendfacet\nendsolid\n";
    const std::vector<Vec3f> expected = {{0.5f, 1.25f, -2.75f}, {1.5f, 0, 0.001f}, {0, 7.5f, 0.5f}};
    const CommaLocale comma;
    expectCommaOfTheHost();
    for (const auto& [name, text] : {std::pair{"a.obj", obj}, std::pair{"a.ply", ply}, std::pair{"a.stl", stl},
                                     // Without a line end after the last number, which takes a way of its own.
                                     std::pair{"a.ply", ply.substr(0, ply.size() - 1)}}) {
        const TextFile file(name, text);
        EXPECT_EQ(bytesOf(positionsOf(file.path())), bytesOf(expected)) << name;
    }

    const TextFile file("a.mtl", "newmtl a\nKd 0.5 0.25 0.125\nNs 10.5\n");
    MTLLibrary library;
    loadMTL(file.path(), library);
    EXPECT_EQ(library.materials.at(0).Kd.z, 0.125f);
    EXPECT_EQ(library.materials.at(0).Ns, 10.5f);
    expectCommaOfTheHost();
}

TEST(CommaLocale, OfTheHostChangesNoByteThatIsWritten) {
    const TempDir dir;
    const auto root = Faults::sampleScene();
    const auto written = [&] {
        writeSceneXML(*root, toVelmarString(dir.file("scene.xml")), true, nullptr);
        return readFileBytes(dir.file("scene.xml"));
    };
    const std::string expected = written();
    const CommaLocale comma;
    expectCommaOfTheHost();
    EXPECT_EQ(written(), expected);
    expectCommaOfTheHost();
}
