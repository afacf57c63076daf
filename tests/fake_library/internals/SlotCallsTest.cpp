// Every call on a counted object goes through the object's own table: the renderer library makes and derives such
// objects. Here each object gets a table of the library, which counts the calls.

#include "api/Handles.h"
#include "api/SharedFunctions.h"
#include "renderer/ImageBuffers.h"
#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/Rotations.h"
#include "scene/SceneXMLWriter.h"
#include "scene/Spectra.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeCurve1D.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "tests/support/FakeParams.h"
#include "tests/support/LibraryFolder.h"
#include "tests/support/MemoryOStream.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <vector>

using namespace Velmar;
using testing::ElementsAre;
using TestSupport::LibraryFolder;
using TestSupport::vectorOf;

namespace {

/// How often each slot was called.
using Calls = std::map<int, int>;

/// The calls of one object, which may be destroyed.
class Watch {
  public:
    explicit Watch(std::uint32_t* counters) : calls(counters) {}

    /// The calls since the last time.
    Calls take() const {
        Calls taken;
        for (int slot = 0; slot < 16; ++slot)
            if (calls[slot] != 0) taken[slot] = static_cast<int>(calls[slot]);
        std::memset(calls, 0, 16 * sizeof *calls);
        return taken;
    }

  private:
    std::uint32_t* calls;
};

template <class T>
T* pointerAt(const void* object, std::size_t offset) {
    T* pointer = nullptr;
    std::memcpy(&pointer, static_cast<const char*>(object) + offset, sizeof pointer);
    return pointer;
}

class SlotCalls : public testing::Test {
  protected:
    void SetUp() override {
        folder.install("good");
        context = makeContext();
        watch_object = reinterpret_cast<std::uint32_t* (*)(void*)>(folder.functionOfLibrary("fakeLibraryWatch"));
        ASSERT_NE(watch_object, nullptr);
        folder.clearRecord();
    }

    void TearDown() override {
        scene = nullptr;
        velmarDeleteHandle(fromHandle(context));
    }

    static ::VelmarContext* makeContext() {
        testing::internal::CaptureStdout();
        ::VelmarContext* const made = VelmarContext_Create();
        EXPECT_EQ(VelmarContext_Initialize(made), 0);
        testing::internal::GetCapturedStdout();
        return made;
    }

    template <class T>
    Watch watch(const Reference<T>& object) {
        return Watch(watch_object(object.getPointer()));
    }
    Watch watch(void* object) { return Watch(watch_object(object)); }

    static SceneNodeRenderSettings* makeSettings() {
        auto* const settings = new SceneNodeRenderSettings;
        settings->width.set(8);
        settings->height.set(6);
        settings->super_sample_factor.set(1);
        return settings;
    }

    /// One node of each class, with all that it needs to be written and copied.
    static std::vector<SceneNode*> oneOfEachNode() {
        auto* const mesh = new SceneNodeMesh;
        mesh->mesh = new Mesh;
        auto* const model = new SceneNodeModel;
        model->rotation = new MatrixRotation;
        return {new SceneNodeCamera,
                makeSettings(),
                new SceneNodeMaterial,
                mesh,
                model,
                new SceneNodeSphere,
                new SceneNodeTonemapping,
                new SceneNodeBackgroundSettings,
                new SceneNodeCurve1D({}, {})};
    }

    void addToScene(const std::vector<SceneNode*>& nodes) {
        for (SceneNode* const node : nodes)
            scene->addChildNode(Reference<SceneNode>(node));
    }

    std::vector<Watch> watchEach(const std::vector<SceneNode*>& nodes) {
        std::vector<Watch> watches;
        for (SceneNode* const node : nodes)
            watches.push_back(watch(node));
        return watches;
    }

    LibraryFolder folder;
    ::VelmarContext* context = nullptr;
    std::uint32_t* (*watch_object)(void*) = nullptr;
    Reference<SceneNodeRoot> scene{new SceneNodeRoot};
    TestSupport::MemoryOStream stream;
    XMLWriteOptions options;
};

} // namespace

// ---- nodes of a scene

