#include "velmarexceptions.h"

#include "scene/nodes/SceneNodeModel.h"
#include "tests/nodes/ModelSupport.h"
#include "tests/support/FakeParams.h"
#include "tests/support/PlainNode.h"
#include "tests/support/SpecialFloats.h"
#include "tests/support/Throws.h"

#include <Eigen/Geometry>
#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace SceneNodeModelBoundsTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

using Bounds = std::array<float, 6>;

constexpr Bounds at_origin = {0, 0, 0, 0, 0, 0};

/// What the model adds to empty bounds: min x, y, z, max x, y, z.
Bounds boundsOf(SceneNodeModel& node) {
    TraversalState state(TraversalKind::GetBounds, "", "");
    node.traverse(state);
    return {state.bounds_min[0], state.bounds_min[1], state.bounds_min[2],
            state.bounds_max[0], state.bounds_max[1], state.bounds_max[2]};
}

/// A model of the box from (0, 0, 0) to (1, 2, 3).
Reference<SceneNodeModel> boxModel() {
    const auto node = model();
    node->setGeometry(meshNode());
    return node;
}

void expectNear(const Bounds& actual, const Bounds& expected, float tolerance = 1e-5f) {
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
}

/// A displaced quad: it begins with its two extents.
class FakeQuad : public Destroyable<FakeQuad, PlainSceneNode> {
  public:
    FakeQuad(float u_, float v_) : Destroyable(NodeType::DisplacedQuad), u(u_), v(v_) {}

    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override {
        return new (static_cast<void*>(result)) Reference<SceneNode>();
    }
    void writeXML(OStream&, std::uint32_t, const XMLWriteOptions&) const override {}

    float u;
    float v;
};
static_assert(offsetof(FakeQuad, u) == 96 && offsetof(FakeQuad, v) == 100);

} // namespace

TEST(SceneNodeModelBounds, AreThoseOfTheMeshAtTheOrigin) {
    EXPECT_EQ(boundsOf(*boxModel()), (Bounds{0, 0, 0, 1, 2, 3}));
}

TEST(SceneNodeModelBounds, FollowPositionAndScale) {
    const auto node = boxModel();
    node->scale = 2;
    node->keyframes[0].pos = {10, 20, 30};
    EXPECT_EQ(boundsOf(*node), (Bounds{10, 20, 30, 12, 24, 36}));
}

TEST(SceneNodeModelBounds, FollowTheRotationRowByRow) {
    const auto node = boxModel();
    const double quarter_turn[9] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
    node->rotation = new MatrixRotation(quarter_turn);
    EXPECT_EQ(boundsOf(*node), (Bounds{-2, 0, 0, 0, 1, 3}));
}

TEST(SceneNodeModelBounds, FollowAnAxisAndAnAngle) {
    const auto node = boxModel();
    const Reference<FakeAxisAngle> rotation(new FakeAxisAngle);
    rotation->axis[2] = 5;
    rotation->angle = std::numbers::pi / 2;
    node->rotation = rotation.getPointer();
    expectNear(boundsOf(*node), {-2, 0, 0, 0, 1, 3});
}

TEST(SceneNodeModelBounds, AgreeWithAReferenceForAnyAxisAndAngle) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (int i = 0; i < 1000; ++i) {
        const Eigen::Vector3d axis =
            Eigen::Vector3d(unit(random), unit(random), unit(random)) + Eigen::Vector3d(0, 0, 2);
        const double angle = 4 * unit(random);
        const auto node = boxModel();
        const Reference<FakeAxisAngle> rotation(new FakeAxisAngle);
        std::copy_n(axis.data(), 3, rotation->axis);
        rotation->angle = angle;
        node->rotation = rotation.getPointer();

        const Eigen::AlignedBox3d mesh_box(Eigen::Vector3d::Zero(), Eigen::Vector3d(1, 2, 3));
        const Eigen::Matrix3d matrix = Eigen::AngleAxisd(angle, axis.normalized()).toRotationMatrix();
        Eigen::AlignedBox3f expected;
        for (int corner = 0; corner < 8; ++corner)
            expected.extend(
                (matrix * mesh_box.corner(static_cast<Eigen::AlignedBox3d::CornerType>(corner))).cast<float>());
        expectNear(boundsOf(*node), {expected.min().x(), expected.min().y(), expected.min().z(), expected.max().x(),
                                     expected.max().y(), expected.max().z()});
    }
}

