#include "tests/support/System.h"

#include <cstdlib>
#include <dlfcn.h>

namespace TestSupport {

void setEnvironmentVariable(const std::string& name, const char* value) {
    if (value == nullptr)
        unsetenv(name.c_str());
    else
        setenv(name.c_str(), value, 1);
}

void* functionOfLoadedModule(const char* path, const char* name) {
    void* const module = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (module == nullptr) return nullptr;
    void* const function = dlsym(module, name);
    dlclose(module);
    return function;
}

void* exportedFunction(const char* name) {
    return dlsym(RTLD_DEFAULT, name);
}

void reportCrashes() {}

} // namespace TestSupport
