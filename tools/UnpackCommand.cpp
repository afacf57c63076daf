#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/ZipFile.h"
#include "utils/FileUtils.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace {

struct UnpackOptions {
    std::string input;
    std::string folder;
    bool force = false;
    bool quiet = false;
    double max_size = 16;
    std::uint64_t max_files = 100000;
};

void unpack(const UnpackOptions& options) {
    constexpr double bytes_per_gigabyte = 1e9;
    std::string folder = options.folder.empty() ? Text::fileStem(options.input) : options.folder;
    while (folder.size() > 1 && (folder.ends_with('/') || folder.ends_with('\\')))
        folder.pop_back();
    Progress progress(options.quiet);
    const UnpackResult result =
        unpackArchive({options.input, folder, options.force,
                       static_cast<std::uint64_t>(options.max_size * bytes_per_gigabyte), options.max_files},
                      progress);
    progress.clear();
    if (options.quiet) return;
    for (const std::string& name : result.names)
        if (name.find_first_of("/\\") == std::string::npos && FileUtils::toLowerCase(name).ends_with(".xml"))
            std::printf("%s\n", Text::printable(Text::joinPaths(folder, name)).c_str());
    std::printf("%s: %s (%s)\n", Text::printable(folder).c_str(),
                Text::count(result.names.size(), "file", "files").c_str(), Text::size(result.size).c_str());
}

} // namespace

Command addUnpackCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("unpack", "Unpacks what 'velmar pack' packed.");
    const auto options = std::make_shared<UnpackOptions>();
    app->add_option("ARCHIVE", options->input, "The zip archive.")->required();
    app->add_option("FOLDER", options->folder,
                    "Where to unpack; it is made if need be. Without it the name of the archive without its extension, "
                    "in the working directory.");
    app->add_flag("--force", options->force, "Replace existing files");
    CommandOptions::addValue(*app, "--max-size", options->max_size, "GB", "Refuse archives whose files are larger.")
        ->check(CommandOptions::inRange(0, 1e9));
    CommandOptions::addValue(*app, "--max-files", options->max_files, "N", "Refuse archives with more files.");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success: no summary or progress");
    app->footer("Nothing is written outside of FOLDER: names that lead out of it, absolute ones, drives, devices and "
                "links are refused. All files are unpacked or none. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { unpack(*options); }};
}
