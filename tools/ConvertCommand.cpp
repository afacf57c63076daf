#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/FolderConversion.h"
#include "tools/MeshFile.h"
#include "tools/System.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    bool recursive = false;
    ConversionSettings settings;
};

/// Returns the size of the file written.
std::uint64_t convertFile(const ConvertOptions& options) {
    Progress progress(options.settings.quiet);
    // Before the mesh is read, which may take long in vain.
    OutputFile output(options.output);
    progress.show("reading " + Text::fileName(options.input));
    const Velmar::Reference<Velmar::Mesh> mesh = readMesh(options.input, options.settings.scale).mesh;
    progress.show("writing " + Text::fileName(options.output));
    return writeMesh(*mesh, output, !options.settings.plain);
}

void convert(const ConvertOptions& options) {
    if (options.recursive) {
        convertFolder(options.input, options.output, options.settings);
        return;
    }
    if (System::isDirectory(options.input)) throw UsageError(options.input + ": is a folder, which wants --recursive");
    if (Velmar::getMeshFormat(options.output) != "vmmesh")
        throw UsageError(options.output + ": the output must end in .vmmesh");
    const std::uint64_t size = convertFile(options);
    if (!options.settings.quiet) std::printf("%s (%s)\n", options.output.c_str(), Text::size(size).c_str());
}

} // namespace

Command addConvertCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("convert", "Turns mesh files into vmmesh files.");
    const auto options = std::make_shared<ConvertOptions>();
    app->add_option("IN", options->input, "The mesh file: .obj, .ply, .stl or .vmmesh. With --recursive a folder.")
        ->required();
    app->add_option("OUT", options->output,
                    "The file to write, ending in .vmmesh. With --recursive the folder for the files. What stands "
                    "there is replaced.")
        ->required();
    app->add_flag("-r,--recursive", options->recursive,
                  "Convert every mesh file in the folder IN and below into the same place below OUT. A file that fails "
                  "is told, and the others go on. Links to folders aren't followed. OUT may lie in IN.");
    app->add_option("--scale", options->settings.scale, "Multiplies all positions, except those of vmmesh files.")
        ->type_name("FACTOR")
        ->capture_default_str();
    app->add_flag("--plain", options->settings.plain, "Write without compression");
    app->add_flag("-q,--quiet", options->settings.quiet, "Print nothing on success, and no progress");
    app->footer(
        "With --recursive, a.obj becomes a.vmmesh. Where several files would get one name, each keeps its extension: "
        "a.obj.vmmesh, a.ply.vmmesh. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { convert(*options); }};
}
