#include "tools/System.h"
#include "utils/System.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace System {

using FileUtils::toSystemPath;

namespace {

EntryKind getKind(int directory, const char* name) {
    struct stat status = {};
    const bool is_link = fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
    // A link that leads nowhere is a file that can't be read.
    if (is_link && fstatat(directory, name, &status, 0) != 0) return EntryKind::file;
    if (S_ISDIR(status.st_mode)) return is_link ? EntryKind::link_to_directory : EntryKind::directory;
    return S_ISREG(status.st_mode) ? EntryKind::file : EntryKind::other;
}

} // namespace

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

const char* const library_suffix = ".so";

std::string getProgramFolder() {
    const std::unique_ptr<char, decltype(&std::free)> file(realpath("/proc/self/exe", nullptr), std::free);
    if (file == nullptr) return {};
    const std::string path = file.get();
    return path.substr(0, path.rfind('/') + 1);
}

void* findLoadedFunction(std::string_view path, const char* name) {
    void* const library = dlopen(toSystemPath(path).c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) return nullptr;
    void* const function = dlsym(library, name);
    // Only the count that this call has added.
    dlclose(library);
    return function;
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

std::optional<FileIdentity> getIdentity(std::string_view path) {
    struct stat status = {};
    if (stat(toSystemPath(path).c_str(), &status) != 0) return std::nullopt;
    return FileIdentity{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

std::optional<FileStamp> getStamp(std::string_view path) {
    struct stat status = {};
    if (stat(toSystemPath(path).c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return FileStamp{static_cast<std::uint64_t>(status.st_size),
                     std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

std::uint64_t getMemorySize() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long page_size = sysconf(_SC_PAGESIZE);
    return pages > 0 && page_size > 0 ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page_size) : 0;
}

bool listDirectory(std::string_view path, std::vector<DirectoryEntry>& entries) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(toSystemPath(path).c_str()), &closedir);
    if (!directory) return false;
    while (true) {
        // The end and a failure differ in this alone.
        errno = 0;
        const dirent* const entry = readdir(directory.get());
        if (entry == nullptr) return errno == 0;
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        entries.push_back({std::string(name), getKind(dirfd(directory.get()), entry->d_name)});
    }
}

std::uint64_t getProcessID() {
    return static_cast<std::uint64_t>(getpid());
}

std::string followLinks(const std::string& path) {
    std::string target = toSystemPath(path);
    // As many as the system follows.
    for (int links = 0; links < 40; ++links) {
        char text[4096];
        const ssize_t length = readlink(target.c_str(), text, sizeof text);
        if (length <= 0) break;
        const std::string_view next(text, static_cast<std::size_t>(length));
        target = next.starts_with('/') ? std::string(next) : target.substr(0, target.rfind('/') + 1).append(next);
    }
    return target;
}

bool isWriteProtected(std::string_view path) {
    const std::string system_path = toSystemPath(path);
    struct stat status = {};
    if (stat(system_path.c_str(), &status) != 0) return false;
    // A privileged user may write anything, but a file that is protected from everybody is protected on purpose.
    return (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(system_path.c_str(), W_OK) != 0;
}

std::FILE* openFile(std::string_view path) {
    return std::fopen(toSystemPath(path).c_str(), "rbe");
}

std::FILE* openForAppending(std::string_view path) {
    return std::fopen(toSystemPath(path).c_str(), "abe");
}

bool createFile(std::string_view path) {
    const int file = open(toSystemPath(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    return file >= 0 && close(file) == 0;
}

bool moveFile(std::string_view from, std::string_view to) {
    struct stat status = {};
    // The owner may lack the right to give these; the file is whole all the same.
    if (stat(toSystemPath(to).c_str(), &status) == 0 && S_ISREG(status.st_mode))
        static_cast<void>(chmod(toSystemPath(from).c_str(), status.st_mode & 07777U) == 0);
    return std::rename(toSystemPath(from).c_str(), toSystemPath(to).c_str()) == 0;
}

bool syncFile(std::string_view path) {
    const int file = open(toSystemPath(path).c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool synced = fsync(file) == 0;
    return close(file) == 0 && synced;
}

void removeDirectory(std::string_view path) {
    rmdir(toSystemPath(path).c_str());
}

void removeFile(std::string_view path) {
    unlink(toSystemPath(path).c_str());
}

void onInterrupt(void (*clean_up)()) {
    sigset_t signals;
    sigemptyset(&signals);
    bool any = false;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        // What a parent has had ignored stays ignored.
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
        sigaddset(&signals, signal);
        any = true;
    }
    if (!any || pthread_sigmask(SIG_BLOCK, &signals, nullptr) != 0) return;
    std::thread([signals, clean_up] {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0) return;
        clean_up();
        std::signal(signal, SIG_DFL);
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        raise(signal);
        _exit(128 + signal);
    }).detach();
}

// Open files can be removed here.
void closeAllFiles() {}

} // namespace System
