#include "tests/support/TempDir.h"

#include "tests/support/FileBytes.h"

#include <filesystem>
#include <random>
#include <stdexcept>
#include <system_error>

namespace TestSupport {

TempDir::TempDir() {
    std::random_device random;
    const std::filesystem::path parent = std::filesystem::temp_directory_path();
    const std::filesystem::path made =
        parent / ("velmar-test-" + std::to_string(random()) + "-" + std::to_string(random()));
    if (!std::filesystem::create_directory(made)) throw std::runtime_error("can't make a temporary directory");
    const std::u8string text = made.u8string();
    dir.assign(text.begin(), text.end());
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(systemPath(dir), ignored);
}

std::string TempDir::file(std::string_view name) const {
    return dir + '\\' + std::string(name);
}

} // namespace TestSupport
