#include "preview/System.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <sys/stat.h>
#include <windows.h>

namespace Preview::System {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::wstring widen(const std::string& text) {
    const int size = static_cast<int>(text.size());
    const int count = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(count), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), count);
    return result;
}

std::string narrow(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    const int count = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(count), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), count, nullptr, nullptr);
    return result;
}

/// Gives `from` the name `to`. Where somebody else does the same, or reads the file, at this moment, Windows refuses;
/// that is over soon.
bool replaceFile(const std::wstring& from, const std::wstring& to) {
    constexpr int max_attempts = 100;
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0) return true;
        const DWORD error = GetLastError();
        const bool may_pass = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        if (!may_pass || attempt == max_attempts) return false;
        Sleep(1);
    }
}

} // namespace

std::string getEnvironment(const char* name) {
    const std::wstring wide_name = widen(name);
    const DWORD size = GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0);
    if (size == 0) return {};
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(wide_name.c_str(), value.data(), size));
    return narrow(value);
}

std::string writeFileAtomically(const std::string& path, std::span<const unsigned char> bytes) {
    const std::wstring target = widen(path);
    std::wstring temporary;
    int descriptor = -1;
    // A file of that name may be left by a process that was killed.
    do {
        temporary = target + widen(temporaryEnding(GetCurrentProcessId()));
        descriptor = _wopen(temporary.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
    } while (descriptor < 0 && errno == EEXIST);
    if (descriptor < 0) return "the file can't be opened for writing";
    File file(_fdopen(descriptor, "wb"));
    if (file == nullptr) {
        _close(descriptor);
    } else {
        const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
        const bool closed = std::fclose(file.release()) == 0;
        if (written && closed && replaceFile(temporary, target)) return {};
    }
    DeleteFileW(temporary.c_str());
    return "the file can't be written";
}

std::string readFile(const std::string& path, std::uint64_t max_size, std::string& bytes) {
    const File file(_wfopen(widen(path).c_str(), L"rb"));
    if (file == nullptr) return "the file can't be opened";
    bytes.clear();
    char block[65536];
    while (const std::size_t count = std::fread(block, 1, sizeof block, file.get())) {
        if (bytes.size() + count > max_size) return "the file is too large";
        bytes.append(block, count);
    }
    return std::ferror(file.get()) != 0 ? "the file can't be read" : "";
}

void enterCriticalSection(void* section) {
    EnterCriticalSection(static_cast<CRITICAL_SECTION*>(section));
}

void leaveCriticalSection(void* section) {
    LeaveCriticalSection(static_cast<CRITICAL_SECTION*>(section));
}

} // namespace Preview::System
