#include "tools/SceneDocument.h"

#include "import/ValidText.h"

#include "tools/Console.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <pugixml.hpp>
#include <string_view>

using pugi::xml_node;

namespace {

/// Gathers the texts of all elements of one name below a node, however deep.
class TextFinder final : public pugi::xml_tree_walker {
  public:
    explicit TextFinder(std::string_view element_name) : name(element_name) {}

    bool for_each(xml_node& node) override {
        if (node.name() == name && !node.text().empty()) texts.emplace_back(node.text().get());
        return true;
    }

    std::vector<std::string> texts;

  private:
    std::string_view name;
};

/// The first element below a node that isn't what every node begins with.
xml_node getFirstOwnElement(const xml_node& node) {
    for (const xml_node child : node.children()) {
        const std::string_view name = child.name();
        if (child.type() == pugi::node_element && name != "uid" && name != "name") return child;
    }
    return {};
}

std::string describe(const xml_node& node) {
    const std::string_view kind = node.name();
    if (kind == "renderer_settings") {
        // There are elements only for what isn't the default.
        const std::string_view width = node.child("width").text().as_string("800");
        const std::string_view height = node.child("height").text().as_string("600");
        return std::string(width).append(" x ").append(height);
    }
    if (kind == "camera") return node.child_value("camera_type");
    if (kind == "tonemapping" || kind == "material") return getFirstOwnElement(node).name();
    if (kind == "background_settings")
        return getFirstOwnElement(node.child("background_material").child("material")).name();
    return {};
}

// ---- the text -----------------------------------------------------------------------------------------------------

/// The markup of a file, piece after piece. Checks that each character is one that XML allows.
class MarkupReader {
  public:
    enum class Kind { open_tag, close_tag, empty_tag, text, other, end };
    struct Piece {
        Kind kind = Kind::end;
        /// Valid until the next piece is taken.
        std::string_view text;
        /// Of a tag.
        std::string_view name;
    };

    explicit MarkupReader(const std::string& document_path)
        : path(document_path), file(System::openFile(document_path), &std::fclose) {
        if (!file) throw Failure("Failed to open file '" + path + "': " + PlatformUtils::getLastErrorText());
        fill();
        at = buffer.size() - FileUtils::withoutByteOrderMark(buffer).size();
    }

