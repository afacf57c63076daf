#include "utils/Module.h"
#include "utils/PlatformUtils.h"
#include "utils/WideText_win.h"

#include <windows.h>

namespace Velmar {

void* loadModule(std::string_view path) {
    return LoadLibraryW(FileUtils::toSystemPath(path).c_str());
}

std::string getModuleErrorText() {
    return PlatformUtils::getLastErrorText();
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

std::string getAbsolutePath(std::string_view path) {
    const std::wstring wide = FileUtils::utf8ToWide(path);
    const DWORD room = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    std::wstring full(room, L'\0');
    const DWORD length = GetFullPathNameW(wide.c_str(), room, full.data(), nullptr);
    if (length == 0 || length >= room) return std::string(path);
    full.resize(length);
    return FileUtils::wideToUtf8(full);
}

} // namespace Velmar
