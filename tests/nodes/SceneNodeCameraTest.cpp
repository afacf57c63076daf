#include "scene/nodes/SceneNodeCamera.h"

#include "velmarexceptions.h"

#include "scene/XMLPrimitives.h"
#include "tests/support/Documents.h"
#include "tests/support/Golden.h"
#include "tests/support/PlainNode.h"
#include "tests/support/SpecialFloats.h"

#include <gtest/gtest.h>
#include <limits>

namespace SceneNodeCameraTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

Reference<SceneNodeCamera> camera() {
    Reference<SceneNodeCamera> node(new SceneNodeCamera);
    node->setUID(1);
    return node;
}

Reference<SceneNodeCamera> cloneOf(const SceneNodeCamera& node) {
    const Reference<SceneNode> copy = node.clone();
    return static_cast<SceneNodeCamera*>(copy.getPointer());
}

/// A shape with a path, as libraries may bring.
class FakeImage : public Destroyable<FakeImage, ApertureImage> {
  public:
    explicit FakeImage(const char* path_) { path = path_; }
    std::int32_t getType() const override { return 2; }
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override {
        writePathElement(stream, depth, "image", path, options);
    }
    Reference<ApertureShape>* cloneInto(Reference<ApertureShape>* result) const override {
        return new (static_cast<void*>(result)) Reference<ApertureShape>(new FakeImage(toStdString(path).c_str()));
    }
};

} // namespace

TEST(SceneNodeCamera, ANewCameraWritesItsDefaultsAndNoKeyFrame) {
    expectGolden(elementOf(*camera()), golden("camera/new"));
}

TEST(SceneNodeCamera, ItsTypeIsCamera) {
    EXPECT_EQ(camera()->getType(), NodeType::Camera);
}

TEST(SceneNodeCamera, WithoutAutofocusTheElementIsAbsent) {
    const auto node = camera();
    node->autofocus = false;
    expectGolden(elementOf(*node), replaced(golden("camera/new"), {{"\t<autofocus/>\n", ""}}));
}

TEST(SceneNodeCamera, AnObstacleMapOfOneCharacterIsWritten) {
    const auto node = camera();
    node->obstacle_map = "a";
    expectGolden(elementOf(*node),
                 replaced(golden("camera/new"),
                          {{"\t<aperture_shape>",
                            "\t<obstacle_map>\n\t\t<path>a</path>\n\t</obstacle_map>\n\t<aperture_shape>"}}));
}

TEST(SceneNodeCamera, ARelativeObstacleMapIsJoinedToTheScenesDirectory) {
    const auto node = camera();
    node->obstacle_map = "a.png";
    XMLWriteOptions options;
    options.scene_dir = "D:\\work";
    EXPECT_NE(elementOf(*node, 0, options).find("<path>D:\\work\\a.png</path>"), std::string::npos);
}

TEST(SceneNodeCamera, KeyFramesStandBetweenShapeAndDirections) {
    const auto node = camera();
    node->setPosition({1, 2, 3});
    node->keyframes.push_back({.pos = {4, 5, 6}, .time = 1.0});
    const std::string frames = "\t<keyframe>\n\t\t<time>0</time>\n\t\t<pos>1 2 3</pos>\n\t</keyframe>\n"
                               "\t<keyframe>\n\t\t<time>1</time>\n\t\t<pos>4 5 6</pos>\n\t</keyframe>\n";
    expectGolden(elementOf(*node), replaced(golden("camera/new"), {{"\t<up>", frames + "\t<up>"}}));
}

TEST(SceneNodeCamera, EachTypeHasItsText) {
    const auto node = camera();
    for (const auto& [type, text] : {std::pair{1u, "orthographic"}, {2u, "spherical"}, {7u, ""}, {~0u, ""}}) {
        node->camera_type = type;
        expectGolden(elementOf(*node), replaced(golden("camera/new"), {{"thin-lens-perspective", text}}));
    }
}

TEST(SceneNodeCamera, FieldsAreWrittenUnchecked) {
    const auto node = camera();
    node->aperture_radius = -std::numeric_limits<double>::infinity();
    node->up = {0, 0, 0};
    const std::string text = elementOf(*node);
    EXPECT_NE(text.find("<aperture_radius>-Inf</aperture_radius>"), std::string::npos);
    EXPECT_NE(text.find("<up>0 0 0</up>"), std::string::npos);
}

TEST(SceneNodeCamera, SettingThePositionTwiceLeavesOneKeyFrame) {
    const auto node = camera();
    node->setPosition({1, 2, 3});
    node->setPosition({4, 5, 6});
    ASSERT_EQ(node->keyframes.size(), 1u);
    EXPECT_EQ(node->keyframes[0], (KeyFrame{.pos = {4, 5, 6}}));
}

