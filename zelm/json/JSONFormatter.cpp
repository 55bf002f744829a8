#include <zelm/json/JSONFormatter.h>

#include <zelm/json/JsonDocument.h>
#include <zelm/json/JsonReading.h>
#include <zelm/json/JsonSinks.h>
#include <zelm/json/JsonTreeScanning.h>
#include <zelm/json/JsonWriting.h>

#include <limits>
#include <ostream>
#include <stdexcept>

namespace Zelm {

JSONFormatter::JSONFormatter() = default;
JSONFormatter::JSONFormatter(JSONFormatter&&) = default;
JSONFormatter& JSONFormatter::operator=(JSONFormatter&&) = default;
JSONFormatter::~JSONFormatter() = default;

void JSONFormatter::openForRead(const std::string& path) {
    stream_.open(path, std::ios_base::in);
}

void JSONFormatter::openForWrite(const std::string& path) {
    stream_.open(path, std::ios_base::out | std::ios_base::trunc);
}

void JSONFormatter::close() {
    stream_.close();
}

void JSONFormatter::serialize(std::ostream& out, ZString name, ZPropertyHandle tree) {
    const ZPropertyHandle renamed = tree.rename(name);
    details::JsonTextSink sink;
    details::writeJsonTree(sink, renamed.getName(), renamed.node(), std::numeric_limits<std::size_t>::max());
    sink.endDocument();
    out << sink.text();
}

ZPropertyHandle JSONFormatter::deserialize(std::istream& in) {
    std::string document = details::readToEnd(in);
    if (auto tree = details::scanJsonTree(document)) {
        return *std::move(tree);
    }
    return details::parseJsonTree(reader_, std::move(document));
}

Json::Value JSONFormatter::WritePropertyTree(ZPropertyHandle tree) {
    details::JsonValueSink sink;
    details::writeJsonTree(sink, tree.getName(), tree.node(), details::kMaxValueTreeDepth);
    return std::move(sink.value());
}

ZPropertyHandle JSONFormatter::ReadPropertyTree(Json::Value value) {
    return details::readJsonTree(value, details::JsonArrays::WithGaps);
}

Json::Value JSONFormatter::WriteVariant(Variant value) {
    details::JsonValueSink sink;
    details::writeJsonValue(sink, value);
    return std::move(sink.value());
}

Variant JSONFormatter::ReadVariant(Json::Value value) {
    return details::readJsonValue(value, details::JsonArrays::WithGaps);
}

} // namespace Zelm
