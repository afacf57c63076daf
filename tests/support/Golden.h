#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

/// Elements and documents as files, one for each, compared byte for byte.
namespace TestSupport {

/// The content of `tests/data/golden/<name>.xml`, with line feeds alone. A file begins without tabs.
/// Throws `std::runtime_error` when it can't be read.
std::string golden(std::string_view name);

/// `text` with `tabs` more tabs before each line that isn't empty.
std::string indented(std::string_view text, int tabs = 1);

/// `text` with each first text of a pair, which must be there, replaced by the second wherever it is.
std::string replaced(std::string text, std::initializer_list<std::pair<std::string_view, std::string_view>> pairs);

/// The first element `tag` in `text`, which begins and ends on lines of its own, without the tabs before it.
std::string innerElement(std::string_view text, std::string_view tag);

/// Whether an independent reader takes `text`, which may have several elements side by side.
bool isWellFormed(std::string_view text);

/// Compares byte for byte, and has the expected text read, so that a slip in it shows.
void expectGolden(std::string_view actual, std::string_view expected);

} // namespace TestSupport
