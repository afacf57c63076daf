#include "scene/nodes/SceneNodeMesh.h"

#include "velmarexceptions.h"

#include "mesh/VmmeshFile.h"
#include "tests/support/Documents.h"
#include "tests/support/FileBytes.h"
#include "tests/support/Golden.h"
#include "tests/support/System.h"
#include "tests/support/TempDir.h"
#include "tests/support/Throws.h"
#include "utils/FileUtils.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

namespace SceneNodeMeshTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

Reference<Mesh> triangleMesh(float height = 0.0f) {
    Reference<Mesh> mesh(new Mesh);
    for (const Vec3f& position : {Vec3f{0, 0, height}, Vec3f{1, 0, height}, Vec3f{0, 1, height}})
        mesh->addVertex(position);
    mesh->addTriangle({0, 1, 2}, {0, 0, 0}, 0);
    mesh->build();
    return mesh;
}

Reference<SceneNodeMesh> nodeWith(const Reference<Mesh>& mesh) {
    Reference<SceneNodeMesh> node(new SceneNodeMesh);
    node->setUID(1);
    node->mesh = mesh;
    return node;
}

std::string meshFileName(const Mesh& mesh) {
    return "mesh_" + std::to_string(mesh.checksum()) + ".vmmesh";
}

XMLWriteOptions optionsFor(const std::string& scene_path) {
    XMLWriteOptions options;
    options.scene_path = toVelmarString(scene_path);
    options.scene_dir = toVelmarString(FileUtils::getDirectory(scene_path));
    return options;
}

constexpr const char* folder_variable = "VELMAR_TEST_SCENE_FOLDER";

class SceneNodeMeshTest : public testing::Test {
  protected:
    const TempDir dir;
    const XMLWriteOptions options = optionsFor(dir.file("scene.xml"));
    const Reference<Mesh> mesh = triangleMesh();
    const Reference<SceneNodeMesh> node = nodeWith(mesh);
    const std::string mesh_path = dir.file("scene_meshes") + "\\" + meshFileName(*mesh);

    std::string goldenWithPath(const char* name) const { return replaced(golden(name), {{"{path}", mesh_path}}); }
};

} // namespace

TEST_F(SceneNodeMeshTest, AFreshNodeWritesWhereItsDefaultsDifferFromThoseOfReaders) {
    EXPECT_EQ(elementOf(*node, 0, options), goldenWithPath("mesh/new"));
}

TEST_F(SceneNodeMeshTest, SettingsThatReadersTakeForGrantedAreLeftOut) {
    node->normal_smoothing = true;
    node->subdivide_pixel_threshold = 0.0;
    node->view_dependent_subdivision = false;
    EXPECT_EQ(elementOf(*node, 0, options), goldenWithPath("mesh/plain"));
}

TEST_F(SceneNodeMeshTest, AllSettingsHaveAFixedOrder) {
    node->max_num_subdivisions = -1;
    node->num_smoothings = 3;
    node->subdivide_pixel_threshold = 0.5;
    node->subdivide_curvature_threshold = 0.25;
    node->displacement_error_threshold = 0.125;
    node->subdivision_smoothing = false;
    node->scale = 2.0;
    EXPECT_EQ(elementOf(*node, 0, options), goldenWithPath("mesh/full"));
}

TEST_F(SceneNodeMeshTest, ANaNCountsAsTheDefault) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    node->normal_smoothing = true;
    node->view_dependent_subdivision = false;
    node->subdivide_pixel_threshold = nan;
    node->subdivide_curvature_threshold = nan;
    node->displacement_error_threshold = nan;
    node->scale = nan;
    EXPECT_EQ(elementOf(*node, 0, options), goldenWithPath("mesh/plain"));
}

TEST_F(SceneNodeMeshTest, TheMeshGoesCompressedIntoTheFolderBesideTheScene) {
    elementOf(*node, 0, options);
    const std::string bytes = readFileBytes(mesh_path);
    EXPECT_EQ(bytes.substr(8, 4), std::string("\1\0\0\0", 4));
    const Reference<Mesh> read(new Mesh);
    readFromFile(toVelmarString(mesh_path), *read);
    EXPECT_EQ(read->checksum(), mesh->checksum());
}

