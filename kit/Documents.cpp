#include "kit/Checks.h"
#include "kit/Failures.h"
#include "kit/velmarkit.h"
#include "velmarexceptions.h"

#include "api/TextMeshDump.h"
#include "mesh/VmmeshFile.h"
#include "scene/XMLPrimitives.h"
#include "utils/FileUtils.h"
#include "utils/OFStream.h"
#include "utils/PlatformUtils.h"

#include <fstream>
#include <string>

using namespace Velmar;
using namespace Velmar::Kit;

namespace {

[[noreturn]] void failFile(std::string text) {
    throw KitFailure{VELMARKIT_FILE_ERROR, std::move(text)};
}

/// A file that is written under another name next to its own, so that the old file stays until the new one is whole.
class NewFile {
  public:
    explicit NewFile(std::string path_) : path(std::move(path_)), part(path) {}

    /// Where to write.
    const std::string& partPath() const { return part.path(); }

    [[noreturn]] void failToOpen() const {
        failFile("Failed to open file '" + path + "' for writing: " + PlatformUtils::getLastErrorText());
    }
    [[noreturn]] void failToWrite() const {
        failFile("Error while writing to '" + path + "': " + PlatformUtils::getLastErrorText());
    }

    /// Fails with a text that names the file as it is written.
    [[noreturn]] void failAs(std::string text) const {
        const std::size_t at = text.find(part.path());
        if (at != std::string::npos) text.replace(at, part.path().size(), path);
        throw VelmarException(toVelmarString(text));
    }

    /// Gives the whole file its name.
    void finish() {
        if (!part.moveToFinalPath())
            failFile("Failed to replace file '" + path + "': " + PlatformUtils::getLastErrorText());
    }

  private:
    std::string path;
    FileUtils::TemporaryFile part;
};

/// Passes on what a document can hold, and refuses other text.
class DocumentStream : public Destroyable<DocumentStream, OStream> {
  public:
    explicit DocumentStream(OFStream& file_) : file(file_) {}
    ~DocumentStream() = default;

    void writeString(const String& text) override {
        if (!isDocumentText(text.view()))
            throw KitFailure{VELMARKIT_DOCUMENT_ERROR,
                             "A name or path of the scene isn't UTF-8, or holds a character that XML forbids: '" +
                                 printable(text.view()) + "'"};
        file.writeString(text);
    }
    void writeDouble(double value) override { file.writeDouble(value); }

  private:
    static std::string printable(std::string_view text) {
        std::string result(text.substr(0, 80));
        for (char& byte : result)
            if (byte < ' ' || byte > '~') byte = '?';
        return result;
    }

    OFStream& file;
};

/// What writing would run into.
void checkScene(const SceneNodeRoot& root) {
    for (const Reference<SceneNode>& child : root.children()) {
        if (child->getType() != NodeType::Mesh) continue;
        const auto& node = static_cast<const SceneNodeMesh&>(*child);
        if (!node.mesh)
            throw KitFailure{VELMARKIT_DOCUMENT_ERROR, "Mesh node '" + toStdString(node.getName()) + "' has no mesh."};
    }
}

std::string fileName(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

/// A document names what lies next to it as seen from itself, wherever it is written.
XMLWriteOptions optionsFor(const std::string& path) {
    const std::string name = fileName(path);
    const std::string folder = FileUtils::removeExtension(name) + "_meshes";
    XMLWriteOptions options;
    options.scene_path = toVelmarString(name);
    options.meshes_dir = toVelmarString(FileUtils::join(FileUtils::getDirectory(path), folder));
    options.write_mode = XMLWriteOptions::mesh_paths_next_to_document;
    return options;
}

} // namespace

extern "C" {

int32_t VelmarKit_Scene_WriteToXML(VelmarScene* scene, const char* path) {
    return guarded(Subject::scene, [&] {
        const SceneNodeRoot& root = objectOf(scene, "scene");
        checkPath(path, "path");
        checkScene(root);
        NewFile document{std::string(path)};
        {
            OFStream file(toVelmarString(document.partPath()));
            if (file.failed()) document.failToOpen();
            DocumentStream stream(file);
            stream.write("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n");
            root.writeXML(stream, 0, optionsFor(path));
            file.flush();
            if (file.failed()) document.failToWrite();
        }
        document.finish();
    });
}

int32_t VelmarKit_Mesh_WriteToFile(VelmarMesh* mesh, const char* path) {
    return guarded(Subject::mesh, [&] {
        const Mesh& data = *objectOf(mesh, "mesh").mesh;
        checkPath(path, "path");
        NewFile file{std::string(path)};
        data.checkConsistency();
        try {
            writeToFile(toVelmarString(file.partPath()), data, false);
        } catch (const VelmarException& exception) {
            file.failAs(toStdString(exception.getMessage()));
        }
        file.finish();
    });
}

int32_t VelmarKit_write_mesh_to_file(VelmarMesh* mesh, const char* path) {
    return guarded(Subject::mesh, [&] {
        const SceneNodeMesh& node = objectOf(mesh, "mesh");
        checkPath(path, "path");
        NewFile text{std::string(path)};
        {
            std::ofstream file;
            if (!FileUtils::openOutputFile(file, text.partPath(), true)) text.failToOpen();
            writeMeshText(file, node);
            file.close();
            if (file.fail()) text.failToWrite();
        }
        text.finish();
    });
}

} // extern "C"
