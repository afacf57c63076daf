#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Forms of text for people.
namespace Text {

/// The number and the word in its form for it: "1 quad", "2 quads".
std::string count(std::uint64_t number, std::string_view one, std::string_view many);

/// The shortest digits that read back as the same number, whatever the locale.
std::string number(float value);

/// A line of a table with a name in front.
std::string row(std::string_view name, std::string_view value);

/// "512 bytes", "3.1 KB", "1.2 GB".
std::string size(std::uint64_t bytes);

/// `text` with control characters as \xNN: names come from files, and a terminal obeys some of them.
std::string printable(std::string_view text);

/// The part of a path after its last separator.
std::string fileName(std::string_view path);

/// `path` as seen from `folder`.
std::string joinPaths(std::string_view folder, std::string_view path);

/// `fileName` without its extension.
std::string fileStem(std::string_view path);

} // namespace Text
