#pragma once

#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Variant.h>

#include <json/json.h>

namespace Zelm::details {

/// The value that a JSON object describes; throws as JSONFormatter::ReadVariant(). Members that are looked up
/// and absent are added to `json` as null.
Variant readJsonValue(Json::Value& json);

/// The tree that a JSON object describes, one version of a new lineage, without recursion over the nodes.
ZPropertyHandle readJsonTree(Json::Value& json);

} // namespace Zelm::details
