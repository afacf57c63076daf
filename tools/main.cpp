#include "tools/Command.h"
#include "tools/Console.h"
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
    std::fprintf(stderr, "'velmar %s--help' tells more.\n", command.empty() ? "" : (command + ' ').c_str());
    return usage;
}

int runTool(std::vector<std::string> arguments) {
    CLI::App tool("Makes scenes and pictures of mesh files.", "velmar");
    // Else a path that begins with a slash is taken for an option.
    tool.allow_windows_style_options(false);
    tool.require_subcommand(1);
    tool.formatter(std::make_shared<HelpFormatter>());
    tool.set_help_flag("-h,--help", "Print this help");
    tool.set_version_flag("--version", "velmar " VELMAR_VERSION, "Print the version");
    tool.footer("'velmar COMMAND --help' tells about a command. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    const Command commands[] = {addExportCommand(tool), addRenderCommand(tool), addInfoCommand(tool),
                                addConvertCommand(tool)};
    const auto chosen = [&] {
        return std::find_if(std::begin(commands), std::end(commands),
                            [](const Command& c) { return c.parser->parsed(); });
    };
    const auto getChosenName = [&] { return chosen() == std::end(commands) ? "" : chosen()->parser->get_name(); };

    // The parser takes them from the end.
    std::reverse(arguments.begin(), arguments.end());
    try {
        tool.parse(std::move(arguments));
    } catch (const CLI::Success& help) {
        return tool.exit(help);
    } catch (const CLI::ParseError& e) {
        return refuseUsage(e.what(), getChosenName());
    }

    ExitCode result = ok;
    try {
        chosen()->run();
    } catch (const UsageError& e) {
        return refuseUsage(e.what(), getChosenName());
    } catch (const ReportedFailure&) {
        result = failed;
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
    const System::ConsoleEncoding encoding;
    return runTool(System::getArguments(argc, argv));
}