TEST_F(SlotCalls, DocumentIsWrittenByTheTablesOfAllNodes) {
    const std::vector<SceneNode*> nodes = oneOfEachNode();
    addToScene(nodes);
    const Watch root = watch(scene);
    const std::vector<Watch> watches = watchEach(nodes);
    writeSceneXML(*scene, "scene.xml", true, nullptr);
    EXPECT_EQ(root.take(), (Calls{{6, 1}}));
    for (std::size_t i = 0; i < nodes.size(); ++i)
        EXPECT_EQ(watches[i].take(), (Calls{{2, 1}, {6, 1}})) << static_cast<std::uint32_t>(nodes[i]->getType());
}

TEST_F(SlotCalls, ImageStoreIsMadeByTheTablesOfAllNodes) {
    const std::vector<SceneNode*> nodes = oneOfEachNode();
    addToScene(nodes);
    const Watch root = watch(scene);
    const std::vector<Watch> watches = watchEach(nodes);
    const Reference<RenderBuffer> buffer(new RenderBuffer(scene));
    EXPECT_EQ(root.take(), (Calls{{10, 1}}));
    for (std::size_t i = 0; i < nodes.size(); ++i)
        EXPECT_EQ(watches[i].take(), (Calls{{10, 1}, {11, 1}, {12, 1}}))
            << static_cast<std::uint32_t>(nodes[i]->getType());
}

TEST_F(SlotCalls, SceneThatIsDestroyedDestroysNodesByTheirTables) {
    const std::vector<SceneNode*> nodes = oneOfEachNode();
    addToScene(nodes);
    const Watch root = watch(scene);
    const std::vector<Watch> watches = watchEach(nodes);
    scene = nullptr;
    EXPECT_EQ(root.take(), (Calls{{0, 1}}));
    for (const Watch& watched : watches)
        EXPECT_EQ(watched.take(), (Calls{{0, 1}}));
}

TEST_F(SlotCalls, HandleIsDeletedByTheTableOfItsNode) {
    for (SceneNode* const node : oneOfEachNode()) {
        const Watch watched = watch(node);
        velmarDeleteHandle(node);
        EXPECT_EQ(watched.take(), (Calls{{0, 1}}));
    }
}

TEST_F(SlotCalls, CopiesAskTheNameByTheTableOfTheSource) {
    for (SceneNode* const node : oneOfEachNode()) {
        const Reference<SceneNode> source(node);
        if (node->getType() == NodeType::Mesh) continue;
        const Watch watched = watch(source);
        const Reference<SceneNode> copy = source->clone();
        EXPECT_EQ(watched.take(), (Calls{{2, 1}, {4, 1}}));
        EXPECT_TRUE(source->isEqual(copy.getPointer()));
        EXPECT_EQ(watched.take(), (Calls{{2, 1}, {15, 1}}));
    }
}

TEST_F(SlotCalls, ModelUsesTheTablesOfItsGeometryAndMaterials) {
    Reference<SceneNodeModel> model(new SceneNodeModel);
    model->setGeometry(Reference<SceneNode>(new SceneNodeMesh));
    model->rotation = new MatrixRotation;
    const Watch geometry = watch(model->geometry);
    model->setMaterials(vectorOf<Reference<SceneNodeMaterial>>({new SceneNodeMaterial}));
    const Watch material = watch(model->materials[0]);
    const Watch rotation = watch(model->rotation);

    TraversalState state(TraversalKind::GetDependencies, "", "");
    model->traverse(state);
    EXPECT_EQ(geometry.take(), (Calls{{7, 1}}));
    EXPECT_EQ(material.take(), (Calls{{7, 1}}));

    model->writeXML(stream, 0, options);
    EXPECT_EQ(rotation.take(), (Calls{{5, 1}}));
    const Reference<SceneNode> copy = model->clone();
    EXPECT_EQ(rotation.take(), (Calls{{3, 1}}));
    EXPECT_TRUE(model->isEqual(copy.getPointer()));
    EXPECT_EQ(geometry.take(), (Calls{{2, 2}, {15, 1}}));
    EXPECT_EQ(material.take(), (Calls{{2, 2}, {15, 1}}));

    static_cast<SceneNodeModel&>(*copy).geometry = nullptr;
    static_cast<SceneNodeModel&>(*copy).materials.clear();
    model = nullptr;
    EXPECT_EQ(geometry.take(), (Calls{{0, 1}}));
    EXPECT_EQ(material.take(), (Calls{{0, 1}}));
    EXPECT_EQ(rotation.take(), (Calls{{0, 1}}));
}

