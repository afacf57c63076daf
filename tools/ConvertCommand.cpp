#include "mesh/VmmeshWriter.h"
#include "tools/Command.h"
#include "tools/Failure.h"
#include "tools/MeshInput.h"
#include "tools/OutputFile.h"
#include "tools/Progress.h"
#include "tools/Text.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace {

struct Options {
    std::string input;
    std::string output;
    float scale = 1.0F;
    bool plain = false;
    bool quiet = false;
};

/// Returns the size of the file written.
std::uint64_t writeMesh(const Options& options) {
    Progress progress(options.quiet);
    OutputFile output(options.output);
    progress.show("reading " + Text::fileName(options.input));
    const Velmar::Reference<Velmar::Mesh> mesh = readMesh(options.input, options.scale);
    progress.show("writing " + Text::fileName(options.output));
    try {
        Velmar::writeToFile(Velmar::String(output.getPartialPath()), *mesh, !options.plain);
    } catch (...) {
        throw makeFailureOf(options.output);
    }
    // The writer doesn't see a failure of the last bytes, which the system may hold back until the file is closed.
    if (!holdsMesh(output.getPartialPath(), mesh->checksum()))
        throw Failure(options.output + ": wasn't written whole; is the disk full?");
    return output.commit();
}

void convert(const Options& options) {
    if (getFormat(options.output) != "vmmesh") throw UsageError(options.output + ": the output must end in .vmmesh");
    const std::uint64_t size = writeMesh(options);
    if (!options.quiet) std::printf("%s (%s)\n", options.output.c_str(), Text::size(size).c_str());
}

} // namespace

Command addConvertCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("convert", "Turns a mesh file into a vmmesh file.");
    const auto options = std::make_shared<Options>();
    app->add_option("IN", options->input, "The mesh file: .obj, .ply, .stl or .vmmesh.")->required();
    app->add_option("OUT", options->output, "The file to write, ending in .vmmesh. What stands there is replaced.")
        ->required();
    app->add_option("--scale", options->scale, "Multiplies all positions, except those of a vmmesh file.")
        ->type_name("FACTOR")
        ->capture_default_str();
    app->add_flag("--plain", options->plain, "Write without compression");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success, and no progress");
    app->footer("Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { convert(*options); }};
}