TEST(SceneNodeModelBounds, EncloseAMotion) {
    const auto node = boxModel();
    KeyFrame end;
    end.time = 1;
    end.pos = {10, 0, 0};
    node->keyframes.push_back(end);
    const Bounds bounds = boundsOf(*node);
    expectNear(bounds, {0, 0, 0, 11, 2, 3}, 0.02f);
    EXPECT_LT(bounds[0], 0.0f);
    EXPECT_GT(bounds[3], 11.0f);
}

TEST(SceneNodeModelBounds, WidenWhatThePassHas) {
    TraversalState state(TraversalKind::GetBounds, "", "");
    for (const double x : {5.0, -5.0}) {
        const auto node = boxModel();
        node->keyframes[0].pos.x = x;
        node->traverse(state);
    }
    EXPECT_EQ(state.bounds_min[0], -5.0f);
    EXPECT_EQ(state.bounds_max[0], 6.0f);
}

TEST(SceneNodeModelBounds, MeshWithAnEmptyBoxCountsAsThePointAtTheOrigin) {
    const auto node = boxModel();
    const Reference<SceneNodeMesh> empty(new SceneNodeMesh);
    empty->mesh = new Mesh;
    node->setGeometry(empty);
    node->keyframes[0].pos = {10, 20, 30};
    EXPECT_EQ(boundsOf(*node), at_origin);
    empty->mesh = nullptr;
    EXPECT_EQ(boundsOf(*node), at_origin);
}

TEST(SceneNodeModelBounds, WithoutKeyFramesAreThePointAtTheOrigin) {
    const auto node = boxModel();
    node->keyframes.clear();
    EXPECT_EQ(boundsOf(*node), at_origin);
}

TEST(SceneNodeModelBounds, MotionThatMakesNoSenseIsThePointAtTheOrigin) {
    const auto node = boxModel();
    KeyFrame end;
    end.time = 0.5;
    end.pos.x = 1;
    node->keyframes.push_back(end);
    EXPECT_EQ(boundsOf(*node), at_origin);
    node->keyframes[1] = node->keyframes[0];
    node->scale = 0;
    EXPECT_EQ(boundsOf(*node), at_origin) << "a scale of 0 can't be inverted";
}

TEST(SceneNodeModelBounds, RotationOfAnUnknownKindThrows) {
    const auto node = boxModel();
    node->rotation = new FakeAxisAngle(2);
    EXPECT_EQ(messageOf<SceneLoaderExcep>([&] { boundsOf(*node); }),
              "Failed to convert rotation. Unknown rotation type.");
}

TEST(SceneNodeModelBounds, ParametricSurfaceIsThePointAtTheOrigin) {
    const auto node = boxModel();
    node->setGeometry(new PlainNode(NodeType::ParametricSurface));
    EXPECT_EQ(boundsOf(*node), at_origin);
}

TEST(SceneNodeModelBounds, DisplacedQuadIsItsExtents) {
    const auto node = boxModel();
    node->setGeometry(new FakeQuad(2.5f, 4));
    EXPECT_EQ(boundsOf(*node), (Bounds{0, 0, 0, 2.5f, 4, 0}));
}

TEST(SceneNodeModelBounds, OtherGeometryAndNoneAddNothing) {
    const auto node = boxModel();
    constexpr Bounds untouched = {infinity, infinity, infinity, -infinity, -infinity, -infinity};
    node->setGeometry(new PlainNode(NodeType::Sphere));
    EXPECT_EQ(boundsOf(*node), untouched);
    node->geometry = nullptr;
    EXPECT_EQ(boundsOf(*node), untouched);
}

} // namespace SceneNodeModelBoundsTests