TEST_F(SlotCalls, RotatedModelWritesItsRotationByTheTable) {
    const Reference<SceneNodeModel> model(new SceneNodeModel);
    const Reference<MatrixRotation> turned(new MatrixRotation);
    turned->matrix[0] = 2;
    model->rotation = turned;
    const Watch rotation = watch(turned);
    model->writeXML(stream, 0, options);
    EXPECT_EQ(rotation.take(), (Calls{{1, 1}, {5, 1}}));
    auto* const mesh = new SceneNodeMesh;
    mesh->mesh = new Mesh;
    model->setGeometry(Reference<SceneNode>(mesh));
    const Watch data = watch(mesh->mesh);
    mesh->mesh = nullptr;
    EXPECT_EQ(data.take(), (Calls{{0, 1}}));
}

TEST_F(SlotCalls, SphereUsesTheTableOfItsMaterial) {
    Reference<SceneNodeSphere> sphere(new SceneNodeSphere);
    sphere->material = new SceneNodeMaterial;
    const Watch material = watch(sphere->material);
    TraversalState state(TraversalKind::GetDependencies, "", "");
    sphere->traverse(state);
    EXPECT_EQ(material.take(), (Calls{{7, 1}}));
    sphere = nullptr;
    EXPECT_EQ(material.take(), (Calls{{0, 1}}));
}

TEST_F(SlotCalls, CameraUsesTheTableOfItsAperture) {
    Reference<SceneNodeCamera> camera(new SceneNodeCamera);
    const Watch aperture = watch(camera->aperture_shape);
    camera->writeXML(stream, 0, options);
    EXPECT_EQ(aperture.take(), (Calls{{2, 1}}));
    TraversalState state(TraversalKind::GetDependencies, "", "");
    camera->traverse(state);
    EXPECT_EQ(aperture.take(), (Calls{{1, 1}}));
    const Reference<SceneNode> copy = camera->clone();
    EXPECT_EQ(aperture.take(), (Calls{{3, 1}}));
    camera = nullptr;
    EXPECT_EQ(aperture.take(), (Calls{{0, 1}}));
}

TEST_F(SlotCalls, RenderSettingsUseTheTablesOfAllTheyHold) {
    Reference<SceneNodeRenderSettings> settings = SceneNodeRenderSettings::getDefaults();
    settings->layer_settings = vectorOf<Reference<LayerSetting>>({new LayerSetting});
    const Watch splat = watch(settings->splat_filter);
    const Watch downsize = watch(settings->downsize_filter);
    const Watch white_point = watch(settings->white_point);
    const Watch curves = watch(settings->colour_curves);
    const Watch red = watch(settings->colour_curves->red);
    const Watch layer = watch(settings->layer_settings[0]);
    settings->layer_settings[0]->layer_scale = new UniformSpectrum(1.0);
    const Watch scale = watch(settings->layer_settings[0]->layer_scale);

    settings->writeXML(stream, 0, options);
    EXPECT_EQ(splat.take(), (Calls{{2, 1}}));
    EXPECT_EQ(downsize.take(), (Calls{{2, 1}}));
    EXPECT_EQ(red.take(), (Calls{{2, 1}, {6, 1}}));
    EXPECT_EQ(scale.take(), (Calls{{1, 1}}));

    const Reference<SceneNode> copy = settings->clone();
    EXPECT_EQ(splat.take(), (Calls{{3, 1}}));
    EXPECT_EQ(downsize.take(), (Calls{{3, 1}}));
    EXPECT_EQ(red.take(), (Calls{{2, 1}, {4, 1}}));
    EXPECT_EQ(layer.take(), (Calls{{1, 1}}));
    EXPECT_EQ(scale.take(), (Calls{{3, 1}}));

    settings = nullptr;
    for (const Watch& watched : {splat, downsize, white_point, curves, red, layer, scale})
        EXPECT_EQ(watched.take(), (Calls{{0, 1}}));
}

