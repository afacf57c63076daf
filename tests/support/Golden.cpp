#include "tests/support/Golden.h"

#include "tests/support/FileBytes.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <stdexcept>

namespace TestSupport {

namespace {

/// Calls `visit` with each line, without its line feed.
template <class Visit>
void forEachLine(std::string_view text, Visit visit) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos) throw std::runtime_error("a golden text ends without a line feed");
        visit(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
}

} // namespace

std::string golden(std::string_view name) {
    return readFileBytes(VELMAR_TEST_DATA "/golden/" + std::string(name) + ".xml");
}

std::string indented(std::string_view text, int tabs) {
    std::string result;
    forEachLine(text, [&](std::string_view line) {
        if (!line.empty()) result.append(static_cast<std::size_t>(tabs), '\t');
        result.append(line) += '\n';
    });
    return result;
}

std::string replaced(std::string text, std::initializer_list<std::pair<std::string_view, std::string_view>> pairs) {
    for (const auto& [from, to] : pairs) {
        std::size_t at = text.find(from);
        if (at == std::string::npos) throw std::runtime_error("no '" + std::string(from) + "' in the golden text");
        for (; at != std::string::npos; at = text.find(from, at + to.size()))
            text.replace(at, from.size(), to);
    }
    return text;
}

std::string innerElement(std::string_view text, std::string_view tag) {
    const std::string begin = "<" + std::string(tag) + ">";
    const std::string end = "</" + std::string(tag) + ">";
    std::string result;
    std::size_t tabs = 0;
    bool inside = false;
    bool finished = false;
    forEachLine(text, [&](std::string_view line) {
        if (finished) return;
        if (!inside && line.ends_with(begin)) {
            tabs = line.size() - begin.size();
            inside = true;
        }
        if (!inside) return;
        result.append(line.substr(tabs)) += '\n';
        finished = line.substr(tabs) == end;
    });
    if (!finished) throw std::runtime_error("no element '" + std::string(tag) + "' in the golden text");
    return result;
}

bool isWellFormed(std::string_view text) {
    pugi::xml_document document;
    return static_cast<bool>(document.load_buffer(text.data(), text.size(), pugi::parse_full | pugi::parse_fragment));
}

void expectGolden(std::string_view actual, std::string_view expected) {
    EXPECT_EQ(actual, expected);
    EXPECT_TRUE(isWellFormed(expected));
}

} // namespace TestSupport
