#pragma once

#include <zelm/tree/ZPropertyTree.h>

#include <json/json.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Zelm::details {

/// The rest of a stream. Takes little more memory than the text where the stream knows how much there is.
std::string readToEnd(std::istream& in);

/// The tree of any document, by way of a `Json::Value`: throws what JSONFormatter::deserialize() throws. The
/// parser reads numbers by the global locale; if that has another decimal point, they are rewritten without
/// theirs.
ZPropertyHandle parseJsonTree(Json::Reader& parser, std::string document);

/// The length of the string or the comment at the start of `rest`, which is not empty; 0 for everything else.
std::size_t lengthOfJsonText(std::string_view rest) noexcept;

} // namespace Zelm::details
