#include "preview/System.h"

#include <cstdio>
#include <memory>
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
    const std::wstring temporary = target + L"." + std::to_wstring(GetCurrentProcessId()) + L".part";
    File file(_wfopen(temporary.c_str(), L"wb"));
    if (file == nullptr) return "the file can't be opened for writing";
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    const bool closed = std::fclose(file.release()) == 0;
    if (written && closed && MoveFileExW(temporary.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0) return {};
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

unsigned builderThreads(unsigned wanted) {
    return wanted;
}

} // namespace Preview::System
