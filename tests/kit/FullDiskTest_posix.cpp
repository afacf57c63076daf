#include "tests/kit/Support.h"
#include "tests/support/SmallDisk_posix.h"
#include "tests/support/TempDir.h"

#include <filesystem>

using namespace TestSupport;

TEST(KitDocument, OnAFullDiskIsReportedAndNothingIsLeft) {
    const TempDir dir;
    VelmarScene* const scene = newScene();
    for (int i = 0; i < 50; ++i)
        EXPECT_SUCCESS(VelmarKit_create_default_material(scene));
    const std::string path = dir.file("scene.xml");
    {
        const SmallDisk disk(4096);
        expectFailure(VelmarKit_Scene_WriteToXML(scene, path.c_str()), VELMARKIT_FILE_ERROR, "Error while writing to");
    }
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, path.c_str()));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}
