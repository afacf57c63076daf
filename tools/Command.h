#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

/// What the commands of the tool share: their interface, the forms of their options, and the layout of their help.

/// A command of the tool: the parser of its arguments, and the work to do once they are parsed.
struct Command {
    CLI::App* parser;
    std::function<void()> run;
};

/// `velmar export`: mesh files become a scene.
Command addExportCommand(CLI::App& tool);
/// `velmar render`: mesh files become a picture.
Command addRenderCommand(CLI::App& tool);
/// `velmar info`: the content of a mesh file or a scene, and a picture of a mesh.
Command addInfoCommand(CLI::App& tool);
/// `velmar convert`: a mesh file becomes a vmmesh file, or all in a folder do.
Command addConvertCommand(CLI::App& tool);
/// `velmar store`: what `velmar convert --store` has made is listed, checked and cleaned.
Command addStoreCommand(CLI::App& tool);
/// `velmar check`: faults of scene documents.
Command addCheckCommand(CLI::App& tool);
/// `velmar diff`: differences of two scene documents.
Command addDiffCommand(CLI::App& tool);
/// `velmar edit`: values and nodes of a scene document are changed.
Command addEditCommand(CLI::App& tool);
/// `velmar merge`: scene documents become one.
Command addMergeCommand(CLI::App& tool);
/// `velmar pack`: a scene document and all its files become a folder or an archive.
Command addPackCommand(CLI::App& tool);
/// `velmar unpack`: an archive becomes a folder.
Command addUnpackCommand(CLI::App& tool);

namespace CommandOptions {

/// An option of one value, with its default in the help.
template <class Value>
CLI::Option* addValue(CLI::App& app, const char* name, Value& value, const char* type, const char* description) {
    return app.add_option(name, value, description)->type_name(type)->capture_default_str();
}

/// An option that takes one of a few words.
CLI::Option* addChoice(CLI::App& app, const char* name, std::string& value, const std::vector<std::string>& words,
                       const char* description);

/// A range without words of its own in the help.
CLI::Validator inRange(double low, double high);

/// The option `--up`, as `makeUpright` takes it.
CLI::Option* addUp(CLI::App& app, std::string& up, const char* description);
/// As an option that may be repeated.
CLI::Option* addUp(CLI::App& app, std::vector<std::string>& up, const char* description);

/// The option `--scale`.
CLI::Option* addScale(CLI::App& app, float& scale, const char* description);
/// As an option that may be repeated.
CLI::Option* addScale(CLI::App& app, std::vector<float>& scale, const char* description);

} // namespace CommandOptions

/// Lays out `--help` for a terminal: each option with its argument and, wrapped next to it, its description and
/// default.
class HelpFormatter final : public CLI::Formatter {
  public:
    HelpFormatter();

    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
    std::string make_option_usage(const CLI::Option* option) const override;
    std::string make_footer(const CLI::App* app) const override;
};
