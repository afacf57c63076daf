#include "velmarexceptions.h"

#include "utils/FileUtils.h"
#include "utils/MappedFile.h"
#include "utils/PlatformUtils.h"
#include "utils/System.h"

#include <atomic>
#include <limits>
#include <locale.h>
#include <new>
#include <vector>
#include <windows.h>
// After windows.h, which it needs.
#include <shlobj.h>

// ---- text and paths ----

namespace FileUtils {

namespace {

constexpr std::wstring_view long_path_prefix = L"\\\\?\\";

/// Calls a function of the form "size of the buffer with the final zero; length without it, or the needed size, or 0".
/// Empty on failure.
template <class Function>
std::wstring getWideText(Function function) {
    const DWORD size = function(nullptr, 0);
    if (size == 0) return {};
    std::wstring result(size, L'\0');
    const DWORD length = function(result.data(), size);
    result.resize(length < size ? length : 0);
    return result;
}

/// The absolute form of a path without `.`, `..` and `/`; empty on failure.
std::wstring getFullPath(const std::wstring& path) {
    return getWideText(
        [&](wchar_t* buffer, DWORD size) { return GetFullPathNameW(path.c_str(), size, buffer, nullptr); });
}

} // namespace

std::wstring utf8ToWide(std::string_view text) {
    if (text.empty() || text.size() > std::numeric_limits<int>::max()) return {};
    const int bytes = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    if (length <= 0) return {};
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    if (MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, wide.data(), length) != length) return {};
    return wide;
}

std::string wideToUtf8(std::wstring_view text) {
    if (text.empty() || text.size() > std::numeric_limits<int>::max()) return {};
    const int units = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    if (length <= 0) return {};
    std::string utf8(static_cast<std::size_t>(length), '\0');
    if (WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), length, nullptr, nullptr) != length) return {};
    return utf8;
}

std::filesystem::path toSystemPath(std::string_view path) {
    // Directories can be made up to this length without the prefix, files a little longer.
    constexpr std::size_t min_long_path = 248;
    const std::wstring wide = utf8ToWide(path);
    if (wide.starts_with(long_path_prefix) || wide.starts_with(L"\\\\.\\")) return wide;
    // The limit is one of the absolute path, so a short relative one may be too long as well.
    const std::wstring full = getFullPath(wide);
    if (full.size() < min_long_path) return wide;
    if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC\\" + full.substr(2);
    return std::wstring(long_path_prefix) + full;
}

// ---- files ----

bool fileExists(std::string_view path, std::uint32_t* error_code) {
    const std::filesystem::path system_path = toSystemPath(path);
    const bool found = GetFileAttributesW(system_path.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (!found && error_code != nullptr) *error_code = GetLastError();
    return found;
}

void createDir(std::string_view path) {
    const std::filesystem::path system_path = toSystemPath(path);
    if (CreateDirectoryW(system_path.c_str(), nullptr) != FALSE) return;
    const DWORD code = GetLastError();
    throw FileUtilsExcep("Failed to create directory '" + std::string(path) +
                         "': " + PlatformUtils::getErrorText(code));
}

} // namespace FileUtils

MappedFile::MappedFile(std::string_view path, Sharing sharing) {
    // The error code is taken first, since closing a handle may change it, and the message is composed last, since that
    // may run out of memory.
    const auto fail = [this](auto composeText) {
        const DWORD code = GetLastError();
        closeAll();
        throw Velmar::Exception(composeText() + PlatformUtils::getErrorText(code));
    };

    const std::filesystem::path system_path = FileUtils::toSystemPath(path);
    const DWORD share = sharing == Sharing::with_writers ? FILE_SHARE_READ | FILE_SHARE_WRITE : FILE_SHARE_READ;
    HANDLE const file =
        CreateFileW(system_path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) fail([path] { return "Failed to open file '" + std::string(path) + "': "; });
    file_handle = file;

    LARGE_INTEGER file_size = {};
    if (!GetFileSizeEx(file_handle, &file_size)) fail([] { return std::string("GetFileSizeEx failed: "); });
    size = static_cast<std::uint64_t>(file_size.QuadPart);
    // An empty file can't be mapped.
    if (size == 0) return;

    mapping_handle = CreateFileMappingW(file_handle, nullptr, PAGE_READONLY, 0, 0, nullptr);
    if (mapping_handle == nullptr) fail([] { return std::string("CreateFileMapping failed: "); });

    data =
        static_cast<const std::uint8_t*>(MapViewOfFile(mapping_handle, FILE_MAP_READ, 0, 0, static_cast<SIZE_T>(size)));
    if (data == nullptr) fail([] { return std::string("MapViewOfFile failed: "); });
}

MappedFile::~MappedFile() {
    closeAll();
}

