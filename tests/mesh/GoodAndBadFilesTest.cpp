/// Each file of `tests/data/good` has what it is read as next to it, and each of `tests/data/bad` its error.

#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "tests/support/FileBytes.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/ReaderPaths.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace GoodAndBadFilesTests {

using namespace Velmar;
using TestSupport::readFileBytes;

namespace {

namespace fs = std::filesystem;

const fs::path data_folder = VELMAR_TEST_DATA;

/// The mesh files of a folder, each of which has another with the same name and `ending`.
std::vector<fs::path> filesWith(const char* folder, std::string_view ending) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(data_folder / folder)) {
        fs::path file = entry.path();
        if (file.extension() == ending) files.push_back(file.replace_extension());
    }
    std::ranges::sort(files);
    return files;
}

std::string caseName(const testing::TestParamInfo<fs::path>& info) {
    std::string name = info.param.filename().string();
    std::ranges::replace(name, '.', '_');
    return name;
}

/// Reads `file` into `mesh`, or a library of materials. An error is returned with the name of its class.
std::string load(const fs::path& file, Mesh& mesh) {
    const std::string path = file.string();
    MTLLibrary library;
    try {
        if (file.extension() == ".obj")
            loadOBJ(path, mesh, 1.0f, false, library);
        else if (file.extension() == ".stl")
            loadSTL(path, mesh, 1.0f);
        else if (file.extension() == ".ply")
            loadPLY(path, mesh, 1.0f);
        else if (file.extension() == ".mtl")
            loadMTL(path, library);
        else
            throw std::runtime_error("no reader for " + path);
    } catch (const Velmar::Exception& error) {
        return "Exception: " + error.getMessage() + "\n";
    } catch (const VelmarException& error) {
        return "VelmarException: " + toStdString(error.getMessage()) + "\n";
    }
    return {};
}

/// Lines of a keyword and numbers, with the digits that give each float back.
class MeshText {
  public:
    explicit MeshText(const Mesh& mesh) {
        for (const std::string& name : namesOf(mesh.used_materials))
            text += "material " + name + "\n";
        line("uv_sets", mesh.num_uv_mappings);
        for (const Vec3f& v : mesh.verts)
            line("vertex", v.x, v.y, v.z);
        for (const Vec3f& n : mesh.normals)
            line("normal", n.x, n.y, n.z);
        for (const Vec2f& uv : mesh.uv_pairs)
            line("uv", uv.x, uv.y);
        for (const MeshTriangle& face : mesh.triangles)
            addFace("triangle", face);
        for (const MeshQuad& face : mesh.quads)
            addFace("quad", face);
        line("materials_referenced", mesh.num_materials_referenced);
        line("bounds_min", mesh.aabb_min.x, mesh.aabb_min.y, mesh.aabb_min.z);
        line("bounds_max", mesh.aabb_max.x, mesh.aabb_max.y, mesh.aabb_max.z);
    }

    const std::string& str() const { return text; }

  private:
    template <class... Numbers>
    void line(std::string_view keyword, Numbers... numbers) {
        text += keyword;
        (add(numbers), ...);
        text += '\n';
    }

    template <class Number>
    void add(Number number) {
        char digits[32];
        const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, number);
        (text += ' ').append(digits, end.ptr);
    }

    template <class Face>
    void addFace(std::string_view keyword, const Face& face) {
        text += keyword;
        for (const std::uint32_t index : face.vertex_indices)
            add(index);
        text += " uvs";
        for (const std::uint32_t index : face.uv_indices)
            add(index);
        text += " material";
        add(face.material_index);
        text += '\n';
    }

    std::string text;
};

class GoodFile : public testing::TestWithParam<fs::path> {};
class BadFile : public testing::TestWithParam<fs::path> {};

TEST_P(GoodFile, IsReadAsTheMeshNextToIt) {
    Mesh mesh;
    ASSERT_EQ(load(GetParam(), mesh), "");
    EXPECT_EQ(MeshText(mesh).str(), readFileBytes(GetParam().string() + ".mesh"));
}

TEST_P(BadFile, IsRefusedWithTheErrorNextToIt) {
    Mesh mesh;
    EXPECT_EQ(load(GetParam(), mesh), readFileBytes(GetParam().string() + ".error"));
}

/// Those of which a reader takes the text in parts.
std::vector<fs::path> filesInParts() {
    std::vector<fs::path> files = filesWith("good", ".mesh");
    std::ranges::copy(filesWith("bad", ".error"), std::back_inserter(files));
    std::erase_if(files, [](const fs::path& file) { return file.extension() != ".obj" && file.extension() != ".stl"; });
    return files;
}

class FileInParts : public testing::TestWithParam<fs::path> {};

TEST_P(FileInParts, IsReadAsTheWholeOne) {
    const std::string content = readFileBytes(GetParam().string());
    const auto isSame =
        GetParam().extension() == ".obj" ? TestSupport::isOBJSameInParts : TestSupport::isSTLSameInParts;
    for (const std::size_t part_size : {1, 2, 3, 50, 200, 1000})
        EXPECT_TRUE(isSame(content, part_size)) << part_size;
}

INSTANTIATE_TEST_SUITE_P(Files, GoodFile, testing::ValuesIn(filesWith("good", ".mesh")), caseName);
INSTANTIATE_TEST_SUITE_P(Files, BadFile, testing::ValuesIn(filesWith("bad", ".error")), caseName);
INSTANTIATE_TEST_SUITE_P(Files, FileInParts, testing::ValuesIn(filesInParts()), caseName);

} // namespace

} // namespace GoodAndBadFilesTests
