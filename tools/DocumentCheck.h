#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What `velmar check` says about a place in a scene document.
struct Finding {
    bool is_error;
    /// The name in the catalogue, docs/check.md.
    const char* code;
    /// Where the element begins in the file.
    std::size_t offset;
    /// The element, such as `camera[uid=2]/sensor_width`; empty for the document.
    std::string element;
    std::string text;
    /// What to do about it.
    std::string advice;
    /// Of the offset. Both count from 1; a column is a character.
    std::size_t line = 1;
    std::size_t column = 1;
};

/// The findings in a document.
struct CheckReport {
    /// In the order of their places.
    std::vector<Finding> findings;
    std::uint64_t errors = 0;
    std::uint64_t warnings = 0;
    /// How many more there are of a code than `findings` has.
    std::map<std::string, std::uint64_t> omitted;
};

/// Checks a scene document and the files that it names. At most `limit` findings of a code are kept.
/// `quiet` shows no progress. Throws `Failure` when the document's file can't be read.
CheckReport checkDocument(const std::string& path, std::size_t limit, bool quiet);
