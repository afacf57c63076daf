#include "tests/support/TempDir.h"

#include "tests/support/FileBytes.h"

#include <algorithm>
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

std::vector<std::string> TempDir::names() const {
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(systemPath(dir))) {
        const std::u8string name = entry.path().filename().u8string();
        result.emplace_back(name.begin(), name.end());
    }
    std::sort(result.begin(), result.end());
    return result;
}

} // namespace TestSupport
