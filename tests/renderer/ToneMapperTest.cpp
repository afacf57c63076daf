#include "renderer/ToneMapper.h"

#include "scene/SceneNodeRoot.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "tests/renderer/FakeLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
