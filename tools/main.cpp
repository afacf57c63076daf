#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/Manual.h"
#include "tools/OutputFile.h"
#include "tools/System.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

enum ExitCode { ok = 0, failed = 1, usage = 2 };

int refuseUsage(const std::string& message, const std::string& command) {
    printError(message);
    std::fprintf(stderr, "'velmar %s--help' says more.\n", command.empty() ? "" : (command + ' ').c_str());
    return usage;
}

Command addHelpCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("help", "Prints the help of a command.");
    const auto name = std::make_shared<std::string>();
    app->add_option("COMMAND", *name, "The command; without it the commands are listed.");
    return {app, [&tool, name] {
                const auto print = [](const CLI::App& command, const std::string& call) {
                    const auto help = command.get_formatter()->make_help(&command, call, CLI::AppFormatMode::Normal);
                    std::printf("%s", help.c_str());
                };
                if (name->empty()) {
                    print(tool, "velmar");
                    return;
                }
                const std::vector<std::string> names = getCommandNames(tool);
                if (std::find(names.begin(), names.end(), *name) == names.end()) {
                    const std::string similar = findSimilar(*name, names);
                    throw UsageError("unknown command '" + *name + "'" +
                                     (similar.empty() ? "" : "; did you mean '" + similar + "'?"));
                }
                print(*tool.get_subcommand(*name), "velmar " + *name);
            }};
}

Command addCompletionCommand(CLI::App& tool) {
    CLI::App* const app =
        tool.add_subcommand("completion", "Prints a file that completes commands and options in bash.");
    app->footer("For this shell: source <(velmar completion)");
    return {app, [&tool] { std::printf("%s", makeBashCompletion(tool).c_str()); }};
}

Command addManualCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("manual", "Prints the manual page, for man.");
    app->footer("To read it: velmar manual | man -l -");
    return {app, [&tool] { std::printf("%s", makeManualPage(tool).c_str()); }};
}

/// "; did you mean 'export'?" for a word that is like a command or an option; else empty.
std::string suggest(const CLI::App& tool, const CLI::App* command, const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        const bool is_option = argument.starts_with("--");
        if (!is_option && command != nullptr) continue;
        const std::vector<std::string> known =
            is_option ? getOptionNames(command == nullptr ? tool : *command) : getCommandNames(tool);
        const std::string word = argument.substr(0, argument.find('='));
        if (std::find(known.begin(), known.end(), word) != known.end()) continue;
        const std::string similar = findSimilar(word, known);
        if (!similar.empty()) return "; did you mean '" + similar + "'?";
        if (!is_option) break;
    }
    return {};
}

/// The parser's words for arguments that it doesn't know, and a suggestion.
std::string describeParseError(const CLI::ParseError& error, const CLI::App& tool, const CLI::App* command,
                               const std::vector<std::string>& arguments) {
    const bool has_command = command != nullptr || arguments.empty() || arguments.front().starts_with('-');
    const std::string message = has_command ? error.what() : "unknown command '" + arguments.front() + "'";
    return message + suggest(tool, command, arguments);
}

int runTool(const std::vector<std::string>& arguments) {
    CLI::App tool("Makes scenes and pictures of mesh files.", "velmar");
    // Else a path that begins with a slash is taken for an option.
    tool.allow_windows_style_options(false);
    tool.require_subcommand(1);
    tool.formatter(std::make_shared<HelpFormatter>());
    tool.set_help_flag("-h,--help", "Print this help");
    tool.set_version_flag("--version", "velmar " VELMAR_VERSION, "Print the version");
    tool.footer("'velmar help COMMAND' describes a command. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    const Command commands[] = {addExportCommand(tool),     addRenderCommand(tool), addInfoCommand(tool),
                                addConvertCommand(tool),    addStoreCommand(tool),  addCheckCommand(tool),
                                addDiffCommand(tool),       addEditCommand(tool),   addMergeCommand(tool),
                                addPackCommand(tool),       addUnpackCommand(tool), addHelpCommand(tool),
                                addCompletionCommand(tool), addManualCommand(tool)};
    const auto chosen = [&] {
        const auto* const found =
            std::find_if(std::begin(commands), std::end(commands), [](const Command& c) { return c.parser->parsed(); });
        return found == std::end(commands) ? nullptr : found;
    };
    const auto getChosenName = [&] { return chosen() == nullptr ? "" : chosen()->parser->get_name(); };

    try {
        // The parser takes them from the end.
        tool.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& help) {
        return tool.exit(help);
    } catch (const CLI::ParseError& e) {
        const CLI::App* const command = chosen() == nullptr ? nullptr : chosen()->parser;
        return refuseUsage(describeParseError(e, tool, command, arguments), getChosenName());
    }

    ExitCode result = ok;
    try {
        chosen()->run();
    } catch (const UsageError& e) {
        return refuseUsage(e.what(), getChosenName());
    } catch (const ReportedFailure&) {
        result = failed;
    } catch (const ReportedTrouble&) {
        return usage;
    } catch (...) {
        printError(getCurrentMessage());
        return failed;
    }
    // A full disk under a redirected output shows only here.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        printError("the output couldn't be written");
        return failed;
    }
    return result;
}

} // namespace

int main(int argc, char** argv) {
    Interrupts::install();
    const System::ConsoleEncoding encoding;
    return runTool(System::getArguments(argc, argv));
}
