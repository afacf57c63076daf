#pragma once

#include <string>
#include <vector>

struct ConversionSettings {
    float scale = 1.0F;
    bool plain = false;
    bool quiet = false;
};

/// Makes a vmmesh file of every mesh file below `input`, in the same place below `output`. Reports files that
/// fail and continues; prints a summary at the end. Throws `UsageError` when both are one folder, `Failure` when one
/// can't be used, and `ReportedFailure` when anything failed.
void convertFolder(const std::string& input, const std::string& output, const ConversionSettings& settings);

/// The names of the vmmesh files for mesh files, in their order: with the new extension in place of the old, or after
/// it where several would get one name. No two differ in the case of letters alone, unless the files do.
std::vector<std::string> nameConverted(const std::vector<std::string>& files);
