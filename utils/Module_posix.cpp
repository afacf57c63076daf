#include "utils/Module.h"
#include "utils/SystemPath_posix.h"

#include <cstdlib>
#include <dlfcn.h>
#include <memory>

namespace Velmar {

void* loadModule(std::string_view path) {
    return dlopen(FileUtils::toSystemPath(path).c_str(), RTLD_NOW | RTLD_LOCAL);
}

std::string getModuleErrorText() {
    const char* const text = dlerror();
    return text == nullptr ? std::string() : text;
}

void* findSymbol(void* module, const char* name) {
    return dlsym(module, name);
}

void unloadModule(void* module) {
    if (module != nullptr) dlclose(module);
}

void setModuleSearchDirectory(std::string_view) {}

std::string getAbsolutePath(std::string_view path) {
    const auto release = [](char* text) { std::free(text); };
    const std::unique_ptr<char, decltype(release)> full(realpath(FileUtils::toSystemPath(path).c_str(), nullptr));
    return full == nullptr ? std::string(path) : full.get();
}

} // namespace Velmar
