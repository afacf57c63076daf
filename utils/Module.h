#pragma once

#include <string>
#include <string_view>

/// Loading libraries at run time. Modules are opaque handles; paths are UTF-8.
namespace Velmar {

/// Loads the library file `path` and returns its module, or null: `getModuleErrorText` then tells why.
void* loadModule(std::string_view path);

/// Why the last `loadModule` of this thread failed. Call it right after the failure.
std::string getModuleErrorText();

/// The address of the exported name, or null when there is none.
void* findSymbol(void* module, const char* name);

/// Gives the module back; null does nothing.
void unloadModule(void* module);

/// Where the system looks for the libraries that a loaded one needs in turn. It stays set. Nothing on systems where
/// libraries say themselves where their dependencies lie.
void setModuleSearchDirectory(std::string_view dir);

/// The full path of an existing file, so that loading it depends on no search path; `path` itself when it can't be
/// told.
std::string getAbsolutePath(std::string_view path);

} // namespace Velmar
