#include "velmarexceptions.h"

#include "utils/MappedFile.h"
#include "utils/PlatformUtils.h"
#include "utils/SystemPath_posix.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// An open file for the length of the mapping call: the mapping itself needs it no longer.
class FileDescriptor {
  public:
    explicit FileDescriptor(const std::string& path)
        // Not blocking, so that a pipe is refused and not waited for.
        : number(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~FileDescriptor() {
        if (number >= 0) close(number);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    const int number;
};

[[noreturn]] void fail(const std::string& what, const std::string& why) {
    throw Velmar::Exception(what + why);
}

} // namespace

MappedFile::MappedFile(std::string_view path) {
    const std::string open_failure = "Failed to open file '" + std::string(path) + "': ";
    const FileDescriptor file(FileUtils::toSystemPath(path));
    if (file.number < 0) fail(open_failure, PlatformUtils::getLastErrorText());

    struct stat status = {};
    if (fstat(file.number, &status) != 0) fail("fstat failed: ", PlatformUtils::getLastErrorText());
    if (S_ISDIR(status.st_mode)) fail(open_failure, PlatformUtils::getErrorText(EISDIR));
    if (!S_ISREG(status.st_mode)) fail(open_failure, "Not a regular file");
    size = static_cast<std::uint64_t>(status.st_size);
    // An empty file can't be mapped.
    if (size == 0) return;

    void* const start = mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_PRIVATE, file.number, 0);
    if (start == MAP_FAILED) fail("mmap failed: ", PlatformUtils::getLastErrorText());
    // All readers go from front to back.
    madvise(start, static_cast<std::size_t>(size), MADV_SEQUENTIAL);
    data = static_cast<const std::uint8_t*>(start);
}

MappedFile::~MappedFile() {
    closeAll();
}

void MappedFile::closeAll() noexcept {
    if (data != nullptr) munmap(const_cast<std::uint8_t*>(data), static_cast<std::size_t>(size));
}
