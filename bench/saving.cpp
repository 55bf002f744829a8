// Trees written as documents, beside libraries that write the same from data at hand.

#include "Compare.h"

#include <zelm/json/JSONFormatter.h>
#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Variant.h>

#include <json/json.h>

#include <algorithm>
#include <complex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#ifdef ZELM_BENCH_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif

namespace Zelm::Bench {
namespace {

/// The text stays in the stream, as that of a peer does in its buffer.
std::ostringstream saved(const ZPropertyHandle& tree) {
    std::ostringstream out;
    JSONFormatter().serialize(out, "document", tree);
    return out;
}

constexpr std::size_t kSmallNodes = 10000;

std::string nodeName(std::size_t i) {
    return "node " + std::to_string(i);
}
double nodeValue(std::size_t i) {
    return static_cast<double>(i) + 0.25;
}

ZPropertyHandle smallNodes() {
    const ZMutablePropertyTree tree("document");
    ZPropertyTreeNode& root = tree.handle().node();
    for (std::size_t i = 0; i < kSmallNodes; ++i) {
        root.addChild(ZString(nodeName(i)), Variant(nodeValue(i)));
    }
    return tree.immutableHandle();
}

std::vector<std::pair<std::string, double>> sortedNodes() {
    std::vector<std::pair<std::string, double>> nodes;
    for (std::size_t i = 0; i < kSmallNodes; ++i) {
        nodes.emplace_back(nodeName(i), nodeValue(i));
    }
    std::sort(nodes.begin(), nodes.end());
    return nodes;
}

Json::Value arrayOfOne(Json::Value entry) {
    Json::Value result(Json::arrayValue);
    result.append(std::move(entry));
    return result;
}

Json::Value nodeOf(const std::pair<std::string, double>& source) {
    Json::Value node(Json::objectValue);
    node["name"] = source.first;
    Json::Value& value = node["value"];
    value["type"] = "Variant";
    value["wellKnownType"] = "double";
    value["dataOrder"] = "rowMajor";
    value["dimensions"] = arrayOfOne(1);
    value["data"] = arrayOfOne(source.second);
    return node;
}

const Comparison nodesByJsonCpp(
    "save 10 000 small nodes / jsoncpp", 0.15, [] { return [tree = smallNodes()] { return saved(tree); }; },
    [] {
        return [nodes = sortedNodes()] {
            Json::Value root(Json::objectValue);
            root["name"] = "document";
            Json::Value& children = root["children"];
            for (const auto& node : nodes) {
                children.append(nodeOf(node));
            }
            return Json::FastWriter().write(root);
        };
    },
    [](const std::ostringstream& ours, const std::string& peer) { return ours.str() == peer; });

#ifdef ZELM_BENCH_RAPIDJSON

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void write(Writer& writer, double value) {
    writer.Double(value);
}
void write(Writer& writer, int value) {
    writer.Int(value);
}
void write(Writer& writer, const std::string& value) {
    writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}
void write(Writer& writer, const std::complex<double>& value) {
    writer.StartObject();
    writer.Key("i");
    writer.Double(value.imag());
    writer.Key("real");
    writer.Double(value.real());
    writer.EndObject();
}

/// Compares what is read of both: the peer writes the fewest digits that tell doubles apart.
struct SameElements {
    bool operator()(const std::ostringstream& ours, const rapidjson::StringBuffer& peer) const {
        const rapidjson::Document document = parsed(ours.str());
        return document["value"]["data"] == parsed(peer.GetString());
    }
    static rapidjson::Document parsed(const std::string& text) {
        rapidjson::Document document;
        document.Parse<rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
        return document;
    }
};

/// An array of `count` elements, each made of its index.
template <class T>
Comparison besideRapidJson(const std::string& row, double goal, std::size_t count,
                           T (*element)(std::size_t)) {
    const auto elements = [=] {
        std::vector<T> result;
        for (std::size_t i = 0; i < count; ++i) {
            result.push_back(element(i));
        }
        return result;
    };
    return Comparison(
        row, goal,
        [=] {
            const ZMutablePropertyTree tree("document");
            tree.handle().setValue(Variant(elements()));
            return [tree = tree.immutableHandle()] { return saved(tree); };
        },
        [=] {
            return [source = elements()] {
                rapidjson::StringBuffer text;
                Writer writer(text);
                writer.StartArray();
                for (const T& value : source) {
                    write(writer, value);
                }
                writer.EndArray();
                return text;
            };
        },
        SameElements());
}

double fraction(std::size_t i) {
    return 1.0 / static_cast<double>(i + 1);
}

const Comparison doubles = besideRapidJson<double>("save 10^6 doubles / rapidjson", 1.1, 1000000, fraction);
const Comparison complexNumbers = besideRapidJson<std::complex<double>>(
    "save 10^6 complex / rapidjson", kNoGoal, 1000000,
    [](std::size_t i) { return std::complex<double>(fraction(i), -fraction(i + 1)); });
const Comparison integers =
    besideRapidJson<int>("save 10^6 int32 / rapidjson", kNoGoal, 1000000,
                         [](std::size_t i) { return static_cast<int>(i * 2654435761u); });
const Comparison strings =
    besideRapidJson<std::string>("save 10^5 strings / rapidjson", kNoGoal, 100000,
                                 [](std::size_t i) { return "signal " + std::to_string(i); });

#endif

} // namespace
} // namespace Zelm::Bench