TEST(SceneNodeCamera, ThePositionOfTheFirstFrameAloneIsOverwritten) {
    const auto node = camera();
    const KeyFrame first{.pos = {1, 1, 1}, .time = 0.25, .axis = {1, 0, 0}, .angle = 2.0};
    const KeyFrame second{.pos = {2, 2, 2}, .time = 1.0};
    node->keyframes.push_back(first);
    node->keyframes.push_back(second);
    node->setPosition({7, 8, 9});
    KeyFrame expected = first;
    expected.pos = {7, 8, 9};
    EXPECT_EQ(node->keyframes[0], expected);
    EXPECT_EQ(node->keyframes[1], second);
}

TEST(SceneNodeCamera, ACloneWritesTheSameDocument) {
    const auto node = camera();
    node->setName("Close");
    node->aperture_radius = 1.5;
    node->focus_distance = 2.5;
    node->sensor_width = 3.5;
    node->lens_sensor_dist = 4.5;
    node->exposure_duration = 5.5;
    node->lens_shift_up_distance = 6.5;
    node->lens_shift_right_distance = 7.5;
    node->autofocus = false;
    node->obstacle_map = "map.png";
    node->setPosition({1, 2, 3});
    node->up = {1, 0, 0};
    node->forwards = {0, 0, -1};
    EXPECT_EQ(elementOf(*cloneOf(*node)), elementOf(*node));
}

TEST(SceneNodeCamera, ACloneHasAShapeOfItsOwn) {
    const auto node = camera();
    node->aperture_shape = new FakeImage("a.png");
    const auto copy = cloneOf(*node);
    EXPECT_NE(copy->aperture_shape, node->aperture_shape);
    EXPECT_EQ(copy->aperture_shape->getType(), 2);
}

TEST(SceneNodeCamera, ACloneOfAnOrthographicCameraIsAThinLens) {
    const auto node = camera();
    node->camera_type = SceneNodeCamera::orthographic;
    EXPECT_EQ(cloneOf(*node)->camera_type, 0u);
}

TEST(SceneNodeCamera, ItsObstacleMapIsADependencyUnlessEmpty) {
    const auto node = camera();
    TraversalState state(TraversalKind::GetDependencies, "", "");
    node->traverse(state);
    EXPECT_TRUE(state.dependencies.empty());
    node->obstacle_map = "map.png";
    node->traverse(state);
    ASSERT_EQ(state.dependencies.size(), 1u);
    EXPECT_EQ(state.dependencies[0], "map.png");
}

TEST(SceneNodeCamera, TheImageOfItsApertureIsADependencyToo) {
    const auto node = camera();
    node->obstacle_map = "map.png";
    node->aperture_shape = new FakeImage("iris.png");
    TraversalState state(TraversalKind::GetDependencies, "", "");
    node->traverse(state);
    ASSERT_EQ(state.dependencies.size(), 2u);
    EXPECT_EQ(state.dependencies[1], "iris.png");
}

TEST(SceneNodeCamera, WithoutAShapeThereIsNoImage) {
    const auto node = camera();
    node->aperture_shape = nullptr;
    TraversalState state(TraversalKind::GetDependencies, "", "");
    node->traverse(state);
    EXPECT_TRUE(state.dependencies.empty());
}

TEST(SceneNodeCamera, UpdateDependenciesReplacesBothPaths) {
    const auto node = camera();
    const Reference<FakeImage> image(new FakeImage("iris.png"));
    node->obstacle_map = "map.png";
    node->aperture_shape = image;
    TraversalState state(TraversalKind::UpdateDependencies, "", "");
    state.path_map.insert("map.png", "new\\map.png");
    state.path_map.insert("iris.png", "new\\iris.png");
    node->traverse(state);
    EXPECT_EQ(node->obstacle_map, "new\\map.png");
    EXPECT_EQ(image->path, "new\\iris.png");
}

TEST(SceneNodeCamera, UpdateDependenciesFailsForAPathWithoutANewOne) {
    const auto node = camera();
    node->obstacle_map = "map.png";
    TraversalState state(TraversalKind::UpdateDependencies, "", "");
    try {
        node->traverse(state);
        FAIL() << "nothing was thrown";
    } catch (const VelmarException& exception) {
        EXPECT_EQ(exception.getMessage(), "While updating dependencies: Missing mapping for old path 'map.png'.");
    }
    EXPECT_EQ(node->obstacle_map, "map.png");
}

