#pragma once

#include "tools/Console.h"

#include <cstdint>
#include <string>
#include <vector>

/// What is asked of `unpackArchive`.
struct UnpackRequest {
    std::string archive;
    /// Made if need be. Without a separator at its end.
    std::string folder;
    /// Whether existing files are replaced.
    bool force = false;
    /// In bytes, of all files together.
    std::uint64_t max_size = 0;
    std::uint64_t max_files = 0;
};

struct UnpackResult {
    /// As the archive has them.
    std::vector<std::string> names;
    std::uint64_t size = 0;
};

/// Unpacks all files of a zip archive, which may be damaged or made to do harm, or none. Writes nothing outside of the
/// folder: names that lead out of it, absolute ones, drives, devices and links are refused. Throws `Failure`.
UnpackResult unpackArchive(const UnpackRequest& request, Progress& progress);
