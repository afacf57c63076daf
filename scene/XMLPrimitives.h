#pragma once

#include "velmarstring.h"
#include "velmarvec.h"

#include "scene/XMLWriteOptions.h"
#include "utils/OStream.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Velmar {

class SceneNode;

/// What every element of a scene document looks like. A document is written in one pass, element by element; these
/// functions keep nothing between calls. `depth` is the number of tabs, names are written unchanged, and a line ends in
/// a line feed, which the stream turns into the system's line end.

/// The four characters <, >, double quote and & become entities; all other bytes stay.
std::string escapeXMLEntities(std::string_view text);

/// One line: the opening tag.
void writeOpenTag(OStream& stream, std::uint32_t depth, std::string_view name);
/// One line: the closing tag.
void writeCloseTag(OStream& stream, std::uint32_t depth, std::string_view name);
/// One line: a tag with a slash before its closing bracket.
void writeEmptyTag(OStream& stream, std::uint32_t depth, std::string_view name);

/// One line: the value between its tags.
void writeBoolElement(OStream& stream, std::uint32_t depth, std::string_view name, bool value);
void writeInt32Element(OStream& stream, std::uint32_t depth, std::string_view name, std::int32_t value);
void writeUInt32Element(OStream& stream, std::uint32_t depth, std::string_view name, std::uint32_t value);
void writeDoubleElement(OStream& stream, std::uint32_t depth, std::string_view name, double value);
/// One line: three numbers with one space between.
void writeVec3Element(OStream& stream, std::uint32_t depth, std::string_view name, const Vec3d& value);
/// Three lines: the nine numbers stand on the middle one, row after row, each followed by a space.
void writeMatrix3Element(OStream& stream, std::uint32_t depth, std::string_view name, std::span<const double, 9> value);

/// One line: the value with its entities escaped, or in a CDATA section when it begins or ends with white space or
/// holds two such bytes in a row, which readers would fold. A section isn't split where the value ends it itself.
void writeStringElement(OStream& stream, std::uint32_t depth, std::string_view name, std::string_view value);
inline void writeStringElement(OStream& stream, std::uint32_t depth, std::string_view name, const String& value) {
    writeStringElement(stream, depth, name, value.view());
}

/// A string element of the path, which the options may ask to be joined to the scene's directory.
void writePathElement(OStream& stream, std::uint32_t depth, std::string_view name, std::string_view path,
                      const XMLWriteOptions& options);
inline void writePathElement(OStream& stream, std::uint32_t depth, std::string_view name, const String& path,
                             const XMLWriteOptions& options) {
    writePathElement(stream, depth, name, path.view(), options);
}

/// Two lines: the node's UID and its name.
void writeNodeIdentity(OStream& stream, std::uint32_t depth, const SceneNode& node);

} // namespace Velmar