TEST(SceneNodeCamera, WithoutAnObstacleMapUpdateDependenciesLooksUpNothing) {
    TraversalState state(TraversalKind::UpdateDependencies, "", "");
    EXPECT_NO_THROW(camera()->traverse(state));
}

TEST(SceneNodeCamera, BoundsEncloseTheLens) {
    const auto node = camera();
    node->aperture_radius = 0.5;
    node->setPosition({1, 2, 3});
    TraversalState state(TraversalKind::GetBounds, "", "");
    node->traverse(state);
    EXPECT_EQ(state.bounds_min[0], 0.5f);
    EXPECT_EQ(state.bounds_min[1], 1.5f);
    EXPECT_EQ(state.bounds_min[2], 2.5f);
    EXPECT_EQ(state.bounds_max[0], 1.5f);
    EXPECT_EQ(state.bounds_max[1], 2.5f);
    EXPECT_EQ(state.bounds_max[2], 3.5f);
}

TEST(SceneNodeCamera, BoundsThatEncloseTheLensStay) {
    const auto node = camera();
    node->setPosition({1, 2, 3});
    TraversalState state(TraversalKind::GetBounds, "", "");
    for (int axis = 0; axis < 3; ++axis) {
        state.bounds_min[axis] = -10.0f;
        state.bounds_max[axis] = 10.0f;
    }
    node->traverse(state);
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(state.bounds_min[axis], -10.0f);
        EXPECT_EQ(state.bounds_max[axis], 10.0f);
    }
}

TEST(SceneNodeCamera, WithoutKeyFramesBoundsStayAsTheyWere) {
    TraversalState state(TraversalKind::GetBounds, "", "");
    EXPECT_NO_THROW(camera()->traverse(state));
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(state.bounds_min[axis], infinity);
        EXPECT_EQ(state.bounds_max[axis], -infinity);
    }
}

TEST(SceneNodeCamera, AMotionThatMakesNoSenseLeavesBoundsAsTheyWere) {
    const auto node = camera();
    node->keyframes.push_back({.pos = {0, 0, 0}, .time = 0.0});
    node->keyframes.push_back({.pos = {1, 0, 0}, .time = 0.5});
    TraversalState state(TraversalKind::GetBounds, "", "");
    EXPECT_NO_THROW(node->traverse(state));
    EXPECT_EQ(state.bounds_min[0], infinity);
}

TEST(SceneNodeCamera, OffsetUIDsMovesItsUIDUnlessInvalid) {
    const auto node = camera();
    TraversalState state(TraversalKind::OffsetUIDs, "", "");
    state.uid_offset = 10;
    node->traverse(state);
    EXPECT_EQ(node->getUID(), 11u);
    node->setUID(invalid_uid);
    node->traverse(state);
    EXPECT_EQ(node->getUID(), invalid_uid);
}

TEST(SceneNodeCamera, BindingAndLoadingDoNothing) {
    const auto node = camera();
    const std::string before = elementOf(*node);
    for (const auto kind : {TraversalKind::BindReferences, TraversalKind::LoadMeshes}) {
        TraversalState state(kind, "", "");
        node->traverse(state);
    }
    EXPECT_EQ(elementOf(*node), before);
}

TEST(SceneNodeCamera, EqualityComparesOpticsObstacleMapAndDirections) {
    const auto node = camera();
    const auto differs = [&](auto change) {
        const auto other = camera();
        change(*other);
        return !node->isEqual(other.getPointer());
    };
    EXPECT_FALSE(differs([](SceneNodeCamera&) {}));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.aperture_radius = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.focus_distance = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.sensor_width = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.lens_sensor_dist = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.exposure_duration = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.lens_shift_up_distance = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.lens_shift_right_distance = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.autofocus = false; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.obstacle_map = "a"; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.up.x = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.forwards.z = 9; }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.setUID(4); }));
    EXPECT_TRUE(differs([](SceneNodeCamera& other) { other.setName("Other"); }));
}

TEST(SceneNodeCamera, ShapeMotionAndTypeTakeNoPartInEquality) {
    const auto node = camera();
    const auto other = camera();
    other->aperture_shape = new FakeImage("a.png");
    other->setPosition({1, 2, 3});
    other->camera_type = SceneNodeCamera::spherical;
    EXPECT_TRUE(node->isEqual(other.getPointer()));
}

TEST(SceneNodeCamera, AnotherKindOfNodeIsNotEqual) {
    const Reference<SceneNode> other(new TestSupport::PlainNode);
    other->setUID(1);
    other->setName("Camera");
    EXPECT_FALSE(camera()->isEqual(other.getPointer()));
}

} // namespace SceneNodeCameraTests
