#include "tools/System.h"
#include "utils/System.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>
// After windows.h, whose types it uses.
#include <shellapi.h>

namespace System {

using FileUtils::toSystemPath;
using FileUtils::utf8ToWide;
using FileUtils::wideToUtf8;

namespace {

EntryKind getKind(const WIN32_FIND_DATAW& found) {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return EntryKind::file;
    // Other directories with a tag are ordinary ones that some file system keeps elsewhere.
    const bool is_link =
        (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
        (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK || found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
    return is_link ? EntryKind::link_to_directory : EntryKind::directory;
}

} // namespace

// The bytes that `main` gets have passed through the system's code page and lost what it doesn't hold.
std::vector<std::string> getArguments(int, char**) {
    int count = 0;
    LPWSTR* const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(wideToUtf8(wide[i]));
    LocalFree(wide);
    return arguments;
}

ConsoleEncoding::ConsoleEncoding() : before(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
}

// The console outlives the program, and so would its setting.
ConsoleEncoding::~ConsoleEncoding() {
    if (before != 0) SetConsoleOutputCP(before);
}

SilentOutput::SilentOutput() {
    std::fflush(stdout);
    const int nowhere = _wopen(L"NUL", _O_WRONLY);
    if (nowhere < 0) return;
    saved = _dup(_fileno(stdout));
    if (saved >= 0) _dup2(nowhere, _fileno(stdout));
    _close(nowhere);
}

SilentOutput::~SilentOutput() {
    if (saved < 0) return;
    std::fflush(stdout);
    _dup2(saved, _fileno(stdout));
    _close(saved);
}

bool isTerminal(std::FILE* file) {
    DWORD mode = 0;
    return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file))), &mode) != 0;
}

std::string getAbsolutePath(std::string_view path) {
    const std::wstring wide = utf8ToWide(path);
    const DWORD room = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    std::wstring full(room, L'\0');
    const DWORD length = GetFullPathNameW(wide.c_str(), room, full.data(), nullptr);
    full.resize(length < room ? length : 0);
    return full.empty() ? std::string(path) : wideToUtf8(full);
}

bool enterDirectory(std::string_view path) {
    return SetCurrentDirectoryW(utf8ToWide(path).c_str()) != 0;
}

const char* const library_suffix = ".dll";

std::string getProgramFolder() {
    constexpr DWORD max_length = 32768;
    std::wstring file(max_length, L'\0');
    file.resize(GetModuleFileNameW(nullptr, file.data(), max_length));
    file.resize(file.rfind(L'\\') + 1);
    return wideToUtf8(file);
}

void* findLoadedFunction(std::string_view path, const char* name) {
    const HMODULE library = GetModuleHandleW(toSystemPath(path).c_str());
    return library == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(library, name));
}

