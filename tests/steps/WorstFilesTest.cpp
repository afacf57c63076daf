#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshLoading.h"
#include "mesh/MeshReaders.h"
#include "tests/steps/Steps.h"
#include "tests/support/TextFile.h"
#include "tests/support/VmmeshBytes.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace Velmar;
using namespace TestSupport;

/// Reading takes time in proportion to the size of the file, whatever is in it.
namespace {

/// `unit` repeated up to about `size` bytes.
std::string repeated(std::string_view unit, std::size_t size) {
    std::string text;
    text.reserve(size + unit.size());
    while (text.size() < size)
        text += unit;
    return text;
}

/// A face for each of the pairs of position and normal that a table would put into one bucket if it took the lowest
/// 17 bits of their plain FNV-1a hash.
std::string objOfCollidingPairs(std::size_t size) {
    constexpr std::uint64_t prime = 0x100000001B3;
    constexpr std::uint64_t mask = 0x1FFFF;
    constexpr std::size_t num_listed = 4096;
    std::string text = repeated("v 0 0 0\n", 8 * num_listed) + repeated("vn 1 1 1\n", 9 * num_listed);
    int on_line = 0;
    for (std::uint32_t position = 0; position < num_listed && text.size() < size; ++position) {
        std::uint64_t hash = 0xCBF29CE484222325;
        for (int shift = 0; shift < 32; shift += 8)
            hash = (hash ^ (position >> shift & 0xFF)) * prime;
        for (std::uint32_t low = 0; low < 256; ++low) {
            const std::uint64_t high = ((hash ^ low) * prime) & mask;
            if (high >= num_listed / 256) continue;
            text += on_line == 0 ? "f " : " ";
            text += std::to_string(position + 1) + "//" + std::to_string(high * 256 + low + 1);
            if (++on_line == 3) {
                text += "\n";
                on_line = 0;
            }
        }
    }
    return text.substr(0, text.rfind('\n') + 1);
}

std::string objOfManyNames(std::size_t size) {
    std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    for (int i = 0; text.size() < size; ++i)
        text += "usemtl " + std::to_string(i) + "\nf 1 2 3\n";
    return text;
}

std::string plyHeader(std::string_view declarations) {
    return "ply\nformat ascii 1.0\n" + std::string(declarations) + "end_header\n";
}

std::string binaryStl(std::size_t size) {
    const auto count = static_cast<std::uint32_t>(size / 50);
    return std::string(80, ' ') + VmmeshBytes().u32(count).bytes + std::string(std::size_t{50} * count, 'a');
}

std::string vmmeshOfEmptyNames(std::size_t size) {
    const auto count = static_cast<std::uint32_t>(size / 4);
    return VmmeshBytes().header(4).zeros(1).u32(count).append(std::string(std::size_t{4} * count, '\0')).bytes;
}

std::string vmmeshOfExtraEntries(std::size_t size) {
    const auto count = static_cast<std::uint32_t>(size / 8);
    return VmmeshBytes().header(4).zeros(2).u32(count).append(std::string(std::size_t{8} * count, '\0')).bytes;
}

std::string vmmeshOfTriangles(std::size_t size, bool is_compressed) {
    const auto count = static_cast<std::uint32_t>(size / 28);
    std::string body = VmmeshBytes().zeros(4).u32(count).bytes;
    for (std::uint32_t i = 0; i < 7 * count; ++i)
        body += VmmeshBytes().u32(i * 2654435761U).bytes;
    body += std::string(4, '\0');
    VmmeshBytes file = VmmeshBytes().header(4, is_compressed ? 1 : 0).zeros(3);
    if (!is_compressed) return file.append(body).bytes;
    const std::string frame = compressed(body);
    return file.u64(frame.size()).append(frame).bytes;
}

struct WorstFile {
    const char* description;
    const char* name;
    std::function<std::string(std::size_t)> make;
};

void PrintTo(const WorstFile& file, std::ostream* stream) {
    *stream << file.description;
}

const std::vector<WorstFile> worst_files = {
    {"ObjPairsThatCollide", "a.obj", objOfCollidingPairs},
    {"ObjNames", "a.obj", objOfManyNames},
    {"ObjLineEnds", "a.obj", [](std::size_t size) { return repeated("\r", size); }},
    {"ObjContinuedLine", "a.obj", [](std::size_t size) { return "v" + repeated(" \\\n", size); }},
    {"ObjBackslashes", "a.obj", [](std::size_t size) { return repeated("v \\ 1 2 3\n", size); }},
    {"ObjDigits", "a.obj", [](std::size_t size) { return "v 0." + std::string(size, '1') + " 2 3\n"; }},
    {"ObjExponents", "a.obj", [](std::size_t size) { return repeated("v 1e1234567 2e-1234567 3e0000000000\n", size); }},
    {"ObjCorners", "a.obj",
     [](std::size_t size) {
         const std::string corners = repeated(" 1 2 3", 1500);
         return "v 0 0 0\nv 1 0 0\nv 0 1 0\n" + repeated("f" + corners + "\t\n", size);
     }},
    {"ObjFacesThatArePlainUpToTheirEnd", "a.obj",
     [](std::size_t size) {
         return "v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\n" + repeated("f 1 2 3 1 2 3 1 2 3  \n", size);
     }},
    {"ObjSparseThenDense", "a.obj",
     [](std::size_t size) { return "v 0 0 0\n" + repeated("#\n", size / 2) + repeated("v 0 0 0\n", size / 2); }},
    {"ObjLibraries", "a.obj", [](std::size_t size) { return repeated("mtllib a.mtl\nmtllib b.mtl\n", size); }},
    {"MtlMaterials", "a.mtl", [](std::size_t size) { return repeated("newmtl\n", size); }},
    {"MtlDigits", "a.mtl", [](std::size_t size) { return "newmtl\n" + repeated("Ns " + std::string(900, '1'), size); }},
    {"PlyRemarks", "a.ply", [](std::size_t size) { return plyHeader(repeated("comment\n\n", size)); }},
    {"PlyElementsWithoutProperties", "a.ply",
     [](std::size_t size) { return plyHeader(repeated("element a 100000000\n", size)); }},
    {"PlyEmptyElements", "a.ply",
     [](std::size_t size) { return plyHeader(repeated("element a 0\nproperty int x\n", size)); }},
    {"PlyEmptyLists", "a.ply",
     [](std::size_t size) {
         return plyHeader("element face " + std::to_string(size / 2) + "\nproperty list uchar int vertex_indices\n") +
                repeated("0 ", size);
     }},
    {"PlyBlanks", "a.ply",
     [](std::size_t size) {
         return plyHeader("element face 1\nproperty list uchar int vertex_indices\n") + repeated(" ", size) + "0";
     }},
    {"StlFacetsThatArePlainUpToTheirEnd", "a.stl",
     [](std::size_t size) {
         return "solid\n" +
                repeated(
                    "facet normal 0 0 1\nouter loop\nvertex 1 2 3\nvertex 4 5 6\nvertex 7 8 9\nendloop\nend\\facet\n",
                    size);
     }},
    {"StlBlanks", "a.stl",
     [](std::size_t size) {
         return "solid\nfacet normal" + std::string(size / 2, ' ') + "0 0 1" + std::string(size / 2, '\n') + "outer";
     }},
    {"StlFacetsWithoutNumbers", "a.stl",
     [](std::size_t size) {
         return "solid\n" + repeated("facet normal outer loop vertex vertex vertex endloop endfacet\n", size) +
                "endsolid";
     }},
    {"StlBinary", "a.stl", binaryStl},
    {"VmmeshEmptyNames", "a.vmmesh", vmmeshOfEmptyNames},
    {"VmmeshExtraEntries", "a.vmmesh", vmmeshOfExtraEntries},
    {"VmmeshTriangles", "a.vmmesh", [](std::size_t size) { return vmmeshOfTriangles(size, false); }},
    {"VmmeshCompressedTriangles", "a.vmmesh", [](std::size_t size) { return vmmeshOfTriangles(size, true); }},
};

class ReadingTakesStepsInProportion : public testing::TestWithParam<WorstFile> {
  protected:
    static std::uint64_t stepsFor(std::size_t size) {
        const std::string bytes = GetParam().make(size);
        const TextFile file(GetParam().name, bytes);
        writeFileBytes(file.directory().file("b.mtl"), repeated("newmtl a\nKd 1 1 1\n", size));
        if (file.path().ends_with("obj")) writeFileBytes(file.directory().file("a.mtl"), "newmtl a\n");
        Mesh mesh;
        MTLLibrary library;
        Steps::take();
        try {
            if (file.path().ends_with("mtl"))
                loadMTL(file.path(), library);
            else if (file.path().ends_with("obj"))
                loadOBJ(file.path(), mesh, 1.0f, true, library);
            else
                loadMesh(file.path(), mesh, 1.0f);
        } catch (const Velmar::Exception&) {
        }
        return Steps::take();
    }
};

} // namespace

TEST_P(ReadingTakesStepsInProportion, ToTheSizeOfTheFile) {
    constexpr std::size_t size = 50000;
    constexpr std::size_t factor = 8;
    testing::internal::CaptureStderr();
    const std::uint64_t few = stepsFor(size);
    const std::uint64_t many = stepsFor(factor * size);
    testing::internal::GetCapturedStderr();
    EXPECT_GT(few, 0u);
    // A constant part, for tables that every run sets up, and some for what depends on chance.
    EXPECT_LT(many, factor * few * 5 / 4 + 1000);
    EXPECT_LT(many, 40 * factor * size);
}

INSTANTIATE_TEST_SUITE_P(WorstFiles, ReadingTakesStepsInProportion, testing::ValuesIn(worst_files),
                         [](const auto& file) { return std::string(file.param.description); });