TEST_F(SlotCalls, LayerSettingOfTheLibraryIsCopiedAndDestroyedByIt) {
    const auto make = reinterpret_cast<LayerSetting* (*)()>(folder.functionOfLibrary("fakeLibraryMakeLayerSetting"));
    ASSERT_NE(make, nullptr);
    Reference<SceneNodeRenderSettings> settings(new SceneNodeRenderSettings);
    settings->layer_settings = vectorOf<Reference<LayerSetting>>({make()});
    Reference<SceneNode> copy = settings->clone();
    EXPECT_THAT(folder.record(), ElementsAre("own layer setting first cloned"));
    copy = nullptr;
    settings = nullptr;
    EXPECT_THAT(folder.record(), ElementsAre("own layer setting first cloned", "own layer setting copy ended",
                                             "own layer setting first ended"));
}

// ---- materials

TEST_F(SlotCalls, MaterialNodeUsesTheTableOfItsMaterial) {
    for (Material* const made :
         {static_cast<Material*>(new DiffuseMaterial), static_cast<Material*>(new SunSkyMaterial)}) {
        Reference<SceneNodeMaterial> node(new SceneNodeMaterial);
        node->material = made;
        const Watch material = watch(node->material);
        node->writeXML(stream, 0, options);
        EXPECT_EQ(material.take(), (Calls{{1, 1}, {9, 1}}));
        TraversalState state(TraversalKind::GetDependencies, "", "");
        node->traverse(state);
        EXPECT_EQ(material.take(), (Calls{{4, 1}}));
        node->updateNodeReferences(NodeUIDMap());
        EXPECT_EQ(material.take(), (Calls{{2, 1}}));
        static_cast<void>(node->getMaxLayerIndex());
        EXPECT_EQ(material.take(), (Calls{{3, 1}}));
        EXPECT_FALSE(node->refersToNode(nullptr));
        EXPECT_EQ(material.take(), (Calls{{5, 1}}));
        EXPECT_TRUE(node->getDependencyUIDs().empty());
        EXPECT_EQ(material.take(), (Calls{{6, 1}}));
        node = nullptr;
        EXPECT_EQ(material.take(), (Calls{{0, 1}}));
    }
}

TEST_F(SlotCalls, BackgroundUsesTheTablesOfAllItHolds) {
    Reference<SceneNodeBackgroundSettings> node(new SceneNodeBackgroundSettings);
    node->background_material = new SunSkyMaterial;
    node->emission_scale = new EmissionScale;
    node->emission_scale->material = new SceneNodeMaterial;
    const Watch material = watch(node->background_material);
    const Watch emission_scale = watch(node->emission_scale);
    const Watch scaled = watch(node->emission_scale->material);
    node->writeXML(stream, 0, options);
    EXPECT_EQ(material.take(), (Calls{{1, 1}, {9, 1}}));
    static_cast<void>(node->getMaxLayerIndex());
    EXPECT_EQ(material.take(), (Calls{{3, 1}}));
    node = nullptr;
    for (const Watch& watched : {material, emission_scale, scaled})
        EXPECT_EQ(watched.take(), (Calls{{0, 1}}));
}

TEST_F(SlotCalls, MaterialUsesTheTablesOfItsParameters) {
    Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = new ConstantWavelengthDependentParam(Reference<Spectrum>(new RGBSpectrum({1, 1, 1}, 2.2)));
    material->emission = new ConstantWavelengthDependentParam(Reference<Spectrum>(new UniformSpectrum(1.0)));
    material->bump = new TestSupport::FakeSurfaceParam("bump");
    material->shared_shader_info = new SharedShaderInfo;
    material->shared_shader_info->parameters.push_back(
        Reference<ShaderParameter>(new TestSupport::FakeShaderParameter));
    const Watch albedo = watch(material->albedo);
    const Watch emission = watch(material->emission);
    const Watch bump = watch(material->bump);
    const Watch shader = watch(material->shared_shader_info);
    const Watch parameter = watch(material->shared_shader_info->parameters[0]);

    material->writeXML(stream, 0, options);
    for (const Watch& watched : {albedo, emission, bump})
        EXPECT_EQ(watched.take(), (Calls{{1, 1}}));
    EXPECT_EQ(parameter.take(), (Calls{{3, 1}}));
    options.write_mode = 3;
    material->writeXML(stream, 0, options);
    for (const Watch& watched : {albedo, emission, bump})
        EXPECT_EQ(watched.take(), (Calls{{1, 1}, {2, 1}}));
    EXPECT_EQ(parameter.take(), (Calls{{3, 1}}));

    TraversalState state(TraversalKind::GetDependencies, "", "");
    material->traverseMaterial(state, nullptr);
    for (const Watch& watched : {albedo, emission, bump})
        EXPECT_EQ(watched.take(), (Calls{{3, 1}}));

    XXH64_state_t* const hash = XXH64_createState();
    XXH64_reset(hash, 1);
    material->updateHash(hash);
    XXH64_freeState(hash);
    EXPECT_EQ(albedo.take(), (Calls{{4, 1}}));
    EXPECT_EQ(emission.take(), (Calls{{4, 1}}));
    EXPECT_EQ(bump.take(), (Calls{{5, 1}}));

    material = nullptr;
    for (const Watch& watched : {albedo, emission, bump, shader, parameter})
        EXPECT_EQ(watched.take(), (Calls{{0, 1}}));
}