bool isDirectory(std::string_view path) {
    const DWORD attributes = GetFileAttributesW(toSystemPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::optional<FileIdentity> getIdentity(std::string_view path) {
    constexpr DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    // The flag is what lets a directory be opened.
    const HANDLE file = CreateFileW(toSystemPath(path).c_str(), FILE_READ_ATTRIBUTES, share, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    BY_HANDLE_FILE_INFORMATION information = {};
    const bool known = GetFileInformationByHandle(file, &information) != 0;
    CloseHandle(file);
    if (!known) return std::nullopt;
    return FileIdentity{information.dwVolumeSerialNumber,
                        (std::uint64_t{information.nFileIndexHigh} << 32U) | information.nFileIndexLow};
}

std::optional<FileStamp> getStamp(std::string_view path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (GetFileAttributesExW(toSystemPath(path).c_str(), GetFileExInfoStandard, &data) == 0 ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return std::nullopt;
    const auto join = [](DWORD high, DWORD low) { return (std::uint64_t{high} << 32U) | low; };
    // Hundreds of nanoseconds from 1601 to 1970.
    constexpr std::int64_t begin = 116'444'736'000'000'000;
    const auto time = join(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime);
    return FileStamp{join(data.nFileSizeHigh, data.nFileSizeLow), (static_cast<std::int64_t>(time) - begin) * 100};
}

std::uint64_t getMemorySize() {
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) != 0 ? status.ullTotalPhys : 0;
}

bool listDirectory(std::string_view path, std::vector<DirectoryEntry>& entries) {
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(toSystemPath(std::string(path) + "/*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_FILE_NOT_FOUND && isDirectory(path);
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") entries.push_back({wideToUtf8(name), getKind(found)});
    } while (FindNextFileW(search, &found) != 0);
    const DWORD reason = GetLastError();
    FindClose(search);
    SetLastError(reason);
    return reason == ERROR_NO_MORE_FILES;
}

std::uint64_t getProcessID() {
    return GetCurrentProcessId();
}

std::string followLinks(const std::string& path) {
    const std::wstring system_path = toSystemPath(path);
    const DWORD attributes = GetFileAttributesW(system_path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return path;
    const HANDLE file =
        CreateFileW(system_path.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return path;
    std::wstring target(GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    target.resize(
        GetFinalPathNameByHandleW(file, target.data(), static_cast<DWORD>(target.size()), FILE_NAME_NORMALIZED));
    CloseHandle(file);
    constexpr std::wstring_view prefix = L"\\\\?\\";
    constexpr std::wstring_view share_prefix = L"\\\\?\\UNC\\";
    if (target.starts_with(share_prefix)) target.replace(0, share_prefix.size(), L"\\\\");
    if (target.starts_with(prefix)) target.erase(0, prefix.size());
    return target.empty() ? path : wideToUtf8(target);
}

bool isWriteProtected(std::string_view path) {
    const DWORD attributes = GetFileAttributesW(toSystemPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

std::FILE* openFile(std::string_view path) {
    return _wfopen(toSystemPath(path).c_str(), L"rb");
}

std::FILE* openForAppending(std::string_view path) {
    return _wfopen(toSystemPath(path).c_str(), L"ab");
}

bool createFile(std::string_view path) {
    const HANDLE file =
        CreateFileW(toSystemPath(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file) != 0;
}

bool moveFile(std::string_view from, std::string_view to) {
    const std::wstring system_from = toSystemPath(from);
    const std::wstring system_to = toSystemPath(to);
    // Another program may have the old file open for a moment: one that reads it, or that replaces it too.
    for (int attempt = 0;; ++attempt) {
        if (MoveFileExW(system_from.c_str(), system_to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0) return true;
        const DWORD reason = GetLastError();
        constexpr int max_attempts = 200;
        if ((reason != ERROR_SHARING_VIOLATION && reason != ERROR_ACCESS_DENIED) || attempt == max_attempts)
            return false;
        Sleep(10);
    }
}

bool syncFile(std::string_view path) {
    const HANDLE file = CreateFileW(toSystemPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    const bool synced = FlushFileBuffers(file) != 0;
    CloseHandle(file);
    return synced;
}

void removeDirectory(std::string_view path) {
    RemoveDirectoryW(toSystemPath(path).c_str());
}

void removeFile(std::string_view path) {
    DeleteFileW(toSystemPath(path).c_str());
}

namespace {

void (*clean_up_at_interrupt)() = nullptr;

BOOL WINAPI handleInterrupt(DWORD) {
    clean_up_at_interrupt();
    // Without the work of an ordinary end, which would wait for the thread that was interrupted.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(STATUS_CONTROL_C_EXIT));
    return TRUE;
}

} // namespace

void onInterrupt(void (*clean_up)()) {
    clean_up_at_interrupt = clean_up;
    SetConsoleCtrlHandler(&handleInterrupt, TRUE);
}

void closeAllFiles() {
    // The C runtime's open files, but for the three standard ones, without its locks.
    constexpr int max_files = 2048;
    for (int file = 3; file < max_files; ++file) {
        const auto handle = _get_osfhandle(file);
        if (handle != -1 && handle != -2) CloseHandle(reinterpret_cast<HANDLE>(handle));
    }
}

} // namespace System
