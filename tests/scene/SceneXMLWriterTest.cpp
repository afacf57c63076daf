#include "scene/SceneXMLWriter.h"

#include "velmarexceptions.h"

#include "tests/support/FileBytes.h"
#include "tests/support/PlainNode.h"
#include "tests/support/TempDir.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

namespace SceneXMLWriterTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

class SceneXMLWriterTest : public testing::Test {
  protected:
    const Reference<SceneNodeRoot> root{new SceneNodeRoot};
    const TempDir dir;
    const String path{toVelmarString(dir.file("scene.xml"))};

    void addPlainNodes(int count) {
        for (int i = 0; i < count; ++i)
            root->addChildNode(new PlainNode);
    }

    std::string written() {
        writeSceneXML(*root, path, true, nullptr);
        return readFileBytes(path.view());
    }
};

/// Records the options that reach it, and fails on demand.
class ProbeNode : public Destroyable<ProbeNode, PlainSceneNode> {
  public:
    ProbeNode() : Destroyable(NodeType::Metadata) {}
    ~ProbeNode() = default;
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override {
        return new (static_cast<void*>(result)) Reference<SceneNode>();
    }
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override {
        writeOpenTag(stream, depth, "probe");
        seen = options;
        if (failure) failure();
        writeCloseTag(stream, depth, "probe");
    }

    mutable XMLWriteOptions seen;
    void (*failure)() = nullptr;
};

class RecordingListener : public ProgressListener {
  public:
    void* destroy(unsigned) override { return this; }
    void reportProgress(float fraction) override { fractions.push_back(fraction); }
    std::vector<float> fractions;
};

} // namespace

TEST_F(SceneXMLWriterTest, AnEmptySceneIsTheFrameAlone) {
    EXPECT_EQ(written(), withSystemLineEnds("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<scene>\n</scene>\n"));
}

TEST_F(SceneXMLWriterTest, OneEmptyLineStandsBetweenTopLevelElementsOnly) {
    addPlainNodes(1);
    EXPECT_EQ(written(), withSystemLineEnds("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                                            "<scene>\n"
                                            "\t<plain>\n\t\t<uid>1</uid>\n\t\t<name></name>\n\t</plain>\n"
                                            "</scene>\n"));
    addPlainNodes(1);
    EXPECT_EQ(written(), withSystemLineEnds("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                                            "<scene>\n"
                                            "\t<plain>\n\t\t<uid>1</uid>\n\t\t<name></name>\n\t</plain>\n"
                                            "\n"
                                            "\t<plain>\n\t\t<uid>2</uid>\n\t\t<name></name>\n\t</plain>\n"
                                            "</scene>\n"));
}

TEST_F(SceneXMLWriterTest, ALineFeedInANameComesOutAsTextModeMakesIt) {
    addPlainNodes(1);
    root->children()[0]->setName("a\nb");
    EXPECT_EQ(written(), withSystemLineEnds("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                                            "<scene>\n"
                                            "\t<plain>\n\t\t<uid>1</uid>\n\t\t<name>a\nb</name>\n\t</plain>\n"
                                            "</scene>\n"));
}

TEST_F(SceneXMLWriterTest, ASecondWriteReplacesTheFileWithTheSameText) {
    addPlainNodes(3);
    const std::string first = written();
    writeFileBytes(path.view(), std::string(100000, 'x'));
    EXPECT_EQ(written(), first);
}

TEST_F(SceneXMLWriterTest, NodesSeeWhereTheSceneGoes) {
    auto* const probe = new ProbeNode;
    root->addChildNode(probe);
    SceneWriteRequest request;
    request.path = path;
    request.meshes_dir = "elsewhere";
    request.resolve_relative_paths = false;
    writeSceneFile(*root, request);
    EXPECT_EQ(probe->seen.scene_path, path);
    EXPECT_EQ(probe->seen.scene_dir, toVelmarString(dir.path()));
    EXPECT_EQ(probe->seen.meshes_dir, String("elsewhere"));
    EXPECT_FALSE(probe->seen.resolve_relative_paths);
    EXPECT_TRUE(probe->seen.write_material_uids);
    EXPECT_EQ(probe->seen.write_mode, 0u);
    EXPECT_EQ(probe->seen.progress_listener, nullptr);
}

