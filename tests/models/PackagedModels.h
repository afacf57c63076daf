#pragma once

#include <string>
#include <vector>

namespace Models {

/// What a reader made of a file: counts, or a message in their place.
struct Outcome {
    std::string message;
    std::size_t vertices = 0;
    /// Every quad counts for two.
    std::size_t triangles = 0;
    std::size_t materials = 0;
};

/// The OBJ, PLY and STL files of Debian's assimp-testmodels, as paths relative to `folder()`, in order.
std::vector<std::string> files();

/// Where the package lays its models.
std::string folder();

/// What our reader makes of a file of `files()`. Paths in messages are cut.
Outcome readOurs(const std::string& file);

} // namespace Models
