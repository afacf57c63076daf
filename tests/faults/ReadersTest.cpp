#include "mesh/Mesh.h"
#include "mesh/MeshLoading.h"
#include "mesh/MeshReaders.h"
#include "mesh/VmmeshFile.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "tests/faults/EachAllocation.h"
#include "tests/support/FileBytes.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/System.h"
#include "tests/support/TempDir.h"
#include "utils/FileUtils.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

using namespace Velmar;
using namespace TestSupport;
using Faults::failEachAllocation;

namespace {

/// Files of every format, each long enough for its reader to grow all that it grows.
class FailingReader : public testing::Test {
  protected:
    std::string makeFile(std::string_view name, std::string_view bytes) const {
        std::string path = dir.file(name);
        writeFileBytes(path, bytes);
        return path;
    }

    static std::string number(int i) { return std::to_string(i); }

    /// Positions with several normals each, so that vertices are looked up in the table of pairs.
    static std::string objText() {
        constexpr int count = 1200;
        std::string text = "mtllib a_library_with_a_rather_long_name.mtl\n";
        for (int i = 0; i < count; ++i)
            text += "v " + number(i) + " " + number(i * i) + " 1\nvt 0." + number(i) + " 0\nvn 0 1 " + number(i) + "\n";
        for (int i = 1; i + 3 < count; ++i) {
            if (i % 500 == 1) text += "usemtl a_material_with_a_rather_long_name_" + number(i) + "\n";
            const auto corner = [](int at, int normal) {
                return " " + number(at) + "/" + number(at) + "/" + number(normal);
            };
            text += "f" + corner(i, i) + corner(i + 1, i) + corner(i + 2, i) +
                    (i % 3 == 0 ? corner(i + 3, i) : std::string()) + "\n";
        }
        return text;
    }

    static std::string mtlText() {
        std::string text;
        for (int i = 0; i < 40; ++i)
            text += "newmtl a_material_with_a_rather_long_name_" + number(i) + "\nKd 1 0.5 0\n" +
                    "map_Kd a_texture_with_a_rather_long_name.png\n";
        return text;
    }

    static std::string plyHeader(const char* format, int vertices, int faces) {
        return "ply\nformat " + std::string(format) + " 1.0\ncomment made for a test\nelement vertex " +
               number(vertices) + "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
               number(faces) + "\nproperty list uchar int vertex_indices\nend_header\n";
    }

    static std::string plyText() {
        constexpr int count = 500;
        std::string text = plyHeader("ascii", count, count - 2);
        for (int i = 0; i < count; ++i)
            text += number(i) + " " + number(i * i) + " 0\n";
        for (int i = 0; i + 2 < count; ++i)
            text += "3 " + number(i) + " " + number(i + 1) + " " + number(i + 2) + "\n";
        return text;
    }

    static std::string plyBinary() {
        constexpr int count = 500;
        std::string bytes = plyHeader("binary_little_endian", count, count - 2);
        for (int i = 0; i < count; ++i)
            append(bytes, Vec3f{static_cast<float>(i), static_cast<float>(i * i), 0});
        for (int i = 0; i + 2 < count; ++i) {
            bytes += '\3';
            append(bytes, i);
            append(bytes, i + 1);
            append(bytes, i + 2);
        }
        return bytes;
    }

    static std::string stlText() {
        std::string text = "solid test\n";
        for (int i = 0; i < 200; ++i)
            text += "facet normal 0 0 1\nouter loop\nvertex " + number(i) +
                    " 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n";
        return text + "endsolid test\n";
    }

    static std::string stlBinary() {
        constexpr std::uint32_t count = 200;
        std::string bytes(80, ' ');
        append(bytes, count);
        for (std::uint32_t i = 0; i < count; ++i) {
            const float corners[12] = {0, 0, 1, static_cast<float>(i)};
            append(bytes, corners);
            append(bytes, std::uint16_t{0});
        }
        return bytes;
    }

