// Documents read into trees, beside parsers that read them from memory into documents of their own.

#include "Compare.h"

#include <zelm/json/JSONFormatter.h>
#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Variant.h>

#include <json/json.h>

#include <complex>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#ifdef ZELM_BENCH_RAPIDJSON
#include <rapidjson/document.h>
#endif
#ifdef ZELM_BENCH_SIMDJSON
#include <simdjson.h>
#endif
#ifdef ZELM_BENCH_NLOHMANN_JSON
#include <nlohmann/json.hpp>
#endif

namespace Zelm::Bench {
namespace {

std::string text(const ZPropertyHandle& tree) {
    std::ostringstream out;
    JSONFormatter().serialize(out, "document", tree);
    return out.str();
}

std::string textOf(Variant value) {
    const ZMutablePropertyTree tree("document");
    tree.handle().setValue(std::move(value));
    return text(tree.immutableHandle());
}

/// `count` elements, each made of its index.
template <class T, class Make>
std::string array(std::size_t count, Make&& make) {
    std::vector<T> elements;
    elements.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        elements.push_back(make(i));
    }
    return textOf(Variant(std::move(elements)));
}

double fraction(std::size_t i) {
    return 1.0 / static_cast<double>(i + 1);
}

std::string doubles() {
    return array<double>(1000000, fraction);
}

/// `levels` nodes below one another with `leaves` numbers each.
std::string chain(int levels, int leaves) {
    const ZMutablePropertyTree tree("chain");
    ZMutablePropertyHandle root = tree.handle();
    ZPropertyTreeNode* node = &root.node();
    for (int level = 0; level < levels; ++level) {
        for (int leaf = 0; leaf < leaves; ++leaf) {
            node->addChild(ZString(std::to_string(leaf)), Variant(1.5));
        }
        node = node->addChild("deeper").get();
    }
    return text(tree.immutableHandle());
}

std::string smallNodes() {
    return chain(1, 10000);
}

/// An array of 10^5 doubles inside of cells.
std::string nested(int cells) {
    Variant value(std::vector<double>(100000, 1.5));
    for (int cell = 0; cell < cells; ++cell) {
        value = Variant(std::vector<Variant>{std::move(value)});
    }
    return textOf(std::move(value));
}

ZPropertyHandle load(const std::string& source) {
    std::istringstream in(source);
    return JSONFormatter().deserialize(in);
}

auto loading(std::string source) {
    return [=] { return [=] { return load(source); }; };
}

const Comparison spaced(
    "load 10^6 doubles, spaced / Json::Reader::parse alone", 1.1, [] { return loading(' ' + doubles())(); },
    [] {
        return [source = doubles()] {
            Json::Value root;
            Json::Reader().parse(source.data(), source.data() + source.size(), root, true);
            return root;
        };
    },
    [](const ZPropertyHandle& ours, const Json::Value& peer) {
        return JSONFormatter().ReadPropertyTree(peer).isEquivalentTo(ours);
    });

const Comparison levels(
    "load 400 levels of 50 leaves / one level of as many", 1.5, [] { return loading(chain(400, 50))(); },
    [] { return loading(chain(1, 400 * 51))(); }, Anything());

const Comparison cells(
    "load 10^5 doubles inside 490 cells / by themselves", 1.5, [] { return loading(nested(490))(); },
    [] { return loading(nested(0))(); }, Anything());

#ifdef ZELM_BENCH_RAPIDJSON

template <unsigned int Flags>
rapidjson::Document parsed(const std::string& source) {
    rapidjson::Document document;
    document.Parse<Flags>(source.data(), source.size());
    return document;
}

constexpr unsigned int kExact = rapidjson::kParseFullPrecisionFlag;

/// Ours, written again, is the document of the peer.
struct SameDocument {
    bool operator()(const ZPropertyHandle& ours, const rapidjson::Document& peer) const {
        return !peer.HasParseError() && parsed<kExact>(text(ours)) == peer;
    }
};

/// Beside the parser with `Flags`; the source is made once the row is run.
template <unsigned int Flags, class Same = SameDocument>
Comparison besideRapidJson(const std::string& row, double goal, std::string (*source)()) {
    return Comparison(
        row, goal, [=] { return loading(source())(); },
        [=] { return [document = source()] { return parsed<Flags>(document); }; }, Same());
}

const Comparison exactDoubles = besideRapidJson<kExact>("load 10^6 doubles / rapidjson, exact", 0.6, doubles);
const Comparison inexactDoubles = besideRapidJson<rapidjson::kParseDefaultFlags, Anything>(
    "load 10^6 doubles / rapidjson, last bits wrong", kNoGoal, doubles);
const Comparison nodes = besideRapidJson<kExact>("load 10 000 small nodes / rapidjson", 2.0, smallNodes);
const Comparison complexNumbers = besideRapidJson<kExact>("load 10^6 complex / rapidjson", kNoGoal, [] {
    return array<std::complex<double>>(
        1000000, [](std::size_t i) { return std::complex<double>(fraction(i), -fraction(i)); });
});
const Comparison strings = besideRapidJson<kExact>("load 10^5 strings / rapidjson", kNoGoal, [] {
    return array<ZString>(100000, [](std::size_t i) { return ZString("signal " + std::to_string(i)); });
});
const Comparison integers = besideRapidJson<kExact>("load 10^6 int32 / rapidjson", kNoGoal, [] {
    return array<int>(1000000, [](std::size_t i) { return static_cast<int>(i * 2654435761u); });
});

#endif
#ifdef ZELM_BENCH_SIMDJSON

/// The numbers of a document, read as they are met.
const Comparison onDemand(
    "load 10^6 doubles / simdjson, on demand into a vector", kNoGoal, [] { return loading(doubles())(); },
    [] {
        return [source = simdjson::padded_string(doubles())] {
            simdjson::ondemand::parser parser;
            simdjson::ondemand::document document = parser.iterate(source);
            std::vector<double> result;
            for (double number : document["value"]["data"]) {
                result.push_back(number);
            }
            return result;
        };
    },
    [](const ZPropertyHandle& ours, const std::vector<double>& peer) {
        return ours.node().value().isEquivalentTo(Variant(peer));
    });

const Comparison nodesByDom(
    "load 10 000 small nodes / simdjson, document", kNoGoal, [] { return loading(smallNodes())(); },
    [] {
        return [source = simdjson::padded_string(smallNodes())] {
            auto parser = std::make_unique<simdjson::dom::parser>();
            benchmark::DoNotOptimize(simdjson::dom::element(parser->parse(source)));
            return parser;
        };
    },
    Anything());

#endif
#ifdef ZELM_BENCH_NLOHMANN_JSON

const Comparison nodesByNlohmann(
    "load 10 000 small nodes / nlohmann::json", kNoGoal, [] { return loading(smallNodes())(); },
    [] { return [source = smallNodes()] { return nlohmann::json::parse(source); }; },
    [](const ZPropertyHandle& ours, const nlohmann::json& peer) {
        return nlohmann::json::parse(text(ours)) == peer;
    });

#endif

} // namespace
} // namespace Zelm::Bench
