#include "utils/Module.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "utils/FileUtils.h"

#include <gtest/gtest.h>
#include <string>

using TestSupport::TempDir;

TEST(Module, AMissingFileIsNotLoadedAndTheReasonIsTold) {
    const TempDir dir;
    EXPECT_EQ(nullptr, Velmar::loadModule(dir.file("missing.dll")));
    EXPECT_FALSE(Velmar::getModuleErrorText().empty());
}

TEST(Module, AFileThatIsNoLibraryIsNotLoadedAndTheReasonIsTold) {
    const TempDir dir;
    TestSupport::writeFileBytes(dir.file("text.dll"), "this is no library");
    EXPECT_EQ(nullptr, Velmar::loadModule(dir.file("text.dll")));
    EXPECT_FALSE(Velmar::getModuleErrorText().empty());
}

TEST(Module, UnloadingNothingDoesNothing) {
    Velmar::unloadModule(nullptr);
}

TEST(AbsolutePath, NamesTheSameFile) {
    const TempDir dir;
    TestSupport::writeFileBytes(dir.file("a ä"), "here");
    const std::string full = Velmar::getAbsolutePath(dir.path() + "/./a ä");
    EXPECT_EQ("here", TestSupport::readFileBytes(full));
    EXPECT_EQ(std::string::npos, full.find("/./"));
    EXPECT_EQ(std::string::npos, full.find("\\.\\"));
}
