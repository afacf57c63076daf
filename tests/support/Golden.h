#pragma once

#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <string_view>

namespace TestSupport {

/// Whether an independent reader takes `text`, which may have several elements side by side.
inline bool isWellFormed(std::string_view text) {
    pugi::xml_document document;
    return static_cast<bool>(document.load_buffer(text.data(), text.size(), pugi::parse_full | pugi::parse_fragment));
}

/// Compares byte for byte, and has the expected text read, so that a slip in it shows.
inline void expectGolden(std::string_view actual, std::string_view expected) {
    EXPECT_EQ(actual, expected);
    EXPECT_TRUE(isWellFormed(expected));
}

} // namespace TestSupport
