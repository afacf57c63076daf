#include "tools/Command.h"

#include "tools/Console.h"
#include "tools/Placement.h"

#include <cmath>
#include <sstream>

namespace CommandOptions {

namespace {

constexpr double min_scale = 1e-9;
constexpr double max_scale = 1e9;

CLI::Option* takeWords(CLI::Option* option, const std::vector<std::string>& words) {
    std::string type;
    for (const std::string& word : words)
        type += (type.empty() ? "" : "|") + word;
    return option->type_name(type)->check(CLI::IsMember(words).description(""));
}

} // namespace

CLI::Option* addChoice(CLI::App& app, const char* name, std::string& value, const std::vector<std::string>& words,
                       const char* description) {
    return takeWords(app.add_option(name, value, description), words)->capture_default_str();
}

CLI::Validator inRange(double low, double high) {
    const auto check = [low, high](std::string& text) {
        double value = 0;
        if (!CLI::detail::lexical_cast(text, value) || std::isnan(value)) return "Not a number: " + text;
        if (low <= value && value <= high) return std::string();
        return "Value " + text + " not in range " + Text::number(low) + " to " + Text::number(high);
    };
    return {check, ""};
}

CLI::Option* addUp(CLI::App& app, std::string& up, const char* description) {
    return addChoice(app, "--up", up, getUpAxes(), description);
}

CLI::Option* addUp(CLI::App& app, std::vector<std::string>& up, const char* description) {
    return takeWords(app.add_option("--up", up, description), getUpAxes())->default_str("auto");
}

CLI::Option* addScale(CLI::App& app, float& scale, const char* description) {
    return addValue(app, "--scale", scale, "FACTOR", description)->check(inRange(min_scale, max_scale));
}

CLI::Option* addScale(CLI::App& app, std::vector<float>& scale, const char* description) {
    return app.add_option("--scale", scale, description)
        ->type_name("FACTOR")
        ->check(inRange(min_scale, max_scale))
        ->default_str("1");
}

} // namespace CommandOptions

// ---- help --------------------------------------------------------------------------------------------------------

namespace {

constexpr std::size_t names_width = 28;
constexpr std::size_t total_width = 100;

std::string wrap(const std::string& text, std::size_t width) {
    std::istringstream words(text);
    std::string result;
    std::size_t column = 0;
    for (std::string word; words >> word; column += word.size()) {
        if (column != 0 && column + 1 + word.size() > width) {
            result += '\n';
            column = 0;
        } else if (column != 0) {
            result += ' ';
            ++column;
        }
        result += word;
    }
    return result;
}

} // namespace

HelpFormatter::HelpFormatter() {
    column_width(names_width);
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    const bool is_flag = option->get_type_size() == 0;
    return option->get_positional() || is_flag ? std::string() : ' ' + option->get_type_name();
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    const std::string& value = option->get_default_str();
    return wrap(option->get_description() + (value.empty() ? "" : " (" + value + ')'), total_width - names_width);
}

std::string HelpFormatter::make_option_usage(const CLI::Option* option) const {
    return make_option_name(option, true);
}

std::string HelpFormatter::make_footer(const CLI::App* app) const {
    return app->get_footer().empty() ? std::string() : wrap(app->get_footer(), total_width) + '\n';
}
