#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The mesh files below a folder.
struct MeshSearch {
    /// As seen from the folder, with `/` between, in the order of their names.
    std::vector<std::string> files;
    /// What couldn't be looked into or named, and why.
    std::vector<std::string> failures;
    /// Links to folders, which aren't followed: they may lead anywhere, also back.
    std::size_t linked_folders = 0;
};

/// Looks for mesh files of every format in a folder and below, but not in the folder `left_out` and below. Throws
/// `Failure` when the folder itself can't be read.
MeshSearch findMeshFiles(const std::string& folder, const std::string& left_out);

/// Makes `folder` and those above it that aren't there. Throws the library's exception when one can't be made.
void makeFolders(const std::string& folder);
