#include "tests/support/System.h"

#include <cstdlib>

namespace TestSupport {

ScopedVariable::ScopedVariable(const char* name, const char* value) : variable(name) {
    const char* const old = std::getenv(name);
    was_set = old != nullptr;
    if (was_set) old_value = old;
    setEnvironmentVariable(variable, value);
}

ScopedVariable::~ScopedVariable() {
    setEnvironmentVariable(variable, was_set ? old_value.c_str() : nullptr);
}

} // namespace TestSupport
