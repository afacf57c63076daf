#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// Texts made of the descriptions of commands and options that `--help` prints.

/// A manual page for `man`, in its macros.
std::string makeManualPage(const CLI::App& tool);

/// What bash sources to complete commands, options and their words.
std::string makeBashCompletion(const CLI::App& tool);

/// The candidate that `word` may have been meant to be; empty when none is like it.
std::string findSimilar(const std::string& word, const std::vector<std::string>& candidates);

/// The names of the commands that the user sees.
std::vector<std::string> getCommandNames(const CLI::App& tool);

/// The names of a command's options, with their dashes.
std::vector<std::string> getOptionNames(const CLI::App& command);
