// Documents of 10^6 doubles beside jsoncpp, and deep trees beside flat ones.

#include "Compare.h"

#include <zelm/json/JSONFormatter.h>
#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Variant.h>

#include <json/json.h>

#include <sstream>
#include <string>
#include <vector>

namespace Zelm::Bench {
namespace {

std::vector<double> numbers() {
    std::vector<double> result(1000000);
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = 1.0 / static_cast<double>(i + 1);
    }
    return result;
}

ZPropertyHandle document() {
    const ZMutablePropertyTree tree("document");
    ZMutablePropertyHandle root = tree.handle();
    root.setChildValue("values", Variant(numbers()));
    return tree.immutableHandle();
}

std::string text(const ZPropertyHandle& tree) {
    std::ostringstream out;
    JSONFormatter().serialize(out, "document", tree);
    return out.str();
}

/// `levels` nodes below one another with `leaves` numbers each.
ZPropertyHandle chain(int levels, int leaves) {
    const ZMutablePropertyTree tree("chain");
    ZMutablePropertyHandle root = tree.handle();
    ZPropertyTreeNode* node = &root.node();
    for (int level = 0; level < levels; ++level) {
        for (int leaf = 0; leaf < leaves; ++leaf) {
            node->addChild(ZString(std::to_string(leaf)), Variant(1.5));
        }
        node = node->addChild("deeper").get();
    }
    return tree.immutableHandle();
}

const Comparison writing(
    "serialize 10^6 doubles / Json::Value and FastWriter", 0.25,
    [] {
        const ZPropertyHandle tree = document();
        return [=] { return text(tree); };
    },
    [] {
        const std::vector<double> source = numbers();
        return [=] {
            Json::Value data(Json::arrayValue);
            for (const double value : source) {
                data.append(value);
            }
            return Json::FastWriter().write(data);
        };
    },
    [](const std::string& ours, const std::string& peer) {
        // All but the first number, 1, to which the peer adds ".0".
        return ours.find(peer.substr(5, peer.size() - 7)) != std::string::npos;
    });

auto readAndWrite(const ZPropertyHandle& tree) {
    const std::string source = text(tree);
    return [=] {
        std::istringstream in(source);
        return text(JSONFormatter().deserialize(in));
    };
}

const Comparison depth(
    "400 levels of 50 leaves, read and write / one level", 2.0, [] { return readAndWrite(chain(400, 50)); },
    [] { return readAndWrite(chain(1, 400 * 51)); }, Anything());

} // namespace
} // namespace Zelm::Bench
