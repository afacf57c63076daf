#include "renderer/VelmarContext.h"

#include "tests/renderer/FakeLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace VelmarContextTests {

using namespace FakeLibrary;
using testing::ElementsAre;
using Velmar::InterfaceRef;
using Velmar::Reference;
using Velmar::VelmarContext;

TEST(VelmarContext, FreshOneIsEmptyAndBoundToNothing) {
    const Reference<VelmarContext> context(new VelmarContext);
    EXPECT_TRUE(context->sdk_dir.empty());
    EXPECT_TRUE(context->appdata_dir.empty());
    EXPECT_EQ(context->dll_handle, nullptr);
    EXPECT_EQ(context->create_instance, nullptr);
    EXPECT_EQ(context->global_library_init, nullptr);
    EXPECT_EQ(context->global_library_shutdown, nullptr);
}

TEST(VelmarContext, ShutsTheLibraryDownWhenItEnds) {
    { const Reference<VelmarContext> context = makeContext(); }
    EXPECT_THAT(events, ElementsAre("shutdown"));
}

TEST(VelmarContext, CreatedObjectIsCountedOnce) {
    const Reference<VelmarContext> context = makeContext();
    Object object;
    object.destroy = destroyObject;
    objects = {{"Thing", &object}};
    InterfaceRef made;
    EXPECT_EQ(context->createObject("Thing", made), 0);
    EXPECT_EQ(made.getPointer(), object.asLibraryObject());
    EXPECT_EQ(object.refcount, 1);
}

TEST(VelmarContext, ObjectIsTakenEvenWithACodeOfFailure) {
    const Reference<VelmarContext> context = makeContext();
    create_result = 3;
    Object object;
    object.destroy = destroyObject;
    objects = {{"Thing", &object}};
    InterfaceRef made;
    EXPECT_EQ(context->createObject("Thing", made), 3);
    EXPECT_EQ(made.getPointer(), object.asLibraryObject());
}

TEST(VelmarContext, LibraryThatMakesNothingLeavesTheHolderEmpty) {
    const Reference<VelmarContext> context = makeContext();
    InterfaceRef made;
    context->createObject("Thing", made);
    EXPECT_EQ(made.getPointer(), nullptr);
}

} // namespace VelmarContextTests
