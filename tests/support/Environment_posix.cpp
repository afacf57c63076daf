#include "tests/support/Environment.h"

#include <cstdlib>

namespace TestSupport {

namespace {

void set(const std::string& name, const char* value) {
    if (value == nullptr)
        unsetenv(name.c_str());
    else
        setenv(name.c_str(), value, 1);
}

} // namespace

ScopedVariable::ScopedVariable(const char* name, const char* value) : variable(name) {
    const char* const old = std::getenv(name);
    was_set = old != nullptr;
    if (was_set) old_value = old;
    set(variable, value);
}

ScopedVariable::~ScopedVariable() {
    set(variable, was_set ? old_value.c_str() : nullptr);
}

} // namespace TestSupport
