#include "velmarapi.h"

#include "tests/api/Library.h"
#include "tests/api/SceneDocument.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace TestSupport;

namespace {

const char* const grey_albedo = "\t\t<diffuse>\n"
                                "\t\t\t<albedo>\n"
                                "\t\t\t\t<constant>\n"
                                "\t\t\t\t\t<rgb>\n"
                                "\t\t\t\t\t\t<rgb>0.8 0.8 0.8</rgb>\n"
                                "\t\t\t\t\t\t<gamma>2.2</gamma>\n"
                                "\t\t\t\t\t</rgb>\n"
                                "\t\t\t\t</constant>\n"
                                "\t\t\t</albedo>\n"
                                "\t\t</diffuse>\n";

std::string materialElement(const std::string& uid, const std::string& name) {
    return "\t<material>\n\t\t<uid>" + uid + "</uid>\n\t\t<name>" + name + "</name>\n" + grey_albedo +
           "\t</material>\n";
}

/// As a mesh node made by a creator is written, with its file at `path`.
std::string meshElement(const std::string& uid, const std::string& path) {
    return "\t<mesh>\n\t\t<uid>" + uid +
           "</uid>\n\t\t<name>Mesh</name>\n"
           "\t\t<normal_smoothing>false</normal_smoothing>\n"
           "\t\t<subdivide_pixel_threshold>4</subdivide_pixel_threshold>\n"
           "\t\t<view_dependent_subdivision>true</view_dependent_subdivision>\n"
           "\t\t<external>\n\t\t\t<path>" +
           path + "</path>\n\t\t</external>\n\t</mesh>\n";
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
    EXPECT_EQ(Written(velmar_create_default_material).text, document(materialElement("1", "Default")));
}

TEST(ConvenienceCreators, SunAndSkyStandInADirectionOfAnyLength) {
    EXPECT_EQ(Written(velmar_create_sunsky).text, document("\t<background_settings>\n"
                                                           "\t\t<uid>1</uid>\n"
                                                           "\t\t<name>Background Settings</name>\n"
                                                           "\t\t<background_material>\n"
                                                           "\t\t\t<material>\n"
                                                           "\t\t\t\t<name></name>\n"
                                                           "\t\t\t\t<sunsky>\n"
                                                           "\t\t\t\t\t<sundir>1 1 1</sundir>\n"
                                                           "\t\t\t\t\t<turbidity>2</turbidity>\n"
                                                           "\t\t\t\t\t<extra_atmospheric>false</extra_atmospheric>\n"
                                                           "\t\t\t\t\t<enable_sky>true</enable_sky>\n"
                                                           "\t\t\t\t\t<sun_layer>0</sun_layer>\n"
                                                           "\t\t\t\t\t<sky_layer>0</sky_layer>\n"
                                                           "\t\t\t\t\t<model>captured-simulation</model>\n"
                                                           "\t\t\t\t</sunsky>\n"
                                                           "\t\t\t</material>\n"
                                                           "\t\t</background_material>\n"
                                                           "\t</background_settings>\n"));
}

TEST(ConvenienceCreators, TwoNamesOfSunAndSkyAreOneFunction) {
    ASSERT_NE(exportedFunction("velmar_create_sunsky"), nullptr);
    EXPECT_EQ(exportedFunction("velmar_create_sunsky"), exportedFunction("velmar_create_dummy_lighting"));
    EXPECT_EQ(Written(velmar_create_dummy_lighting).text, Written(velmar_create_sunsky).text);
}

TEST(ConvenienceCreators, PlaneIsOneMeshWithoutAModel) {
    const Written plane(velmar_create_plane);
    ASSERT_EQ(plane.meshFiles().size(), 1u);
    EXPECT_EQ(plane.text, document(meshElement("1", plane.meshFiles()[0])));
    EXPECT_EQ(nameOf(plane.meshFiles()[0]), fileNameOfQuad({-1, -1, 0, -1, 1, 0, 1, 1, 0, 1, -1, 0}));
}

TEST(ConvenienceCreators, GroundPlaneIsMeshMaterialAndModel) {
    const Written ground([](VelmarScene* scene) { VelmarScene_AddGroundPlane(scene, 0.5, 100); });
    ASSERT_EQ(ground.meshFiles().size(), 1u);
    EXPECT_EQ(ground.text,
              document(meshElement("1", ground.meshFiles()[0]) + "\n" + materialElement("2", "GroundPlane") +
                       "\n"
                       "\t<model2>\n"
                       "\t\t<uid>3</uid>\n"
                       "\t\t<name>GroundPlane</name>\n"
                       "\t\t<geometry_uid>1</geometry_uid>\n"
                       "\t\t<pos>0 0 0</pos>\n"
                       "\t\t<materials>\n"
                       "\t\t\t<uid>2</uid>\n"
                       "\t\t</materials>\n"
                       "\t</model2>\n"));
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
