#include "tests/standin/Environment.h"

#include <cstdlib>
#include <dlfcn.h>

namespace TestSupport {

void setEnvironmentVariable(const char* name, const char* value) {
    setenv(name, value, 1);
}

void* functionOfLoadedModule(const char* path, const char* name) {
    void* const module = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (module == nullptr) return nullptr;
    void* const function = dlsym(module, name);
    dlclose(module);
    return function;
}

} // namespace TestSupport
