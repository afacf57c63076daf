#pragma once

#include <string>
#include <string_view>

/// Names of files that are made in a folder, wherever that is: relative, with `/` or `\` between, as every system takes
/// them.

/// Why a file of this name can't be made in a folder, or would be outside of it; empty if it can.
std::string findNameFault(std::string_view name);

/// The name of a file, without folders, with `_` for what systems don't take.
std::string makeSafeName(std::string_view name);
