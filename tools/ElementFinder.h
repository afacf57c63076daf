#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// An element on the way from a node to one of its values.
struct VisitedElement {
    std::string_view element;
    /// Among those of that name, from 1; 0 where there is only one.
    std::size_t index;
};

/// "camera[uid=2]/keyframe[1]/time" for the node "camera[uid=2]".
std::string describePath(const std::string& node, std::span<const VisitedElement> steps);

/// Finds the elements of nodes in the text of a document that was read, so that messages can name their places. Parses
/// the text of a node when it is asked for one of its elements.
class ElementFinder {
  public:
    explicit ElementFinder(std::string_view document_) : document(document_) {}

    /// The offset of the element that the steps lead to from the node whose element begins at `node_offset`; of the one
    /// nearest to it if it isn't there.
    std::size_t find(std::size_t node_offset, std::span<const VisitedElement> steps);

    /// What is known of an element at an offset.
    struct Found {
        /// From the node, whose name isn't part of it.
        std::string path;
        /// Whether one of the same name precedes it in the same element.
        bool is_repeated = false;
    };
    /// Quick for growing offsets.
    Found describe(std::size_t node_offset, std::size_t offset);

  private:
    pugi::xml_node parse(std::size_t node_offset);

    std::string_view document;
    pugi::xml_document tree;
    /// The elements that led to the one that was described last.
    std::vector<pugi::xml_node> described;
    std::size_t parsed = std::string_view::npos;
};
