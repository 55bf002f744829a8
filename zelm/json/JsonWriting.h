#pragma once

#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Variant.h>

#include <cstddef>

namespace Zelm::details {

class JsonTextSink;
class JsonValueSink;

/// Cells and structs deeper than this are neither written nor read. No parser takes half of it.
constexpr std::size_t kMaxNestedValues = 1000;
/// More nodes below one another than a `Json::Value` can be trusted to hold.
constexpr std::size_t kMaxValueTreeDepth = 10000;

/// Throws `std::length_error` "Values nested too deeply for JSON".
[[noreturn]] void throwNestedTooDeeply();

/// Writes one value. Instantiated for both sinks.
template <class Sink>
void writeJsonValue(Sink& sink, const Variant& value);

/// Writes a node with all that is below it, without recursion. Throws `std::length_error` if more than
/// `maxDepth` nodes stand below one another. Instantiated for both sinks.
template <class Sink>
void writeJsonTree(Sink& sink, const ZString& name, const ZPropertyTreeNode& node, std::size_t maxDepth);

extern template void writeJsonValue(JsonTextSink&, const Variant&);
extern template void writeJsonValue(JsonValueSink&, const Variant&);
extern template void writeJsonTree(JsonTextSink&, const ZString&, const ZPropertyTreeNode&, std::size_t);
extern template void writeJsonTree(JsonValueSink&, const ZString&, const ZPropertyTreeNode&, std::size_t);

} // namespace Zelm::details
