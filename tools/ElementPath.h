#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A step of a path: the name of an element, and which of those with this name.
struct ElementStep {
    std::string name;
    /// Elements inside of it with their texts, as name and "Bunny".
    std::vector<std::pair<std::string, std::string>> conditions;
    /// The place among those that fit, from 0.
    std::optional<std::size_t> index;
    /// Whether several may fit.
    bool all = false;

    /// As it is written in a path.
    std::string getText() const;
};

/// Elements of a document as a user names them: `model2[name=Bunny].keyframe[0].pos`. The first step is a node. In
/// brackets are the text of an element inside, a place from 0, or `*` for all; the text may be in double quotes.
using ElementPath = std::vector<ElementStep>;

/// Throws `UsageError` for what isn't a path.
ElementPath parseElementPath(std::string_view text);

/// The path and the value of `PATH=VALUE`. Throws `UsageError`.
std::pair<ElementPath, std::string> parseAssignment(std::string_view text);