TEST_F(SceneXMLWriterTest, TheLastSeparatorOfEitherKindEndsTheDirectory) {
    auto* const probe = new ProbeNode;
    root->addChildNode(probe);
    // No folder of these names: nothing is written, and the nodes are asked all the same.
    writeSceneXML(*root, "no such/folder\\scene.xml", true, nullptr);
    EXPECT_EQ(probe->seen.scene_dir, String("no such/folder"));
    writeSceneXML(*root, "no such\\folder/scene.xml", true, nullptr);
    EXPECT_EQ(probe->seen.scene_dir, String("no such\\folder"));
}

TEST_F(SceneXMLWriterTest, APathWithoutADirectoryGivesAnEmptyOne) {
    auto* const probe = new ProbeNode;
    root->addChildNode(probe);
    const auto working_directory = std::filesystem::current_path();
    std::filesystem::current_path(systemPath(dir.path()));
    writeSceneXML(*root, "scene.xml", true, nullptr);
    std::filesystem::current_path(working_directory);
    EXPECT_TRUE(probe->seen.scene_dir.empty());
    EXPECT_TRUE(std::filesystem::exists(systemPath(path.view())));
}

TEST_F(SceneXMLWriterTest, APathThatCantBeOpenedReturnsWithoutAFile) {
    addPlainNodes(2);
    writeSceneXML(*root, toVelmarString(dir.file("missing\\scene.xml")), true, nullptr);
    EXPECT_FALSE(std::filesystem::exists(systemPath(dir.file("missing"))));
}

TEST_F(SceneXMLWriterTest, AFailedNodeLeavesItsMessageAndTheTextSoFar) {
    auto* const probe = new ProbeNode;
    probe->failure = [] { throw VelmarException("the node's own words"); };
    root->addChildNode(probe);
    try {
        writeSceneXML(*root, path, true, nullptr);
        FAIL() << "nothing was thrown";
    } catch (const VelmarException& exception) {
        EXPECT_EQ(exception.getMessage(), String("the node's own words"));
    }
    EXPECT_EQ(readFileBytes(path.view()),
              withSystemLineEnds("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<scene>\n\t<probe>\n"));
}

TEST_F(SceneXMLWriterTest, AnyOtherFailureIsToldInGeneralWords) {
    auto* const probe = new ProbeNode;
    root->addChildNode(probe);
    for (void (*failure)() :
         {+[] { throw std::runtime_error("x"); }, +[] { throw Exception("x"); }, +[] { throw 1; }}) {
        probe->failure = failure;
        try {
            writeSceneXML(*root, path, true, nullptr);
            FAIL() << "nothing was thrown";
        } catch (const VelmarException& exception) {
            EXPECT_EQ(exception.getMessage(), String("An unhandled error has occured."));
        }
    }
}

TEST_F(SceneXMLWriterTest, ProgressRisesInStepsAndReachesNeitherEnd) {
    addPlainNodes(1000);
    RecordingListener listener;
    writeSceneXML(*root, path, true, &listener);
    ASSERT_FALSE(listener.fractions.empty());
    EXPECT_LT(listener.fractions.size(), 101u);
    EXPECT_GT(listener.fractions.front(), 0.01f);
    EXPECT_LT(listener.fractions.back(), 1.0f);
    for (std::size_t i = 1; i < listener.fractions.size(); ++i)
        EXPECT_GT(listener.fractions[i] - listener.fractions[i - 1], 0.01f);
}

TEST_F(SceneXMLWriterTest, OneNodeIsTooLittleToReport) {
    addPlainNodes(1);
    RecordingListener listener;
    writeSceneXML(*root, path, true, &listener);
    EXPECT_TRUE(listener.fractions.empty());
}

} // namespace SceneXMLWriterTests
