#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/FolderConversion.h"
#include "tools/MeshFile.h"
#include "tools/SafeNames.h"
#include "tools/System.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    bool recursive = false;
    /// In place of the output, if it has a folder.
    StoreSettings store;
    ConversionSettings settings;
};

/// Returns the size of the file written.
std::uint64_t convertFile(const ConvertOptions& options, const std::string& format) {
    Progress progress(options.settings.quiet);
    // Before the mesh is read, which may take long in vain.
    OutputFile output(options.output);
    progress.show("reading " + Text::fileName(options.input));
    const Velmar::ImportedMesh imported = readForConversion(options.input, options.settings);
    progress.clear();
    printNotes(options.input, imported.notes, options.settings.quiet);
    if (const std::string loss = describeLoss(format, *imported.mesh); !loss.empty() && !options.settings.quiet)
        printNote(options.output + ": the format has no place for " + loss);
    progress.show("writing " + Text::fileName(options.output));
    writeMeshAs(format, *imported.mesh, output, options.settings.write);
    return output.commit();
}

void intoStore(const ConvertOptions& options) {
    if (!options.output.empty()) throw UsageError(options.output + ": --store takes the place of OUT");
    if (options.input.empty() == options.store.list.empty())
        throw UsageError(options.input.empty() ? "IN or --list is required"
                                               : options.input + ": --list takes the place of IN");
    StoreSettings store = options.store;
    store.recursive = options.recursive;
    convertIntoStore(options.input, store, options.settings);
}

void convert(const ConvertOptions& options) {
    if (!options.store.folder.empty()) {
        intoStore(options);
        return;
    }
    if (options.input.empty()) throw UsageError("IN is required");
    if (options.output.empty()) throw UsageError("OUT is required");
    if (!options.recursive && System::isDirectory(options.input))
        throw UsageError(options.input + ": is a folder, which wants --recursive");
    if (options.recursive) {
        convertFolder(options.input, options.output, options.settings);
        return;
    }
    const std::string format = Velmar::getMeshFormat(options.output);
    if (!isWritable(format)) throw UsageError(options.output + ": the output must end in .vmmesh, .obj, .ply or .stl");
    const std::uint64_t size = convertFile(options, format);
    if (!options.settings.quiet)
        std::printf("%s (%s)\n", Text::printable(options.output).c_str(), Text::size(size).c_str());
}

/// The names of files on every system; what is wrong with others.
std::string refuseManifestName(const std::string& name) {
    constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    if (name.empty() || name.size() > 100 || name.find_first_not_of(allowed) != std::string::npos)
        return name + ": a name has up to 100 letters, digits, - and _";
    const std::string fault = findNameFault(name);
    return fault.empty() ? fault : name + ": " + fault;
}

} // namespace

Command addConvertCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("convert", "Turns mesh files into vmmesh, OBJ, PLY or STL files.");
    const auto options = std::make_shared<ConvertOptions>();
    ConversionSettings& settings = options->settings;
    app->add_option("IN", options->input, "The mesh file: .obj, .ply, .stl or .vmmesh. With --recursive a folder.");
    app->add_option("OUT", options->output,
                    "The file to write, whose extension (.vmmesh, .obj, .ply or .stl) decides the format. With "
                    "--recursive the folder for the files. Existing files are replaced.");
    app->add_flag("-r,--recursive", options->recursive,
                  "Convert every mesh file in the folder IN and below into the same place below OUT. A file that fails "
                  "is reported, and the others are converted. Links to folders aren't followed. OUT may be in IN.");
    CLI::Option* const choice = CommandOptions::addChoice(
        *app, "--to", settings.format, {"vmmesh", "obj", "ply", "stl"}, "The format of the files with --recursive.");
    choice->needs("--recursive");
    StoreSettings& store = options->store;
    CLI::Option* const folder = app->add_option(
        "--store", store.folder,
        "In place of OUT a store of meshes, which holds each mesh once, named by its content. Files that "
        "didn't change since they were converted into it are left out.");
    folder->type_name("DIR")->excludes(choice);
    app->add_option(
           "--list", store.list,
           "In place of IN a file with the names of the files to convert into the store, each on a line or, as "
           "'find -print0' writes them, each with a zero byte after it; - for the standard input. With "
           "--recursive they may be folders.")
        ->type_name("FILE")
        ->needs(folder);
    app->add_flag("--force", store.force, "Convert files that didn't change too; the manifest of the store isn't read.")
        ->needs(folder);
    app->add_flag("-n,--dry-run", store.dry_run, "Print what would be converted into the store, and write nothing.")
        ->needs(folder);
    app->add_flag("--json", store.json,
                  "Print a JSON object on a line for each file of the store, and for the summary.")
        ->needs(folder);
    app->add_option(
           "--manifest", store.manifest,
           "Append to the file NAME.jsonl of the store's manifest in place of a new file. Of several processes at "
           "the same time each needs a name of its own.")
        ->type_name("NAME")
        ->check(CLI::Validator(&refuseManifestName, ""))
        ->needs(folder);
    settings.jobs = std::max(std::thread::hardware_concurrency(), 1U);
    app->add_option("-j,--jobs", settings.jobs,
                    "How many files of a folder to convert at once. Without it one for each core.")
        ->type_name("N")
        ->check(CommandOptions::inRange(1, 1024));
    settings.memory = System::getMemorySize() / 2;
    app->add_option("--memory", settings.memory,
                    "What the files converted at once may take, such as 8G; a larger file waits until it is alone. "
                    "Without it half of the machine's memory.")
        ->type_name("SIZE")
        ->transform(CLI::AsSizeValue(false).description(""));
    CommandOptions::addScale(*app, settings.scale, "Multiplies all positions, except those of vmmesh files.");
    CommandOptions::addUp(
        *app, settings.up,
        "Which axis of IN is its height; auto takes y for .obj and z for the others. In OUT it is y for "
        ".obj and z for the others.");
    app->add_flag("--plain", settings.write.plain, "Write vmmesh files without compression");
    app->add_flag("--text", settings.write.text, "Write PLY and STL files as text");
    app->add_flag("-q,--quiet", settings.quiet, "Print nothing on success: no summary, notes or progress");
    app->footer(
        "With --recursive, a.obj becomes a.vmmesh. Where several files would get one name, each keeps its extension: "
        "a.obj.vmmesh, a.ply.vmmesh. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { convert(*options); }};
}