    /// Reads the file through the common door with each allocation failing.
    void failEachAllocationOf(const std::string& path, std::vector<std::string> failures) const {
        failures.push_back(Faults::bad_allocation);
        Reference<Mesh> mesh;
        failEachAllocation({.act =
                                [&] {
                                    mesh = new Mesh;
                                    loadMesh(path, *mesh, 0.5f);
                                },
                            .tellResult = [&] { return std::to_string(mesh->checksum()); },
                            .failures = failures,
                            .cleanUp =
                                [&] {
                                    mesh = nullptr;
                                    expectNoTemporaryFile();
                                }});
    }

    /// The same file with its coordinates in another order, which the fast path leaves to RPly.
    static std::string leftToRPly(std::string ply) {
        constexpr std::string_view declaration = "property float x";
        const std::size_t at = ply.find(declaration);
        ply[at + declaration.size() - 1] = 'z';
        ply[ply.find("property float z", at + declaration.size()) + declaration.size() - 1] = 'x';
        return ply;
    }

    /// RPly reports missing memory by the same words as a bad file.
    void failEachAllocationOfPly(const std::string& text) const {
        const std::string path = makeFile("a.ply", text);
        failEachAllocationOf(path,
                             {"Exception: could not open file '" + FileUtils::toBackslashes(path) + "' for reading.",
                              "Exception: could not read header.", "Exception: read of body failed."});
    }

    void expectNoTemporaryFile() const {
        EXPECT_TRUE(std::filesystem::is_empty(systemPath(temporary.path()))) << "a temporary file was left";
    }

    const TempDir dir;
    const TempDir temporary;
    const std::string temporary_path = systemPath(temporary.path()).string();
    const ScopedVariable posix_folder{"TMPDIR", temporary_path.c_str()};
    const ScopedVariable windows_folder{"TMP", temporary_path.c_str()};

