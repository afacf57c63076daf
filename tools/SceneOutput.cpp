#include "tools/SceneOutput.h"

#include "tools/DocumentFiles.h"
#include "tools/MeshFile.h"
#include "tools/MeshSearch.h"
#include "tools/MeshStore.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

namespace {

/// The mesh files of a scene. The document names them by their content, so an existing whole one is kept; the library
/// writes none of them again.
class MeshFolder {
  public:
    /// Of the scene, or of the store unless `store_folder` is empty.
    MeshFolder(const std::string& scene_path, const std::string& store_folder)
        : shown_folder(Text::folderOf(scene_path) + Text::fileStem(scene_path) + "_meshes/") {
        if (!store_folder.empty()) store.emplace(store_folder);
    }
    /// Unless `keep` was called, the files that were renamed are removed again.
    ~MeshFolder() {
        if (kept) return;
        for (const std::string& path : renamed)
            System::removeFile(path);
    }
    MeshFolder(const MeshFolder&) = delete;
    MeshFolder& operator=(const MeshFolder&) = delete;

    /// Returns whether the file of a mesh exists, and notes it.
    bool find(const SceneMesh& scene_mesh) {
        const std::string path = getPath(scene_mesh);
        MeshFile file = {store ? path : shown_folder + Text::fileName(path)};
        file.existed = FileUtils::fileExists(path) && isWholeMesh(path);
        if (file.existed) file.size = MappedFile(path).getSize();
        files.push_back(file);
        return file.existed;
    }

    /// Writes the file of a mesh under another name, unless it exists.
    void write(const SceneMesh& scene_mesh) {
        if (find(scene_mesh)) return;
        const std::string path = getPath(scene_mesh);
        const std::string folder_path = FileUtils::getDirectory(path);
        if (store)
            makeFolders(folder_path);
        else if (!folder)
            folder = std::make_unique<OutputFolder>(folder_path);
        auto file = std::make_unique<OutputFile>(path);
        writeMesh(*scene_mesh.mesh, *file, true);
        file->flush();
        outputs.push_back({files.size() - 1, path, std::move(file)});
    }

    /// Gives the files that were written their names.
    void commit() {
        for (Output& output : outputs) {
            const bool existed = FileUtils::fileExists(output.path);
            files[output.index].size = output.file->commit();
            if (!existed) renamed.push_back(output.path);
        }
    }

    void keep() { kept = true; }

    const std::vector<MeshFile>& getFiles() const { return files; }

  private:
    struct Output {
        std::size_t index;
        std::string path;
        std::unique_ptr<OutputFile> file;
    };

    /// In a store under another name than the library gives it.
    std::string getPath(const SceneMesh& scene_mesh) const {
        return store ? store->getMeshPath(scene_mesh.mesh->checksum()) : scene_mesh.path;
    }

    /// As the user would write it.
    std::string shown_folder;
    std::optional<MeshStore> store;
    // Before the files in it.
    std::unique_ptr<OutputFolder> folder;
    std::vector<MeshFile> files;
    std::vector<Output> outputs;
    std::vector<std::string> renamed;
    bool kept = false;
};

/// The library doesn't report a document that couldn't be written.
void requireWhole(const std::string& document) {
    const MappedFile file(document);
    if (!FileUtils::trimTrailingWhitespace(file.getText()).ends_with("</scene>"))
        throw Failure("the document wasn't written whole; is the disk full?");
}

/// The path of the document for the library. A path with a directory would be a prefix of every path in the document;
/// from inside the directory the document names its mesh files as seen from itself, and both can be moved together.
std::string enterDirectoryOf(const std::string& path) {
    std::string directory = FileUtils::getDirectory(path);
    // Without its separator a root is something else.
    if (directory.empty() || directory.back() == ':') directory += '/';
    return System::enterDirectory(directory) ? Text::fileName(path) : path;
}

/// Lets the document name its meshes in the store, and the store's manifest the document: its meshes are in use.
void useStore(SceneBuilder& scene, const std::string& document, const std::string& store_folder) {
    using namespace std::chrono;
    MeshStore store(store_folder);
    store.create();
    for (const SceneMesh& mesh : scene.getMeshes(document)) {
        StoreEntry entry = describeMesh(*mesh.mesh, mesh.mesh->checksum());
        entry.source = document;
        entry.settings = "mesh " + std::to_string(entry.checksum) + " of a scene";
        entry.converted = duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
        store.append(entry);
    }
    scene.nameMeshFiles(
        [&](std::uint64_t checksum) { return getNameInDocument(document, store.getMeshPath(checksum)); });
}

} // namespace

SceneFiles writeScene(SceneBuilder& scene, OutputFile& document, const std::string& path,
                      const std::string& store_folder) {
    try {
        const std::string store = store_folder.empty() ? "" : System::getAbsolutePath(store_folder);
        const std::string inner_path = enterDirectoryOf(document.getPartialPath());
        MeshFolder meshes(path, store);
        for (const SceneMesh& mesh : scene.getMeshes(inner_path))
            meshes.write(mesh);
        // The meshes are on the disk already, so this takes no time. An interrupt comes before all of it or after.
        const Interrupts::Deferral deferral;
        meshes.commit();
        if (!store.empty()) {
            // Others may use them already.
            meshes.keep();
            useStore(scene, document.getFinalPath(), store);
        }
        scene.write(inner_path);
        requireWhole(inner_path);
        const std::uint64_t size = document.commit();
        meshes.keep();
        return {size, meshes.getFiles()};
    } catch (...) {
        throw makeFailureOf(path);
    }
}

SceneFiles previewScene(const SceneBuilder& scene, const std::string& path, const std::string& store_folder) {
    MeshFolder meshes(path, store_folder);
    for (const SceneMesh& mesh : scene.getMeshes(System::followLinks(System::getAbsolutePath(path))))
        meshes.find(mesh);
    return {0, meshes.getFiles()};
}
