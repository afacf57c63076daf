#pragma once

namespace TestSupport {

/// Sets an environment variable of this process, as libraries see it.
void setEnvironmentVariable(const char* name, const char* value);

/// The address of an exported name of the renderer library that is loaded from `path`, or null.
void* functionOfLoadedModule(const char* path, const char* name);

} // namespace TestSupport
