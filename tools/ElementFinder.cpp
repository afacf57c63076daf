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
        described.clear();
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
    for (std::size_t depth = 0; element && element.offset_debug() != wanted; ++depth) {
        pugi::xml_node inner;
        pugi::xml_node child = element.first_child();
        if (depth < described.size() && described[depth].parent() == element &&
            described[depth].offset_debug() <= wanted)
            child = described[depth];
        for (; child && (child.type() != pugi::node_element || child.offset_debug() <= wanted);
             child = child.next_sibling())
            if (child.type() == pugi::node_element) inner = child;
        element = inner;
        if (!element) break;
        described.resize(depth);
        described.push_back(element);
        found.path.append("/").append(element.name());
    }
    found.is_repeated = element && element.parent().child(element.name()) != element;
    return found;
}
