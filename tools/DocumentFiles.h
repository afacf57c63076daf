#pragma once

#include "reference.h"
#include "velmarapi.h"

#include "scene/SceneNodeRoot.h"
#include "scene/reading/SceneXMLReader.h"
#include "tools/OutputFile.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Scene documents as commands read and write them, and the files that they name.

/// Where the files are that a document names.
class DocumentFiles {
  public:
    /// For the document at `path`.
    explicit DocumentFiles(const std::string& path);

    /// The places where the file that the document calls `name` may be: as seen from the document, which is where a
    /// reader looks, or from here.
    std::vector<std::string> getPlaces(std::string name) const;

    /// The first of these where there is something, or an empty text.
    std::string find(const std::string& name) const;

    /// As `find`, but where there is nothing, the first place. Empty for an empty name.
    std::string locate(const std::string& name) const;

  private:
    /// Of the document, with the separator; empty when that is here.
    std::string folder;
    /// The same of what the document is a link to.
    std::string real_folder;
};

/// Gives each file that the scene of the document `from` names the path by which the document `to` names it. Absolute
/// paths stay, and so do all when both documents are in one folder.
void rebaseFiles(Velmar::SceneNodeRoot& scene, const std::string& from, const std::string& to);

/// The path by which a document names a file as seen from its folder, or an absolute one where no way leads there.
std::string getNameInDocument(const std::string& document, const std::string& file);

/// The paths of all files that the scene names, each once.
std::vector<std::string> getFileNames(Velmar::SceneNodeRoot& scene);

/// Replaces the path of each file that the scene names.
void renameFiles(Velmar::SceneNodeRoot& scene, const std::map<std::string, std::string>& new_names);

/// Writes the document of a scene whose meshes aren't loaded, with paths as they are. Throws `Failure`.
void writeDocument(const Velmar::SceneNodeRoot& scene, OutputFile& file);

/// Whether a path in a document is more than one as seen from the document's folder.
bool isAbsolutePath(std::string_view path);

/// Reads a document without its meshes. Throws `Failure` that names the file and, for what is wrong in it, line and
/// column. Elements that nothing knows are skipped; `request` may ask for them.
Velmar::Reference<Velmar::SceneNodeRoot> readDocument(const std::string& path, Velmar::SceneReadRequest request = {});

/// Reads the mesh files of a document, and has response functions beside it found from anywhere. Throws `Failure` that
/// names the mesh and its file.
void loadDocumentFiles(Velmar::SceneNodeRoot& scene, const std::string& path);

/// The scene as the exported functions take it, from whoever holds it last.
VelmarScene* releaseScene(Velmar::Reference<Velmar::SceneNodeRoot>& scene);
