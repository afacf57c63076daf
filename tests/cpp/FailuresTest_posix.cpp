// Failures that need the system's help.

#include "velmar.hpp"

#include "tests/support/SmallDisk_posix.h"
#include "tests/support/TempDir.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace TestSupport;

TEST(CppFailures, FullDisk) {
    const TempDir dir;
    velmar::Scene scene;
    for (int i = 0; i < 50; ++i)
        scene.addDefaultMaterial();
    {
        const SmallDisk disk(4096);
        EXPECT_THROW(scene.write(dir.file("scene.xml")), velmar::FileError);
    }
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
    scene.write(dir.file("scene.xml"));
}

// The sanitizers' own memory is beyond any limit.
#ifndef VELMAR_SANITIZED
namespace {

/// Leaves little more memory than the process has. Ends the process with 0 if the library reports that.
[[noreturn]] void exhaustMemory() {
    const std::vector<float> corners(std::size_t{3} << 24);
    velmar::Mesh mesh("Mesh");
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t used = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
    const rlimit limit = {used + (1 << 20), used + (1 << 20)};
    setrlimit(RLIMIT_AS, &limit);
    try {
        mesh.addVertices(corners);
    } catch (const velmar::OutOfMemoryError&) {
        // The mesh is still alive.
        _exit(mesh.counts().vertices == 0 ? 0 : 2);
    }
    _exit(1);
}

} // namespace

TEST(CppFailures, ExhaustedMemory) {
    EXPECT_EXIT(exhaustMemory(), testing::ExitedWithCode(0), "");
}
#endif
