#include "velmarexceptions.h"

#include "mesh/VmmeshFile.h"
#include "scene/SceneXMLWriter.h"
#include "tests/faults/OpenFiles.h"
#include "tests/faults/SampleScene.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "tests/support/Throws.h"

#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <string>
#include <sys/resource.h>

using namespace Velmar;
using namespace TestSupport;

namespace {

/// A disk with room for files of so many bytes, as long as the object lives.
class SmallDisk {
  public:
    explicit SmallDisk(rlim_t bytes) : old_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &old_limit);
        const rlimit small = {bytes, old_limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &old_limit);
        std::signal(SIGXFSZ, old_handler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

  private:
    void (*old_handler)(int);
    rlimit old_limit{};
};

const String nowhere = "/proc/velmar.xml";

} // namespace

TEST(FullDisk, IsReportedByTheVmmeshWriterWhateverDidNotFit) {
    const TempDir dir;
    const String path = toVelmarString(dir.file("a.vmmesh"));
    Mesh mesh;
    Faults::fillMesh(mesh, 2000);
    for (const bool compressed : {false, true}) {
        writeToFile(path, mesh, compressed);
        const std::string whole = readFileBytes(path.view());
        const std::size_t files = Faults::openFiles();
        for (const std::size_t room : {std::size_t{0}, std::size_t{1}, whole.size() / 2, whole.size() - 1}) {
            const SmallDisk disk(room);
            EXPECT_EQ(messageOf<VelmarException>([&] { writeToFile(path, mesh, compressed); }),
                      "Error while writing to '" + toStdString(path) + "'.")
                << room;
            EXPECT_EQ(Faults::openFiles(), files);
        }
        const SmallDisk disk(whole.size());
        writeToFile(path, mesh, compressed);
        EXPECT_EQ(readFileBytes(path.view()), whole);
    }
}

TEST(FullDisk, LosesTheEndOfADocumentWithoutAWord) {
    const TempDir dir;
    const String path = toVelmarString(dir.file("a.xml"));
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    for (int i = 0; i < 300; ++i)
        root->addChildNode(Reference<SceneNode>(new SceneNodeCamera));
    writeSceneXML(*root, path, true, nullptr);
    const std::string whole = readFileBytes(path.view());
    const std::size_t files = Faults::openFiles();
    for (const std::size_t room : {std::size_t{0}, std::size_t{1}, whole.size() / 2, whole.size() - 1}) {
        const SmallDisk disk(room);
        writeSceneXML(*root, path, true, nullptr);
        EXPECT_EQ(readFileBytes(path.view()), whole.substr(0, room)) << "what fits is there";
        EXPECT_EQ(Faults::openFiles(), files);
    }
    writeSceneXML(*root, path, true, nullptr);
    EXPECT_EQ(readFileBytes(path.view()), whole);
}

TEST(FullDisk, IsReportedWhenAMeshOfTheSceneDoesNotFit) {
    const TempDir dir;
    const auto root = Faults::sampleScene();
    SceneWriteRequest request;
    request.path = toVelmarString(dir.file("a.xml"));
    request.meshes_dir = toVelmarString(dir.file("meshes"));
    const std::size_t files = Faults::openFiles();
    {
        const SmallDisk disk(100);
        EXPECT_THAT(messageOf<VelmarException>([&] { writeSceneFile(*root, request); }),
                    testing::StartsWith("Error while writing to '" + dir.file("meshes\\mesh_")));
    }
    EXPECT_EQ(Faults::openFiles(), files);
    EXPECT_TRUE(std::filesystem::is_empty(systemPath(request.meshes_dir.view())));
    writeSceneFile(*root, request);
    EXPECT_TRUE(readFileBytes(request.path.view()).ends_with("</scene>\n"));
}

TEST(UnwritableFolder, IsNamedByTheVmmeshWriter) {
    Mesh mesh;
    Faults::fillMesh(mesh, 0);
    const std::size_t files = Faults::openFiles();
    for (const bool compressed : {false, true})
        EXPECT_EQ(messageOf<VelmarException>([&] { writeToFile(nowhere, mesh, compressed); }),
                  "Failed to open file '" + toStdString(nowhere) + "' for writing.");
    EXPECT_EQ(Faults::openFiles(), files);
}

TEST(UnwritableFolder, TakesADocumentWithoutAWordAndFailsForAMesh) {
    const Reference<SceneNodeRoot> empty(new SceneNodeRoot);
    const std::size_t files = Faults::openFiles();
    writeSceneXML(*empty, nowhere, true, nullptr);
    const auto with_mesh = Faults::sampleScene();
    EXPECT_THAT(messageOf<VelmarException>([&] { writeSceneXML(*with_mesh, nowhere, true, nullptr); }),
                testing::StartsWith("Failed to create directory '/proc/velmar_meshes': "));
    EXPECT_EQ(Faults::openFiles(), files);
}
