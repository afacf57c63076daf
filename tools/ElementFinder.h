#pragma once

#include <cstddef>
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

/// Finds the elements of nodes in the text of a document that was read, so that messages can name their places. Quick
/// for places that follow each other, as each search begins where the one before it ended.
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
    /// Of the element that begins at `offset`, inside of the node.
    Found describe(std::size_t node_offset, std::size_t offset);

  private:
    static constexpr std::size_t none = std::string_view::npos;

    /// The element at the first tag from `offset` on, or `none` when the tag ends the element around it.
    std::size_t elementFrom(std::size_t offset) const;
    /// The first one inside of the element at `parent`, or `none`.
    std::size_t firstChild(std::size_t parent) const;
    /// The one after the element at `element`, or `none`.
    std::size_t next(std::size_t element) const;

    /// The last element of a name that was found inside of another.
    struct Searched {
        std::size_t parent;
        std::string name;
        std::size_t element;
        /// Among those of the name, from 1; 0 when none was found yet.
        std::size_t index;
        /// The element to look at next, or `none`.
        std::size_t next;
    };
    struct Described {
        std::size_t parent;
        std::size_t element;
        std::size_t end;
    };

    std::string_view document;
    /// The elements that the last call went through, from that inside of the node on.
    std::vector<Searched> searched;
    std::vector<Described> described;
};
