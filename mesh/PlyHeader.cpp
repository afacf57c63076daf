#include "mesh/PlyHeader.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <system_error>

namespace Velmar {

namespace {

constexpr std::string_view blanks = " \n\r\t";

constexpr std::string_view scalar_types[] = {"int8",    "uint8",   "int16", "uint16", "int32", "uint32",
                                             "float32", "float64", "char",  "uchar",  "short", "ushort",
                                             "int",     "uint",    "float", "double"};
constexpr std::string_view formats[] = {"ascii", "binary_little_endian", "binary_big_endian"};

template <std::size_t count>
bool isOneOf(std::string_view word, const std::string_view (&words)[count]) {
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

class HeaderWalk {
  public:
    explicit HeaderWalk(std::string_view behind_magic) : rest(behind_magic) {}

    /// Whether the header is whole. `ascii` tells its last format.
    bool walk(bool& ascii) {
        if (!next()) return false;
        while (word != "end_header") {
            if (word == "format") {
                if (!next() || !isOneOf(word, formats)) return false;
                ascii = word == "ascii";
                if (!next() || word != "1.0" || !next()) return false;
            } else if (word == "element") {
                if (!next() || !next() || !countFits() || !next() || !walkProperties()) return false;
            } else if (!isRemark() || !passLine() || !next()) {
                return false;
            }
        }
        return true;
    }

    /// The last word; empty when none could be read.
    std::string_view lastWord() const { return word; }

    /// What hasn't been passed yet.
    std::string_view remaining() const { return rest; }

  private:
    bool walkProperties() {
        while (word == "property" || isRemark()) {
            const bool fine = word == "property" ? walkProperty() : passLine();
            if (!fine || !next()) return false;
        }
        return true;
    }

    bool walkProperty() {
        if (!next()) return false;
        if (word == "list") return next() && isScalar() && next() && isScalar() && next();
        return isScalar() && next();
    }

    /// RPly leaves it to the system what becomes of a number that is too large.
    bool countFits() const {
        const std::string_view digits = word.substr(word.starts_with('+') ? 1 : 0);
        long count = 0;
        return std::from_chars(digits.data(), digits.data() + digits.size(), count).ec !=
               std::errc::result_out_of_range;
    }

    bool isScalar() const { return isOneOf(word, scalar_types); }
    bool isRemark() const { return word == "comment" || word == "obj_info"; }

    bool next() {
        word = {};
        const std::size_t first = rest.find_first_not_of(blanks);
        if (first == std::string_view::npos) return false;
        rest.remove_prefix(first);
        const std::size_t length = rest.find_first_of(blanks);
        constexpr std::size_t too_long = 256;
        if (length == std::string_view::npos || length >= too_long) return false;
        word = rest.substr(0, length);
        rest.remove_prefix(length + 1);
        return word.find('\0') == std::string_view::npos;
    }

    bool passLine() {
        word = {};
        const std::size_t length = rest.find('\n');
        // RPly puts what it refuses into a message of 1024 bytes, among twenty of its own, without looking at the size.
        constexpr std::size_t longest_line = 1024 - 20;
        if (length == std::string_view::npos || length > longest_line ||
            rest.substr(0, length).find('\0') != std::string_view::npos)
            return false;
        rest.remove_prefix(length + 1);
        return true;
    }

    std::string_view rest;
    std::string_view word;
};

} // namespace

PlyHeaderCheck checkPlyHeader(std::string_view file) {
    constexpr std::string_view magic = "ply";
    PlyHeaderCheck check;
    if (file.size() <= magic.size() || !file.starts_with(magic) || !endsWithBlank(file.substr(0, magic.size() + 1)))
        return check;
    HeaderWalk header(file.substr(magic.size()));
    check.complete = header.walk(check.ascii);
    if (!check.complete) {
        check.word = header.lastWord();
        const std::size_t passed =
            static_cast<std::size_t>(header.remaining().data() - file.data()) - !check.word.empty();
        check.line = 1 + static_cast<std::size_t>(
                             std::count(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(passed), '\n'));
    }
    return check;
}

bool endsWithBlank(std::string_view text) {
    return !text.empty() && blanks.find(text.back()) != std::string_view::npos;
}

} // namespace Velmar
