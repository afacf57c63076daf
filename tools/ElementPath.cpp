#include "tools/ElementPath.h"

#include "tools/Console.h"

#include <charconv>
#include <system_error>

namespace {

/// Reads a path off the front of a text.
class PathParser {
  public:
    explicit PathParser(std::string_view text_) : text(text_), rest(text_) {}

    ElementPath parse() {
        ElementPath path;
        do
            path.push_back(parseStep());
        while (take('.'));
        return path;
    }

    std::string_view getRest() const { return rest; }

    [[noreturn]] void fail(const std::string& fault) const {
        throw UsageError("'" + std::string(text) + "': " + fault);
    }

  private:
    bool take(char character) {
        if (!rest.starts_with(character)) return false;
        rest.remove_prefix(1);
        return true;
    }

    std::string takeUntil(std::string_view ends) {
        const std::string_view taken = rest.substr(0, rest.find_first_of(ends));
        rest.remove_prefix(taken.size());
        return std::string(taken);
    }

    ElementStep parseStep() {
        ElementStep step;
        step.name = takeUntil(".[=");
        if (step.name.empty()) fail("the name of an element is missing");
        if (step.name.find_first_of("<>&\"'/]* \t\r\n") != std::string::npos)
            fail("'" + step.name + "' can't be the name of an element");
        while (take('['))
            parseBracket(step);
        return step;
    }

    void parseBracket(ElementStep& step) {
        const std::string word = takeUntil("=]");
        if (take('=')) {
            if (word.empty()) fail("the name of an element is missing before '='");
            step.conditions.emplace_back(word, parseText());
        } else if (word == "*") {
            step.all = true;
        } else {
            std::size_t index = 0;
            const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), index);
            if (error != std::errc() || end != word.data() + word.size())
                fail("[" + word + "] is none of [name=...], [uid=...], a place from [0] on, and [*]");
            step.index = index;
        }
        if (!take(']')) fail("a ']' is missing");
    }

    std::string parseText() {
        if (!take('"')) return takeUntil("]");
        std::string quoted = takeUntil("\"");
        if (!take('"')) fail("a '\"' is missing");
        return quoted;
    }

    std::string_view text;
    std::string_view rest;
};

} // namespace

std::string ElementStep::getText() const {
    std::string result = name;
    for (const auto& [element, value] : conditions)
        result.append("[").append(element).append("=").append(value).append("]");
    if (index) result += "[" + std::to_string(*index) + "]";
    return result + (all ? "[*]" : "");
}

ElementPath parseElementPath(std::string_view text) {
    PathParser parser(text);
    ElementPath path = parser.parse();
    if (!parser.getRest().empty())
        parser.fail("'" + std::string(parser.getRest()) + "' is no part of the path of an element");
    return path;
}

std::pair<ElementPath, std::string> parseAssignment(std::string_view text) {
    PathParser parser(text);
    ElementPath path = parser.parse();
    if (!parser.getRest().starts_with('=')) parser.fail("ELEMENT=VALUE is needed, as camera.aperture_radius=0.01");
    return {std::move(path), std::string(parser.getRest().substr(1))};
}
