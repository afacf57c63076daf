#include "tools/OutputFile.h"

#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <random>
#include <shared_mutex>
#include <thread>
#include <utility>
#include <vector>

namespace {

/// The unfinished files and the folders made for them, in the order of making. An interrupt keeps both mutexes for
/// ever, so nothing is renamed or made after it removed them.
struct Unfinished {
    std::recursive_mutex mutex;
    /// Shared by the threads that have the system write a file back, each of which may wait long for the disk. Locked
    /// under `mutex` and unlocked without it.
    std::shared_mutex flushes;
    std::vector<std::string> files;
    std::vector<std::string> folders;
};

Unfinished& unfinished() {
    // Never destroyed: an interrupt may come while the program ends.
    static auto* const all = new Unfinished;
    return *all;
}

void forget(std::vector<std::string>& paths, const std::string& path) {
    if (const auto found = std::find(paths.begin(), paths.end(), path); found != paths.end()) paths.erase(found);
}

/// Also removes the files that a library writes on the way, whose names are longer. Returns whether none was there.
bool removeWithSiblings(const std::string& path) {
    const std::string folder = FileUtils::getDirectory(path);
    const std::string name = Text::fileName(path);
    std::vector<System::DirectoryEntry> entries;
    System::listDirectory(folder, entries);
    bool none = true;
    for (const System::DirectoryEntry& entry : entries) {
        if (entry.kind != System::EntryKind::file || !entry.name.starts_with(name)) continue;
        none = false;
        System::removeFile(FileUtils::join(folder, entry.name));
    }
    return none;
}

void removeUnfinished() {
    Unfinished& all = unfinished();
    all.mutex.lock();
    all.flushes.lock();
    // The interrupted thread may have a file open for some time, or be about to open it, so that one look isn't enough.
    // Once its file is closed under it, it fails and waits for the mutex.
    constexpr int max_attempts = 200;
    constexpr int min_looks = 25;
    for (int attempt = 0, looks = 0; attempt < max_attempts && looks < min_looks; ++attempt) {
        System::closeAllFiles();
        bool none = true;
        for (const std::string& path : all.files)
            none = removeWithSiblings(path) && none;
        looks = none ? looks + 1 : 0;
        if (all.files.empty()) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::for_each(all.folders.rbegin(), all.folders.rend(),
                  [](const std::string& folder) { System::removeDirectory(folder); });
}

constexpr std::string_view partial_mark = "-partial-";

/// Unlike any name that another process uses now.
std::string makePartialPath(const std::string& path) {
    static std::mt19937 random{std::random_device()()};
    constexpr std::string_view hex = "0123456789abcdef";
    std::string digits;
    for (int i = 0; i < 8; ++i)
        digits += hex[random() % hex.size()];
    return path + std::string(partial_mark) + std::to_string(System::getProcessID()) + '-' + digits;
}

} // namespace

OutputFile::OutputFile(std::string path, std::string_view extension)
    : given_path(std::move(path)), final_path(System::followLinks(System::getAbsolutePath(given_path))) {
    if (System::isDirectory(final_path)) throw Failure(given_path + ": is a directory");
    if (System::isWriteProtected(final_path)) throw Failure(given_path + ": is write-protected, so it isn't replaced");
    const Interrupts::Deferral deferral;
    const std::string candidate = makePartialPath(final_path).append(extension);
    if (!System::createFile(candidate))
        throw Failure(given_path + ": can't be written: " + PlatformUtils::getLastErrorText());
    partial_path = candidate;
    unfinished().files.push_back(partial_path);
}

OutputFile::~OutputFile() {
    if (partial_path.empty()) return;
    const Interrupts::Deferral deferral;
    System::removeFile(partial_path);
    forget(unfinished().files, partial_path);
}

bool OutputFile::isPartialName(std::string_view name) {
    return name.find(partial_mark) != std::string_view::npos;
}

Failure OutputFile::makeFailure() const {
    std::string message = getCurrentMessage();
    const std::size_t at = message.find(partial_path);
    if (at != std::string::npos) return Failure(message.replace(at, partial_path.size(), given_path));
    return Failure(given_path + ": " + message);
}

void OutputFile::flush() {
    // An interrupt waits: it can't remove the file everywhere while the system has it open here.
    std::shared_lock flushing(unfinished().flushes, std::defer_lock);
    {
        const Interrupts::Deferral deferral;
        flushing.lock();
    }
    // Some systems report a full disk only here.
    if (!System::syncFile(partial_path))
        throw Failure(given_path + ": wasn't written whole: " + PlatformUtils::getLastErrorText());
    flushed = true;
}

std::uint64_t OutputFile::commit() {
    if (!flushed) flush();
    const Interrupts::Deferral deferral;
    const std::uint64_t size = MappedFile(partial_path).getSize();
    if (!System::moveFile(partial_path, final_path))
        throw Failure(given_path + ": can't be replaced: " + PlatformUtils::getLastErrorText());
    forget(unfinished().files, partial_path);
    partial_path.clear();
    return size;
}

void Interrupts::install() {
    System::onInterrupt(&removeUnfinished);
}

Interrupts::Deferral::Deferral() {
    unfinished().mutex.lock();
}

Interrupts::Deferral::~Deferral() {
    unfinished().mutex.unlock();
}

OutputFolder::OutputFolder(std::string path) {
    if (System::isDirectory(path)) return;
    const Interrupts::Deferral deferral;
    try {
        FileUtils::createDir(path);
    } catch (...) {
        // Another process may have been faster.
        if (!System::isDirectory(path)) throw;
        return;
    }
    made_path = std::move(path);
    unfinished().folders.push_back(made_path);
}

OutputFolder::~OutputFolder() {
    if (made_path.empty()) return;
    const Interrupts::Deferral deferral;
    System::removeDirectory(made_path);
    forget(unfinished().folders, made_path);
}
