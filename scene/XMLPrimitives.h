#pragma once

#include "velmarstring.h"
#include "velmarvec.h"

#include "utils/OStream.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Velmar {

/// Receives the progress of writing a document. Called by slot number, because listeners live in other libraries.
class ProgressListener {
  public:
    ProgressListener() = default;
    ProgressListener(const ProgressListener&) = delete;
    ProgressListener& operator=(const ProgressListener&) = delete;

    /// Slot 0: runs the destructor and, with bit 0 of `flags` set, frees the memory. Not called by the writer.
    virtual void* destroy(unsigned flags) = 0;
    /// Slot 1: `fraction` lies between 0 and 1, both excluded.
    virtual void reportProgress(float fraction) = 0;

  protected:
    ~ProgressListener() = default;
};

/// What nodes need to know of the document that they write themselves into. Made once a document.
struct XMLWriteOptions {
    /// The mode in which mesh files are named by the last directory of `meshes_dir`, for a document next to that.
    static constexpr std::uint32_t mesh_paths_next_to_document = 0x100;

    /// The path given to the writer.
    String scene_path;
    /// `scene_path` up to its last slash or backslash, without it; empty if it has none.
    String scene_dir;
    /// The folder of the mesh files; empty for the one next to the scene.
    String meshes_dir;
    /// Whether relative paths are written joined to `scene_dir`.
    bool resolve_relative_paths = true;
    bool write_material_uids = true;
    /// 0, `mesh_paths_next_to_document`, or a mode of the renderer library.
    std::uint32_t write_mode = 0;
    /// Not owned; null for none.
    ProgressListener* progress_listener = nullptr;
};

static_assert(offsetof(XMLWriteOptions, scene_path) == 0);
static_assert(offsetof(XMLWriteOptions, scene_dir) == 40);
static_assert(offsetof(XMLWriteOptions, meshes_dir) == 80);
static_assert(offsetof(XMLWriteOptions, resolve_relative_paths) == 120);
static_assert(offsetof(XMLWriteOptions, write_material_uids) == 121);
static_assert(offsetof(XMLWriteOptions, write_mode) == 124);
static_assert(offsetof(XMLWriteOptions, progress_listener) == 128);
static_assert(sizeof(XMLWriteOptions) == 136);

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
/// Three lines: the nine numbers are on the middle one, row after row, each followed by a space.
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
