#include "scene/XMLPrimitives.h"

#include "velmarcompiler.h"

#include "scene/NumberText.h"
#include "scene/SceneNode.h"
#include "utils/FileUtils.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Velmar {

namespace {

std::string_view entityOf(char character) {
    switch (character) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    default:
        return "&amp;";
    }
}

/// Calls `put` with the pieces that make up the escaped value.
template <class Put>
void forEachEscapedPiece(std::string_view value, Put put) {
    while (!value.empty()) {
        const std::size_t plain = value.find_first_of("<>\"&");
        put(value.substr(0, plain));
        if (plain == std::string_view::npos) break;
        put(entityOf(value[plain]));
        value.remove_prefix(plain + 1);
    }
}

/// Faster than a call of `memcpy` for the short pieces that elements are made of.
VELMAR_ALWAYS_INLINE void copyPiece(char* to, const char* from, std::size_t size) {
    const auto copyTwo = [&](auto word) {
        std::memcpy(&word, from, sizeof word);
        const auto first = word;
        std::memcpy(&word, from + size - sizeof word, sizeof word);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + size - sizeof word, &word, sizeof word);
    };
    if (size > 16)
        std::memcpy(to, from, size);
    else if (size >= 8)
        copyTwo(std::uint64_t{});
    else if (size >= 4)
        copyTwo(std::uint32_t{});
    else if (size >= 2)
        copyTwo(std::uint16_t{});
    else if (size == 1)
        *to = *from;
}

/// Gathers the pieces of an element, so that one costs the stream one call.
class ElementText {
  public:
    explicit ElementText(OStream& stream) : stream_(stream) {}

    ElementText& tabs(std::uint32_t depth) {
        while (depth > 0) {
            if (used_ == capacity) flush();
            const std::size_t count = std::min<std::size_t>(depth, capacity - used_);
            if (constexpr std::size_t few = 8; count <= few && capacity - used_ >= few)
                std::memcpy(text_ + used_, "\t\t\t\t\t\t\t\t", few);
            else
                std::memset(text_ + used_, '\t', count);
            used_ += count;
            depth -= static_cast<std::uint32_t>(count);
        }
        return *this;
    }

    ElementText& text(std::string_view piece) {
        if (piece.size() > capacity - used_) {
            flush();
            if (piece.size() > capacity) {
                stream_.write(piece);
                return *this;
            }
        }
        copyPiece(text_ + used_, piece.data(), piece.size());
        used_ += piece.size();
        return *this;
    }

    ElementText& escaped(std::string_view value) {
        forEachEscapedPiece(value, [this](std::string_view piece) { text(piece); });
        return *this;
    }

    template <class Number>
    ElementText& number(Number value) {
        if (capacity - used_ < max_number_length) flush();
        used_ = static_cast<std::size_t>(writeNumber(text_ + used_, value) - text_);
        return *this;
    }

    ElementText& openTag(std::string_view name) { return text("<").text(name).text(">"); }
    ElementText& closeTag(std::string_view name) { return text("</").text(name).text(">"); }

    void endLine() {
        text("\n");
        flush();
    }

  private:
    static constexpr std::size_t capacity = 512;

    void flush() {
        stream_.write(std::string_view(text_, used_));
        used_ = 0;
    }

    OStream& stream_;
    std::size_t used_ = 0;
    char text_[capacity];
};

/// What a value's bytes need in an element.
enum ByteKind : std::uint8_t { plain = 0, entity = 1, whitespace = 2 };

constexpr auto byte_kinds = [] {
    std::array<std::uint8_t, 256> kinds = {};
    for (const unsigned char byte : {'<', '>', '"', '&'})
        kinds[byte] = entity;
    for (const unsigned char byte : {'\t', '\n', '\r', ' '})
        kinds[byte] = whitespace;
    return kinds;
}();

/// How a value is written so that readers, which strip and fold white space, don't change it.
enum class ValueForm { as_it_is, escaped, cdata };

