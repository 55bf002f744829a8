#include <zelm/json/JsonTreeScanning.h>

#include <zelm/json/JsonScanner.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/VariantAccess.h>

#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::details {

namespace {

/// The arrays and objects that may stand around a value. The parser takes 1000 levels, and a value of numbers
/// brings up to four: itself, its data, a complex number, a part of that.
constexpr std::size_t kMaxOpen = 1000 - 4;

template <class T>
bool scanElement(JsonScanner& in, T& element);

template <class T>
bool scanInteger(JsonScanner& in, T& element) {
    // Narrow integers are cut from an int.
    using Read = std::conditional_t<(sizeof(T) >= sizeof(int)), T,
                                    std::conditional_t<std::is_signed_v<T>, int, unsigned int>>;
    Read value = 0;
    const bool isRead = in.integer(value);
    element = static_cast<T>(value);
    return isRead;
}

bool scanUnits(JsonScanner& in, std::u16string& units) {
    if (in.accept("null")) {
        return true;
    }
    if (!in.accept("[")) {
        return false;
    }
    do {
        int unit = 0;
        if (!in.integer(unit)) {
            return false;
        }
        units += static_cast<char16_t>(unit & 0xffff);
    } while (in.accept(","));
    return in.accept("]");
}

template <class T>
bool scanComplex(JsonScanner& in, T& element) {
    RealPartOf<T> real{};
    RealPartOf<T> imaginary{};
    const bool isRead = in.accept("{\"i\":") && scanElement(in, imaginary) && in.accept(",\"real\":") &&
                        scanElement(in, real) && in.accept("}");
    element = T(real, imaginary);
    return isRead;
}

/// One element in its place in "data". Structs that have fields and cells are values themselves and have been
/// read where they stand.
template <class T>
bool scanElement(JsonScanner& in, T& element) {
    if constexpr (std::is_same_v<T, Variant>) {
        return false;
    } else if constexpr (std::is_same_v<T, Struct>) {
        return in.accept("null");
    } else if constexpr (std::is_same_v<T, std::u16string>) {
        return scanUnits(in, element);
    } else if constexpr (isTextElement<T>) {
        return in.string(element);
    } else if constexpr (isComplexElement<T>) {
        return scanComplex(in, element);
    } else if constexpr (std::is_same_v<T, Boolean>) {
        return in.boolean(element.value);
    } else if constexpr (std::is_same_v<T, bool>) {
        return in.boolean(element);
    } else if constexpr (std::is_floating_point_v<T>) {
        return in.real(element);
    } else {
        return scanInteger(in, element);
    }
}

/// The value at the position of a scanner. The type stands behind the data: elements that are values are read
/// at once, since reading them a second time at each level would double the work with each level, and all
/// others are skipped until the type is known.
class ValueScanner {
public:
    explicit ValueScanner(JsonScanner& in) : in_(in) {}

    /// `open` counts the arrays and objects around the value.
    bool scan(Variant& value, std::size_t open) {
        if (open > kMaxOpen || !in_.accept("{\"data\":[")) {
            return false;
        }
        Data data{in_, nullptr, {}, {}};
        DataOrdering ordering = RowMajor;
        ArrayDimensions shape;
        WellKnownType type;
        return scanData(data, open + 2) && scanOrdering(ordering) && scanShape(shape) && scanType(type) &&
               in_.accept("}") && make(value, data, type, std::move(shape), ordering);
    }

private:
    struct Data {
        JsonScanner start;
        const char* end;
        std::vector<Variant> cells;
        std::vector<Struct> records;
    };

    bool scanData(Data& data, std::size_t open) {
        if (in_.isAt("{\"data\":")) {
            return scanCells(data.cells, open) && in_.accept(",\"dataOrder\":");
        }
        if (holdsRecords()) {
            return scanRecords(data.records, open) && in_.accept(",\"dataOrder\":");
        }
        // No string holds this, since quotation marks are escaped there; and if something else than the end
        // of the data was found, the elements will not end here.
        constexpr std::string_view kEnd = "],\"dataOrder\":";
        const bool isFound = in_.skipBehind(kEnd);
        data.end = in_.position() - kEnd.size();
        return isFound;
    }

    /// Whether a struct with fields is the first of the elements that are not null.
    bool holdsRecords() const {
        JsonScanner ahead = in_;
        while (ahead.accept("null,")) {}
        return ahead.isAt("[{");
    }

    bool scanCells(std::vector<Variant>& cells, std::size_t open) {
        do {
            if (!scan(cells.emplace_back(), open)) {
                return false;
            }
        } while (in_.accept(","));
        return in_.accept("]");
    }

    bool scanRecords(std::vector<Struct>& records, std::size_t open) {
        do {
            Struct& record = records.emplace_back();
            if (!in_.accept("null") && !scanFields(record, open + 1)) {
                return false;
            }
        } while (in_.accept(","));
        return in_.accept("]");
    }

    bool scanFields(Struct& record, std::size_t open) {
        if (!in_.accept("[")) {
            return false;
        }
        do {
            ZString name;
            Variant field;
            if (!in_.accept("{\"name\":") || !in_.string(name) || !in_.accept(",\"value\":[") ||
                !scan(field, open + 2) || !in_.accept("]}")) {
                return false;
            }
            record.set(std::move(name), std::move(field));
        } while (in_.accept(","));
        return in_.accept("]");
    }