    /// The next piece. A text may come in several.
    Piece take() {
        lines += static_cast<std::uint64_t>(std::count(buffer.begin() + static_cast<std::ptrdiff_t>(taken_from),
                                                       buffer.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
        if (at == buffer.size() && !fill()) {
            taken_from = at;
            return {};
        }
        Piece piece = buffer[at] == '<' ? takeMarkup() : takeText();
        check(piece.text);
        return piece;
    }

    std::uint64_t getSize() const { return size; }

    /// The line at which the last piece begins.
    std::uint64_t getLine() const { return lines; }

    [[noreturn]] void fail(const std::string& fault, std::uint64_t line) const {
        throw Failure(path + ": " + fault + " on line " + std::to_string(line));
    }
    [[noreturn]] void fail(const std::string& fault) const { fail(fault, lines); }

  private:
    /// Reads on, and forgets what was taken. Returns whether there was more.
    bool fill() {
        constexpr std::size_t chunk = std::size_t{1} << 20U;
        buffer.erase(0, at);
        at = 0;
        taken_from = 0;
        const std::size_t old_size = buffer.size();
        buffer.resize(old_size + chunk);
        const std::size_t count = std::fread(buffer.data() + old_size, 1, chunk, file.get());
        buffer.resize(old_size + count);
        size += count;
        if (count < chunk && std::ferror(file.get()) != 0)
            throw Failure(path + ": can't be read: " + PlatformUtils::getLastErrorText());
        return count != 0;
    }

    std::string_view rest() const { return std::string_view(buffer).substr(at); }

    /// The place after the first `end` in what follows, from `skipped` bytes on. Reads on until it is found.
    std::size_t findEnd(std::string_view end, std::size_t skipped) {
        for (std::size_t from = skipped;;) {
            const std::size_t found = rest().find(end, from);
            if (found != std::string_view::npos) return found + end.size();
            from = std::max(skipped, rest().size() - std::min(rest().size(), end.size()));
            if (!fill()) fail("the document ends too early");
        }
    }

    /// The place after the `>` that ends a tag or a document type, outside quotes and brackets.
    std::size_t findTagEnd(bool with_brackets) {
        char quote = 0;
        std::size_t brackets = 0;
        for (std::size_t i = 1;; ++i) {
            if (i == rest().size() && !fill()) fail("the document ends too early");
            const char c = buffer[at + i];
            if (quote != 0) {
                if (c == quote) quote = 0;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (with_brackets && c == '[') {
                ++brackets;
            } else if (with_brackets && c == ']' && brackets != 0) {
                --brackets;
            } else if (c == '>' && brackets == 0) {
                return i + 1;
            }
        }
    }

    Piece takeMarkup() {
        constexpr std::size_t max_opening = 9;
        while (rest().size() < max_opening && fill()) {
        }
        Piece piece = {Kind::other, {}, {}};
        std::size_t length = 0;
        if (rest().starts_with("<!--")) {
            length = findEnd("-->", 4);
        } else if (rest().starts_with("<![CDATA[")) {
            length = findEnd("]]>", max_opening);
            piece.kind = Kind::text;
        } else if (rest().starts_with("<?")) {
            length = findEnd("?>", 2);
        } else if (rest().starts_with("<!")) {
            length = findTagEnd(true);
        } else {
            length = findTagEnd(false);
            const std::string_view tag = rest().substr(0, length);
            const bool closes = tag.starts_with("</");
            piece.kind = closes ? Kind::close_tag : tag.ends_with("/>") ? Kind::empty_tag : Kind::open_tag;
            const std::size_t first = closes ? 2 : 1;
            piece.name = tag.substr(first, tag.find_first_of(" \t\r\n/>", first) - first);
        }
        piece.text = rest().substr(0, length);
        advance(length);
        return piece;
    }

    Piece takeText() {
        std::size_t length = rest().find('<');
        if (length == std::string_view::npos) {
            // A character may go on in what follows.
            constexpr std::size_t max_character = 4;
            while (rest().size() < max_character && fill()) {
            }
            length = rest().find('<');
            if (length == std::string_view::npos) {
                const bool at_end = std::feof(file.get()) != 0;
                length = at_end ? rest().size() : rest().size() - (max_character - 1);
                while (!at_end && length > 1 && (static_cast<unsigned char>(rest()[length]) & 0xC0U) == 0x80U)
                    --length;
            }
        }
        const Piece piece = {Kind::text, rest().substr(0, length), {}};
        advance(length);
        return piece;
    }

    void advance(std::size_t length) {
        taken_from = at;
        at += length;
    }

    void check(std::string_view text) const {
        const auto line_at = [&](std::size_t offset) {
            return lines + static_cast<std::uint64_t>(
                               std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
        };
        if (const std::size_t valid = Velmar::countValidBytes(text); valid != text.size())
            fail("not XML: a character that isn't allowed, or isn't UTF-8,", line_at(valid));
        for (std::size_t i = text.find("&#"); i != std::string_view::npos; i = text.find("&#", i + 1)) {
            if (!isAllowedReference(text.substr(i + 2)))
                fail("not XML: a reference to a character that isn't allowed", line_at(i));
        }
    }

    static bool isAllowedReference(std::string_view text) {
        const bool is_hex = text.starts_with('x');
        if (is_hex) text.remove_prefix(1);
        std::uint32_t character = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), character, is_hex ? 16 : 10);
        if (error != std::errc() || end == text.data() + text.size() || *end != ';') return false;
        const bool is_control = character < 0x20 && character != '\t' && character != '\n' && character != '\r';
        const bool is_surrogate = character >= 0xD800 && character <= 0xDFFF;
        return !is_control && !is_surrogate && character != 0xFFFE && character != 0xFFFF && character <= 0x10FFFF;
    }

    std::string path;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file;
    std::string buffer;
    /// Of the buffer: where the last piece begins and ends.
    std::size_t taken_from = 0;
    std::size_t at = 0;
    std::uint64_t lines = 1;
    std::uint64_t size = 0;
};

// ---- the nodes ----------------------------------------------------------------------------------------------------

class DocumentReader {
  public:
    DocumentReader(const std::string& path, const std::function<void(DocumentNode&&)>& node_use)
        : markup(path), use(node_use) {}

    std::uint64_t read() {
        using Kind = MarkupReader::Kind;
        constexpr std::string_view root = "scene";
        constexpr const char* no_root = "no document element found";
        while (true) {
            const MarkupReader::Piece piece = markup.take();
            if (piece.kind == Kind::end) break;
            const bool opens = piece.kind == Kind::open_tag || piece.kind == Kind::empty_tag;
            if (depth == 0 && opens) {
                if (root_seen) markup.fail("a second root element");
                if (piece.name != root) markup.fail("not a scene document: another root element");
                root_seen = true;
                depth = piece.kind == Kind::open_tag ? 1 : 0;
                continue;
            }
            if (depth == 0) {
                const bool is_blank = piece.text.find_first_not_of(" \t\r\n") == std::string_view::npos;
                if (piece.kind == Kind::close_tag || (piece.kind == Kind::text && !is_blank)) markup.fail(no_root);
                continue;
            }
            if (depth == 1 && opens) {
                node_line = markup.getLine();
                node_text.clear();
            }
            if (depth > 1 || opens) node_text += piece.text;
            if (piece.kind == Kind::open_tag) ++depth;
            if (piece.kind == Kind::close_tag) --depth;
            if (depth == 0 && piece.name != root) markup.fail("start-end tags mismatch");
            const bool ended = piece.kind == Kind::close_tag || piece.kind == Kind::empty_tag;
            if (depth == 1 && ended) readNode();
        }
        if (!root_seen) markup.fail(no_root, 1);
        if (depth != 0) markup.fail("the document ends too early");
        return markup.getSize();
    }

  private:
    void readNode() {
        pugi::xml_document xml;
        const pugi::xml_parse_result result =
            xml.load_buffer(node_text.data(), node_text.size(), pugi::parse_default, pugi::encoding_utf8);
        if (!result) fail(FileUtils::toLowerCase(result.description()), result.offset);
        use(readNode(xml.document_element()));
    }

    DocumentNode readNode(const xml_node& node) const {
        DocumentNode result;
        result.kind = node.name();
        if (const xml_node uid = node.child("uid")) result.uid = readUID(uid);
        result.name = node.child("name").text().get();
        result.detail = describe(node);
        if (const xml_node geometry = node.child("geometry_uid")) result.geometry = readUID(geometry);
        for (const xml_node uid : node.child("materials").children("uid"))
            result.materials.push_back(readUID(uid));
        if (result.kind == "mesh") {
            const xml_node mesh_path = node.child("external").child("path");
            if (mesh_path.text().empty()) fail("a mesh without the path of its file", node);
            result.mesh_file = mesh_path.text().get();
        } else {
            TextFinder paths("path");
            xml_node(node).traverse(paths);
            result.other_files = std::move(paths.texts);
        }
        return result;
    }

    std::uint32_t readUID(const xml_node& element) const {
        const std::string_view text = element.text().get();
        std::uint32_t uid = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), uid);
        if (error != std::errc() || end != text.data() + text.size()) fail("an uid that is no number", element);
        return uid;
    }

    [[noreturn]] void fail(const std::string& fault, const xml_node& where) const { fail(fault, where.offset_debug()); }

    [[noreturn]] void fail(const std::string& fault, std::ptrdiff_t offset) const {
        const auto before =
            std::string_view(node_text).substr(0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0)));
        markup.fail(fault, node_line + static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n')));
    }

    MarkupReader markup;
    const std::function<void(DocumentNode&&)>& use;
    /// Of elements that are open.
    std::size_t depth = 0;
    bool root_seen = false;
    /// The markup of the node that is being gathered, and where it begins.
    std::string node_text;
    std::uint64_t node_line = 1;
};

} // namespace

std::uint64_t readSceneDocument(const std::string& path, const std::function<void(DocumentNode&&)>& use) {
    try {
        return DocumentReader(path, use).read();
    } catch (...) {
        throw makeFailureOf(path);
    }
}
