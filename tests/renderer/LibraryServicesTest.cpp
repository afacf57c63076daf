#include "renderer/LibraryServices.h"

#include "velmarexceptions.h"

#include "scene/SceneNodeRoot.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "tests/renderer/FakeLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ToneMapperTests {

using namespace FakeLibrary;
using testing::ElementsAre;
using Velmar::FloatBuffer;
using Velmar::Reference;
using Velmar::RenderBuffer;
using Velmar::String;
using Velmar::ToneMapper;
using Velmar::UInt8Buffer;

namespace {

const void* given_buffers[3];

void takeBuffers(Velmar::LibraryObject*, const String* sdk_dir, const String* appdata_dir, RenderBuffer* render_buffer,
                 UInt8Buffer* uint8_buffer, FloatBuffer* float_buffer, String* error) {
    events.push_back("initialised in " + toStdString(*sdk_dir) + " and " + toStdString(*appdata_dir) +
                     (error->empty() ? ", no error yet" : ""));
    given_buffers[0] = render_buffer;
    given_buffers[1] = uint8_buffer;
    given_buffers[2] = float_buffer;
}

void complainOfCurve(Velmar::LibraryObject*, const String*, const String*, RenderBuffer*, UInt8Buffer*, FloatBuffer*,
                     String* error) {
    *error = "the curve is missing";
}

Reference<RenderBuffer> makeRenderBuffer() {
    const Reference<Velmar::SceneNodeRoot> scene(new Velmar::SceneNodeRoot);
    scene->addChildNode(Reference<Velmar::SceneNode>(new Velmar::SceneNodeRenderSettings));
    return Reference<RenderBuffer>(new RenderBuffer(scene));
}

class ToneMappers : public testing::Test {
  protected:
    void SetUp() override {
        context = makeContext();
        operations[1] = operation(takeBuffers);
        object.operations = operations;
        object.destroy = [](Velmar::LibraryObject*) { events.push_back("tone mapper destroyed"); };
        objects = {{"ToneMapperDLLAPI", &object}};
    }

    ToneMapper* make() { return new ToneMapper(*context, render_buffer, uint8_buffer, float_buffer); }

    Reference<Velmar::VelmarContext> context;
    Velmar::LibraryObject::Operation operations[slot_count]{};
    Object object;
    Reference<RenderBuffer> render_buffer = makeRenderBuffer();
    Reference<UInt8Buffer> uint8_buffer{new UInt8Buffer};
    Reference<FloatBuffer> float_buffer{new FloatBuffer};
};

} // namespace

TEST_F(ToneMappers, InitialisesTheLibrarysObjectWithTheBuffers) {
    const Reference<ToneMapper> mapper(make());
    EXPECT_THAT(events, ElementsAre("create ToneMapperDLLAPI", "initialised in sdk and appdata, no error yet"));
    EXPECT_EQ(given_buffers[0], render_buffer.getPointer());
    EXPECT_EQ(given_buffers[1], uint8_buffer.getPointer());
    EXPECT_EQ(given_buffers[2], float_buffer.getPointer());
    EXPECT_EQ(object.refcount, 1);
    EXPECT_TRUE(mapper->getErrorMessage().empty());
}

TEST_F(ToneMappers, HoldsTheBuffersWhileItLives) {
    {
        const Reference<ToneMapper> mapper(make());
        EXPECT_EQ(render_buffer->getRefCount(), 2);
        EXPECT_EQ(uint8_buffer->getRefCount(), 2);
        EXPECT_EQ(float_buffer->getRefCount(), 2);
    }
    EXPECT_EQ(render_buffer->getRefCount(), 1);
    EXPECT_EQ(events.back(), "tone mapper destroyed");
}

TEST_F(ToneMappers, KeepsWhatTheLibraryComplainsOfAndGoesOn) {
    operations[1] = operation(complainOfCurve);
    const Reference<ToneMapper> mapper(make());
    EXPECT_EQ(toStdString(mapper->getErrorMessage()), "the curve is missing");
}

TEST_F(ToneMappers, CodeOfTheLibrarysCreationIsNotLookedAt) {
    create_result = 1;
    const Reference<ToneMapper> mapper(make());
    EXPECT_EQ(object.refcount, 1);
}

} // namespace ToneMapperTests

namespace DataManagerTests {

using namespace FakeLibrary;
using testing::ElementsAre;
using Velmar::DataManager;
using Velmar::Reference;

namespace {

void initialiseData(Velmar::LibraryObject*, const Velmar::String* sdk_dir) {
    events.push_back("data manager in " + toStdString(*sdk_dir));
}

void initialiseTextures(Velmar::LibraryObject*, const Velmar::String* sdk_dir) {
    events.push_back("texture manager in " + toStdString(*sdk_dir));
}

void failToInitialise(Velmar::LibraryObject*, const Velmar::String*) {
    throw Velmar::Exception("no textures today");
}

class DataManagers : public testing::Test {
  protected:
    void SetUp() override {
        context = makeContext();
        data_operations[1] = operation(initialiseData);
        data.operations = data_operations;
        data.destroy = [](Velmar::LibraryObject*) { events.push_back("data manager destroyed"); };
        data.word_24 = reinterpret_cast<std::uintptr_t>(kept);
        texture_operations[1] = operation(initialiseTextures);
        textures.operations = texture_operations;
        textures.destroy = [](Velmar::LibraryObject*) { events.push_back("texture manager destroyed"); };
        objects = {{"DataManagerDLLAPI", &data}, {"TextureManagerDLLAPI", &textures}};
    }

    Reference<Velmar::VelmarContext> context;
    Velmar::LibraryObject::Operation data_operations[slot_count]{};
    Velmar::LibraryObject::Operation texture_operations[slot_count]{};
    Object data;
    Object textures;
    std::uint64_t kept[6]{10, 11, 12, 13, 14, 15};
};

} // namespace

TEST_F(DataManagers, MakesBothObjectsAndInitialisesThemWithTheLibrarysDirectory) {
    const Reference<DataManager> manager(new DataManager(*context));
    EXPECT_THAT(events, ElementsAre("create DataManagerDLLAPI", "data manager in sdk", "create TextureManagerDLLAPI",
                                    "texture manager in sdk"));
    EXPECT_EQ(data.refcount, 1);
    EXPECT_EQ(textures.refcount, 1);
}

TEST_F(DataManagers, LinksTheTextureManagerToTheSixthWordBehindTheDataManager) {
    const Reference<DataManager> manager(new DataManager(*context));
    EXPECT_EQ(textures.word_24, 15u);
}

TEST_F(DataManagers, DataManagerGoesBeforeItsTextureManager) {
    { const Reference<DataManager> manager(new DataManager(*context)); }
    events.erase(events.begin(), events.begin() + 4);
    EXPECT_THAT(events, ElementsAre("data manager destroyed", "texture manager destroyed"));
}

TEST_F(DataManagers, CodeOfTheLibrarysCreationIsNotLookedAt) {
    create_result = 1;
    const Reference<DataManager> manager(new DataManager(*context));
    EXPECT_EQ(textures.word_24, 15u);
}

TEST_F(DataManagers, ExceptionBecomesAVelmarExceptionOfTheSameText) {
    texture_operations[1] = operation(failToInitialise);
    try {
        const Reference<DataManager> manager(new DataManager(*context));
        FAIL() << "nothing was thrown";
    } catch (const Velmar::VelmarException& exception) {
        EXPECT_EQ(toStdString(exception.getMessage()), "no textures today");
    }
    EXPECT_EQ(data.refcount, 0);
    EXPECT_EQ(textures.refcount, 0);
}

} // namespace DataManagerTests
