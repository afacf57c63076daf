#include "velmarapi.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <locale>
#include <string>

namespace TextMeshDumpTests {

using namespace TestSupport;

namespace {

class TextMeshDump : public testing::Test {
  protected:
    ~TextMeshDump() override { VelmarMesh_Delete(mesh); }

    void rename(const char* name) {
        VelmarMesh_Delete(mesh);
        mesh = VelmarMesh_Create(name);
    }

    std::string dump() const {
        const std::string path = systemPath(dir.file("mesh.txt")).string();
        velmar_write_mesh_to_file(mesh, path.c_str());
        return readFileBytes(dir.file("mesh.txt"));
    }

    const TempDir dir;
    VelmarMesh* mesh = VelmarMesh_Create("m");
};

/// Numbers as some countries write them.
class CommaNumbers final : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST_F(TextMeshDump, EmptyMeshIsItsNameAndFourHeaders) {
    EXPECT_EQ(dump(), withSystemLineEnds("m\nvertices\nuv pairs\ntriangles\nquads\n"));
}

TEST_F(TextMeshDump, LinesOfIndicesEndInASpaceAndLinesOfCoordinatesDont) {
    const float xyz[] = {1.5f, 0, -2, 0.1f, 1e-7f, 123456789.0f};
    VelmarMesh_AddVertices(mesh, 2, xyz);
    const float uv[] = {0.25f, 1};
    VelmarMesh_AddTextureCoordinates(mesh, 1, uv);
    const std::uint32_t faces[] = {0, 0, 1, 2, 0, 0, 0, 9, 1, 3, 2, 1, 0, 4, 5, 6, 4294967295, 9};
    VelmarMesh_AddFaces(mesh, 2, faces);
    EXPECT_EQ(dump(), withSystemLineEnds("m\n"
                                         "vertices\n"
                                         "  1.5 0 -2\n"
                                         "  0.1 1e-07 1.23457e+08\n"
                                         "uv pairs\n"
                                         "  0.25 1\n"
                                         "triangles\n"
                                         "  0 1 2 \n"
                                         "     0 0 0 \n"
                                         "quads\n"
                                         "  3 2 1 0 \n"
                                         "     4 5 6 4294967295 \n"));
}

TEST_F(TextMeshDump, NameIsPrintedWholeWhateverItsLength) {
    for (const char* const name : {"", "exactly 16 bytes", "a name of more than sixteen bytes"}) {
        rename(name);
        EXPECT_EQ(dump(), withSystemLineEnds(std::string(name) + "\nvertices\nuv pairs\ntriangles\nquads\n"));
    }
}

TEST_F(TextMeshDump, ReplacesTheFile) {
    writeFileBytes(dir.file("mesh.txt"), std::string(1000, 'x'));
    EXPECT_EQ(dump(), withSystemLineEnds("m\nvertices\nuv pairs\ntriangles\nquads\n"));
}

TEST_F(TextMeshDump, NumbersIgnoreTheLocale) {
    const float xyz[] = {1.5f, 1234, 0};
    VelmarMesh_AddVertices(mesh, 1, xyz);
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    const std::string text = dump();
    std::locale::global(before);
    EXPECT_NE(text.find("  1.5 1234 0"), std::string::npos);
}

TEST_F(TextMeshDump, FileThatCantBeOpenedIsNotReported) {
    const std::string path = systemPath(dir.file("no such folder\\mesh.txt")).string();
    velmar_write_mesh_to_file(mesh, path.c_str());
    EXPECT_FALSE(std::filesystem::exists(path));
}

} // namespace TextMeshDumpTests