    bool scanOrdering(DataOrdering& ordering) {
        ordering = in_.accept("\"rowMajor\"") ? RowMajor : ColumnMajor;
        return ordering == RowMajor || in_.accept("\"columnMajor\"");
    }

    bool scanShape(ArrayDimensions& shape) {
        if (!in_.accept(",\"dimensions\":[")) {
            return false;
        }
        std::vector<std::uint64_t> extents;
        do {
            constexpr std::uint64_t kLargestExtent = std::numeric_limits<int>::max();
            if (!in_.integer(extents.emplace_back()) || extents.back() > kLargestExtent) {
                return false;
            }
        } while (in_.accept(","));
        shape = ArrayDimensions(std::move(extents));
        return in_.accept("]");
    }

    bool scanType(WellKnownType& type) {
        std::string keyword;
        if (!in_.accept(",\"type\":\"Variant\",\"wellKnownType\":") || !in_.string(keyword)) {
            return false;
        }
        type = WellKnownType(keyword);
        return true;
    }

    static bool make(Variant& value, Data& data, WellKnownType type, ArrayDimensions shape,
                     DataOrdering ordering) {
        bool isMade = false;
        visitElementType(type, [&](auto tag) {
            using T = typename decltype(tag)::type;
            std::vector<StoredElement<T>> elements;
            if (takeElements<T>(elements, data, shape.countAllElements())) {
                value = VariantAccess::make<T>(std::move(elements), std::move(shape), ordering);
                isMade = true;
            }
        });
        return isMade;
    }

    template <class T>
    static bool takeElements(std::vector<StoredElement<T>>& elements, Data& data, std::uint64_t count) {
        if constexpr (std::is_same_v<T, Variant>) {
            elements = std::move(data.cells);
        } else if constexpr (std::is_same_v<T, Struct>) {
            elements = std::move(data.records);
        }
        if (!elements.empty()) {
            elements.shrink_to_fit();
            return elements.size() == count;
        }
        return data.end && scanElements<T>(elements, data, count);
    }

    template <class T>
    static bool scanElements(std::vector<StoredElement<T>>& elements, Data& data, std::uint64_t count) {
        JsonScanner& in = data.start;
        // Each element takes a character and, but for the last, a comma: no memory is taken for a shape that
        // claims more than there is.
        const std::ptrdiff_t length = data.end - in.position();
        if (count == 0 || count > static_cast<std::uint64_t>(length) / 2 + 1) {
            return false;
        }
        elements.resize(count);
        for (auto& element : elements) {
            if ((&element != elements.data() && !in.accept(",")) || !scanElement(in, element)) {
                return false;
            }
        }
        return in.position() == data.end;
    }

    JsonScanner& in_;
};

class TreeScanner {
public:
    explicit TreeScanner(const std::string& document) : in_(document) {}

    std::optional<ZPropertyHandle> scan() {
        open_.push_back(tree_.handle().basis()->writableRoot());
        if (!in_.accept("{") || !scanNodes()) {
            return std::nullopt;
        }
        in_.accept("\n");
        return in_.isAtEnd() ? std::optional(tree_.immutableHandle()) : std::nullopt;
    }

private:
    using Node = std::shared_ptr<ZPropertyTreeNode>;

    /// The children of a node stand before its name, and so all nodes whose name has not been met are open.
    bool scanNodes() {
        while (true) {
            while (in_.accept("\"children\":[{")) {
                enter();
            }
            do {
                if (2 * open_.size() > kMaxOpen || !leave()) {
                    return false;
                }
                if (open_.empty()) {
                    return true;
                }
            } while (in_.accept("],"));
            if (!in_.accept(",{")) {
                return false;
            }
            enter();
        }
    }

    void enter() { open_.push_back(std::make_shared<ZPropertyTreeNode>(open_.front()->version())); }

    /// Reads what stands behind the children and hands the node over to its parent.
    bool leave() {
        const std::size_t open = 2 * open_.size() - 1;
        const Node node = std::move(open_.back());
        open_.pop_back();
        ZString name;
        if (!in_.accept("\"name\":") || !in_.string(name)) {
            return false;
        }
        if (in_.accept(",\"type\":")) {
            ZString type;
            if (!in_.string(type)) {
                return false;
            }
            node->setObjectType(std::move(type));
        }
        if (in_.accept(",\"value\":")) {
            Variant value;
            if (!ValueScanner(in_).scan(value, open)) {
                return false;
            }
            node->setValue(std::move(value));
        }
        if (open_.empty()) {
            tree_.setName(std::move(name));
        } else {
            open_.back()->attachChild(name, node);
        }
        return in_.accept("}");
    }

    JsonScanner in_;
    ZMutablePropertyTree tree_;
    std::vector<Node> open_;
};

} // namespace

std::optional<ZPropertyHandle> scanJsonTree(const std::string& document) {
    return TreeScanner(document).scan();
}

} // namespace Zelm::details
