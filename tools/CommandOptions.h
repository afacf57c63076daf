#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// Forms of options that several commands share.
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

/// The option `--up`.
CLI::Option* addUp(CLI::App& app, std::string& up);

/// What `--up` says of the mesh file `path`: whether its height is y, else z.
bool isYUp(const std::string& up, const std::string& path);

} // namespace CommandOptions
