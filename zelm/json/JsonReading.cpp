#include <zelm/json/JsonReading.h>

#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/json/JsonInfinities.h>
#include <zelm/json/JsonWriting.h>
#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/VariantAccess.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::details {

namespace {

/// Walks the entries of an array. What is no array counts by its size: text, numbers and empty objects have
/// no entries, and jsoncpp refuses to index an object that has members.
class EntryCursor {
public:
    EntryCursor(Json::Value& json, JsonArrays arrays)
        : json_(&json), position_(json.begin()), count_(json.size()), mustSearch_(!json.isArray()),
          mayMiss_(arrays == JsonArrays::WithGaps) {}

    Json::ArrayIndex count() const { return count_; }
    bool hasNext() const { return next_ != count_; }

    Json::Value& next() {
        const Json::ArrayIndex index = next_++;
        // A step of the iterator costs less than a search, which adds what is missing as null.
        if (mustSearch_ || (mayMiss_ && position_.index() != index)) {
            return (*json_)[index];
        }
        Json::Value& entry = *position_;
        ++position_;
        return entry;
    }

private:
    Json::Value* json_;
    Json::Value::iterator position_;
    Json::ArrayIndex next_ = 0;
    Json::ArrayIndex count_;
    bool mustSearch_;
    bool mayMiss_;
};

WellKnownType readType(Json::Value& json) {
    if (!json.isMember("wellKnownType")) {
        throw std::runtime_error("wellKnownType key missing in conversion from JSON");
    }
    const std::string keyword = json["wellKnownType"].asString();
    const WellKnownType type(keyword);
    if (type.isUnknown()) {
        throw std::runtime_error("wellKnownType: " + keyword + " is unknown in conversion from JSON");
    }
    return type;
}

DataOrdering readDataOrder(Json::Value& json) {
    if (!json.isMember("dataOrder")) {
        throw std::runtime_error("dataOrder key missing in conversion from JSON");
    }
    const std::string order = json["dataOrder"].asString();
    if (order == "rowMajor") {
        return RowMajor;
    }
    if (order == "columnMajor") {
        return ColumnMajor;
    }
    throw std::runtime_error("dataOrder value: " + order + " is not recognized in conversion from JSON");
}

/// Extents whose product no memory holds fail in the allocation; negative ones could hide behind a zero.
MutableVariant allocate(WellKnownType type, const ArrayDimensions& shape, DataOrdering ordering) {
    constexpr std::uint64_t kLargestExtent = std::numeric_limits<Json::Int>::max();
    if (std::any_of(shape.begin(), shape.end(),
                    [](std::uint64_t extent) { return extent > kLargestExtent; })) {
        throw std::length_error("Negative dimension in conversion from JSON");
    }
    return MutableVariant::createWithAllocatedArrayOfWellKnownType(type, shape, ordering);
}

class ValueReader {
public:
    explicit ValueReader(JsonArrays arrays, JsonInfinities* infinities = nullptr)
        : arrays_(arrays), infinities_(infinities) {}

    Variant read(Json::Value& json) {
        if (json["type"] != Json::Value("Variant")) {
            throw std::invalid_argument("Expected variant not found");
        }
        const WellKnownType type = readType(json);
        const ArrayDimensions shape = readDimensions(json);
        const DataOrdering ordering = readDataOrder(json);
        MutableVariant value = allocate(type, shape, ordering);
        EntryCursor entries(json["data"], arrays_);
        if (entries.count() > shape.countAllElements()) {
            throw std::runtime_error(
                "Variant dimensions less than actual data items in conversion from JSON");
        }
        const bool isRead = visitElementType(type, [&](auto tag) {
            using T = typename decltype(tag)::type;
            readElements<T>(entries, VariantAccess::soleTyped<T>(value)->elements());
        });
        if (!isRead) {
            throw std::runtime_error("Unknown data type experienced in conversion from JSON");
        }
        return Variant(std::move(value));
    }

private:
    /// Negative extents wrap to more than any document can state.
    ArrayDimensions readDimensions(Json::Value& json) const {
        if (!json.isMember("dimensions")) {
            throw std::runtime_error("Missing dimensions key in conversion from JSON");
        }
        std::vector<std::uint64_t> extents;
        for (EntryCursor entries(json["dimensions"], arrays_); entries.hasNext();) {
            extents.push_back(static_cast<std::uint64_t>(std::int64_t{entries.next().asInt()}));
        }
        return ArrayDimensions(std::move(extents));
    }

