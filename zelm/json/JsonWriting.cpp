#include <zelm/json/JsonWriting.h>

#include <zelm/arrays/SlicePlan.h>
#include <zelm/json/JsonSinks.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/VariantAccess.h>
#include <zelm/variant/VectorVariantStorage.h>

#include <stdexcept>
#include <type_traits>

namespace Zelm::details {

namespace {

/// Calls `visit` with each element in logical row-major order.
template <class T, class Visit>
void forEachInRowMajorOrder(const VectorVariantStorage<T>& storage, Visit&& visit) {
    const auto& elements = storage.elements();
    const ArrayDimensions& shape = storage.shape();
    const std::uint64_t count = shape.countAllElements();
    if (count > elements.size()) {
        throwOffsetOutOfBounds();
    }
    if (storage.dataOrdering() != ColumnMajor || shape.isVector()) {
        for (std::size_t i = 0; i < count; ++i) {
            visit(elements[i]);
        }
        return;
    }
    const std::vector<IndexSet> whole(shape.numberOfDimensions(), IndexSet(IndexRange::all));
    const SlicePlan plan(whole, shape, ColumnMajor, RowMajor);
    plan.forEachRun([&](const IndexRun& run) {
        for (std::uint64_t i = 0, offset = run.first; i < run.count; ++i, offset += run.step) {
            visit(elements[offset]);
        }
    });
}

template <class Sink>
class ValueWriter {
public:
    explicit ValueWriter(Sink& sink) : sink_(sink) {}

    void write(const Variant& value) {
        const ArrayDimensions& shape = VariantAccess::shape(value);
        const bool hasElements = shape.countAllElements() != 0;
        sink_.beginObject();
        sink_.key("data");
        if (hasElements) {
            writeElements(*VariantAccess::storage(value));
            writeDataOrder(value.dataOrdering());
            sink_.key("dimensions");
            writeArray(shape, [this](std::uint64_t extent) { sink_.unsignedInteger(extent); });
        } else {
            sink_.null();
        }
        sink_.key("type");
        sink_.plainString("Variant");
        if (hasElements) {
            sink_.key("wellKnownType");
            sink_.plainString(value.wellKnownType().ToString());
        }
        sink_.endObject();
    }

private:
    template <class Range, class WriteEntry>
    void writeArray(const Range& range, WriteEntry&& writeEntry) {
        sink_.beginArray();
        for (const auto& entry : range) {
            writeEntry(entry);
        }
        sink_.endArray();
    }

    void writeDataOrder(DataOrdering ordering) {
        if (ordering == RowMajor || ordering == ColumnMajor) {
            sink_.key("dataOrder");
            sink_.plainString(ordering == RowMajor ? "rowMajor" : "columnMajor");
        }
    }

    void writeElements(const AbstractVariantStorage& storage) {
        const bool written = visitStorage(storage, [this](const auto& typed) {
            sink_.beginArray();
            forEachInRowMajorOrder(typed, [this](const auto& element) { this->writeElement(element); });
            sink_.endArray();
        });
        if (!written) {
            throw std::runtime_error("No data field written! Maybe a missed conversion.");
        }
    }

    void writeElement(Boolean value) { sink_.boolean(value); }
    void writeElement(const std::string& value) { sink_.string(value); }
    void writeElement(const ZString& value) { sink_.string(value); }

    void writeElement(const std::u16string& value) {
        if (value.empty()) {
            sink_.null();
        } else {
            writeArray(value, [this](char16_t unit) { sink_.integer(unit); });
        }
    }

    void writeElement(const Variant& value) {
        if (++depth_ > kMaxNestedValues) {
            throwNestedTooDeeply();
        }
        write(value);
        --depth_;
    }

    void writeElement(const Struct& value) {
        const auto& fields = VariantAccess::fields(value);
        if (fields.empty()) {
            sink_.null();
            return;
        }
        writeArray(fields, [this](const auto& field) {
            sink_.beginObject();
            sink_.key("name");
            sink_.string(field.first);
            sink_.key("value");
            sink_.beginArray();
            writeElement(*field.second);
            sink_.endArray();
            sink_.endObject();
        });
    }

    template <class T>
    void writeElement(const T& value) {
        if constexpr (isComplexElement<T>) {
            sink_.beginObject();
            sink_.key("i");
            writePart(value.imag());
            sink_.key("real");
            writePart(value.real());
            sink_.endObject();
        } else {
            writePart(value);
        }
    }

    template <class T>
    void writePart(T value) {
        if constexpr (std::is_same_v<T, bool>) {
            sink_.boolean(value);
        } else if constexpr (std::is_floating_point_v<T>) {
            sink_.real(value);
        } else if constexpr (std::is_unsigned_v<T> && sizeof(T) >= sizeof(int)) {
            sink_.unsignedInteger(value);
        } else {
            sink_.integer(value);
        }
    }

    Sink& sink_;
    std::size_t depth_ = 0;
};

template <class Sink>
class TreeWriter {
public:
    TreeWriter(Sink& sink, std::size_t maxDepth) : sink_(sink), maxDepth_(maxDepth) {}

    void write(const ZString& name, const ZPropertyTreeNode& root) {
        enter(name, root);
        while (!open_.empty()) {
            OpenNode& current = open_.back();
            if (current.next != current.node.children().end()) {
                const auto child = *current.next;
                ++current.next;
                enter(child.name, *child.node);
            } else {
                sink_.endArray();
                finish(current.name, current.node);
                open_.pop_back();
            }
        }
    }

private:
    struct OpenNode {
        const ZString& name;
        const ZPropertyTreeNode& node;
        ZPropertyTreeNode::Children::const_iterator next;
    };

    void enter(const ZString& name, const ZPropertyTreeNode& node) {
        if (open_.size() == maxDepth_) {
            throwNestedTooDeeply();
        }
        sink_.beginObject();
        if (node.children().empty()) {
            finish(name, node);
        } else {
            sink_.key("children");
            sink_.beginArray();
            open_.push_back({name, node, node.children().begin()});
        }
    }

    /// Writes what stands behind the children.
    void finish(const ZString& name, const ZPropertyTreeNode& node) {
        sink_.key("name");
        sink_.string(name);
        if (!node.objectType().empty()) {
            sink_.key("type");
            sink_.string(node.objectType());
        }
        if (!VariantAccess::shape(node.value()).isEmpty()) {
            sink_.key("value");
            ValueWriter<Sink>(sink_).write(node.value());
        }
        sink_.endObject();
    }

    Sink& sink_;
    std::size_t maxDepth_;
    std::vector<OpenNode> open_;
};

} // namespace

void throwNestedTooDeeply() {
    throw std::length_error("Values nested too deeply for JSON");
}

template <class Sink>
void writeJsonValue(Sink& sink, const Variant& value) {
    ValueWriter<Sink>(sink).write(value);
}

template <class Sink>
void writeJsonTree(Sink& sink, const ZString& name, const ZPropertyTreeNode& node, std::size_t maxDepth) {
    TreeWriter<Sink>(sink, maxDepth).write(name, node);
}

template void writeJsonValue(JsonTextSink&, const Variant&);
template void writeJsonValue(JsonValueSink&, const Variant&);
template void writeJsonTree(JsonTextSink&, const ZString&, const ZPropertyTreeNode&, std::size_t);
template void writeJsonTree(JsonValueSink&, const ZString&, const ZPropertyTreeNode&, std::size_t);

} // namespace Zelm::details
