#include "renderer/Renderer.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "tests/renderer/FakeLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>

namespace RendererImplTests {

using namespace FakeLibrary;
using testing::ElementsAre;
using Velmar::DataManager;
using Velmar::LibraryObject;
using Velmar::Reference;
using Velmar::RenderBuffer;
using Velmar::Renderer;
using Velmar::RendererImpl;
using Velmar::SceneNodeRoot;
using Velmar::String;
using Velmar::ToneMapper;
using Velmar::Vector;

namespace {

std::int32_t initialise_result;

std::int32_t initialise(LibraryObject*, const String* sdk_dir, const String* appdata_dir) {
    events.push_back("interface in " + toStdString(*sdk_dir) + " and " + toStdString(*appdata_dir));
    return initialise_result;
}

void initialiseToneMapper(LibraryObject*, const String*, const String*, RenderBuffer*, Velmar::UInt8Buffer*,
                          Velmar::FloatBuffer*, String*) {}
void initialiseManager(LibraryObject*, const String*) {}

struct GivenScene {
    const SceneNodeRoot* scene;
    const RenderBuffer* render_buffer;
    std::size_t strings;
    const DataManager* data_manager;
    const Reference<ToneMapper>* tone_mapper;
} given;

std::uint64_t initialiseScene(LibraryObject*, const Reference<SceneNodeRoot>* scene, RenderBuffer* render_buffer,
                              const Vector<String>* strings, const Reference<DataManager>* data_manager,
                              const Reference<ToneMapper>* tone_mapper) {
    given = {scene->getPointer(), render_buffer, strings->size(), data_manager->getPointer(), tone_mapper};
    return 0x900000000;
}

/// Arguments of all kinds, more than there are registers for.
struct Arguments {
    std::int32_t a = -1;
    double b = 2.5;
    const void* c = nullptr;
    float d = 4.25f;
    std::uint64_t e = 0xEEEEEEEEEEEEEEEE;
    double f = 6.125;
    float g = 7.5f;
    double h = 8.5;
    double i = 9.5;
    std::int64_t j = -10;
    double k = 11.5;
    double l = 12.5;
    double m = 13.5;
    std::uint8_t n = 14;

    bool operator==(const Arguments&) const = default;
};

Arguments passed;
const LibraryObject* called_on;
std::size_t called_slot;

template <std::size_t slot>
std::uint64_t takeAll(LibraryObject* object, std::int32_t a, double b, const void* c, float d, std::uint64_t e,
                      double f, float g, double h, double i, std::int64_t j, double k, double l, double m,
                      std::uint8_t n) {
    passed = {a, b, c, d, e, f, g, h, i, j, k, l, m, n};
    called_on = object;
    called_slot = slot;
    return 0xABCDEF0000000000 + slot;
}

template <std::size_t... slots>
void fillWithTakers(LibraryObject::Operation* operations, std::index_sequence<slots...>) {
    ((operations[slots] = operation(takeAll<slots>)), ...);
}

double returnHalf(LibraryObject*, double value) {
    return value / 2;
}

class RendererImpls : public testing::Test {
  protected:
    void SetUp() override {
        context = makeContext();
        initialise_result = 0;
        fillWithTakers(operations, std::make_index_sequence<slot_count>());
        operations[1] = operation(initialise);
        object.operations = operations;
        object.destroy = [](LibraryObject*) { events.push_back("interface destroyed"); };
        tone_mapper_operations[1] = operation(initialiseToneMapper);
        tone_mapper_object.operations = tone_mapper_operations;
        tone_mapper_object.destroy = [](LibraryObject*) { events.push_back("tone mapper destroyed"); };
        manager_operations[1] = operation(initialiseManager);
        for (Object* manager : {&data_object, &texture_object})
            manager->operations = manager_operations;
        data_object.word_24 = reinterpret_cast<std::uintptr_t>(kept);
        data_object.destroy = [](LibraryObject*) { events.push_back("data manager destroyed"); };
        texture_object.destroy = [](LibraryObject*) { events.push_back("texture manager destroyed"); };
        objects = {{"VelmarInterface", &object},
                   {"ToneMapperDLLAPI", &tone_mapper_object},
                   {"DataManagerDLLAPI", &data_object},
                   {"TextureManagerDLLAPI", &texture_object}};
    }

    Reference<Renderer> makeRenderer() { return Reference<Renderer>(new Renderer(context)); }

