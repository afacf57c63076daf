#pragma once

#include "tests/support/Throws.h"
#include "utils/MappedFile.h"

#include <string>

namespace TestSupport {

/// What is said of a file that can't be mapped.
inline std::string openingFailure(const std::string& path) {
    return messageOf<Velmar::Exception>([&] { const MappedFile file(path); });
}

} // namespace TestSupport
