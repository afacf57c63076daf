#include "scene/SceneNodeTonemapping.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/DocumentFiles.h"
#include "tools/SafeNames.h"
#include "tools/System.h"
#include "tools/ZipFile.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace Velmar;

namespace {

struct PackOptions {
    std::string input;
    std::string output;
    bool force = false;
    bool quiet = false;
};

/// A file of the scene, and its name in the package, with `/` between folders.
struct PackedFile {
    std::string source;
    std::string name;
};

/// Chooses the names of the files of a scene in a package, and makes the scene name them so.
class PackedScene {
  public:
    /// Throws `Failure` when files are missing.
    explicit PackedScene(const std::string& document_path)
        : path(document_path), stem(makeSafeName(Text::fileStem(document_path))), files(document_path),
          scene(readDocument(document_path)) {
        taken.insert(FileUtils::toLowerCase(getDocumentName()));
        std::set<std::string> meshes;
        for (const Reference<SceneNode>& node : scene->children())
            if (node->getType() == NodeType::Mesh)
                meshes.insert(toStdString(static_cast<const SceneNodeMesh&>(*node).path));
        std::map<std::string, std::string> new_names;
        for (const std::string& name : getFileNames(*scene)) {
            const std::string file = files.locate(name);
            if (!FileUtils::fileExists(file) || System::isDirectory(file)) {
                missing.push_back(file);
                continue;
            }
            new_names[name] =
                FileUtils::toBackslashes(addFile(file, stem + (meshes.contains(name) ? "_meshes/" : "_files/")));
        }
        failIfMissing();
        renameFiles(*scene, new_names);
        for (const Reference<SceneNode>& node : scene->children())
            if (node->getType() == NodeType::ToneMapping) packResponse(static_cast<SceneNodeTonemapping&>(*node));
    }

    std::string getDocumentName() const { return stem + ".xml"; }
    const SceneNodeRoot& getScene() const { return *scene; }
    const std::vector<PackedFile>& getFiles() const { return packed; }
    const std::vector<std::string>& getNotes() const { return notes; }

  private:
    void failIfMissing() const {
        if (missing.empty()) return;
        std::string text = path + ": " + Text::count(missing.size(), "file is", "files are") + " missing: ";
        constexpr std::size_t max_named = 5;
        for (std::size_t i = 0; i < std::min(missing.size(), max_named); ++i)
            text.append(i == 0 ? "" : ", ").append(missing[i]);
        throw Failure(text + (missing.size() > max_named ? " and others" : ""));
    }

    /// The name of a file in the package, which is chosen when it is first asked for.
    std::string addFile(const std::string& file, const std::string& folder) {
        const std::optional<System::FileIdentity> identity = System::getIdentity(file);
        std::string& name = names[{identity.value_or(System::FileIdentity{}), identity ? std::string() : file}];
        if (!name.empty()) return name;
        const std::string wanted = makeSafeName(Text::fileName(file));
        const std::size_t dot = std::min(wanted.rfind('.'), wanted.size());
        name = folder + wanted;
        for (int i = 2; !taken.insert(FileUtils::toLowerCase(name)).second; ++i)
            name = folder + wanted.substr(0, dot) + "-" + std::to_string(i) + wanted.substr(dot);
        packed.push_back({file, name});
        return name;
    }

    /// The file of a response function may be one of the renderer, which looks for it by a relative path in its own
    /// data. Such a path stays as it is.
    void packResponse(SceneNodeTonemapping& node) {
        const std::string name = toStdString(node.response_function_path);
        if (node.tone_mapper_kind != SceneNodeTonemapping::camera || name.empty()) return;
        const std::string file = files.locate(name);
        if (!FileUtils::fileExists(file) || System::isDirectory(file)) {
            if (isAbsolutePath(name))
                notes.push_back(path + ": the response function " + name + " is missing, and not packed");
            return;
        }
        std::string kept = name;
        FileUtils::replaceChar(kept, '\\', '/');
        if (findNameFault(kept).empty()) {
            if (taken.insert(FileUtils::toLowerCase(kept)).second) packed.push_back({file, kept});
            return;
        }
        node.response_function_path = toVelmarString(FileUtils::toBackslashes(addFile(file, stem + "_files/")));
    }

    std::string path;
    std::string stem;
    DocumentFiles files;
    Reference<SceneNodeRoot> scene;
    std::vector<PackedFile> packed;
    /// Names in the package by files, which several paths may name.
    std::map<std::pair<System::FileIdentity, std::string>, std::string> names;
    /// In lower case: for some systems these are the same.
    std::set<std::string> taken;
    std::vector<std::string> missing;
    std::vector<std::string> notes;
};

/// The files of a folder in the making.
class PackedFolder {
  public:
    explicit PackedFolder(std::string path) : folder(std::move(path)) {
        while (folder.size() > 1 && (folder.ends_with('/') || folder.ends_with('\\')))
            folder.pop_back();
        addFolder(folder);
    }

    ~PackedFolder() {
        outputs.clear();
        // Those in others first.
        while (!folders.empty())
            folders.pop_back();
    }
    PackedFolder(const PackedFolder&) = delete;
    PackedFolder& operator=(const PackedFolder&) = delete;

