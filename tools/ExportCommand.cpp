#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "tools/ModelScene.h"
#include "tools/SceneBuilder.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

using Velmar::Mesh;

namespace {

struct ExportOptions {
    std::vector<std::string> paths;
    ModelSceneOptions models;
    bool quiet = false;
};

/// A mesh file in the folder of the scene's meshes.
struct MeshFile {
    std::string path;
    std::uint64_t size = 0;
    bool existed = false;
};

/// The result, for the summary.
struct Report {
    std::vector<std::string> models;
    std::vector<MeshFile> mesh_files;
    std::uint64_t document_size = 0;
};

// ---- from the scene to files ---------------------------------------------------------------------------------------

/// The mesh files of a scene. The document names them by their content, so an existing whole one is kept; the library
/// writes none of them again. Unless `keep` is called, the destructor removes those that were written.
class MeshFolder {
  public:
    MeshFolder() = default;
    ~MeshFolder() {
        if (kept) return;
        for (const MeshFile& file : files)
            if (!file.existed) System::removeFile(file.path);
        if (!made_folder.empty()) System::removeDirectory(made_folder);
    }
    MeshFolder(const MeshFolder&) = delete;
    MeshFolder& operator=(const MeshFolder&) = delete;

    void add(const SceneMesh& scene_mesh) {
        MeshFile file = {scene_mesh.path};
        if (FileUtils::fileExists(file.path) && isWholeMesh(file.path)) {
            file.existed = true;
            file.size = MappedFile(file.path).getSize();
        } else {
            makeFolder(FileUtils::getDirectory(file.path));
            OutputFile output(file.path);
            file.size = writeMesh(*scene_mesh.mesh, output, true);
        }
        files.push_back(file);
    }

    const std::vector<MeshFile>& getFiles() const { return files; }
    void keep() { kept = true; }

  private:
    void makeFolder(const std::string& folder) {
        if (FileUtils::fileExists(folder)) return;
        FileUtils::createDir(folder);
        made_folder = folder;
    }

    std::vector<MeshFile> files;
    std::string made_folder;
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

Report makeScene(const ExportOptions& options, const std::string& scene_path) {
    Progress progress(options.quiet);
    OutputFile output(scene_path);
    Report report;
    const std::vector<InputModel> models = readModels(options.paths, options.models, progress, report.models);
    progress.show(stepText(options.paths.size() + 1, options.paths.size() + 1) + "writing " +
                  Text::fileName(scene_path));
    try {
        const std::string document = enterDirectoryOf(output.getPartialPath());
        const SceneBuilder scene(models, options.models.getScene());
        MeshFolder meshes;
        for (const SceneMesh& mesh : scene.getMeshes(document))
            meshes.add(mesh);
        scene.write(document);
        requireWhole(document);
        report.document_size = output.commit();
        meshes.keep();
        report.mesh_files = meshes.getFiles();
    } catch (...) {
        throw makeFailureOf(scene_path);
    }
    return report;
}

void print(const Report& report, const std::string& scene_path) {
    for (const std::string& model : report.models)
        std::printf("%s\n", model.c_str());
    std::printf("%s (%s)\n", scene_path.c_str(), Text::size(report.document_size).c_str());
    const std::string folder = Text::folderOf(scene_path) + Text::fileStem(scene_path) + "_meshes/";
    for (const MeshFile& file : report.mesh_files)
        std::printf("%s%s (%s%s)\n", folder.c_str(), Text::fileName(file.path).c_str(), Text::size(file.size).c_str(),
                    file.existed ? ", was there" : "");
}

void exportScene(ExportOptions options) {
    const std::string scene_path = options.paths.back();
    options.paths.pop_back();
    // Also keeps a forgotten scene from costing the last model.
    if (Velmar::getMeshFormat(scene_path) != "xml") throw UsageError(scene_path + ": the scene must end in .xml");
    const Report report = makeScene(options, scene_path);
    if (!options.quiet) print(report, scene_path);
}

} // namespace

Command addExportCommand(CLI::App& tool) {
    CLI::App* const app =
        tool.add_subcommand("export", "Makes a complete scene of mesh files, with camera, light and settings.");
    const auto options = std::make_shared<ExportOptions>();
    app->add_option("MODEL... SCENE.xml", options->paths,
                    "Mesh files (.obj, .ply, .stl, .vmmesh), then the scene to write. What stands there is replaced.")
        ->required()
        ->expected(2, CLI::detail::expected_max_vector_size);
    addModelSceneOptions(*app, options->models);
    app->option_defaults()->group("Options");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success, and no progress");
    app->footer(
        "Materials take their diffuse colour from the .mtl files that an .obj file names, else they are light grey. "
        "Beside the scene, the folder SCENE_meshes gets the meshes. Scenes hold no vertex normals: a model that "
        "brings some is marked for smooth shading. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { exportScene(*options); }};
}
