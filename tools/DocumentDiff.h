#pragma once

#include "tools/ComparedDocument.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A node that isn't the same in both documents: removed, added, or changed when it is in both.
struct NodeChange {
    /// Its index among the nodes of a document.
    std::optional<std::size_t> a;
    std::optional<std::size_t> b;
};

/// A value that isn't the same; null where it isn't there.
struct ValueChange {
    std::string element;
    std::optional<NodeValue::Content> a;
    std::optional<NodeValue::Content> b;
};

/// Finds the nodes that are not the same in both documents: first those of the first document in their order, then
/// those that were added. Nodes are matched by kind, name and content; UIDs and the order of nodes are no difference,
/// and neither are numbers that differ by no more than `tolerance`. Takes time in proportion to the number of nodes,
/// but for sorting those that aren't in the same place. Sets the identities of the nodes of both documents.
std::vector<NodeChange> compareDocuments(ComparedDocument& a, ComparedDocument& b, double tolerance);

/// Passes the values of a changed node that aren't the same to `take`, one by one, because there may be very many:
/// those of the first document in its order, then those that were added.
void compareValues(ComparedDocument& a, ComparedDocument& b, const NodeChange& change, double tolerance,
                   const std::function<void(const ValueChange&)>& take);