TEST_F(SceneNodeMeshTest, EqualMeshesShareOneFile) {
    const auto other = nodeWith(triangleMesh());
    const std::string first = elementOf(*node, 0, options);
    EXPECT_EQ(elementOf(*other, 0, options), first);
    const auto files = std::filesystem::directory_iterator(systemPath(dir.file("scene_meshes")));
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(SceneNodeMeshTest, DifferentMeshesGoToDifferentFiles) {
    EXPECT_NE(elementOf(*nodeWith(triangleMesh(1.0f)), 0, options), elementOf(*node, 0, options));
}

TEST_F(SceneNodeMeshTest, AFileThatIsThereIsntWrittenAgain) {
    elementOf(*node, 0, options);
    writeFileBytes(mesh_path, "left alone");
    elementOf(*node, 0, options);
    EXPECT_EQ(readFileBytes(mesh_path), "left alone");
}

TEST_F(SceneNodeMeshTest, OnlyTheMeshIsLeftInTheFolder) {
    const TempDir meshes;
    XMLWriteOptions elsewhere = options;
    elsewhere.meshes_dir = toVelmarString(meshes.path());
    elementOf(*node, 0, elsewhere);
    EXPECT_EQ(meshes.names(), std::vector<std::string>{meshFileName(*mesh)});
}

TEST_F(SceneNodeMeshTest, ThreadsThatWriteTheSameMeshAtOnceAllSucceed) {
    constexpr int num_threads = 4;
    const std::string whole = elementOf(*node, 0, options);
    for (int round = 0; round < 25; ++round) {
        std::filesystem::remove_all(systemPath(dir.file("scene_meshes")));
        // No std::barrier: where the system has no futex, GCC's can miss that all have arrived and wait for ever.
        std::atomic<int> missing = num_threads;
        std::vector<std::thread> threads;
        for (int i = 0; i < num_threads; ++i)
            threads.emplace_back([&] {
                const auto own = nodeWith(triangleMesh());
                for (--missing; missing > 0;)
                    std::this_thread::yield();
                EXPECT_EQ(messageOf<VelmarException>([&] { EXPECT_EQ(elementOf(*own, 0, options), whole); }),
                          "(nothing thrown)");
            });
        for (std::thread& thread : threads)
            thread.join();
    }
}

TEST_F(SceneNodeMeshTest, ProcessesThatWriteTheSameMeshAtOnceAllSucceed) {
    const std::string whole = elementOf(*node, 0, options);
    const std::string bytes = readFileBytes(mesh_path);
    const std::string folder = systemPath(dir.path()).string();
    const ScopedVariable variable(folder_variable, folder.c_str());
    const std::string command = "\"" + testing::internal::GetArgvs().front() +
                                "\" --gtest_also_run_disabled_tests --gtest_brief=1"
                                " --gtest_filter=SceneNodeMeshProcess.DISABLED_WritesTheMeshOfItsParent";
    for (int round = 0; round < 2; ++round) {
        std::filesystem::remove_all(systemPath(dir.file("scene_meshes")));
        std::vector<std::thread> processes;
        for (int i = 0; i < 3; ++i)
            processes.emplace_back([&] { EXPECT_EQ(std::system(command.c_str()), 0); });
        for (std::thread& process : processes)
            process.join();
        EXPECT_EQ(readFileBytes(mesh_path), bytes);
    }
}

/// What each process of the test above runs.
TEST(SceneNodeMeshProcess, DISABLED_WritesTheMeshOfItsParent) {
    const std::string folder = std::getenv(folder_variable);
    elementOf(*nodeWith(triangleMesh()), 0, optionsFor(folder + "\\scene.xml"));
}

TEST_F(SceneNodeMeshTest, ADeletedFileIsWrittenAgain) {
    elementOf(*node, 0, options);
    std::filesystem::remove(systemPath(mesh_path));
    elementOf(*node, 0, options);
    EXPECT_TRUE(std::filesystem::exists(systemPath(mesh_path)));
}

TEST_F(SceneNodeMeshTest, AMeshesDirectoryTakesThePlaceOfTheFolder) {
    XMLWriteOptions elsewhere = options;
    elsewhere.meshes_dir = toVelmarString(dir.file("shared"));
    elementOf(*node, 0, elsewhere);
    EXPECT_TRUE(std::filesystem::exists(systemPath(dir.file("shared") + "\\" + meshFileName(*mesh))));
    EXPECT_FALSE(std::filesystem::exists(systemPath(dir.file("scene_meshes"))));
}

TEST_F(SceneNodeMeshTest, AFolderThatCantBeMadeIsReportedWithTheSystemsWords) {
    try {
        elementOf(*node, 0, optionsFor(dir.file("missing\\scene.xml")));
        FAIL() << "nothing was thrown";
    } catch (const VelmarException& exception) {
        const std::string message = toStdString(exception.getMessage());
        EXPECT_EQ(message.find("Failed to create directory '" + dir.file("missing\\scene_meshes") + "': "), 0u)
            << message;
        EXPECT_NE(message.find("(code "), std::string::npos) << message;
    }
}

TEST_F(SceneNodeMeshTest, AnInconsistentMeshIsReported) {
    node->mesh->normals.push_back({0, 0, 1});
    try {
        elementOf(*node, 0, options);
        FAIL() << "nothing was thrown";
    } catch (const VelmarException& exception) {
        EXPECT_EQ(exception.getMessage(), String("Must be zero normals, or normals.size() must equal verts.size()"));
    }
}

TEST_F(SceneNodeMeshTest, ItsOwnPathIsNeitherReadNorChangedByWriting) {
    node->path = "kept.vmmesh";
    EXPECT_EQ(elementOf(*node, 0, options).find("kept"), std::string::npos);
    EXPECT_EQ(node->path, String("kept.vmmesh"));
}

TEST(MeshFilePath, IsFormedFromTheScenesPath) {
    const auto mesh = triangleMesh();
    const auto node = nodeWith(mesh);
    const std::string file = "\\" + meshFileName(*mesh);
    EXPECT_EQ(node->getMeshFilePath("D:\\work\\scene.xml", "D:\\work", ""), "D:\\work\\scene_meshes" + file);
    EXPECT_EQ(node->getMeshFilePath("scene.xml", "", ""), "scene_meshes" + file);
    EXPECT_EQ(node->getMeshFilePath("scene", "", ""), "scene_meshes" + file);
}

TEST(MeshFilePath, OfARelativeSceneInADirectoryHoldsTheDirectoryTwice) {
    const auto mesh = triangleMesh();
    EXPECT_EQ(nodeWith(mesh)->getMeshFilePath("sub\\scene.xml", "sub", ""),
              "sub\\sub\\scene_meshes\\" + meshFileName(*mesh));
}

TEST(MeshFilePath, CutsTheExtensionOfTheWholePath) {
    const auto mesh = triangleMesh();
    EXPECT_EQ(nodeWith(mesh)->getMeshFilePath("v1.2\\scene", "", ""), "v1_meshes\\" + meshFileName(*mesh));
}

TEST_F(SceneNodeMeshTest, ThePathOfARelativeSceneIsJoinedOnceMoreInTheDocument) {
    const auto working_directory = std::filesystem::current_path();
    std::filesystem::current_path(systemPath(dir.path()));
    std::filesystem::create_directories(systemPath(dir.file("sub\\sub")));
    const std::string element = elementOf(*node, 0, optionsFor("sub\\scene.xml"));
    std::filesystem::current_path(working_directory);
    EXPECT_NE(element.find("<path>sub\\sub\\sub\\scene_meshes\\" + meshFileName(*mesh) + "</path>"), std::string::npos)
        << element;
    EXPECT_TRUE(std::filesystem::exists(systemPath(dir.file("sub\\sub\\scene_meshes\\" + meshFileName(*mesh)))));
}

TEST_F(SceneNodeMeshTest, IsntCloned) {
    EXPECT_EQ(node->clone().getPointer(), nullptr);
}

TEST_F(SceneNodeMeshTest, ReportsItsPathOrTheFileThatItWouldWrite) {
    node->path = "model.obj";
    TraversalState state(TraversalKind::GetDependencies, options.scene_path, options.scene_dir);
    node->traverse(state);
    state.mesh_dependencies_as_paths = false;
    node->traverse(state);
    ASSERT_EQ(state.dependencies.size(), 2u);
    EXPECT_EQ(state.dependencies[0], String("model.obj"));
    EXPECT_EQ(state.dependencies[1], toVelmarString(mesh_path));
    EXPECT_FALSE(std::filesystem::exists(systemPath(mesh_path)));
}

TEST_F(SceneNodeMeshTest, ItsPathIsReplacedThroughTheMap) {
    node->path = "old.obj";
    TraversalState state(TraversalKind::UpdateDependencies, "", "");
    state.path_map.insert("old.obj", "new.obj");
    node->traverse(state);
    EXPECT_EQ(node->path, String("new.obj"));
    EXPECT_THROW(node->traverse(state), VelmarException);
}

TEST_F(SceneNodeMeshTest, OffsetsItsUid) {
    TraversalState state(TraversalKind::OffsetUIDs, "", "");
    state.uid_offset = 5;
    node->traverse(state);
    EXPECT_EQ(node->getUID(), 6u);
}

namespace {

class MeshNodeLoading : public testing::Test {
  protected:
    MeshNodeLoading() { writeFileBytes(dir.file("a.obj"), "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"); }

    Reference<SceneNodeMesh> load(const char* path, double scale = 1.0) {
        Reference<SceneNodeMesh> node(new SceneNodeMesh);
        node->path = path;
        node->scale = scale;
        node->traverse(state);
        return node;
    }

    std::string failureOf(const Reference<SceneNodeMesh>& node) {
        try {
            node->traverse(state);
        } catch (const VelmarException& exception) {
            return toStdString(exception.getMessage());
        }
        return "";
    }

    const TempDir dir;
    TraversalState state{TraversalKind::LoadMeshes, "", toVelmarString(dir.path())};
};

} // namespace

TEST_F(MeshNodeLoading, ReadsTheFileBesideTheSceneWithTheNodesScale) {
    const auto node = load("a.obj", 2.0);
    ASSERT_TRUE(node->mesh);
    ASSERT_EQ(node->mesh->verts.size(), 3u);
    EXPECT_EQ(node->mesh->verts[1].x, 2.0f);
}

TEST_F(MeshNodeLoading, NodesOfOnePathAndScaleShareTheirMesh) {
    const auto first = load("a.obj");
    writeFileBytes(dir.file("a.obj"), "no longer read");
    const auto second = load("a.obj");
    EXPECT_EQ(second->mesh, first->mesh);
    // Both nodes and the cache hold it.
    EXPECT_EQ(first->mesh->getRefCount(), 3);
}

TEST_F(MeshNodeLoading, AnotherScaleIsAnotherMesh) {
    const auto first = load("a.obj");
    const auto second = load("a.obj", 3.0);
    EXPECT_NE(second->mesh, first->mesh);
    EXPECT_EQ(second->mesh->verts[1].x, 3.0f);
}

TEST_F(MeshNodeLoading, ANodeWithAMeshIsLeftAlone) {
    const auto node = nodeWith(triangleMesh());
    const Reference<Mesh> mesh = node->mesh;
    node->path = "missing.obj";
    node->traverse(state);
    EXPECT_EQ(node->mesh, mesh);
    EXPECT_EQ(state.mesh_cache, nullptr);
}

TEST_F(MeshNodeLoading, AFailedFileIsReportedOnceAndNotTriedAgain) {
    Reference<SceneNodeMesh> node(new SceneNodeMesh);
    node->path = "a.xyz";
    EXPECT_EQ(failureOf(node), "Unsupported mesh format 'xyz'.");
    EXPECT_TRUE(node->mesh);
    EXPECT_EQ(failureOf(node), "");
}

TEST_F(SceneNodeMeshTest, DeletedNodeIsDestroyedThoughItIsHeld) {
    auto* const held = new SceneNodeMesh;
    held->mesh = mesh;
    held->increment();
    ASSERT_EQ(held->getRefCount(), 1);
    const std::int64_t holders_of_mesh = mesh->getRefCount();
    held->destroy(1);
    EXPECT_EQ(mesh->getRefCount(), holders_of_mesh - 1);
}

} // namespace SceneNodeMeshTests