  private:
    template <class T>
    static void append(std::string& bytes, const T& value) {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
};

} // namespace

TEST_F(FailingReader, OfObjFilesTellsOfEveryFailedAllocation) {
    failEachAllocationOf(makeFile("a.obj", objText()), {});
}

TEST_F(FailingReader, OfMaterialLibrariesTellsOfEveryFailedAllocation) {
    const std::string path = makeFile("a.mtl", mtlText());
    MTLLibrary library;
    failEachAllocation(
        {.act = [&] { loadMTL(path, library); },
         .tellResult = [&] { return std::to_string(library.materials.size()) + library.materials.back().map_Kd; },
         .failures = {Faults::bad_allocation},
         .cleanUp = [&] { library = MTLLibrary(); }});
}

TEST_F(FailingReader, OfObjFilesWithTheirLibraryTellsOfEveryFailedAllocation) {
    makeFile("a_library_with_a_rather_long_name.mtl", mtlText());
    const std::string path = makeFile("a.obj", objText());
    Reference<Mesh> mesh;
    MTLLibrary library;
    failEachAllocation(
        {.act =
             [&] {
                 mesh = new Mesh;
                 loadOBJ(path, *mesh, 0.5f, true, library);
             },
         .tellResult =
             [&] { return std::to_string(mesh->checksum()) + " " + std::to_string(library.materials.size()); },
         .failures = {Faults::bad_allocation},
         .cleanUp =
             [&] {
                 mesh = nullptr;
                 library = MTLLibrary();
             }});
}

TEST_F(FailingReader, OfPlyTextsTellsOfEveryFailedAllocation) {
    failEachAllocationOfPly(plyText());
}

TEST_F(FailingReader, OfPlyTextsWithoutALastLineEndTellsOfEveryFailedAllocation) {
    std::string text = plyText();
    text.pop_back();
    failEachAllocationOfPly(text);
}

TEST_F(FailingReader, OfBinaryPlyFilesTellsOfEveryFailedAllocation) {
    failEachAllocationOfPly(plyBinary());
}

TEST_F(FailingReader, OfPlyFilesLeftToRPlyTellsOfEveryFailedAllocation) {
    failEachAllocationOfPly(leftToRPly(plyText()));
    failEachAllocationOfPly(leftToRPly(plyText() + "1"));
    failEachAllocationOfPly(leftToRPly(plyBinary()));
}

TEST_F(FailingReader, OfStlTextsTellsOfEveryFailedAllocation) {
    failEachAllocationOf(makeFile("a.stl", stlText()), {});
}

TEST_F(FailingReader, OfBinaryStlFilesTellsOfEveryFailedAllocation) {
    failEachAllocationOf(makeFile("a.stl", stlBinary()), {});
}

TEST_F(FailingReader, OfVmmeshFilesTellsOfEveryFailedAllocationInItsOwnWords) {
    const std::string path = dir.file("a.vmmesh");
    for (const bool compressed : {false, true}) {
        Mesh mesh;
        fillSample(mesh);
        writeToFile(toVelmarString(path), mesh, compressed);
        failEachAllocationOf(
            path, {"Exception: Error while reading mesh '" + path + ": Bad allocation while reading from file."});
    }
}

TEST_F(FailingReader, OfASceneTellsOfEveryFailedAllocation) {
    makeFile("a model with a rather long name.stl", stlBinary());
    std::uint64_t content = 0;
    failEachAllocation({.act =
                            [&] {
                                TraversalState state(TraversalKind::LoadMeshes, "", toVelmarString(dir.path()));
                                for (double scale = 1; scale < 20; ++scale) {
                                    const Reference<SceneNodeMesh> node(new SceneNodeMesh);
                                    node->path = "a model with a rather long name.stl";
                                    node->scale = scale;
                                    node->traverse(state);
                                    content = content * 31 + node->mesh->triangles.size();
                                }
                            },
                        .tellResult = [&] { return std::to_string(content); },
                        .failures = {Faults::bad_allocation},
                        .cleanUp = [&] { content = 0; }});
}

TEST_F(FailingReader, OfPlyFilesAsksForNoMoreMemoryThanTheBodyCanFill) {
    std::string text = plyHeader("binary_little_endian", 4000000, 4000000);
    const std::string path = makeFile("a.ply", text + std::string(3000, '\0'));
    Faults::takeLargestRequest();
    Mesh mesh;
    EXPECT_THROW(loadPLY(path, mesh, 1.0f), Velmar::Exception);
    EXPECT_LT(Faults::takeLargestRequest(), 100000u);
}

TEST_F(FailingReader, OfPlyFilesLosesNothingWhenItsForecastGetsNoMemory) {
    const std::string path = makeFile("a.ply", plyBinary());
    Mesh expected;
    loadPLY(path, expected, 1.0f);
    // Whichever the allocation: it fails as a whole or reads everything.
    for (std::int64_t nth = 1; nth < 40; ++nth) {
        Mesh mesh;
        Faults::FailingAllocation fault(nth, Faults::Lasting::once);
        const std::string failure = Faults::thrownBy([&] { loadPLY(path, mesh, 1.0f); }, fault);
        EXPECT_TRUE(!failure.empty() || mesh.checksum() == expected.checksum()) << nth;
    }
}

TEST_F(FailingReader, OfBinaryStlFilesLeavesNoVertexUnwritten) {
    const std::string path = makeFile("a.stl", stlBinary());
    for (std::int64_t nth = 1; nth < 20; ++nth) {
        Mesh mesh;
        Faults::FailingAllocation fault(nth, Faults::Lasting::once);
        const std::string failure = Faults::thrownBy([&] { loadSTL(path, mesh, 1.0f); }, fault);
        EXPECT_TRUE(failure.empty() || (mesh.verts.empty() && mesh.triangles.empty())) << nth;
    }
}
