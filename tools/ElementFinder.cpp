#include "tools/ElementFinder.h"

#include "scene/reading/Markup.h"

std::string describePath(const std::string& node, std::span<const VisitedElement> steps) {
    std::string path = node;
    for (const VisitedElement& step : steps) {
        if (step.element.empty()) continue;
        path.append("/").append(step.element);
        if (step.index != 0) path += '[' + std::to_string(step.index) + ']';
    }
    return path;
}

pugi::xml_node ElementFinder::parse(std::size_t node_offset) {
    if (parsed != node_offset) {
        const std::size_t end = Velmar::Markup::skipElement(document, node_offset);
        tree.load_buffer(document.data() + node_offset, end - node_offset, pugi::parse_default, pugi::encoding_utf8);
        parsed = node_offset;
    }
    return tree.first_child();
}

std::size_t ElementFinder::find(std::size_t node_offset, std::span<const VisitedElement> steps) {
    pugi::xml_node element = parse(node_offset);
    for (const VisitedElement& step : steps) {
        if (step.element.empty()) continue;
        std::size_t rest = step.index;
        pugi::xml_node next = element.first_child();
        while (next && (step.element != next.name() || rest > 1)) {
            if (step.element == next.name()) --rest;
            next = next.next_sibling();
        }
        if (!next) break;
        element = next;
    }
    return node_offset + static_cast<std::size_t>(element.offset_debug() - 1);
}

ElementFinder::Found ElementFinder::describe(std::size_t node_offset, std::size_t offset) {
    pugi::xml_node element = parse(node_offset);
    const auto wanted = static_cast<std::ptrdiff_t>(offset - node_offset) + 1;
    Found found;
    // The last child that doesn't begin after it contains it.
    while (element && element.offset_debug() != wanted) {
        pugi::xml_node inner;
        for (const pugi::xml_node child : element.children())
            if (child.type() == pugi::node_element && child.offset_debug() <= wanted) inner = child;
        element = inner;
        if (!element) break;
        found.path.append("/").append(element.name());
    }
    for (pugi::xml_node before = element.previous_sibling(); before && !found.is_repeated;
         before = before.previous_sibling())
        found.is_repeated = std::string_view(before.name()) == element.name();
    return found;
}
