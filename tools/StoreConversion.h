#pragma once

#include "tools/FolderConversion.h"

#include <string>

/// Converts a mesh file, or every mesh file below a folder if `recursive`, into the store of meshes `store_folder`,
/// which is made where it doesn't exist. Files that didn't change since they were converted are left out. Reports files
/// that fail and continues; prints a summary at the end. Throws `UsageError` for a folder if not `recursive`, `Failure`
/// when a folder can't be used, and `ReportedFailure` when anything failed.
void convertIntoStore(const std::string& input, bool recursive, const std::string& store_folder,
                      const ConversionSettings& settings);
