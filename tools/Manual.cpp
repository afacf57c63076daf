#include "tools/Manual.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <set>
#include <string_view>

namespace {

/// Text in which the macros of the manual see nothing special.
std::string escape(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    // A dot or a quote at the start of a line begins a macro.
    if (result.starts_with('.') || result.starts_with('\'')) result.insert(0, "\\&");
    return result;
}

bool isFlag(const CLI::Option& option) {
    return option.get_type_size() == 0;
}

std::string describe(const CLI::Option& option) {
    const std::string& value = option.get_default_str();
    return option.get_description() + (value.empty() ? "" : " (" + value + ')');
}

std::string getHeading(const CLI::Option& option) {
    std::string names;
    const auto add = [&](const std::string& name) {
        names += (names.empty() ? "\\fB" : ", \\fB") + escape(name) + "\\fR";
    };
    for (const std::string& name : option.get_snames())
        add('-' + name);
    for (const std::string& name : option.get_lnames())
        add("--" + name);
    if (option.get_positional()) return "\\fI" + escape(option.get_name(true)) + "\\fR";
    return isFlag(option) ? names : names + " \\fI" + escape(option.get_type_name()) + "\\fR";
}

void addCommand(std::string& page, const CLI::App& command) {
    page += ".SH \"VELMAR " + escape(CLI::detail::to_lower(command.get_name())) + "\"\n";
    page += escape(command.get_description()) + '\n';
    page += ".PP\n"
            R"(\fBvelmar )" +
            escape(command.get_name()) + R"(\fR [\fIOPTIONS\fR])";
    const std::vector<const CLI::Option*> options = command.get_options();
    for (const CLI::Option* const option : options)
        if (option->get_positional()) page += " \\fI" + escape(option->get_name(true)) + "\\fR";
    page += '\n';
    std::string group;
    for (const CLI::Option* const option : options) {
        if (!option->get_positional() && option->get_group() != group) {
            group = option->get_group();
            page += ".SS \"" + escape(group) + "\"\n";
        }
        page += ".TP\n" + getHeading(*option) + '\n' + escape(describe(*option)) + '\n';
    }
    if (!command.get_footer().empty()) page += ".PP\n" + escape(command.get_footer()) + '\n';
}

std::vector<const CLI::App*> getCommands(const CLI::App& tool) {
    return tool.get_subcommands([](const CLI::App* command) { return !command->get_name().empty(); });
}

std::string join(const std::vector<std::string>& words) {
    return std::accumulate(words.begin(), words.end(), std::string(), [](std::string text, const std::string& word) {
        return std::move(text) + (text.empty() ? "" : " ") + word;
    });
}

/// How many letters to change, insert, remove or exchange with the next one.
std::size_t getDistance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> rows(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                rows[i][j] = i + j;
                continue;
            }
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, rows[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
        }
    return rows[a.size()][b.size()];
}

} // namespace

std::string makeManualPage(const CLI::App& tool) {
    std::string page = ".TH VELMAR 1 \"\" \"velmar\"\n.SH NAME\nvelmar \\- " + escape(tool.get_description()) + '\n';
    page += ".SH SYNOPSIS\n";
    for (const CLI::App* const command : getCommands(tool))
        page +=
            "\\fBvelmar " + escape(command->get_name()) + "\\fR \\- " + escape(command->get_description()) + "\n.br\n";
    for (const CLI::App* const command : getCommands(tool))
        addCommand(page, *command);
    page += ".SH EXIT STATUS\n0: done; 1: failed; 2: wrong usage.\n";
    return page;
}

std::string makeBashCompletion(const CLI::App& tool) {
    std::string values;
    std::string options;
    for (const CLI::App* const command : getCommands(tool)) {
        options += "        " + command->get_name() + ") words=\"" + join(getOptionNames(*command)) + "\" ;;\n";
        for (const CLI::Option* const option : command->get_options()) {
            std::string type = option->get_type_name();
            if (option->get_positional() || isFlag(*option) || type.find('|') == std::string::npos) continue;
            std::replace(type.begin(), type.end(), '|', ' ');
            values += "        '" + command->get_name() + ' ' + option->get_name() + "') words=\"" + type + "\" ;;\n";
        }
    }
    return "# Completion of velmar for bash: source this file.\n"
           "_velmar() {\n"
           "    local current=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} words=\n"
           "    case \"$command ${COMP_WORDS[COMP_CWORD-1]}\" in\n" +
           values +
           "    esac\n"
           "    if [[ $COMP_CWORD == 1 || ( $COMP_CWORD == 2 && $command == help ) ]]; then\n"
           "        words=\"" +
           join(getCommandNames(tool)) +
           "\"\n"
           "    elif [[ -z $words && $current == -* ]]; then\n"
           "        case $command in\n" +
           options +
           "        esac\n"
           "    fi\n"
           "    COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
           "}\n"
           "complete -o default -F _velmar velmar\n";
}

std::string findSimilar(const std::string& word, const std::vector<std::string>& candidates) {
    std::string similar;
    std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
    for (const std::string& candidate : candidates) {
        const bool is_start = word.size() > 3 && candidate.starts_with(word);
        const std::size_t distance = is_start ? 1 : getDistance(word, candidate);
        if (distance >= least) continue;
        least = distance;
        similar = candidate;
    }
    return similar;
}

std::vector<std::string> getCommandNames(const CLI::App& tool) {
    std::vector<std::string> names;
    for (const CLI::App* const command : getCommands(tool))
        names.push_back(command->get_name());
    return names;
}

std::vector<std::string> getOptionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}
