#include "mesh/PlyInput.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <system_error>
#include <utility>

// What RPly calls in place of its own name and of the functions of the C library. The name and the `FILE*` are
// addresses of a `PlyStream`: RPly passes them on without using them.
extern "C" {
p_ply velmar_ply_open(const char* name, p_ply_error_cb on_error, long user_number, void* user);
std::FILE* velmar_ply_fopen(const char* name, const char* mode);
std::size_t velmar_ply_fread(void* to, std::size_t size, std::size_t count, std::FILE* file);
int velmar_ply_fclose(std::FILE* file);

std::FILE* velmar_ply_fopen(const char* name, const char*) {
    return reinterpret_cast<std::FILE*>(const_cast<char*>(name));
}

std::size_t velmar_ply_fread(void* to, std::size_t size, std::size_t count, std::FILE* file) {
    // RPly always reads single bytes.
    return reinterpret_cast<Velmar::PlyStream*>(file)->read(static_cast<char*>(to), size * count);
}

int velmar_ply_fclose(std::FILE*) {
    return 0;
}
}

namespace Velmar {

namespace {

constexpr std::string_view blanks = " \n\r\t";

constexpr std::string_view scalar_types[] = {"int8",    "uint8",   "int16", "uint16", "int32", "uint32",
                                             "float32", "float64", "char",  "uchar",  "short", "ushort",
                                             "int",     "uint",    "float", "double"};
constexpr std::string_view formats[] = {"ascii", "binary_little_endian", "binary_big_endian"};

/// The place of `word` among `words`, or `count`.
template <std::size_t count>
std::size_t indexIn(const std::string_view (&words)[count], std::string_view word) {
    return static_cast<std::size_t>(std::find(std::begin(words), std::end(words), word) - std::begin(words));
}

/// Whether the last word of `text` is followed by a blank.
bool endsWithBlank(std::string_view text) {
    return !text.empty() && blanks.find(text.back()) != std::string_view::npos;
}

class HeaderParser {
  public:
    HeaderParser(std::string_view after_magic, PlyHeader& parsed) : rest(after_magic), header(parsed) {}

    /// Whether the header is whole.
    bool parse() {
        if (!next()) return false;
        while (word != "end_header") {
            if (word == "format") {
                if (!parseFormat()) return false;
            } else if (word == "element") {
                if (!parseElement()) return false;
            } else if (!isRemark() || !passLine() || !next()) {
                return false;
            }
        }
        header.text += "end_header\n";
        return true;
    }

    /// The last word; empty when none could be read.
    std::string_view lastWord() const { return word; }

    /// What hasn't been passed yet.
    std::string_view remaining() const { return rest; }

  private:
    bool parseFormat() {
        if (!next()) return false;
        const std::size_t format = indexIn(formats, word);
        if (format == std::size(formats)) return false;
        header.format = static_cast<PlyFormat>(format + 1);
        header.text.append("format ").append(word).append(" 1.0\n");
        return next() && word == "1.0" && next();
    }

    bool parseElement() {
        if (!next()) return false;
        const std::string_view name = word;
        const bool is_first = (name == "vertex" && !std::exchange(vertex_declared, true)) ||
                              (name == "face" && !std::exchange(face_declared, true));
        long count = 0;
        if (!next() || !parseCount(count) || !next()) return false;
        const std::size_t declared_at = header.text.size();
        appendElement(name, count);
        if (!parseProperties(header.elements.back().properties)) return false;
        const std::size_t num_properties = header.elements.back().properties.size();
        if (count > 0 && num_properties != 0) {
            num_declarations += 1 + num_properties;
            return num_declarations <= max_declarations;
        }
        header.text.resize(declared_at);
        header.elements.pop_back();
        // RPly takes the first element of a name for the one that is meant, even if it reads nothing.
        if (is_first) appendElement(name, 0);
        return true;
    }

    void appendElement(std::string_view name, long count) {
        header.text.append("element ").append(name).append(" ").append(std::to_string(count)).append("\n");
        header.elements.push_back({name, count, {}});
    }

    bool parseProperties(std::vector<PlyProperty>& properties) {
        while (word == "property" || isRemark()) {
            const bool fine = word == "property" ? parseProperty(properties.emplace_back()) : passLine();
            if (!fine || !next()) return false;
        }
        return true;
    }

