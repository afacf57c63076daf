#include "scene/reading/Markup.h"

#include <algorithm>

namespace Velmar::Markup {

namespace {

constexpr std::string_view comment_start = "<!--";
constexpr std::string_view section_start = "<![CDATA[";

bool startsAt(std::string_view text, std::size_t offset, std::string_view start) {
    return text.substr(offset, start.size()) == start;
}

std::size_t skipThrough(std::string_view text, std::size_t offset, std::string_view start, std::string_view end,
                        const char* what) {
    const std::size_t found = text.find(end, offset + start.size());
    if (found == std::string_view::npos) throw Fault{offset, std::string(what) + " has no end"};
    return found + end.size();
}

/// Skips a comment, an instruction or a section, if there is one.
bool skipSpecial(std::string_view text, std::size_t& offset) {
    if (startsAt(text, offset, comment_start))
        offset = skipThrough(text, offset, comment_start, "-->", "a comment");
    else if (startsAt(text, offset, "<?"))
        offset = skipThrough(text, offset, "<?", "?>", "an instruction");
    else if (startsAt(text, offset, section_start))
        offset = skipThrough(text, offset, section_start, "]]>", "a CDATA section");
    else
        return false;
    return true;
}

/// As `skipTag`, quick for the tags without attributes that documents consist of.
std::size_t afterTag(std::string_view text, std::size_t tag) {
    for (std::size_t at = tag + 1; at < text.size(); ++at) {
        if (text[at] == '>') return at + 1;
        if (text[at] == ' ' || text[at] == '"' || text[at] == '\'' || text[at] == '<') break;
    }
    return skipTag(text, tag);
}

} // namespace

std::size_t skipToTag(std::string_view text, std::size_t offset) {
    while (offset < text.size()) {
        if (isSpace(text[offset]))
            ++offset;
        else if (startsAt(text, offset, section_start))
            throw Fault{offset, "a text outside of the elements"};
        else if (!skipSpecial(text, offset))
            break;
    }
    if (offset == text.size()) return offset;
    if (text[offset] != '<') throw Fault{offset, "a text outside of the elements"};
    if (startsAt(text, offset, "<!")) throw Fault{offset, "a scene document has no document type"};
    return offset;
}

std::size_t skipTag(std::string_view text, std::size_t offset) {
    const std::size_t start = offset;
    while ((offset = text.find_first_of("\"'<>", offset + 1)) != std::string_view::npos) {
        if (text[offset] == '>') return offset + 1;
        if (text[offset] == '<') break;
        offset = text.find(text[offset], offset + 1);
        if (offset == std::string_view::npos) break;
    }
    throw Fault{start, "a tag has no end"};
}

std::size_t findTag(std::string_view text, std::size_t offset) {
    do
        offset = std::min(text.find('<', offset), text.size());
    while (skipSpecial(text, offset));
    return offset;
}

std::size_t skipElement(std::string_view text, std::size_t offset) {
    const std::size_t start = offset;
    int depth = 0;
    while ((offset = text.find('<', offset)) != std::string_view::npos) {
        if (offset + 1 < text.size() && (text[offset + 1] == '!' || text[offset + 1] == '?')) {
            if (!skipSpecial(text, offset)) throw Fault{offset, "a declaration inside an element"};
            continue;
        }
        const std::size_t tag = offset;
        offset = afterTag(text, tag);
        if (text[tag + 1] == '/')
            --depth;
        else if (text[offset - 2] != '/')
            ++depth;
        if (depth > max_depth) throw Fault{tag, "elements are nested too deep"};
        if (depth <= 0) return offset;
    }
    throw Fault{start, "the element '" + std::string(nameInTag(text, start)) + "' has no end"};
}

std::string_view nameInTag(std::string_view text, std::size_t offset) {
    const std::size_t start = offset + 1;
    const std::size_t end = text.find_first_of(" \t\r\n/>", start);
    return text.substr(start, end == std::string_view::npos ? end : end - start);
}

TreeSize measureTree(std::string_view text) {
    TreeSize size;
    // The first text after an opening tag is kept in its element.
    bool is_kept_in_element = false;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] != '<') {
            const std::size_t end = std::min(text.find('<', at), text.size());
            const bool is_blank = std::all_of(text.begin() + static_cast<std::ptrdiff_t>(at),
                                              text.begin() + static_cast<std::ptrdiff_t>(end), isSpace);
            if (!is_blank && !is_kept_in_element) ++size.nodes;
            at = end;
        } else if (const std::size_t start = at; skipSpecial(text, at)) {
            if (startsAt(text, start, section_start)) ++size.nodes;
            is_kept_in_element = false;
        } else {
            at = afterTag(text, start);
            const std::string_view tag = text.substr(start, at - start);
            const bool closes = tag.starts_with("</");
            if (!closes) {
                ++size.nodes;
                size.attributes += static_cast<std::size_t>(std::ranges::count(tag, '='));
            }
            is_kept_in_element = !closes && !tag.ends_with("/>");
        }
    }
    return size;
}

namespace {

void advance(Place& place, std::string_view text) {
    place.line += static_cast<std::size_t>(std::ranges::count(text, '\n'));
    const std::size_t line_end = text.rfind('\n');
    if (line_end != std::string_view::npos) {
        text.remove_prefix(line_end + 1);
        place.column = 1;
    }
    const auto isFirstByte = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; };
    place.column += static_cast<std::size_t>(std::ranges::count_if(text, isFirstByte));
}

} // namespace

Place Places::find(std::size_t offset) {
    const std::size_t block = offset / block_size;
    while (blocks.size() <= block) {
        Place next = blocks.back();
        advance(next, text.substr((blocks.size() - 1) * block_size, block_size));
        blocks.push_back(next);
    }
    Place place = blocks[block];
    advance(place, text.substr(block * block_size, offset - block * block_size));
    return place;
}

} // namespace Velmar::Markup
