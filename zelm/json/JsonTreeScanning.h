#pragma once

#include <zelm/tree/ZPropertyTree.h>

#include <optional>
#include <string>

namespace Zelm::details {

/// The tree of a document that has exactly the form in which trees are written; nothing for any other
/// document, also one that is merely spaced differently, which is left to the parser. A tree that comes back
/// is the one that the parser's road gives.
///
/// Linear in the document, without recursion over the nodes, and with no memory but for the tree.
std::optional<ZPropertyHandle> scanJsonTree(const std::string& document);

} // namespace Zelm::details