    /// What the flat interface does with a scene.
    std::uint64_t initialiseWithScene(RendererImpl& impl) {
        operations[9] = operation(initialiseScene);
        const Reference<SceneNodeRoot> scene(new SceneNodeRoot);
        scene->addChildNode(Reference<Velmar::SceneNode>(new Velmar::SceneNodeRenderSettings));
        const Reference<RenderBuffer> render_buffer(new RenderBuffer(scene));
        const Reference<ToneMapper> tone_mapper(
            new ToneMapper(*context, render_buffer, Reference<Velmar::UInt8Buffer>(new Velmar::UInt8Buffer),
                           Reference<Velmar::FloatBuffer>(new Velmar::FloatBuffer)));
        const Reference<DataManager> data_manager(new DataManager(*context));
        expected = {scene.getPointer(), render_buffer.getPointer(), 0, data_manager.getPointer(), nullptr};
        const std::uint64_t result = impl.initialise(scene, render_buffer, {}, data_manager, tone_mapper);
        EXPECT_EQ(scene->getRefCount(), 2);
        EXPECT_EQ(given.tone_mapper->getPointer(), tone_mapper.getPointer());
        return result;
    }

    /// Calls operation `slot` of the RendererImpl as the owner of its table would.
    static std::uint64_t callOperation(RendererImpl& impl, std::size_t slot, const Arguments& x) {
        using Typed = std::uint64_t (*)(RendererImpl*, std::int32_t, double, const void*, float, std::uint64_t, double,
                                        float, double, double, std::int64_t, double, double, double, std::uint8_t);
        const auto* const table = at<const RendererImpl::Operation*>(&impl, 0);
        return reinterpret_cast<Typed>(table[slot])(&impl, x.a, x.b, x.c, x.d, x.e, x.f, x.g, x.h, x.i, x.j, x.k, x.l,
                                                    x.m, x.n);
    }

