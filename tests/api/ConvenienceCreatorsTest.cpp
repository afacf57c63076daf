#include "velmarapi.h"

#include "tests/api/SceneDocument.h"
#include "tests/support/System.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace ConvenienceCreatorsTests {

using namespace TestSupport;

namespace {

std::string materialElement(std::string_view uid, std::string_view name) {
    return replaced(
        golden("material/coloured"),
        {{"<uid>1<", "<uid>" + std::string(uid) + "<"}, {"Red &amp; white", name}, {"0.9 0.1 0", "0.8 0.8 0.8"}});
}

/// As a mesh node made by a creator is written, with its file at `path`.
std::string meshElement(std::string_view path) {
    return replaced(golden("mesh/new"), {{"{path}", path}});
}

/// A scene made by one call, in a directory of its own.
struct Written {
    template <class Create>
    explicit Written(Create create) {
        VelmarScene* const scene = VelmarScene_Create();
        create(scene);
        text = documentIn(dir, scene);
        VelmarScene_Delete(scene);
    }

    /// The paths in the document of the mesh files that were written, in no order.
    std::vector<std::string> meshFiles() const {
        std::vector<std::string> paths;
        for (const auto& entry : std::filesystem::directory_iterator(systemPath(dir.file("scene_meshes"))))
            paths.push_back(dir.file("scene_meshes") + "\\" + entry.path().filename().string());
        return paths;
    }

    TempDir dir;
    std::string text;
};

/// The name of the file of a mesh made from these corners by the exports of its family. It is made from the content, so
/// equal names tell of equal meshes.
std::string fileNameOfQuad(const std::vector<float>& corners) {
    const TempDir dir;
    VelmarMesh* const mesh = VelmarMesh_Create("Mesh");
    VelmarMesh_AddVertices(mesh, 4, corners.data());
    const std::uint32_t quad[10] = {1, 0, 1, 2, 3, 0, 0, 0, 0, 0};
    VelmarMesh_AddFaces(mesh, 1, quad);
    VelmarMesh_Build(mesh);
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddMesh(scene, mesh);
    documentIn(dir, scene);
    VelmarScene_Delete(scene);
    return std::filesystem::directory_iterator(systemPath(dir.file("scene_meshes")))->path().filename().string();
}

std::string nameOf(const std::string& path) {
    return path.substr(path.find_last_of('\\') + 1);
}

} // namespace

TEST(ConvenienceCreators, DefaultMaterialIsLightGrey) {
    EXPECT_EQ(Written(velmar_create_default_material).text, document({materialElement("1", "Default")}));
}

TEST(ConvenienceCreators, SunAndSkyTakeADirectionOfAnyLength) {
    EXPECT_EQ(Written(velmar_create_sunsky).text, document({golden("background/sun_sky")}));
}

TEST(ConvenienceCreators, TwoNamesOfSunAndSkyAreOneFunction) {
    ASSERT_NE(exportedFunction("velmar_create_sunsky"), nullptr);
    EXPECT_EQ(exportedFunction("velmar_create_sunsky"), exportedFunction("velmar_create_dummy_lighting"));
    EXPECT_EQ(Written(velmar_create_dummy_lighting).text, Written(velmar_create_sunsky).text);
}

TEST(ConvenienceCreators, PlaneIsOneMeshWithoutAModel) {
    const Written plane(velmar_create_plane);
    ASSERT_EQ(plane.meshFiles().size(), 1u);
    EXPECT_EQ(plane.text, document({meshElement(plane.meshFiles()[0])}));
    EXPECT_EQ(nameOf(plane.meshFiles()[0]), fileNameOfQuad({-1, -1, 0, -1, 1, 0, 1, 1, 0, 1, -1, 0}));
}

TEST(ConvenienceCreators, GroundPlaneIsMeshMaterialAndModel) {
    const Written ground([](VelmarScene* scene) { VelmarScene_AddGroundPlane(scene, 0.5, 100); });
    ASSERT_EQ(ground.meshFiles().size(), 1u);
    EXPECT_EQ(ground.text,
              document({meshElement(ground.meshFiles()[0]), materialElement("2", "GroundPlane"),
                        replaced(golden("model/plain"), {{"<uid>1<", "<uid>3<"},
                                                         {"Chair", "GroundPlane"},
                                                         {"4294967295", "1"},
                                                         {"<materials>\n", "<materials>\n\t\t<uid>2</uid>\n"}})}));
    EXPECT_EQ(nameOf(ground.meshFiles()[0]),
              fileNameOfQuad({-100, -100, 0.5f, -100, 100, 0.5f, 100, 100, 0.5f, 100, -100, 0.5f}));
}

TEST(ConvenienceCreators, GroundPlaneIsNarrowedToFloats) {
    const Written ground([](VelmarScene* scene) { VelmarScene_AddGroundPlane(scene, 0.1, 1.0 / 3); });
    const float s = 1.0f / 3;
    const float t = 0.1f;
    ASSERT_EQ(ground.meshFiles().size(), 1u);
    EXPECT_EQ(nameOf(ground.meshFiles()[0]), fileNameOfQuad({-s, -s, t, -s, s, t, s, s, t, s, -s, t}));
}

TEST(ConvenienceCreators, NegativeHalfSizeSwapsTheCorners) {
    const Written ground([](VelmarScene* scene) { VelmarScene_AddGroundPlane(scene, 0, -2); });
    ASSERT_EQ(ground.meshFiles().size(), 1u);
    EXPECT_EQ(nameOf(ground.meshFiles()[0]), fileNameOfQuad({2, 2, 0, 2, -2, 0, -2, -2, 0, -2, 2, 0}));
}

TEST(ConvenienceCreators, TwoGroundPlanesShareTheirNamesButNotTheirUIDs) {
    const Written ground([](VelmarScene* scene) {
        VelmarScene_AddGroundPlane(scene, 0, 1);
        VelmarScene_AddGroundPlane(scene, 1, 1);
    });
    EXPECT_EQ(ground.meshFiles().size(), 2u);
    for (const char* const line : {"<geometry_uid>1</geometry_uid>", "<geometry_uid>4</geometry_uid>"})
        EXPECT_NE(ground.text.find(line), std::string::npos);
    int uid = 0;
    for (const char* const name : {"Mesh", "GroundPlane", "GroundPlane", "Mesh", "GroundPlane", "GroundPlane"}) {
        const std::string identity = "\t\t<uid>" + std::to_string(++uid) + "</uid>\n\t\t<name>" + name + "</name>\n";
        EXPECT_NE(ground.text.find(withSystemLineEnds(identity)), std::string::npos) << identity;
    }
}

} // namespace ConvenienceCreatorsTests
