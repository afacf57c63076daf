#include "renderer/DataManager.h"

#include "velmarexceptions.h"

#include "tests/renderer/FakeLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