    Reference<Velmar::VelmarContext> context;
    LibraryObject::Operation operations[slot_count]{};
    LibraryObject::Operation tone_mapper_operations[slot_count]{};
    LibraryObject::Operation manager_operations[slot_count]{};
    Object object;
    Object tone_mapper_object;
    Object data_object;
    Object texture_object;
    std::uint64_t kept[6]{};
    GivenScene expected{};
};

} // namespace

TEST_F(RendererImpls, MakesAndInitialisesTheLibrarysInterface) {
    const Reference<Renderer> renderer = makeRenderer();
    EXPECT_THAT(events, ElementsAre("create VelmarInterface", "interface in sdk and appdata"));
    EXPECT_EQ(object.refcount, 1);
}

TEST_F(RendererImpls, HoldsTheContext) {
    {
        const Reference<Renderer> renderer = makeRenderer();
        EXPECT_EQ(context->getRefCount(), 2);
    }
    EXPECT_EQ(context->getRefCount(), 1);
}

TEST_F(RendererImpls, FailedCreationIsToldAndTheObjectUsedNonetheless) {
    create_result = 1;
    testing::internal::CaptureStdout();
    const Reference<Renderer> renderer = makeRenderer();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Failed to create Instance of 'VelmarInterface'\n");
    EXPECT_EQ(object.refcount, 1);
}

TEST_F(RendererImpls, FailedInitialisationIsTold) {
    initialise_result = 1;
    testing::internal::CaptureStdout();
    const Reference<Renderer> renderer = makeRenderer();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Failed to initialise 'VelmarInterface'\n");
}

TEST_F(RendererImpls, SuccessIsSilent) {
    testing::internal::CaptureStdout();
    const Reference<Renderer> renderer = makeRenderer();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(RendererImpls, HandsSceneAndObjectsToTheLibrary) {
    const Reference<Renderer> renderer = makeRenderer();
    EXPECT_EQ(initialiseWithScene(renderer->getImpl()), 0x900000000u);
    EXPECT_EQ(given.scene, expected.scene);
    EXPECT_EQ(given.render_buffer, expected.render_buffer);
    EXPECT_EQ(given.strings, 0u);
    EXPECT_EQ(given.data_manager, expected.data_manager);
    EXPECT_EQ(reinterpret_cast<const char*>(given.tone_mapper), reinterpret_cast<char*>(&renderer->getImpl()) + 48);
}

TEST_F(RendererImpls, SecondSceneReplacesTheFirst) {
    const Reference<Renderer> renderer = makeRenderer();
    initialiseWithScene(renderer->getImpl());
    events.clear();
    data_object.refcount = texture_object.refcount = tone_mapper_object.refcount = 1;
    initialiseWithScene(renderer->getImpl());
    EXPECT_THAT(events,
                ElementsAre("create ToneMapperDLLAPI", "create DataManagerDLLAPI", "create TextureManagerDLLAPI"));
    EXPECT_EQ(data_object.refcount, 1);
    EXPECT_EQ(tone_mapper_object.refcount, 1);
}

TEST_F(RendererImpls, InterfaceGoesFirstAndTheContextLast) {
    {
        Reference<Renderer> renderer = makeRenderer();
        initialiseWithScene(renderer->getImpl());
        context = nullptr;
        events.clear();
    }
    EXPECT_THAT(events, ElementsAre("interface destroyed", "tone mapper destroyed", "data manager destroyed",
                                    "texture manager destroyed", "shutdown"));
}

TEST_F(RendererImpls, RendererThatNeverHadASceneReleasesInterfaceAndContext) {
    {
        const Reference<Renderer> renderer = makeRenderer();
        context = nullptr;
        events.clear();
    }
    EXPECT_THAT(events, ElementsAre("interface destroyed", "shutdown"));
}

class Forwarders : public RendererImpls, public testing::WithParamInterface<std::pair<std::size_t, std::size_t>> {};

TEST_P(Forwarders, PassArgumentsOfEveryKindAndTheResultUnchanged) {
    const Reference<Renderer> renderer = makeRenderer();
    const auto [slot, library_slot] = GetParam();
    Arguments arguments;
    arguments.c = &arguments;
    EXPECT_EQ(callOperation(renderer->getImpl(), slot, arguments), 0xABCDEF0000000000 + library_slot);
    EXPECT_EQ(called_slot, library_slot);
    EXPECT_EQ(called_on, object.asLibraryObject());
    EXPECT_EQ(passed, arguments);
}

INSTANTIATE_TEST_SUITE_P(RendererImpls, Forwarders,
                         testing::Values(std::pair{2, 2}, std::pair{3, 10}, std::pair{4, 11}, std::pair{5, 12},
                                         std::pair{6, 13}, std::pair{7, 14}, std::pair{8, 5}, std::pair{9, 6},
                                         std::pair{10, 8}),
                         [](const auto& case_info) { return "Slot" + std::to_string(case_info.param.first); });

TEST_F(RendererImpls, FloatingPointResultPassesThrough) {
    operations[2] = operation(returnHalf);
    const Reference<Renderer> renderer = makeRenderer();
    RendererImpl& impl = renderer->getImpl();
    const auto* const table = at<const RendererImpl::Operation*>(&impl, 0);
    EXPECT_EQ(reinterpret_cast<double (*)(RendererImpl*, double)>(table[2])(&impl, 5.0), 2.5);
}

TEST_F(RendererImpls, StartPauseResumeAndStopAreFourOperationsInARow) {
    const Reference<Renderer> renderer = makeRenderer();
    RendererImpl& impl = renderer->getImpl();
    EXPECT_EQ(impl.start(), 0xABCDEF0000000000 + 11);
    EXPECT_EQ(impl.pause(), 0xABCDEF0000000000 + 12);
    EXPECT_EQ(impl.resume(), 0xABCDEF0000000000 + 13);
    EXPECT_EQ(impl.stop(), 0xABCDEF0000000000 + 14);
}

TEST_F(RendererImpls, SceneIsInitialisedThroughSlotOneToo) {
    const Reference<Renderer> renderer = makeRenderer();
    initialiseWithScene(renderer->getImpl());
    using Initialise =
        std::uint64_t (*)(RendererImpl*, const Reference<SceneNodeRoot>*, const Reference<RenderBuffer>*,
                          const Vector<String>*, const Reference<DataManager>*, const Reference<ToneMapper>*);
    RendererImpl& impl = renderer->getImpl();
    const auto* const table = at<const RendererImpl::Operation*>(&impl, 0);
    const Reference<SceneNodeRoot> scene(new SceneNodeRoot);
    const Reference<RenderBuffer> no_buffer;
    const Vector<String> no_strings;
    const Reference<DataManager> no_manager;
    const Reference<ToneMapper> no_mapper;
    EXPECT_EQ(reinterpret_cast<Initialise>(table[1])(&impl, &scene, &no_buffer, &no_strings, &no_manager, &no_mapper),
              0x900000000u);
    EXPECT_EQ(given.scene, scene.getPointer());
    EXPECT_EQ(scene->getRefCount(), 2);
}

} // namespace RendererImplTests
