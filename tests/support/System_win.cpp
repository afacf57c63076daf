#include "tests/support/System.h"

#include <stdlib.h>
#include <windows.h>

namespace TestSupport {

void setEnvironmentVariable(const std::string& name, const char* value) {
    // An empty value unsets the variable.
    _putenv_s(name.c_str(), value == nullptr ? "" : value);
}

void* functionOfLoadedModule(const char* path, const char* name) {
    const HMODULE module = GetModuleHandleA(path);
    return module == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(module, name));
}

void* exportedFunction(const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"VelmarAPI.dll"), name));
}

void reportCrashes() {
    _set_error_mode(_OUT_TO_STDERR);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
}

} // namespace TestSupport
