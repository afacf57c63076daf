#include "tools/ElementFinder.h"

#include "scene/reading/Markup.h"

#include <algorithm>

using namespace Velmar;

std::string describePath(const std::string& node, std::span<const VisitedElement> steps) {
    std::string path = node;
    for (const VisitedElement& step : steps) {
        if (step.element.empty()) continue;
        path.append("/").append(step.element);
        if (step.index != 0) path += '[' + std::to_string(step.index) + ']';
    }
    return path;
}

std::size_t ElementFinder::elementFrom(std::size_t offset) const {
    const std::size_t tag = Markup::findTag(document, offset);
    return tag == document.size() || document.substr(tag, 2) == "</" ? none : tag;
}

std::size_t ElementFinder::firstChild(std::size_t parent) const {
    const std::size_t content = Markup::skipTag(document, parent);
    return document[content - 2] == '/' ? none : elementFrom(content);
}

std::size_t ElementFinder::next(std::size_t element) const {
    return elementFrom(Markup::skipElement(document, element));
}

std::size_t ElementFinder::find(std::size_t node_offset, std::span<const VisitedElement> steps) {
    std::size_t element = node_offset;
    std::size_t depth = 0;
    for (const VisitedElement& step : steps) {
        if (step.element.empty()) continue;
        if (depth == searched.size() || searched[depth].parent != element || searched[depth].name != step.element) {
            searched.resize(depth);
            searched.push_back({element, std::string(step.element), element, 0, firstChild(element)});
        }
        Searched& last = searched[depth++];
        const std::size_t wanted = std::max<std::size_t>(step.index, 1);
        if (last.index > wanted) last = {element, last.name, element, 0, firstChild(element)};
        while (last.index < wanted && last.next != none) {
            if (Markup::nameInTag(document, last.next) == step.element) {
                last.element = last.next;
                ++last.index;
            }
            last.next = next(last.next);
        }
        if (last.index < wanted) break;
        element = last.element;
    }
    return element;
}

ElementFinder::Found ElementFinder::describe(std::size_t node_offset, std::size_t offset) {
    Found found;
    std::size_t element = node_offset;
    std::size_t depth = 0;
    for (; element != offset; ++depth) {
        Described inner = {element, none, 0};
        if (depth < described.size() && described[depth].parent == element && described[depth].element <= offset)
            inner = described[depth];
        else if ((inner.element = firstChild(element)) != none)
            inner.end = Markup::skipElement(document, inner.element);
        while (inner.element != none && inner.end <= offset) {
            inner.element = elementFrom(inner.end);
            if (inner.element != none) inner.end = Markup::skipElement(document, inner.element);
        }
        if (inner.element == none || inner.element > offset) return found;
        if (depth == described.size() || described[depth].element != inner.element) {
            described.resize(depth);
            described.push_back(inner);
        }
        element = inner.element;
        found.path.append("/").append(Markup::nameInTag(document, element));
    }
    if (depth == 0) return found;
    const std::string_view name = Markup::nameInTag(document, element);
    std::size_t first = firstChild(described[depth - 1].parent);
    while (Markup::nameInTag(document, first) != name)
        first = next(first);
    found.is_repeated = first != element;
    return found;
}