TEST_F(SlotCalls, ParameterUsesTheTableOfItsSpectrum) {
    for (Spectrum* const made :
         {static_cast<Spectrum*>(new RGBSpectrum({1, 1, 1}, 2.2)), static_cast<Spectrum*>(new UniformSpectrum(1.0))}) {
        Reference<ConstantWavelengthDependentParam> param(
            new ConstantWavelengthDependentParam(Reference<Spectrum>(made)));
        const Watch spectrum = watch(param->spectrum);
        param->writeXML(stream, 0, options);
        EXPECT_EQ(spectrum.take(), (Calls{{1, 1}}));
        const Reference<WavelengthDependentParam> copy = param->clone();
        EXPECT_EQ(spectrum.take(), (Calls{{3, 1}}));
        param = nullptr;
        EXPECT_EQ(spectrum.take(), (Calls{{0, 1}}));
    }
}

TEST_F(SlotCalls, TextureUsesTheTableOfItsCoordinates) {
    Watch coordinates(nullptr);
    {
        Texture texture;
        texture.tex_coord_generation = new TestSupport::FakeTexCoord({2, 0, 0, 1, 0, 0});
        coordinates = watch(texture.tex_coord_generation);
        writeTexture(texture, stream, 0, options);
        EXPECT_EQ(coordinates.take(), (Calls{{1, 1}, {2, 1}}));
    }
    EXPECT_EQ(coordinates.take(), (Calls{{0, 1}}));
}

// ---- a render

TEST_F(SlotCalls, ArrayOfAnImageUsesTheTableOfItsAllocator) {
    Reference<quorl::Allocator> allocator(new VelmarSDKAllocator);
    const Watch watched = watch(allocator);
    {
        AlignedFloatVector array(allocator);
        allocator = nullptr;
        array.resize(4);
        EXPECT_EQ(watched.take(), (Calls{{1, 1}, {2, 1}}));
    }
    EXPECT_EQ(watched.take(), (Calls{{0, 1}, {2, 1}}));
}

TEST_F(SlotCalls, RendererThatIsDeletedUsesTheTablesOfAllItHolds) {
    // Of its own: the fixture's keeps the library loaded.
    ::VelmarContext* const own_context = makeContext();
    VelmarRenderer* const renderer = VelmarRenderer_Create(own_context);
    addToScene({makeSettings()});
    VelmarRenderer_InitializeWithScene(renderer, own_context, toHandle<VelmarScene>(scene.getPointer()));

    const auto* const impl = pointerAt<RendererImpl>(renderer, 16);
    void* const render_buffer = pointerAt<void>(impl, 24);
    void* const data_manager = pointerAt<void>(impl, 32);
    void* const tone_mapper = pointerAt<void>(impl, 48);
    void* const master_buffer = pointerAt<void>(render_buffer, 16);
    std::vector<Watch> watches;
    for (void* const object :
         {static_cast<void*>(renderer), static_cast<void*>(own_context), static_cast<void*>(scene.getPointer()),
          render_buffer, data_manager, tone_mapper, master_buffer, pointerAt<void>(data_manager, 16),
          pointerAt<void>(tone_mapper, 32), pointerAt<void>(tone_mapper, 40)})
        watches.push_back(watch(object));
    const Watch allocator = watch(pointerAt<void>(master_buffer, 1592));

    scene = nullptr;
    velmarDeleteHandle(fromHandle(renderer));
    for (const Watch& watched : watches)
        EXPECT_EQ(watched.take(), (Calls{{0, 1}}));
    EXPECT_EQ(allocator.take(), (Calls{{0, 1}, {2, 3}}));
}
