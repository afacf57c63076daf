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
std::uint64_t convertFile(const ConvertOptions& options, const std::string& format) {
    Progress progress(options.settings.quiet);
    // Before the mesh is read, which may take long in vain.
    OutputFile output(options.output);
    progress.show("reading " + Text::fileName(options.input));
    const Velmar::ImportedMesh imported = readForConversion(options.input, options.settings);
    progress.clear();
    printNotes(options.input, imported, options.settings.quiet);
    if (const std::string loss = describeLoss(format, *imported.mesh); !loss.empty() && !options.settings.quiet)
        printNote(options.output + ": the format has no place for " + loss);
    progress.show("writing " + Text::fileName(options.output));
    writeMeshAs(format, *imported.mesh, output, options.settings.write);
    return output.commit();
}

void convert(const ConvertOptions& options) {
    if (options.recursive) {
        convertFolder(options.input, options.output, options.settings);
        return;
    }
    if (System::isDirectory(options.input)) throw UsageError(options.input + ": is a folder, which wants --recursive");
    const std::string format = Velmar::getMeshFormat(options.output);
    if (!isWritable(format)) throw UsageError(options.output + ": the output must end in .vmmesh, .obj, .ply or .stl");
    const std::uint64_t size = convertFile(options, format);
    if (!options.settings.quiet)
        std::printf("%s (%s)\n", Text::printable(options.output).c_str(), Text::size(size).c_str());
}

} // namespace

Command addConvertCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("convert", "Turns mesh files into vmmesh, OBJ, PLY or STL files.");
    const auto options = std::make_shared<ConvertOptions>();
    ConversionSettings& settings = options->settings;
    app->add_option("IN", options->input, "The mesh file: .obj, .ply, .stl or .vmmesh. With --recursive a folder.")
        ->required();
    app->add_option("OUT", options->output,
                    "The file to write, whose extension (.vmmesh, .obj, .ply or .stl) decides the format. With "
                    "--recursive the folder for the files. Existing files are replaced.")
        ->required();
    app->add_flag("-r,--recursive", options->recursive,
                  "Convert every mesh file in the folder IN and below into the same place below OUT. A file that fails "
                  "is reported, and the others are converted. Links to folders aren't followed. OUT may be in IN.");
    CommandOptions::addChoice(*app, "--to", settings.format, {"vmmesh", "obj", "ply", "stl"},
                              "The format of the files with --recursive.")
        ->needs("--recursive");
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
