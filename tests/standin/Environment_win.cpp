#include "tests/standin/Environment.h"

#include <windows.h>

namespace TestSupport {

void setEnvironmentVariable(const char* name, const char* value) {
    SetEnvironmentVariableA(name, value);
}

void* functionOfLoadedModule(const char* path, const char* name) {
    const HMODULE module = GetModuleHandleA(path);
    return module == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(module, name));
}

} // namespace TestSupport
