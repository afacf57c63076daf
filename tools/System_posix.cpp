#include "tools/System.h"
#include "utils/SystemPath_posix.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace System {

using FileUtils::toSystemPath;

std::vector<std::string> getArguments(int argc, char** argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

// A terminal here takes the bytes as they are.
ConsoleEncoding::ConsoleEncoding() = default;
ConsoleEncoding::~ConsoleEncoding() = default;

SilentOutput::SilentOutput() {
    std::fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) return;
    saved = dup(STDOUT_FILENO);
    if (saved >= 0) dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

SilentOutput::~SilentOutput() {
    if (saved < 0) return;
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
}

bool isTerminal(std::FILE* file) {
    return isatty(fileno(file)) != 0;
}

std::string getAbsolutePath(std::string_view path) {
    const std::string system_path = toSystemPath(path);
    if (system_path.starts_with('/')) return system_path;
    const std::unique_ptr<char, decltype(&std::free)> here(getcwd(nullptr, 0), &std::free);
    return here ? std::string(here.get()) + '/' + system_path : system_path;
}

bool enterDirectory(std::string_view path) {
    return chdir(toSystemPath(path).c_str()) == 0;
}

bool isDirectory(std::string_view path) {
    struct stat status = {};
    return stat(toSystemPath(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool moveFile(std::string_view from, std::string_view to) {
    return std::rename(toSystemPath(from).c_str(), toSystemPath(to).c_str()) == 0;
}

void removeFile(std::string_view path) {
    unlink(toSystemPath(path).c_str());
}

} // namespace System
