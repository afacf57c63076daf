#include "velmarexceptions.h"

#include "utils/FileUtils.h"
#include "utils/MappedFile.h"
#include "utils/PlatformUtils.h"
#include "utils/System.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <new>
#include <pthread.h>
#include <pwd.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

// ---- files ----

namespace FileUtils {

std::filesystem::path toSystemPath(std::string_view path) {
    std::string result(path);
    replaceChar(result, '\\', '/');
    return result;
}

bool fileExists(std::string_view path, std::uint32_t* error_code) {
    const std::filesystem::path system_path = toSystemPath(path);
    struct stat status = {};
    const bool found = stat(system_path.c_str(), &status) == 0;
    if (!found && error_code != nullptr) *error_code = PlatformUtils::getLastErrorCode();
    return found;
}

void createDir(std::string_view path) {
    constexpr mode_t everyone = 0777;
    const std::filesystem::path system_path = toSystemPath(path);
    if (mkdir(system_path.c_str(), everyone) == 0) return;
    const std::uint32_t code = PlatformUtils::getLastErrorCode();
    throw FileUtilsExcep("Failed to create directory '" + std::string(path) +
                         "': " + PlatformUtils::getErrorText(code));
}

} // namespace FileUtils

namespace {

/// An open file for the length of the mapping call: the mapping itself doesn't need it.
class FileDescriptor {
  public:
    explicit FileDescriptor(const std::filesystem::path& path)
        // Not blocking, so that a pipe is refused and not waited for.
        : number(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~FileDescriptor() {
        if (number >= 0) close(number);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    const int number;
};

} // namespace

MappedFile::MappedFile(std::string_view path, Sharing) {
    const auto fail = [](const std::string& what, std::uint32_t code) {
        throw Velmar::Exception(what + PlatformUtils::getErrorText(code));
    };
    const auto openFailure = [path] { return "Failed to open file '" + std::string(path) + "': "; };

    const std::filesystem::path system_path = FileUtils::toSystemPath(path);
    const FileDescriptor file(system_path);
    std::uint32_t code = PlatformUtils::getLastErrorCode();
    if (file.number < 0) fail(openFailure(), code);

    struct stat status = {};
    if (fstat(file.number, &status) != 0) {
        code = PlatformUtils::getLastErrorCode();
        fail("fstat failed: ", code);
    }
    if (S_ISDIR(status.st_mode)) fail(openFailure(), EISDIR);
    if (!S_ISREG(status.st_mode)) throw Velmar::Exception(openFailure() + "Not a regular file");
    size = static_cast<std::uint64_t>(status.st_size);
    // An empty file can't be mapped.
    if (size == 0) return;

    void* const start = mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_PRIVATE, file.number, 0);
    if (start == MAP_FAILED) {
        code = PlatformUtils::getLastErrorCode();
        fail("mmap failed: ", code);
    }
    // All readers read from front to back.
    madvise(start, static_cast<std::size_t>(size), MADV_SEQUENTIAL);
    data = static_cast<const std::uint8_t*>(start);
}

MappedFile::~MappedFile() {
    closeAll();
}

void MappedFile::closeAll() noexcept {
    if (data != nullptr) munmap(const_cast<std::uint8_t*>(data), static_cast<std::size_t>(size));
}

// ---- errors, places, time ----

namespace PlatformUtils {

namespace {

/// Seconds per tick of the clock; 0 until the clock is initialised.
std::atomic<double> clock_period = 0.0;

std::string getHomeDirectory() {
    const char* const home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') return home;

    constexpr std::size_t max_entry_size = 16384;
    std::vector<char> buffer(max_entry_size);
    passwd entry = {};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    if (found == nullptr || found->pw_dir == nullptr) throw PlatformUtilsExcep("The user has no home directory.");
    return found->pw_dir;
}

} // namespace

std::string getErrorText(std::uint32_t code) {
    const auto signed_code = static_cast<std::int32_t>(code);
    const std::string number = std::to_string(signed_code);
    const std::string text = std::generic_category().message(signed_code);
    // What the runtime says of any number that it has no text for.
    if (text == "Unknown error " + number) return "[Unknown (error code=" + number + ")]";
    return text + " (code " + number + ")";
}

std::uint32_t getLastErrorCode() {
    return static_cast<std::uint32_t>(errno);
}

std::uint32_t getProcessNumber() {
    return static_cast<std::uint32_t>(getpid());
}

std::string getAppDataFolder() {
    const char* const data_home = std::getenv("XDG_DATA_HOME");
    // The rules of that variable say to ignore a relative path.
    if (data_home != nullptr && *data_home == '/') return data_home;
    return getHomeDirectory() + "/.local/share";
}

void requireProgramPath() {}

void initClock() {
    using Period = std::chrono::steady_clock::period;
    clock_period = static_cast<double>(Period::num) / static_cast<double>(Period::den);
}

double getTimeSeconds() {
    return static_cast<double>(std::chrono::steady_clock::now().time_since_epoch().count()) * clock_period;
}

} // namespace PlatformUtils

namespace Velmar {

// ---- libraries loaded at run time ----

const std::string_view module_extension = ".so";

void* loadModule(std::string_view path, std::string& error) {
    const std::filesystem::path system_path = FileUtils::toSystemPath(path);
    const auto release = [](char* text) { std::free(text); };
    // The absolute path is the system's own: a `\` in it belongs to a name and must not be converted.
    const std::unique_ptr<char, decltype(release)> full(realpath(system_path.c_str(), nullptr));
    void* const module = dlopen(full == nullptr ? system_path.c_str() : full.get(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        const char* const text = dlerror();
        error = text == nullptr ? "" : text;
    }
    return module;
}

void* findSymbol(void* module, const char* name) {
    return dlsym(module, name);
}

void unloadModule(void* module) {
    if (module != nullptr) dlclose(module);
}

void setModuleSearchDirectory(std::string_view) {}

// ---- synchronisation objects ----

static_assert(sizeof(pthread_mutex_t) <= sizeof(CriticalSectionSlot));
static_assert(alignof(pthread_mutex_t) <= alignof(CriticalSectionSlot));

void constructCriticalSection(CriticalSectionSlot& slot) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    const int failure = pthread_mutex_init(new (slot.bytes) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (failure != 0) throw BadAlloc();
}

void destroyCriticalSection(CriticalSectionSlot& slot) {
    pthread_mutex_destroy(std::launder(reinterpret_cast<pthread_mutex_t*>(slot.bytes)));
}

void constructConditionVariable(ConditionVariableSlot& slot) {
    // pthread_cond_t doesn't fit in the slot; an address to wait on is all that does.
    std::memset(slot.bytes, 0, sizeof slot.bytes);
}

// ---- locale ----

struct PlainNumericLocale::State {
    locale_t plain;
    locale_t before;
};

PlainNumericLocale::PlainNumericLocale() : state(std::make_unique<State>()) {
    state->plain = newlocale(LC_ALL_MASK, "C", locale_t{});
    if (state->plain != locale_t{}) state->before = uselocale(state->plain);
}

PlainNumericLocale::~PlainNumericLocale() {
    if (state->plain != locale_t{}) {
        uselocale(state->before);
        freelocale(state->plain);
    }
}

} // namespace Velmar
