#pragma once

#include <string>

namespace TestSupport {

/// An environment variable with another value, or none, as long as the object lives.
class ScopedVariable {
  public:
    /// A null `value` unsets the variable.
    ScopedVariable(const char* name, const char* value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    std::string variable;
    std::string old_value;
    bool was_set;
};

} // namespace TestSupport
