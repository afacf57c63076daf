#include "scene/XMLPrimitives.h"

#include "scene/NumberText.h"
#include "scene/SceneNode.h"
#include "utils/FileUtils.h"

#include <algorithm>
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

/// Gathers the pieces of an element, so that one costs the stream one call.
class ElementText {
  public:
    explicit ElementText(OStream& stream) : stream_(stream) {}

    ElementText& tabs(std::uint32_t depth) {
        while (depth > 0) {
            if (used_ == capacity) flush();
            const std::size_t count = std::min<std::size_t>(depth, capacity - used_);
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
        if (!piece.empty()) std::memcpy(text_ + used_, piece.data(), piece.size());
        used_ += piece.size();
        return *this;
    }

    ElementText& escaped(std::string_view value) {
        forEachEscapedPiece(value, [this](std::string_view piece) { text(piece); });
        return *this;
    }

    template <class Number>
    ElementText& number(Number value) {
        return text(NumberText(value).view());
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

constexpr bool isWhitespace(char byte) {
    return byte == '\t' || byte == '\n' || byte == '\r' || byte == ' ';
}

/// Whether readers, which strip and fold white space, would change the value.
bool needsCDATA(std::string_view value) {
    if (value.empty()) return false;
    if (isWhitespace(value.front()) || isWhitespace(value.back())) return true;
    const auto bothWhitespace = [](char a, char b) { return isWhitespace(a) && isWhitespace(b); };
    return std::ranges::adjacent_find(value, bothWhitespace) != value.end();
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
    if (needsCDATA(value))
        element.text("<![CDATA[").text(value).text("]]>");
    else
        element.escaped(value);
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
