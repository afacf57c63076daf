#include "mesh/VmmeshFile.h"
#include "scene/SceneXMLWriter.h"
#include "tests/faults/EachAllocation.h"
#include "tests/faults/SampleScene.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

using namespace Velmar;
using namespace TestSupport;
using Faults::failEachAllocation;

namespace {

class FailingWriter : public testing::Test {
  protected:
    void removeAll() const {
        for (const auto& entry : std::filesystem::directory_iterator(systemPath(dir.path())))
            std::filesystem::remove_all(entry.path());
    }

    std::string allFiles() const {
        std::string result;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(systemPath(dir.path()))) {
            if (!entry.is_regular_file()) continue;
            const std::u8string path = entry.path().u8string();
            result += readFileBytes(std::string(path.begin(), path.end()));
        }
        return result;
    }

    /// Whether a mesh file is there that isn't the whole of one, or a file under a temporary name.
    bool hasPartOfAMesh(std::uintmax_t whole_size) const {
        const std::filesystem::path meshes = systemPath(dir.file("a scene with a rather long name_meshes"));
        if (!std::filesystem::exists(meshes)) return false;
        for (const auto& entry : std::filesystem::directory_iterator(meshes))
            if (entry.path().extension() != ".vmmesh" || entry.file_size() != whole_size) return true;
        return false;
    }

    const TempDir dir;
    const String document = toVelmarString(dir.file("a scene with a rather long name.xml"));
    const String mesh_file = toVelmarString(dir.file("a mesh with a rather long name.vmmesh"));
};

} // namespace

TEST_F(FailingWriter, OfVmmeshFilesTellsOfEveryFailedAllocation) {
    Mesh mesh;
    Faults::fillMesh(mesh, 1000);
    for (const bool compressed : {false, true})
        failEachAllocation(
            {.act = [&] { writeToFile(mesh_file, mesh, compressed); },
             .tellResult = [&] { return allFiles(); },
             .failures = {Faults::bad_allocation, "Exception: Memory alloc failure while writing to buffer."},
             .cleanUp = [&] { removeAll(); }});
}

TEST_F(FailingWriter, OfSceneDocumentsTellsOfEveryFailedAllocation) {
    const auto root = Faults::sampleScene();
    writeSceneXML(*root, document, true, nullptr);
    const auto mesh =
        *std::filesystem::directory_iterator(systemPath(dir.file("a scene with a rather long name_meshes")));
    const std::uintmax_t whole_size = mesh.file_size();
    removeAll();
    failEachAllocation({.act = [&] { writeSceneXML(*root, document, true, nullptr); },
                        .tellResult = [&] { return allFiles(); },
                        .failures = {Faults::bad_allocation, "VelmarException: An unhandled error has occured.",
                                     "VelmarException: Memory alloc failure while writing to buffer."},
                        .cleanUp =
                            [&] {
                                EXPECT_FALSE(hasPartOfAMesh(whole_size));
                                removeAll();
                            }});
}

TEST_F(FailingWriter, OfVmmeshFilesNamesAPathThatIsAFolder) {
    std::filesystem::create_directory(systemPath(mesh_file.view()));
    Mesh mesh;
    Faults::fillMesh(mesh, 0);
    const std::size_t files = Faults::openFiles();
    for (const bool compressed : {false, true})
        EXPECT_EQ(messageOf<VelmarException>([&] { writeToFile(mesh_file, mesh, compressed); }),
                  "Failed to open file '" + toStdString(mesh_file) + "' for writing.");
    EXPECT_EQ(Faults::openFiles(), files);
}

TEST_F(FailingWriter, OfSceneDocumentsIsSilentAboutAPathThatIsAFolder) {
    std::filesystem::create_directory(systemPath(document.view()));
    const auto root = Faults::sampleScene();
    const std::size_t files = Faults::openFiles();
    writeSceneXML(*root, document, true, nullptr);
    EXPECT_EQ(Faults::openFiles(), files);
    EXPECT_TRUE(std::filesystem::is_empty(systemPath(document.view())));
}

TEST_F(FailingWriter, OfSceneDocumentsNamesAMeshFolderThatCantBeMade) {
    const auto root = Faults::sampleScene();
    writeFileBytes(dir.file("taken"), "a file");
    SceneWriteRequest request;
    request.path = document;
    request.meshes_dir = toVelmarString(dir.file("taken\\meshes"));
    const std::size_t files = Faults::openFiles();
    EXPECT_THAT(messageOf<VelmarException>([&] { writeSceneFile(*root, request); }),
                testing::StartsWith("Failed to create directory '" + dir.file("taken\\meshes") + "': "));
    EXPECT_EQ(Faults::openFiles(), files);
}

TEST_F(FailingWriter, OfSceneDocumentsNamesAMeshFileThatCantBeOpened) {
    const auto root = Faults::sampleScene();
    writeFileBytes(dir.file("taken"), "a file");
    SceneWriteRequest request;
    request.path = document;
    request.meshes_dir = toVelmarString(dir.file("taken"));
    const std::size_t files = Faults::openFiles();
    EXPECT_THAT(messageOf<VelmarException>([&] { writeSceneFile(*root, request); }),
                testing::AllOf(testing::StartsWith("Failed to open file '" + dir.file("taken\\mesh_")),
                               testing::EndsWith(".vmmesh' for writing.")));
    EXPECT_EQ(Faults::openFiles(), files);
}
