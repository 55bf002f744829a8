#pragma once

#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Variant.h>

#include <json/json.h>

namespace Zelm::details {

class JsonInfinities;

/// Whether arrays may lack entries, which count as null then. Those of a parser never do; those that callers
/// fill by index may, and looking out for that costs time at each entry.
enum class JsonArrays { Full, WithGaps };

/// The value that a JSON object describes; throws as JSONFormatter::ReadVariant(). Members that are looked up
/// and absent are added to `json` as null.
Variant readJsonValue(Json::Value& json, JsonArrays arrays);

/// The tree that a JSON object describes, one version of a new lineage, without recursion over the nodes.
/// Elements that stand at the place of an infinity of the document are taken from there.
ZPropertyHandle readJsonTree(Json::Value& json, JsonArrays arrays, JsonInfinities* infinities = nullptr);

} // namespace Zelm::details
