#pragma once

#include "import/MeshImport.h"

#include "tools/MeshFormats.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

struct ConversionSettings {
    float scale = 1.0F;
    /// As `makeUpright` takes it.
    std::string up = "auto";
    /// Of the files of a folder.
    std::string format = "vmmesh";
    WriteSettings write;
    bool quiet = false;
    /// How many files of a folder are converted at once.
    unsigned jobs = 1;
    /// What these may take, in bytes; a file that needs more waits until it is alone.
    std::uint64_t memory = std::numeric_limits<std::uint64_t>::max();
};

/// About how much memory the conversion of a mesh file takes at most.
std::uint64_t estimateMemory(const std::string& path);

/// Reads a mesh file and turns its height to z. Throws `Failure`, also for a mesh without faces.
Velmar::ImportedMesh readForConversion(const std::string& path, const ConversionSettings& settings);

/// Converts every mesh file below `input`, in the same place below `output`. Reports files that
/// fail and continues; prints a summary at the end. Reports and results don't depend on the number of jobs. Throws
/// `UsageError` when both are one folder, `Failure` when one can't be used, and `ReportedFailure` when anything failed.
void convertFolder(const std::string& input, const std::string& output, const ConversionSettings& settings);

/// What `velmar convert --store` takes besides.
struct StoreSettings {
    std::string folder;
    /// The file with the names of the inputs, "-" for the standard input; empty for a single input.
    std::string list;
    /// Search the inputs that are folders.
    bool recursive = false;
    /// Convert what didn't change too, without reading the manifest.
    bool force = false;
    /// Print what would be converted.
    bool dry_run = false;
    /// Print a line of JSON for each file.
    bool json = false;
    /// The file of the manifest to append to; empty for a new one.
    std::string manifest;
};

/// Converts the mesh file `input`, or those that a list names, or those below folders, into a store of meshes,
/// which is made where it doesn't exist. Files that didn't change since they were converted are left out. Reports files
/// that fail and continues; prints a summary at the end. Throws `UsageError` for a folder if not recursive, `Failure`
/// when the store or the list can't be used, and `ReportedFailure` when anything failed.
void convertIntoStore(const std::string& input, const StoreSettings& store, const ConversionSettings& settings);

/// The names of the converted files, in the order of `files`: with `extension` in place of the old, or after
/// it where several would get one name. No two differ in the case of letters alone, unless the files do.
std::vector<std::string> nameConverted(const std::vector<std::string>& files, const std::string& extension);