void MappedFile::closeAll() noexcept {
    if (data != nullptr) UnmapViewOfFile(data);
    if (mapping_handle != nullptr) CloseHandle(mapping_handle);
    if (file_handle != nullptr) CloseHandle(file_handle);
}

// ---- errors, places, time ----

namespace PlatformUtils {

namespace {

constexpr DWORD buffer_size = 2048;

/// Seconds per tick of the performance counter; 0 until the clock is initialised.
std::atomic<double> clock_period = 0.0;

} // namespace

std::string getErrorText(std::uint32_t code) {
    constexpr DWORD neutral_default_language = 1024;
    const std::string number = std::to_string(static_cast<std::int32_t>(code));
    std::vector<wchar_t> buffer(buffer_size);
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                                        neutral_default_language, buffer.data(), buffer_size, nullptr);
    if (length == 0) return "[Unknown (error code=" + number + ")]";
    return FileUtils::trimTrailingWhitespace(FileUtils::wideToUtf8(buffer.data())) + " (code " + number + ")";
}

std::uint32_t getLastErrorCode() {
    return GetLastError();
}

std::uint32_t getProcessNumber() {
    return GetCurrentProcessId();
}

std::string getAppDataFolder() {
    wchar_t folder[MAX_PATH + 1] = {};
    const HRESULT result = SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder);
    if (result != S_OK) throw PlatformUtilsExcep("SHGetFolderPath() failed, Error code: " + std::to_string(result));
    return FileUtils::wideToUtf8(folder);
}

void requireProgramPath() {
    std::vector<wchar_t> program(buffer_size);
    if (GetModuleFileNameW(nullptr, program.data(), buffer_size) == 0)
        throw PlatformUtilsExcep("GetModuleFileName failed.");
}

void initClock() {
    LARGE_INTEGER frequency = {};
    QueryPerformanceFrequency(&frequency);
    clock_period = 1.0 / static_cast<double>(frequency.QuadPart);
}

double getTimeSeconds() {
    LARGE_INTEGER counter = {};
    QueryPerformanceCounter(&counter);
    return static_cast<double>(counter.QuadPart) * clock_period;
}

} // namespace PlatformUtils

namespace Velmar {

// ---- libraries loaded at run time ----

const std::string_view module_extension = ".dll";

void* loadModule(std::string_view path, std::string& error) {
    // The system would search for a name without a directory; a full path names one file.
    std::filesystem::path file = FileUtils::toSystemPath(path);
    if (GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES)
        file = FileUtils::toSystemPath(FileUtils::wideToUtf8(FileUtils::getFullPath(FileUtils::utf8ToWide(path))));
    void* const module = LoadLibraryW(file.c_str());
    if (module == nullptr) error = PlatformUtils::getLastErrorText();
    return module;
}

void* findSymbol(void* module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void unloadModule(void* module) {
    if (module != nullptr) FreeLibrary(static_cast<HMODULE>(module));
}

void setModuleSearchDirectory(std::string_view dir) {
    SetDllDirectoryW(FileUtils::utf8ToWide(dir).c_str());
}

// ---- synchronisation objects ----

static_assert(sizeof(CRITICAL_SECTION) == sizeof(CriticalSectionSlot));
static_assert(alignof(CRITICAL_SECTION) <= alignof(CriticalSectionSlot));
static_assert(sizeof(CONDITION_VARIABLE) == sizeof(ConditionVariableSlot));
static_assert(alignof(CONDITION_VARIABLE) <= alignof(ConditionVariableSlot));

void constructCriticalSection(CriticalSectionSlot& slot) {
    InitializeCriticalSection(new (slot.bytes) CRITICAL_SECTION);
}

void destroyCriticalSection(CriticalSectionSlot& slot) {
    DeleteCriticalSection(std::launder(reinterpret_cast<CRITICAL_SECTION*>(slot.bytes)));
}

void constructConditionVariable(ConditionVariableSlot& slot) {
    InitializeConditionVariable(new (slot.bytes) CONDITION_VARIABLE);
}

// ---- locale ----

struct PlainNumericLocale::State {
    int mode_before;
    std::string name_before;
};

PlainNumericLocale::PlainNumericLocale() : state(std::make_unique<State>()) {
    // Copied before anything is changed: running out of memory must leave the host's locale alone.
    const char* const name = setlocale(LC_NUMERIC, nullptr);
    if (name != nullptr) state->name_before = name;
    state->mode_before = _configthreadlocale(_ENABLE_PER_THREAD_LOCALE);
    setlocale(LC_NUMERIC, "C");
}

PlainNumericLocale::~PlainNumericLocale() {
    setlocale(LC_NUMERIC, state->name_before.c_str());
    if (state->mode_before != -1) _configthreadlocale(state->mode_before);
}

} // namespace Velmar
