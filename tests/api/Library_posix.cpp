#include "tests/api/Library.h"

#include <dlfcn.h>

void* TestSupport::exportedFunction(const char* name) {
    return dlsym(RTLD_DEFAULT, name);
}