    bool parseProperty(PlyProperty& property) {
        if (!next()) return false;
        header.text += "property ";
        if (word == "list") {
            property.is_list = true;
            header.text += "list ";
            if (!next() || !takeScalar(property.length_type) || !next()) return false;
        }
        if (!takeScalar(property.type) || !next()) return false;
        property.name = word;
        header.text.append(word).append("\n");
        return true;
    }

    bool takeScalar(PlyType& type) {
        const std::size_t index = indexIn(scalar_types, word);
        if (index == std::size(scalar_types)) return false;
        // Each type has two names.
        type = static_cast<PlyType>(index % 8);
        header.text.append(word).append(" ");
        return true;
    }

    /// As `sscanf` does, but a number that is too large is refused: C leaves open what becomes of it.
    bool parseCount(long& count) const {
        const std::string_view digits = word.substr(word.starts_with('+') && !word.starts_with("+-") ? 1 : 0);
        return std::from_chars(digits.data(), digits.data() + digits.size(), count).ec == std::errc();
    }

    bool isRemark() const { return word == "comment" || word == "obj_info"; }

    bool next() {
        word = {};
        const std::size_t first = rest.find_first_not_of(blanks);
        if (first == std::string_view::npos) return false;
        rest.remove_prefix(first);
        const std::size_t length = rest.find_first_of(blanks);
        if (length == std::string_view::npos || length > max_word) return false;
        word = rest.substr(0, length);
        rest.remove_prefix(length + 1);
        return word.find('\0') == std::string_view::npos;
    }

    bool passLine() {
        word = {};
        const std::size_t length = rest.find('\n');
        if (length == std::string_view::npos || length > max_line ||
            rest.substr(0, length).find('\0') != std::string_view::npos)
            return false;
        rest.remove_prefix(length + 1);
        return true;
    }

    // RPly's own limits.
    static constexpr std::size_t max_word = 255;
    static constexpr std::size_t max_line = 1023;
    /// RPly moves all elements, or all properties of one, for each that it adds.
    static constexpr std::size_t max_declarations = 10000;

    std::string_view rest;
    std::string_view word;
    PlyHeader& header;
    bool vertex_declared = false;
    bool face_declared = false;
    std::size_t num_declarations = 0;
};

} // namespace

PlyHeader parsePlyHeader(std::string_view file) {
    constexpr std::string_view magic = "ply";
    PlyHeader header;
    if (file.size() <= magic.size() || !file.starts_with(magic) || !endsWithBlank(file.substr(0, magic.size() + 1)))
        return header;
    header.text = "ply\n";
    HeaderParser parser(file.substr(magic.size()), header);
    header.complete = parser.parse();
    header.body_offset = static_cast<std::size_t>(parser.remaining().data() - file.data());
    // After a first line that ends in two bytes RPly takes the last one to end so too.
    if (header.complete && file.substr(magic.size()).starts_with("\r\n"))
        header.complete = header.body_offset++ < file.size();
    if (!header.complete) {
        header.word = parser.lastWord();
        const std::size_t passed =
            static_cast<std::size_t>(parser.remaining().data() - file.data()) - !header.word.empty();
        header.line = 1 + static_cast<std::size_t>(
                              std::count(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(passed), '\n'));
    }
    return header;
}

PlyFileStream::PlyFileStream(const PlyHeader& header, std::string_view file)
    : parts{header.text, file.substr(header.body_offset),
            header.isAscii() && !endsWithBlank(file) ? std::string_view("\n") : std::string_view()} {}

std::size_t PlyFileStream::read(char* to, std::size_t size) noexcept {
    std::size_t copied = 0;
    for (std::string_view& part : parts) {
        const std::size_t count = part.copy(to + copied, size - copied);
        part.remove_prefix(count);
        copied += count;
    }
    return copied;
}

PlyHandle openPly(PlyStream& stream, p_ply_error_cb on_error, void* user) {
    return PlyHandle(velmar_ply_open(reinterpret_cast<const char*>(&stream), on_error, 0, user));
}

bool readPlyHeader(p_ply ply) {
    static std::mutex one_at_a_time;
    const std::lock_guard lock(one_at_a_time);
    return ply_read_header(ply) != 0;
}

} // namespace Velmar
