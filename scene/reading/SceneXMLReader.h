#pragma once

#include "velmarstring.h"

#include "scene/SceneNodeRoot.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Velmar {

/// A document that isn't one of a scene, with the place.
class SceneDocumentError {
  public:
    SceneDocumentError(std::string path_, std::size_t line_, std::size_t column_, std::string fault_)
        : path(std::move(path_)), fault(std::move(fault_)), line(line_), column(column_) {}

    /// `PATH:LINE:COLUMN: error: FAULT`.
    std::string getMessage() const;

    std::string path;
    std::string fault;
    /// Both count from 1; a column is a character of UTF-8.
    std::size_t line;
    std::size_t column;
};

/// An element that nothing knows. It isn't read.
struct UnknownElement {
    std::size_t line;
    std::size_t column;
    std::string name;
    /// The element that it is in.
    std::string parent;
};

/// What a document has that isn't read.
struct UnknownElements {
    static constexpr std::size_t max_listed = 10'000;

    /// The first ones that were found.
    std::vector<UnknownElement> listed;
    std::size_t count = 0;
};

enum class ElementForm;

/// Follows a document while it is read, in the order in which it is read.
class ReadingListener {
  public:
    ReadingListener() = default;
    ReadingListener(const ReadingListener&) = delete;
    ReadingListener& operator=(const ReadingListener&) = delete;

    /// A node with all its values, before it is in the scene, and where its element begins.
    virtual void onNode(const SceneNode& node, std::size_t offset) = 0;
    /// An element that isn't read, by the offset where it begins.
    virtual void onUnknown(std::size_t offset) = 0;
    /// Whether `onName` is to be called.
    virtual bool wantsNames() const { return false; }
    /// A name that is looked for in an element of the name `parent`: what may be there. Some are given several times,
    /// at first or last in their own form.
    virtual void onName(std::string_view parent, std::string_view name, ElementForm form);

  protected:
    ~ReadingListener() = default;
};

/// What is asked of `readSceneXML`.
struct SceneReadRequest {
    /// The document, UTF-8.
    String path;
    /// Whether the mesh files are read at once. If not, a `LoadMeshes` pass reads them later.
    bool load_meshes = false;
    /// Receives what isn't read; null for not asked.
    UnknownElements* unknown_elements = nullptr;
    /// Not owned; null for none.
    ReadingListener* listener = nullptr;
};

/// Reads a document that `writeSceneFile` wrote, or one like it. Elements may be in any order; what isn't there keeps
/// the value that readers assume. Nodes keep their UIDs, and references are bound where the document has the node that
/// they name. A material that isn't there is replaced by an empty one outside of the scene, so that the document that
/// is written from the scene names it too. Paths are kept as they are: written with `resolve_relative_paths` off and
/// without loading meshes, the scene gives the same document again.
///
/// Elements of classes of a renderer library are kept as text (`ForeignParts.h`).
///
/// The memory used beside that of the scene doesn't depend on the size of the document, only on that of its largest
/// node. With the scene it is less than 20 times the size of the document: a large node that consists of more elements
/// or attributes than any with values can have is an error.
/// Throws `SceneDocumentError`; `Exception` when the file can't be read; `VelmarException` for mesh files.
Reference<SceneNodeRoot> readSceneXML(const SceneReadRequest& request);

/// The same for a path alone.
Reference<SceneNodeRoot> readSceneXML(const String& path);

/// The same for a text in memory, which `request.path` only names.
Reference<SceneNodeRoot> parseSceneXML(std::string_view text, const SceneReadRequest& request);

/// Reads the mesh files of all nodes that have no mesh yet. Relative paths are as seen from the document at `path`.
/// Throws `VelmarException`.
void loadMeshes(SceneNodeRoot& root, const String& path);

} // namespace Velmar
