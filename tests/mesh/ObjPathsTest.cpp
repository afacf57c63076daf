/// The reader of OBJ files has a fast path for lines of the usual form and a slow path for all others. Both must
/// give the same.

#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "tests/mesh/ObjText.h"
#include "tests/support/MeshSupport.h"

#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace ObjPathsTests {

using namespace Velmar;
using TestSupport::loadText;

namespace {

/// What a file gives: the mesh, or the message of what was thrown.
std::string outcomeOf(const std::string& text) {
    Mesh mesh;
    std::string message;
    try {
        loadText(text, mesh, 0.75f);
    } catch (const Velmar::Exception& e) {
        return e.getMessage();
    } catch (const VelmarException& e) {
        return toStdString(e.getMessage());
    }
    std::string result = std::to_string(mesh.num_uv_mappings) + "|";
    for (const std::string& name : namesOf(mesh.used_materials))
        result += name + "|";
    return result + bytesOf(mesh.verts) + "|" + bytesOf(mesh.normals) + "|" + bytesOf(mesh.uv_pairs) + "|" +
           bytesOf(mesh.triangles) + "|" + bytesOf(mesh.quads);
}

/// Lines are read on the fast path when they are of the usual form. A blank in front changes nothing of what they mean,
/// but keeps the fast path from reading them.
std::string indented(const std::string& text) {
    std::string result = " ";
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        const bool ends_line = text[i] == '\n' || (text[i] == '\r' && text.substr(i + 1, 1) != "\n");
        if (ends_line && i + 1 < text.size()) result += ' ';
    }
    return result;
}

/// Text of lines that are mostly of the usual form, and mostly right.
class LineMaker {
  public:
    LineMaker(std::uint64_t seed, bool may_be_wrong) : random(seed), wrong(may_be_wrong) {}

    std::string lines(int count) {
        const char* const ends[] = {"\n", "\n", "\r\n", "\r"};
        const std::string end = ends[random() % 4];
        std::string text;
        for (int i = 0; i < count; ++i)
            text += line(i) + end;
        if (random() % 3 == 0) text.resize(text.size() - end.size());
        // The last lines of a file are too near to its end for the fast path.
        if (random() % 3 != 0) text += end + "#" + std::string(100, ' ');
        return text;
    }

  private:
    std::string line(int i) {
        const auto kind = i < 8 ? random() % 3 : random() % 8;
        if (kind == 0 || i < 3) return "v" + blank() + number() + blank() + number() + blank() + number() + rest();
        if (kind == 1) return "vt" + blank() + number() + blank() + number() + rest();
        if (kind == 2) return "vn" + blank() + number() + blank() + number() + blank() + number() + rest();
        if (kind == 3 && rarely(4)) return "usemtl m" + std::to_string(random() % 3);
        if (kind == 3 && rarely(2)) return rarely(2) ? "" : "g some group";
        return face();
    }

    std::string face() {
        std::string text = "f";
        const auto form = random() % 4;
        const auto corners = rarely(3) ? 4 : rarely(8) ? 5 + random() % 4 : rarely(40) && wrong ? 2 : 3;
        for (std::uint64_t corner = 0; corner < corners; ++corner) {
            text += blank() + index(3);
            if (form != 0) text += "/";
            if (form == 1 || form == 3) text += index(1);
            if (form >= 2) text += "/" + index(1);
        }
        return text + rest();
    }

    std::string index(std::uint64_t min_count) {
        if (wrong && rarely(60)) return "0";
        if (wrong && rarely(60)) return std::to_string(random() % 100000000000);
        if (rarely(20)) return "-" + std::to_string(1 + random() % min_count);
        if (rarely(30)) return "00" + std::to_string(1 + random() % min_count);
        return std::to_string(1 + random() % min_count);
    }

    std::string number() {
        if (wrong && rarely(200)) return "x";
        const double value = (static_cast<double>(random() % 2000001) - 1000000) / 1000;
        const char* const forms[] = {"%.6f", "%.6f", "%.6f", "%g", "%.9g", "%e", "%.0f", "%.8f"};
        char text[64];
        std::snprintf(text, sizeof text, forms[random() % 8], value);
        return rarely(60) ? std::string(text) + "f" : text;
    }

    std::string blank() { return rarely(30) ? "\t" : rarely(30) ? "  " : rarely(100) ? " \\\n" : " "; }
    std::string rest() { return rarely(20) ? " " : rarely(20) ? " 0.5 0.5 0.5" : rarely(30) ? " # it" : ""; }
    bool rarely(std::uint64_t times) { return random() % times == 0; }

    std::mt19937_64 random;
    bool wrong;
};

TEST(ObjPaths, ReadsLinesOfTheUsualFormAsAnyOthers) {
    for (const char* line : {"v 1.5 -2.5 0.000001",
                             "v  1.5 2 3",
                             "vt 0.5 -1",
                             "vn -0.0 0 1",
                             "f 1 2 3",
                             "f 1 2 4 3",
                             "f 1 2 3 ",
                             "f 1/1 2/2 3/3",
                             "f 1/1/1 2/2/2 4/3/3",
                             "f 1//1 2//1 3//1",
                             "f 1/1/1 2/2/2 4/3/3 3/1/1",
                             "f 1 2 4 3 1",
                             "f 1 2",
                             "f 1 2 0",
                             "f 1 2 5",
                             "f 1/0 2/1 3/1",
                             "f 1/4 2/1 3/1",
                             "f 1//4 2//1 3//1",
                             "f 1//0 2//1 3//1",
                             "f 12345678 1 2",
                             "f 123456789 1 2",
                             "f 1 2 -1",
                             "f 1 2/ 3",
                             "f 1/2/ 2 3",
                             "f 1//1 2//1 3",
                             "f 1 2 3x",
                             "f 1/1 2/1 3/1 "}) {
        const std::string before = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n"
                                   "vn 0 0 1\nvn 0 0 2\nvn 1 0 0\n";
        // With a material before them and without.
        for (const std::string& material : {std::string(), std::string("usemtl a\n")}) {
            const std::string text = before + material + line + "\nf 1 2 3\n#" + std::string(100, '-');
            EXPECT_EQ(outcomeOf(text), outcomeOf(indented(text))) << line;
        }
    }
}

TEST(ObjPaths, ReadsEveryFileAlikeOnBothPaths) {
    for (std::uint64_t seed = 0; seed < 800; ++seed) {
        LineMaker maker(seed, seed % 2 == 1);
        const std::string text = maker.lines(static_cast<int>(10 + seed % 90));
        ASSERT_EQ(outcomeOf(text), outcomeOf(indented(text))) << "seed " << seed << "\n" << text;
    }
}

TEST(ObjPaths, ReadsLargeFilesAlikeOnBothPaths) {
    // Lists grow many times, and the normals come only when the room for vertices is made.
    LineMaker maker(4, false);
    const std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvn 0 0 1\n" + maker.lines(150000);
    EXPECT_EQ(outcomeOf(text), outcomeOf(indented(text)));
}

} // namespace

} // namespace ObjPathsTests
