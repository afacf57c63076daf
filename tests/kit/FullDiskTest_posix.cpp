#include "tests/kit/Support.h"
#include "tests/support/TempDir.h"

#include <csignal>
#include <filesystem>
#include <sys/resource.h>

using namespace TestSupport;

namespace {

/// While it lives, no file grows beyond `size` bytes: writing behaves as on a disk that is full.
class SmallDisk {
  public:
    explicit SmallDisk(rlim_t size) : former_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &former);
        const rlimit small = {size, former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &former);
        std::signal(SIGXFSZ, former_handler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

  private:
    void (*former_handler)(int);
    rlimit former = {};
};

} // namespace

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
