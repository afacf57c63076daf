#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/DocumentEdit.h"
#include "tools/DocumentFiles.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

struct EditOptions {
    std::string input;
    std::string output;
    std::vector<std::string> sets;
    std::vector<std::string> removals;
    bool quiet = false;
};

/// Makes the changes in the order in which they were given.
void change(const CLI::App& app, const EditOptions& options, DocumentEdit& document) {
    std::size_t set = 0;
    std::size_t removal = 0;
    for (const CLI::Option* const option : app.parse_order()) {
        if (option->get_name() == "--set") {
            const auto [element, value] = parseAssignment(options.sets[set++]);
            document.set(element, value);
        } else if (option->get_name() == "--remove") {
            document.remove(parseElementPath(options.removals[removal++]));
        }
    }
}

void edit(const CLI::App& app, const EditOptions& options) {
    // A slip in any of them is found before anything is read.
    for (const std::string& text : options.sets)
        parseAssignment(text);
    for (const std::string& text : options.removals)
        parseElementPath(text);
    Progress progress(options.quiet);
    progress.show("reading " + Text::fileName(options.input));
    DocumentEdit document(options.input);
    change(app, options, document);
    const Velmar::Reference<Velmar::SceneNodeRoot> scene = document.finish();
    OutputFile output(options.output);
    rebaseFiles(*scene, options.input, output.getFinalPath());
    progress.show("writing " + Text::fileName(options.output));
    writeDocument(*scene, output);
    const std::uint64_t count = scene->children().size();
    const std::uint64_t size = output.commit();
    progress.clear();
    if (options.quiet) return;
    for (const std::string& note : document.getNotes())
        printNote(note);
    std::printf("%s: %s, %s changed, %s removed (%s)\n", Text::printable(options.output).c_str(),
                Text::count(count, "node", "nodes").c_str(),
                Text::count(document.getValueCount(), "element", "elements").c_str(),
                Text::count(document.getRemovedCount(), "node", "nodes").c_str(), Text::size(size).c_str());
}

} // namespace

Command addEditCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("edit", "Changes a scene document.");
    const auto options = std::make_shared<EditOptions>();
    app->add_option("IN", options->input, "The scene document.")->required();
    app->add_option("OUT", options->output,
                    "The document to write, which may be IN. An existing file is replaced. Mesh files and others stay "
                    "where they are.")
        ->required();
    app->add_option("--set", options->sets,
                    "Set the value of an element, as camera.aperture_radius=0.01 or "
                    "'model2[name=Bunny].keyframe[0].pos=1 0 0'. An element that isn't there is added.")
        ->type_name("ELEMENT=VALUE")
        ->allow_extra_args(false);
    app->add_option("--remove", options->removals,
                    "Remove a node, as 'model2[name=Bunny]', or an element of one, as camera.obstacle_map.")
        ->type_name("ELEMENT")
        ->allow_extra_args(false);
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success: no summary, notes or progress");
    app->footer(
        "A node is named by its element and, where there are several, by [name=...], [uid=...] or a place from "
        "[0] on; [*] means all of them. Elements in it follow after dots, as docs/scene-document.md shows them. "
        "Changes are made in their order. What the document can't hold is refused, and then nothing is written. "
        "Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [app, options] { edit(*app, *options); }};
}
