#include "utils/System.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "utils/FileUtils.h"

#include <gtest/gtest.h>
#include <string>

namespace SystemTests {

using TestSupport::TempDir;

TEST(Module, AMissingFileIsNotLoadedForAReason) {
    const TempDir dir;
    std::string error;
    EXPECT_EQ(nullptr, Velmar::loadModule(dir.file("missing.dll"), error));
    EXPECT_FALSE(error.empty());
}

TEST(Module, AFileThatIsNoLibraryIsNotLoadedForAReason) {
    const TempDir dir;
    TestSupport::writeFileBytes(dir.file("text.dll"), "this is no library");
    std::string error;
    EXPECT_EQ(nullptr, Velmar::loadModule(dir.file("text.dll"), error));
    EXPECT_FALSE(error.empty());
}

TEST(Module, UnloadingNothingDoesNothing) {
    Velmar::unloadModule(nullptr);
}

} // namespace SystemTests
