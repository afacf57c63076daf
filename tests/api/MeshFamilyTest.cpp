#include "velmarapi.h"
#include "velmarexceptions.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace MeshFamilyTests {

using namespace TestSupport;

namespace {

const std::array<float, 12> four_vertices = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};

/// The words of a plain vmmesh file after its header of 16 bytes.
std::vector<std::uint32_t> wordsOf(VelmarMesh* mesh) {
    const TempDir dir;
    VelmarMesh_WriteToFile(mesh, dir.file("m.vmmesh").c_str());
    const std::string bytes = readFileBytes(dir.file("m.vmmesh"));
    std::vector<std::uint32_t> words((bytes.size() - 16) / 4);
    std::memcpy(words.data(), bytes.data() + 16, words.size() * 4);
    return words;
}

std::uint32_t bits(float value) {
    std::uint32_t word = 0;
    std::memcpy(&word, &value, sizeof word);
    return word;
}

class MeshFamilyTest : public testing::Test {
  protected:
    ~MeshFamilyTest() override { VelmarMesh_Delete(mesh); }
    VelmarMesh* const mesh = VelmarMesh_Create("m");
};

} // namespace

TEST_F(MeshFamilyTest, AnEmptyMeshIsWrittenAsZeros) {
    EXPECT_EQ(VelmarMesh_Build(mesh), 1u);
    EXPECT_EQ(wordsOf(mesh), std::vector<std::uint32_t>(9, 0));
}

TEST_F(MeshFamilyTest, VerticesAndFacesReachTheFileInOrder) {
    VelmarMesh_AddVertices(mesh, 4, four_vertices.data());
    const std::uint32_t words[] = {0, 0, 1, 2, 0, 0, 0, 5, 7, 0, 1, 2, 3, 0, 0, 0, 0, 2};
    VelmarMesh_AddFaces(mesh, 2, words);
    EXPECT_EQ(VelmarMesh_Build(mesh), 6u);
    std::vector<std::uint32_t> expected = {0, 0, 0, 4};
    for (const float coordinate : four_vertices)
        expected.push_back(bits(coordinate));
    for (const std::uint32_t word : {0u, 0u, 0u,                              // no normals, layout 0, no UVs
                                     1u, 0u, 1u, 2u, 0u, 0u, 0u, 5u,          // the triangle
                                     1u, 0u, 1u, 2u, 3u, 0u, 0u, 0u, 0u, 2u}) // any first word but 0 is a quad
        expected.push_back(word);
    EXPECT_EQ(wordsOf(mesh), expected);
}

TEST_F(MeshFamilyTest, CountsBelowOneAppendNothing) {
    VelmarMesh_AddVertices(mesh, 0, nullptr);
    VelmarMesh_AddVertices(mesh, -3, nullptr);
    VelmarMesh_AddFaces(mesh, 0, nullptr);
    VelmarMesh_AddFaces(mesh, -3, nullptr);
    EXPECT_EQ(wordsOf(mesh), std::vector<std::uint32_t>(9, 0));
}

TEST_F(MeshFamilyTest, EachCallForTextureCoordinatesIsOneSet) {
    const std::array<float, 6> first = {0, 0, 1, 0, 1, 1};
    const std::array<float, 2> second = {0.25f, 0.75f};
    VelmarMesh_AddTextureCoordinates(mesh, 3, first.data());
    VelmarMesh_AddTextureCoordinates(mesh, 1, second.data());
    const auto words = wordsOf(mesh);
    EXPECT_EQ(words[0], 2u);
    ASSERT_EQ(words[6], 4u);
    // One list after the other, not a pair of each in turn.
    std::vector<std::uint32_t> pairs;
    for (const float coordinate : {0.0f, 0.0f, 1.0f, 0.0f, 1.0f, 1.0f, 0.25f, 0.75f})
        pairs.push_back(bits(coordinate));
    EXPECT_EQ(std::vector<std::uint32_t>(words.begin() + 7, words.begin() + 15), pairs);
}

TEST_F(MeshFamilyTest, ACountBelowOneStillAddsASet) {
    VelmarMesh_AddTextureCoordinates(mesh, 0, nullptr);
    VelmarMesh_AddTextureCoordinates(mesh, -1, nullptr);
    EXPECT_EQ(wordsOf(mesh)[0], 2u);
}

TEST_F(MeshFamilyTest, BuildRefusesTextureCoordinatesThatDontFitTheSets) {
    const std::array<float, 6> uv = {0, 0, 1, 0, 1, 1};
    VelmarMesh_AddTextureCoordinates(mesh, 3, uv.data());
    VelmarMesh_AddTextureCoordinates(mesh, 2, uv.data());
    try {
        VelmarMesh_Build(mesh);
        FAIL() << "nothing was thrown";
    } catch (const Velmar::VelmarException& exception) {
        EXPECT_EQ(exception.getMessage(), Velmar::String("Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  "
                                                         "uv_pairs.size(): 5, num_uv_mappings: 2"));
    }
}

TEST_F(MeshFamilyTest, FaceIndicesArentChecked) {
    const std::uint32_t words[] = {0, 100, 200, 300, 9, 9, 9, 0};
    VelmarMesh_AddFaces(mesh, 1, words);
    EXPECT_EQ(VelmarMesh_Build(mesh), 1u);
}

TEST_F(MeshFamilyTest, AMaterialNameIsKeptOnce) {
    VelmarMesh_AddMaterialUsed(mesh, "wood");
    VelmarMesh_AddMaterialUsed(mesh, "wood");
    const auto words = wordsOf(mesh);
    EXPECT_EQ(words[1], 1u);
    EXPECT_EQ(words[2], 4u);
}

TEST_F(MeshFamilyTest, AFileThatCantBeWrittenIsReportedWithItsPath) {
    const TempDir dir;
    const std::string path = dir.file("missing\\m.vmmesh");
    try {
        VelmarMesh_WriteToFile(mesh, path.c_str());
        FAIL() << "nothing was thrown";
    } catch (const Velmar::VelmarException& exception) {
        EXPECT_EQ(Velmar::toStdString(exception.getMessage()), "Failed to open file '" + path + "' for writing.");
    }
}

TEST(MeshFamily, SettingsReachTheDocument) {
    const TempDir dir;
    VelmarScene* const scene = VelmarScene_Create();
    VelmarMesh* const mesh = VelmarMesh_Create("Bunny & Co");
    VelmarMesh_SetNormalSmoothing(mesh, 1);
    VelmarMesh_ViewDependentSubdivision(mesh, 2);
    VelmarMesh_MaxNumSubdivisions(mesh, 3);
    VelmarScene_AddMesh(scene, mesh);
    VelmarScene_WriteToXML(scene, dir.file("scene.xml").c_str());
    VelmarScene_Delete(scene);
    const std::string document = readFileBytes(dir.file("scene.xml"));
    EXPECT_EQ(document.substr(0, document.find("\t\t<external>")),
              withSystemLineEnds("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                                 "<scene>\n"
                                 "\t<mesh>\n"
                                 "\t\t<uid>1</uid>\n"
                                 "\t\t<name>Bunny &amp; Co</name>\n"
                                 "\t\t<max_num_subdivisions>3</max_num_subdivisions>\n"
                                 "\t\t<subdivide_pixel_threshold>4</subdivide_pixel_threshold>\n"
                                 "\t\t<view_dependent_subdivision>true</view_dependent_subdivision>\n"));
}

} // namespace MeshFamilyTests