    /// A new file of this name.
    OutputFile& add(const std::string& name) {
        const std::size_t end = name.find_last_of('/');
        for (std::size_t slash = name.find('/'); slash != std::string::npos && slash <= end;
             slash = name.find('/', slash + 1))
            addFolder(Text::joinPaths(folder, name.substr(0, slash)));
        outputs.push_back(std::make_unique<OutputFile>(Text::joinPaths(folder, name)));
        return *outputs.back();
    }

    /// Gives all files their names. Returns their size.
    std::uint64_t commit() {
        for (const auto& output : outputs)
            output->flush();
        const Interrupts::Deferral deferral;
        std::uint64_t size = 0;
        for (const auto& output : outputs)
            size += output->commit();
        return size;
    }

  private:
    void addFolder(const std::string& path) {
        if (!System::isDirectory(path)) folders.push_back(std::make_unique<OutputFolder>(path));
    }

    std::string folder;
    std::vector<std::unique_ptr<OutputFolder>> folders;
    std::vector<std::unique_ptr<OutputFile>> outputs;
};

void copyFile(const PackedFile& file, OutputFile& output) {
    try {
        const MappedFile source(file.source);
        std::ofstream target;
        if (!FileUtils::openOutputFile(target, output.getPartialPath(), false))
            throw Failure("can't be written: " + PlatformUtils::getLastErrorText());
        target.write(source.getText().data(), static_cast<std::streamsize>(source.getSize()));
        target.close();
        if (target.fail()) throw Failure("wasn't written whole; is the disk full?");
    } catch (...) {
        throw output.makeFailure();
    }
}

bool isCompressed(const std::string& name) {
    constexpr std::string_view extensions[] = {".vmmesh", ".png", ".jpg", ".jpeg", ".zip", ".gz"};
    const std::string lower = FileUtils::toLowerCase(name);
    return std::ranges::any_of(extensions, [&](std::string_view extension) { return lower.ends_with(extension); });
}

class PackProgress {
  public:
    PackProgress(Progress& progress_, std::size_t count_) : progress(progress_), count(count_) {}
    void show(const PackedFile& file) {
        progress.show("packing " + Text::fileName(file.name),
                      static_cast<double>(done++) / static_cast<double>(count + 1));
    }

  private:
    Progress& progress;
    std::size_t count;
    std::size_t done = 0;
};

/// Returns the size of what is written.
std::uint64_t packFolder(const PackedScene& scene, const PackOptions& options, PackProgress progress) {
    std::vector<System::DirectoryEntry> entries;
    if (System::isDirectory(options.output) && !options.force && System::listDirectory(options.output, entries) &&
        !entries.empty())
        throw Failure(options.output + ": isn't empty; --force writes into it all the same");
    PackedFolder folder(options.output);
    for (const PackedFile& file : scene.getFiles()) {
        progress.show(file);
        copyFile(file, folder.add(file.name));
    }
    OutputFile& document = folder.add(scene.getDocumentName());
    if (System::getIdentity(document.getFinalPath()) == System::getIdentity(options.input))
        throw Failure(options.output + ": is the folder of the document itself");
    writeDocument(scene.getScene(), document);
    return folder.commit();
}

std::uint64_t packArchive(const PackedScene& scene, const PackOptions& options, PackProgress progress) {
    OutputFile output(options.output);
    // The document is made as a file of its own, and removed again.
    OutputFile document(options.output + "-document");
    writeDocument(scene.getScene(), document);
    ZipWriter archive(output);
    archive.add(scene.getDocumentName(), MappedFile(document.getPartialPath()).getBytes(), true);
    for (const PackedFile& file : scene.getFiles()) {
        progress.show(file);
        std::unique_ptr<MappedFile> content;
        try {
            content = std::make_unique<MappedFile>(file.source);
        } catch (...) {
            throw makeFailureOf(file.source);
        }
        archive.add(file.name, content->getBytes(), !isCompressed(file.name));
    }
    archive.finish();
    return output.commit();
}

void pack(const PackOptions& options) {
    Progress progress(options.quiet);
    progress.show("reading " + Text::fileName(options.input));
    const PackedScene scene(options.input);
    const bool is_archive = FileUtils::toLowerCase(FileUtils::getExtension(options.output)) == "zip";
    const PackProgress of_files(progress, scene.getFiles().size());
    const std::uint64_t size =
        is_archive ? packArchive(scene, options, of_files) : packFolder(scene, options, of_files);
    progress.clear();
    if (options.quiet) return;
    for (const std::string& note : scene.getNotes())
        printNote(note);
    std::printf("%s: %s and %s (%s)\n", Text::printable(options.output).c_str(),
                Text::printable(scene.getDocumentName()).c_str(),
                Text::count(scene.getFiles().size(), "file", "files").c_str(), Text::size(size).c_str());
}

} // namespace

Command addPackCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("pack", "Gathers a scene document and all its files.");
    const auto options = std::make_shared<PackOptions>();
    app->add_option("SCENE", options->input, "The scene document.")->required();
    app->add_option("OUT", options->output,
                    "A zip archive if it ends in .zip, which replaces an existing one; else a folder, which is made or "
                    "must be empty.")
        ->required();
    app->add_flag("--force", options->force, "Write into a folder that isn't empty, and replace files in it");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success: no summary, notes or progress");
    app->footer("Meshes, textures, profiles of lamps, shader files and response functions are packed, and the document "
                "names them relative to itself. 'velmar unpack' unpacks an archive. Exit codes: 0 done, 1 failed, 2 "
                "wrong usage.");
    return {app, [options] { pack(*options); }};
}