ValueForm formOf(std::string_view value) {
    unsigned all = 0;
    // The value's start and end are like white space: what is next to them would be stripped.
    unsigned before = whitespace;
    for (const char byte : value) {
        const unsigned kind = byte_kinds[static_cast<unsigned char>(byte)];
        if ((kind & before & whitespace) != 0) return ValueForm::cdata;
        all |= kind;
        before = kind;
    }
    if (!value.empty() && before == whitespace) return ValueForm::cdata;
    return (all & entity) != 0 ? ValueForm::escaped : ValueForm::as_it_is;
}

} // namespace

std::string escapeXMLEntities(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    forEachEscapedPiece(text, [&result](std::string_view piece) { result += piece; });
    return result;
}

void writeOpenTag(OStream& stream, std::uint32_t depth, std::string_view name) {
    ElementText(stream).tabs(depth).openTag(name).endLine();
}

void writeCloseTag(OStream& stream, std::uint32_t depth, std::string_view name) {
    ElementText(stream).tabs(depth).closeTag(name).endLine();
}

void writeEmptyTag(OStream& stream, std::uint32_t depth, std::string_view name) {
    ElementText(stream).tabs(depth).text("<").text(name).text("/>").endLine();
}

void writeBoolElement(OStream& stream, std::uint32_t depth, std::string_view name, bool value) {
    ElementText(stream).tabs(depth).openTag(name).text(boolToString(value)).closeTag(name).endLine();
}

void writeInt32Element(OStream& stream, std::uint32_t depth, std::string_view name, std::int32_t value) {
    ElementText(stream).tabs(depth).openTag(name).number(value).closeTag(name).endLine();
}

void writeUInt32Element(OStream& stream, std::uint32_t depth, std::string_view name, std::uint32_t value) {
    ElementText(stream).tabs(depth).openTag(name).number(value).closeTag(name).endLine();
}

void writeDoubleElement(OStream& stream, std::uint32_t depth, std::string_view name, double value) {
    ElementText(stream).tabs(depth).openTag(name).number(value).closeTag(name).endLine();
}

void writeVec3Element(OStream& stream, std::uint32_t depth, std::string_view name, const Vec3d& value) {
    ElementText(stream)
        .tabs(depth)
        .openTag(name)
        .number(value.x)
        .text(" ")
        .number(value.y)
        .text(" ")
        .number(value.z)
        .closeTag(name)
        .endLine();
}

void writeMatrix3Element(OStream& stream, std::uint32_t depth, std::string_view name,
                         std::span<const double, 9> value) {
    ElementText element(stream);
    element.tabs(depth).openTag(name).text("\n").tabs(depth + 1);
    for (const double entry : value)
        element.number(entry).text(" ");
    element.text("\n").tabs(depth).closeTag(name).endLine();
}

void writeStringElement(OStream& stream, std::uint32_t depth, std::string_view name, std::string_view value) {
    ElementText element(stream);
    element.tabs(depth).openTag(name);
    switch (formOf(value)) {
    case ValueForm::as_it_is:
        element.text(value);
        break;
    case ValueForm::escaped:
        element.escaped(value);
        break;
    case ValueForm::cdata:
        element.text("<![CDATA[").text(value).text("]]>");
    }
    element.closeTag(name).endLine();
}

void writePathElement(OStream& stream, std::uint32_t depth, std::string_view name, std::string_view path,
                      const XMLWriteOptions& options) {
    if (path.empty() || !options.resolve_relative_paths)
        writeStringElement(stream, depth, name, path);
    else
        writeStringElement(stream, depth, name, FileUtils::join(options.scene_dir.view(), path));
}

void writeNodeIdentity(OStream& stream, std::uint32_t depth, const SceneNode& node) {
    writeUInt32Element(stream, depth, "uid", node.getUID());
    writeStringElement(stream, depth, "name", node.getName());
}

} // namespace Velmar