    template <class T>
    void readElements(EntryCursor& entries, std::vector<StoredElement<T>>& elements) {
        for (auto element = elements.begin(); entries.hasNext(); ++element) {
            *element = readElement<T>(entries.next());
        }
    }

    template <class T>
    T readElement(Json::Value& json) {
        if constexpr (std::is_same_v<T, std::string> || std::is_same_v<T, ZString>) {
            return T(json.asString());
        } else if constexpr (std::is_same_v<T, std::u16string>) {
            return readUnits(json);
        } else if constexpr (std::is_same_v<T, Variant>) {
            return readNested(json);
        } else if constexpr (std::is_same_v<T, Struct>) {
            return readStruct(json);
        } else if constexpr (isComplexElement<T>) {
            const auto real = readPart<RealPartOf<T>>(json["real"]);
            return T(real, readPart<RealPartOf<T>>(json["i"]));
        } else {
            return readPart<T>(json);
        }
    }

    template <class T>
    T readPart(const Json::Value& json) const {
        if constexpr (std::is_same_v<T, bool>) {
            return json.asBool();
        } else if constexpr (std::is_floating_point_v<T>) {
            if (const auto infinity = infinities_ ? infinities_->take(json) : std::nullopt) {
                return static_cast<T>(*infinity);
            }
            return std::is_same_v<T, float> ? static_cast<T>(json.asFloat())
                                            : static_cast<T>(json.asDouble());
        } else if constexpr (std::is_same_v<T, std::int64_t>) {
            return json.asInt64();
        } else if constexpr (std::is_same_v<T, std::uint64_t>) {
            return json.asUInt64();
        } else if constexpr (std::is_signed_v<T>) {
            return static_cast<T>(json.asInt());
        } else {
            return static_cast<T>(json.asUInt());
        }
    }

    std::u16string readUnits(Json::Value& json) const {
        std::u16string units;
        for (EntryCursor entries(json, arrays_); entries.hasNext();) {
            units += static_cast<char16_t>(entries.next().asInt() & 0xffff);
        }
        return units;
    }

    Struct readStruct(Json::Value& json) {
        Struct record;
        for (EntryCursor members(json, arrays_); members.hasNext();) {
            Json::Value& member = members.next();
            ZString name(member["name"].asString());
            record.set(std::move(name), readNested(member["value"][0]));
        }
        return record;
    }

    Variant readNested(Json::Value& json) {
        if (++depth_ > kMaxNestedValues) {
            throwNestedTooDeeply();
        }
        Variant value = read(json);
        --depth_;
        return value;
    }

    JsonArrays arrays_;
    JsonInfinities* infinities_;
    std::size_t depth_ = 0;
};

class TreeReader {
public:
    TreeReader(JsonArrays arrays, JsonInfinities* infinities) : arrays_(arrays), infinities_(infinities) {}

    ZPropertyHandle read(Json::Value& json) {
        const std::string type = json["type"].asString();
        ZMutablePropertyTree tree(ZString(json["name"].asString()));
        ZMutablePropertyHandle root = tree.handle();
        open(json, root.node(), type);
        while (!open_.empty()) {
            OpenNode& parent = open_.back();
            if (parent.children.hasNext()) {
                readChild(parent.children.next(), parent.node);
            } else {
                open_.pop_back();
            }
        }
        return tree.immutableHandle();
    }

private:
    struct OpenNode {
        ZPropertyTreeNode& node;
        EntryCursor children;
    };

    void readChild(Json::Value& json, ZPropertyTreeNode& parent) {
        const std::string type = json["type"].asString();
        const ZString name(json["name"].asString());
        open(json, *parent.addChild(name), type);
    }

    void open(Json::Value& json, ZPropertyTreeNode& node, const std::string& type) {
        if (!type.empty()) {
            node.setObjectType(ZString(type));
        }
        if (json.isMember("value")) {
            node.setValue(ValueReader(arrays_, infinities_).read(json["value"]));
        }
        if (json.isMember("children")) {
            open_.push_back({node, EntryCursor(json["children"], arrays_)});
        }
    }

    JsonArrays arrays_;
    JsonInfinities* infinities_;
    std::vector<OpenNode> open_;
};

} // namespace

Variant readJsonValue(Json::Value& json, JsonArrays arrays) {
    return ValueReader(arrays).read(json);
}

ZPropertyHandle readJsonTree(Json::Value& json, JsonArrays arrays, JsonInfinities* infinities) {
    return TreeReader(arrays, infinities).read(json);
}

} // namespace Zelm::details
