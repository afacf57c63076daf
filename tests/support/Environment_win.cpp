#include "tests/support/Environment.h"

#include <cstdlib>
#include <stdlib.h>

namespace TestSupport {

namespace {

void set(const std::string& name, const char* value) {
    // An empty value takes the variable away.
    _putenv_s(name.c_str(), value == nullptr ? "" : value);
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
