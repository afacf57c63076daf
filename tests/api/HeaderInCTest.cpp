#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

namespace HeaderInCTests {

extern "C" const char* writeSceneFromC(const char* path);

TEST(HeaderInC, AHostInCWritesAScene) {
    const TestSupport::TempDir dir;
    const std::string path = dir.file("scene.xml");
    writeSceneFromC(path.c_str());
    const std::string document = TestSupport::readFileBytes(path);
    EXPECT_NE(document.find("<name>from C</name>"), std::string::npos);
    EXPECT_NE(document.find(dir.file("scene_meshes\\mesh_")), std::string::npos);
}

} // namespace HeaderInCTests
