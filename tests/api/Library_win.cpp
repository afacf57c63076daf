#include "tests/api/Library.h"

#include <windows.h>

void* TestSupport::exportedFunction(const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"VelmarAPI.dll"), name));
}
