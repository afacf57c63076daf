#include "velmar.hpp"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>

using namespace TestSupport;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr float corners[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
constexpr float square[] = {0, 0, 1, 0, 1, 1, 0, 1};

velmar::Mesh makeSquare() {
    velmar::Mesh mesh("Square");
    mesh.addVertices(corners);
    mesh.addQuads(std::vector<std::uint32_t>{0, 1, 2, 3});
    mesh.build();
    return mesh;
}

} // namespace

TEST(CppScene, IsWrittenWithItsNodes) {
    const TempDir dir;
    velmar::Scene scene;
    scene.add(velmar::RenderSettings(640, 480));
    const velmar::Mesh mesh = scene.add(makeSquare());
    const velmar::Material red = scene.add(velmar::Material("Red", {0.8, 0.1, 0.1}));
    scene.add(velmar::Model("Square", mesh, {red}));
    scene.add(velmar::Background::sunSky({0, 0, 1}));
    EXPECT_EQ(scene.nodeCount(), 5u);
    scene.write(dir.file("scene.xml"));
    const std::string document = readFileBytes(dir.file("scene.xml"));
    for (const char* const part : {"<width>640</width>", "<name>Square</name>", "<rgb>0.8 0.1 0.1</rgb>", "sundir"})
        EXPECT_THAT(document, HasSubstr(part));
}

TEST(CppScene, LoadsAModelWithItsMaterials) {
    const TempDir dir;
    writeFileBytes(dir.file("two.mtl"), "newmtl blue\nKd 0 0 1\n");
    writeFileBytes(dir.file("two.obj"), "mtllib two.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl blue\nf 1 2 3\n");
    velmar::Scene scene;
    const velmar::Model model = scene.loadModel(dir.file("two.obj"), 2);
    EXPECT_EQ(scene.nodeCount(), 3u);
    EXPECT_EQ(model.name(), "two");
    ASSERT_EQ(model.materials().size(), 1u);
    EXPECT_EQ(model.materials()[0].name(), "blue");
    EXPECT_EQ(model.mesh().vertices()[3], 2);
}

TEST(CppScene, IsReadWithItsNodes) {
    const TempDir dir;
    const std::string path = dir.file("scene.xml");
    {
        velmar::Scene scene;
        scene.add(velmar::RenderSettings(640, 480));
        scene.add(velmar::Camera()).setPosition({1, 2, 3});
        const velmar::Mesh mesh = scene.add(makeSquare());
        const velmar::Material red = scene.add(velmar::Material("Red", {0.8, 0.1, 0.1}));
        scene.add(velmar::Model("First", mesh, {red}));
        scene.add(velmar::Model("Second", mesh, {red}));
        scene.write(path);
    }
    velmar::Scene scene = velmar::Scene::read(path);
    EXPECT_EQ(scene.nodeCount(), 6u);
    const std::vector<velmar::Model> models = scene.nodes<velmar::Model>();
    ASSERT_EQ(models.size(), 2u);
    EXPECT_EQ(models[1].name(), "Second");
    EXPECT_EQ(models[0].mesh(), models[1].mesh());
    EXPECT_EQ(models[0].mesh().vertices().size(), 12u);
    EXPECT_EQ(models[0].materials()[0].name(), "Red");
    const velmar::RenderSettings settings = scene.nodes<velmar::RenderSettings>().front();
    EXPECT_TRUE(settings.isSet("width"));
    EXPECT_FALSE(settings.isSet("halt_time"));
    velmar::Camera camera = scene.find<velmar::Camera>("Camera").value();
    EXPECT_EQ(camera.position(), (velmar::Vec3{1, 2, 3}));
    camera.setLensRadius(0.125);
    scene.find<velmar::Model>("Second").value().place({7, 8, 9});
    EXPECT_FALSE(scene.find<velmar::Model>("Third"));
    scene.write(path);
    const std::string document = readFileBytes(path);
    EXPECT_THAT(document, HasSubstr("<aperture_radius>0.125</aperture_radius>"));
    EXPECT_THAT(document, HasSubstr("<pos>7 8 9</pos>"));
}

TEST(CppNodes, GiveWhatTheyWereMadeOf) {
    velmar::Material red("Red", {0.8, 0.1, 0.1});
    EXPECT_THAT(red.colour(), ElementsAre(0.8, 0.1, 0.1));
    red.setColour({0, 0.5, 1});
    EXPECT_THAT(red.colour(), ElementsAre(0, 0.5, 1));
    const velmar::Background uniform = velmar::Background::uniform({1, 0.5, 0.25}, 2);
    EXPECT_THAT(uniform.colour(), ElementsAre(1, 0.5, 0.25));
    EXPECT_EQ(uniform.strength(), 2);
    EXPECT_THROW(static_cast<void>(uniform.direction()), velmar::BadArgumentError);
    const velmar::Background sky = velmar::Background::sunSky({0, 0.5, 1}, "original");
    EXPECT_THAT(sky.direction(), ElementsAre(0, 0.5, 1));
    EXPECT_EQ(sky.model(), "original");
    EXPECT_THROW(static_cast<void>(sky.strength()), velmar::BadArgumentError);
}

TEST(CppScene, NodesOutliveIt) {
    velmar::Camera camera;
    {
        velmar::Scene scene;
        scene.add(camera);
    }
    camera.setLensRadius(0.25);
    EXPECT_EQ(camera.lensRadius(), 0.25);
    // And may be added to another one.
    velmar::Scene other;
    other.add(camera);
    EXPECT_EQ(other.nodeCount(), 1u);
}

