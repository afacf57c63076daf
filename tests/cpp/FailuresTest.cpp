// Each kind of failure, as a host in C++ hears of it.

#include "velmar.hpp"

#include "tests/support/FileBytes.h"
#include "tests/support/LibraryFolder.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using namespace TestSupport;
using testing::HasSubstr;

namespace {

/// Expects an exception of exactly this class, with a text that contains `text`.
template <class Expected, class Call>
void expectError(const char* text, Call call) {
    try {
        call();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const velmar::Error& error) {
        EXPECT_TRUE(typeid(error) == typeid(Expected)) << typeid(error).name() << ": " << error.message();
        EXPECT_THAT(error.message(), HasSubstr(text));
        EXPECT_EQ(error.message(), error.what());
        EXPECT_GT(error.status(), VELMARKIT_SUCCESS);
    }
}

} // namespace

TEST(CppFailures, MissingFile) {
    expectError<velmar::FileError>("nowhere.obj", [] { velmar::Mesh::load("nowhere.obj"); });
    velmar::Scene scene;
    expectError<velmar::FileError>("nowhere.ply", [&] { scene.loadModel("nowhere.ply"); });
    EXPECT_EQ(scene.nodeCount(), 0u);
}

TEST(CppFailures, FolderThatIsMissing) {
    const TempDir dir;
    velmar::Scene scene;
    expectError<velmar::FileError>("Failed to open file", [&] { scene.write(dir.file("missing\\scene.xml")); });
    const velmar::Mesh mesh("Mesh");
    expectError<velmar::FileError>("Failed to open file", [&] { mesh.write(dir.file("missing\\mesh.vmmesh")); });
}

TEST(CppFailures, MeshFileThatIsDamaged) {
    const TempDir dir;
    writeFileBytes(dir.file("bad.vmmesh"), "not a mesh");
    expectError<velmar::MeshError>("", [&] { velmar::Mesh::load(dir.file("bad.vmmesh")); });
    expectError<velmar::MeshError>("Unsupported mesh format", [&] { velmar::Mesh::load("image.png"); });
}

TEST(CppFailures, MeshThatIsNotConsistent) {
    velmar::Mesh mesh("Mesh");
    constexpr float origin[] = {0, 0, 0};
    mesh.addVertices(origin);
    mesh.setNormals(origin);
    mesh.addVertices(origin);
    expectError<velmar::MeshError>("normals.size() must equal verts.size()", [&] { mesh.build(); });
}

TEST(CppFailures, NameThatIsNotUTF8) {
    expectError<velmar::BadArgumentError>("isn't UTF-8", [] { velmar::Mesh("\xff"); });
    expectError<velmar::BadArgumentError>("zero byte", [] { velmar::Mesh(std::string("a\0b", 3)); });
}

TEST(CppFailures, DocumentWithAFault) {
    const TempDir dir;
    const std::string path = dir.file("scene.xml");
    writeFileBytes(path, "<scene>\n<camera><name>c</name></camera></scene>");
    try {
        velmar::Scene::read(path);
        FAIL() << "nothing was thrown";
    } catch (const velmar::DocumentError& error) {
        EXPECT_EQ(error.message(), path + ":2:1: error: 'camera' has no element 'uid'");
    }
}

TEST(CppFailures, DocumentThatCannotHoldAName) {
    const TempDir dir;
    velmar::Scene scene;
    scene.add(velmar::Mesh("Mesh"));
    VelmarMesh* const mesh = VelmarMesh_Create("bad \xff name");
    VelmarScene_AddMesh(scene.handle(), mesh);
    expectError<velmar::DocumentError>("isn't UTF-8", [&] { scene.write(dir.file("scene.xml")); });
}

TEST(CppFailures, BadArguments) {
    velmar::Camera camera;
    expectError<velmar::BadArgumentError>("between 0 and pi", [&] { camera.setFieldOfView(0); });
    expectError<velmar::BadArgumentError>("no direction", [&] { camera.lookAt({0, 0, 0}); });
    velmar::Mesh mesh("Mesh");
    expectError<velmar::BadArgumentError>("multiple of 3", [&] { mesh.addVertices(std::vector<float>{1, 2}); });
    expectError<velmar::BadArgumentError>("as many indices", [&] {
        mesh.addTriangles(std::vector<std::uint32_t>{0, 1, 2}, 0, std::vector<std::uint32_t>{0});
    });
}

TEST(CppFailures, ClosedObjects) {
    velmar::Camera camera;
    camera.close();
    camera.close();
    expectError<velmar::ClosedError>("was closed", [&] { camera.setLensRadius(1); });
    velmar::Scene scene;
    velmar::Scene moved = std::move(scene);
    expectError<velmar::ClosedError>("was closed", [&] { scene.addSunSky(); });
    expectError<velmar::ClosedError>("was closed", [&] { moved.add(camera); });
}

TEST(CppFailures, NoRendererLibrary) {
    const LibraryFolder folder;
    const velmar::Scene scene;
    expectError<velmar::RendererError>("Failed to load Velmar SDK DLL", [&] { velmar::Renderer renderer(scene); });
}

TEST(CppFailures, RendererLibraryThatThrows) {
    for (const auto& [variant, text] :
         {std::pair("throws", "not today"), std::pair("throws_standard", "no room"),
          std::pair("throws_on_create", "thrown by the library"), std::pair("create_nothing", "failed to create"),
          std::pair("create_interface", "failed to create")}) {
        const LibraryFolder folder;
        folder.install(variant);
        SCOPED_TRACE(variant);
        velmar::Scene scene;
        expectError<velmar::RendererError>(text, [&] { velmar::Renderer renderer(scene); });
        // The host still has it.
        scene.addSunSky();
    }
}

TEST(CppFailures, SceneThatTheRendererCannotTake) {
    const LibraryFolder folder;
    folder.install("good");
    velmar::Scene scene;
    expectError<velmar::RendererError>("no render settings node found", [&] { velmar::Renderer renderer(scene); });
    EXPECT_EQ(scene.nodeCount(), 0u);
}

TEST(CppRenderer, RendersAndReleasesTheScene) {
    const LibraryFolder folder;
    folder.install("good");
    velmar::Scene scene;
    velmar::RenderSettings settings = scene.add(velmar::RenderSettings(32, 16));
    settings.setSuperSampleFactor(1);
    scene.add(velmar::Camera()).setPosition({0, -5, 0});
    {
        velmar::Renderer renderer(scene);
        renderer.start();
        renderer.pause();
        renderer.resume();
    }
    EXPECT_THAT(folder.record(), testing::IsSupersetOf({"interface started", "interface stopped", "unloaded"}));
    EXPECT_EQ(scene.nodeCount(), 2u);
}
