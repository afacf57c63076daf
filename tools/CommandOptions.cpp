#include "tools/CommandOptions.h"

#include "tools/MeshInput.h"

#include <cmath>

namespace CommandOptions {

CLI::Option* addChoice(CLI::App& app, const char* name, std::string& value, const std::vector<std::string>& words,
                       const char* description) {
    std::string type;
    for (const std::string& word : words)
        type += (type.empty() ? "" : "|") + word;
    return addValue(app, name, value, type.c_str(), description)->check(CLI::IsMember(words).description(""));
}

CLI::Validator inRange(double low, double high) {
    // A range takes what isn't a number for one within.
    const CLI::Validator number(
        [](std::string& text) {
            double value = 0;
            return CLI::detail::lexical_cast(text, value) && std::isnan(value) ? "Not a number: " + text
                                                                               : std::string();
        },
        "");
    return (CLI::Range(low, high) & number).description("");
}

CLI::Option* addUp(CLI::App& app, std::string& up) {
    return addChoice(app, "--up", up, {"auto", "y", "z"},
                     "Which axis of a mesh file is its height; auto takes y for .obj and z for the others.");
}

// Programs that write OBJ files mostly turn the height to y.
bool isYUp(const std::string& up, const std::string& path) {
    return up == "y" || (up == "auto" && getFormat(path) == "obj");
}

} // namespace CommandOptions