TEST(CppScene, KeepsNodesThatTheHostReleased) {
    const TempDir dir;
    velmar::Scene scene;
    scene.add(velmar::Model("Model", makeSquare()));
    scene.add(velmar::Camera()).setPosition({1, 2, 3});
    scene.write(dir.file("scene.xml"));
    EXPECT_THAT(readFileBytes(dir.file("scene.xml")), HasSubstr("1 2 3"));
}

TEST(CppScene, GivesARemovedNodeBack) {
    velmar::Scene scene;
    const velmar::Camera camera = scene.add(velmar::Camera());
    scene.remove(camera);
    EXPECT_EQ(scene.nodeCount(), 0u);
    EXPECT_EQ(camera.lensRadius(), 0.001);
    EXPECT_THROW(scene.remove(camera), velmar::BadArgumentError);
}

TEST(CppMesh, GivesViewsOfItsArrays) {
    velmar::Mesh mesh("Both");
    mesh.addVertices(corners);
    mesh.setTextureCoordinates(square);
    mesh.addTriangles(std::vector<std::uint32_t>{0, 1, 2}, 1, std::vector<std::uint32_t>{3, 2, 1});
    mesh.addQuads(std::vector<std::uint32_t>{0, 1, 2, 3});
    mesh.setNormals(corners);
    EXPECT_EQ(mesh.build(), 2u);
    EXPECT_EQ(mesh.counts().vertices, 4u);
    EXPECT_THAT(mesh.vertices(), testing::ElementsAreArray(corners));
    EXPECT_THAT(mesh.normals(), testing::ElementsAreArray(corners));
    EXPECT_THAT(mesh.textureCoordinates(), testing::ElementsAreArray(square));
    EXPECT_THAT(mesh.triangles(), ElementsAre(0, 1, 2, 3, 2, 1, 1));
    // One pair for each vertex, where no others are named.
    EXPECT_THAT(mesh.quads(), ElementsAre(0, 1, 2, 3, 0, 1, 2, 3, 0));
    EXPECT_THAT(mesh.bounds().max, ElementsAre(1, 1, 0));
}

TEST(CppMesh, TakesFaceRecordsOfBothKinds) {
    velmar::Mesh mesh("Records");
    mesh.addVertices(corners);
    constexpr std::uint32_t words[] = {0, 0, 1, 2, 0, 0, 0, 0, 1, 0, 1, 2, 3, 0, 0, 0, 0, 0};
    mesh.addFaces(words);
    EXPECT_EQ(mesh.counts().triangles, 1u);
    EXPECT_EQ(mesh.counts().quads, 1u);
    EXPECT_THROW(mesh.addFaces(std::span(words).first(7)), velmar::BadArgumentError);
}

TEST(CppMesh, InterleavesSetsOfTextureCoordinates) {
    velmar::Mesh mesh("Sets");
    constexpr float other[] = {5, 5, 6, 6, 7, 7, 8, 8};
    const std::span<const float> sets[] = {square, other};
    mesh.setTextureCoordinateSets(sets);
    EXPECT_EQ(mesh.counts().uv_sets, 2u);
    EXPECT_THAT(mesh.textureCoordinates().first(4), ElementsAre(0, 0, 5, 5));
}

TEST(CppMesh, NamesItsMaterials) {
    velmar::Mesh mesh("Names");
    for (const char* const name : {"Walls", "Lid", "Walls"})
        mesh.addMaterialName(name);
    EXPECT_THAT(mesh.materialNames(), ElementsAre("Walls", "Lid"));
}

TEST(CppMesh, FilesAreReadAsTheyWereWritten) {
    const TempDir dir;
    makeSquare().write(dir.file("square.vmmesh"));
    const velmar::Mesh read = velmar::Mesh::load(dir.file("square.vmmesh"));
    EXPECT_THAT(read.vertices(), testing::ElementsAreArray(corners));
    makeSquare().writeText(dir.file("square.txt"));
    EXPECT_THAT(readFileBytes(dir.file("square.txt")), HasSubstr("Square"));
}

TEST(CppNodes, SettingsAreReadBack) {
    velmar::Camera camera;
    camera.setPosition({0, -5, 0});
    camera.lookAt({0, 0, 0});
    camera.setFieldOfView(std::numbers::pi / 2);
    EXPECT_THAT(camera.forwards(), ElementsAre(0, 1, 0));
    EXPECT_NEAR(camera.lensSensorDistance(), 0.018, 1e-12);
    EXPECT_NEAR(camera.fieldOfView(), std::numbers::pi / 2, 1e-12);
    velmar::Tonemapping tonemapping(velmar::TonemappingKind::camera);
    tonemapping.setResponseFunctionPath("curve.txt");
    EXPECT_EQ(tonemapping.kind(), velmar::TonemappingKind::camera);
    EXPECT_EQ(tonemapping.responseFunctionPath(), "curve.txt");
    velmar::RenderSettings settings;
    EXPECT_FALSE(settings.metropolis());
    settings.setMetropolis(true);
    EXPECT_TRUE(settings.metropolis());
}

TEST(CppNodes, ModelIsPlaced) {
    velmar::Model model("Model", makeSquare());
    model.place({1, 2, 3}, {0, -1, 0, 1, 0, 0, 0, 0, 1});
    EXPECT_THAT(model.position(), ElementsAre(1, 2, 3));
    EXPECT_THAT(model.rotation(), ElementsAre(0, -1, 0, 1, 0, 0, 0, 0, 1));
}

TEST(CppLibrary, PassesLinesToAHandler) {
    std::string lines;
    velmar::setLineHandler([&](bool, std::string_view line) { lines += line; });
    const velmar::Model model("Model", makeSquare(), {velmar::Material("Red")});
    velmar::setLineHandler({});
    EXPECT_EQ(lines, "Num materials: 1");
    EXPECT_EQ(velmar::version(), VelmarKit_Version());
}
