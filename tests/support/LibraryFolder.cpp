#include "tests/support/LibraryFolder.h"

#include "tests/support/FileBytes.h"
#include "tests/support/System.h"

#include <fstream>

namespace TestSupport {

namespace {

constexpr const char* sdk_folder = "vs2017_64";
constexpr const char* record_name = "record.txt";

} // namespace

LibraryFolder::LibraryFolder() : former(std::filesystem::current_path()) {
    std::filesystem::create_directory(path(sdk_folder));
    setEnvironmentVariable("VELMAR_FAKE_LIBRARY_RECORD", path(record_name).string().c_str());
    std::filesystem::current_path(systemPath(dir.path()));
}

LibraryFolder::~LibraryFolder() {
    std::filesystem::current_path(former);
}

void LibraryFolder::install(std::string_view variant, std::string_view name, std::string_view folder) const {
    const std::string suffix = VELMAR_FAKE_LIBRARY_SUFFIX;
    // The build's folder as seen from the drive on which the test was started.
    const std::filesystem::path built =
        former.root_path() / std::filesystem::path(VELMAR_FAKE_LIBRARY_DIR).relative_path() / variant;
    std::filesystem::create_directories(path(folder));
    std::filesystem::copy_file(built / ("velmar_sdk" + suffix), path(folder) / (std::string(name) + suffix));
}

void LibraryFolder::installText() const {
    std::ofstream(path(sdk_folder) / (std::string("velmar_sdk") + VELMAR_FAKE_LIBRARY_SUFFIX)) << "not a library";
}

void* LibraryFolder::functionOfLibrary(const char* name) const {
    const std::filesystem::path file = path(sdk_folder) / (std::string("velmar_sdk") + VELMAR_FAKE_LIBRARY_SUFFIX);
    return functionOfLoadedModule(file.string().c_str(), name);
}

std::vector<std::string> LibraryFolder::record() const {
    std::vector<std::string> lines;
    std::ifstream file(path(record_name));
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

void LibraryFolder::clearRecord() const {
    std::filesystem::remove(path(record_name));
}

std::filesystem::path LibraryFolder::path(std::string_view name) const {
    return systemPath(dir.path()) / name;
}

} // namespace TestSupport
