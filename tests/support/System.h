#pragma once

#include <string>

/// What tests need of the system.
namespace TestSupport {

/// Sets an environment variable of this process, as libraries see it too. A null `value` unsets it.
void setEnvironmentVariable(const std::string& name, const char* value);

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

/// The address of an exported name of the library that is loaded from `path`, or null.
void* functionOfLoadedModule(const char* path, const char* name);

/// The address of a name that the loaded VelmarAPI exports, or null.
void* exportedFunction(const char* name);

/// Has failed assertions and crashes end the process with a report on the standard error stream. Windows would open a
/// dialogue and wait for a click.
void reportCrashes();

} // namespace TestSupport
