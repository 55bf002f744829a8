#include <arrays/ArrayModel.h>
#include <support/ExpectThrow.h>
#include <variant/Samples.h>

#include <zelm/variant/MutableVariant.h>

#include <stdexcept>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr int kDepth = 100000;

MutableVariant array(WellKnownType type, ArrayDimensions shape, DataOrdering ordering = RowMajor) {
    return MutableVariant::createWithAllocatedArrayOfWellKnownType(type, std::move(shape), ordering);
}

Variant cellOf(Variant inner) {
    return Variant(std::vector<Variant>{std::move(inner)});
}

Variant structOf(Variant inner) {
    Struct record;
    record.set(ZString("inner"), std::move(inner));
    return Variant(std::move(record));
}

template <class Wrap>
Variant nested(Wrap&& wrap, Variant value = 1.0) {
    for (int depth = 0; depth < kDepth; ++depth) {
        value = wrap(std::move(value), depth);
    }
    return value;
}

std::vector<std::string> textsOf(const std::vector<ZString>& keys) {
    std::vector<std::string> texts;
    for (const ZString& key : keys) {
        texts.emplace_back(key.data(), key.size());
    }
    return texts;
}

} // namespace

TEST(MutableVariant, allocated_arrays_hold_default_elements) {
    forEachElementType([](auto tag) {
        using T = typename decltype(tag)::type;
        MutableVariant made = array(details::wellKnownTypeOf<T>, {2, 3}, ColumnMajor);
        for (const Numbers& indices : allIndices({2, 3}, RowMajor)) {
            EXPECT_TRUE(same<T>(made.element<T>(indices), T()));
        }
        made.setElement<T>({1, 0}, sample<T>(7));
        EXPECT_TRUE(same<T>(made.element<T>({1, 0}), sample<T>(7)));
        std::vector<T> expected(6);
        expected[1] = sample<T>(7);
        EXPECT_TRUE(Variant(std::move(made)).isIdenticalTo(Variant(expected, {2, 3}, ColumnMajor)));
        EXPECT_TRUE(array(details::wellKnownTypeOf<T>, {2, 0, 3}).dimensions().isIdenticalTo({0}));
        EXPECT_THROW(array(details::wellKnownTypeOf<T>, {1ull << 32, 1ull << 32}), std::length_error);
    });
    EXPECT_EQ(array(WellKnownType::Int8(), {0}, ColumnMajor).dataOrdering(), ColumnMajor);
    EXPECT_TRUE(array(WellKnownType(), {2}).wellKnownType().isUnknown());
    EXPECT_TRUE(array(WellKnownType(), {2}).dimensions().isIdenticalTo({}));
    EXPECT_THROW(array(WellKnownType::Int8(), {1ull << 63}), std::length_error);
}

TEST(MutableVariant, clones_only_what_is_shared) {
    Variant sole{1.0, 2.0};
    MutableVariant own(std::move(sole));
    const double* first = &own.element<double>({0});
    Variant back(std::move(own));
    MutableVariant again(std::move(back));
    EXPECT_EQ(&again.element<double>({0}), first);

    Variant shared{1, 2};
    const Variant copy = shared;
    MutableVariant changed(std::move(shared));
    changed.setElement<int>({1}, 9);
    EXPECT_TRUE(copy.isIdenticalTo(Variant{1, 2}));
    EXPECT_TRUE(shared.isIdenticalTo(copy));
    EXPECT_TRUE(Variant(std::move(changed)).isIdenticalTo(Variant{1, 9}));
    EXPECT_TRUE(changed.wellKnownType().isUnknown());
}

TEST(MutableVariant, elements_are_neither_converted_nor_guessed) {
    MutableVariant value(Variant(std::vector<float>(4), {2, 2}));
    EXPECT_THROW_MSG(value.element<double>({0, 0}), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(value.element<float>({0}), std::invalid_argument, "Too few indices");
    EXPECT_THROW_MSG(value.setElement<float>({0, 2}, 1.f), std::out_of_range, "Indices out of bounds");
    EXPECT_THROW_MSG(MutableVariant().element<float>({}), std::invalid_argument,
                     "Cannot access element of null variant");
    value.assignSlice({IndexValue(1, false), IndexRange::all}, Variant({5, 6}, {1, 2}));
    EXPECT_EQ(value.element<float>({1, 1}), 6.f);
}

TEST(MutableVariant, setElementByVariant_converts_scalars) {
    MutableVariant value(Variant{1, 2});
    value.setElementByVariant({1}, 7.0);
    value.setElementByVariant({0}, Variant({8}, {1, 1, 1}));
    const char* const text = "setElementByVariant: argument must be scalar";
    EXPECT_THROW_MSG(value.setElementByVariant({0}, Variant{1, 2}), std::invalid_argument, text);
    EXPECT_THROW_MSG(value.setElementByVariant({0}, Variant()), std::invalid_argument, text);
    EXPECT_THROW_MSG(value.setElementByVariant({0}, 7.5), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(value.setElementByVariant({2}, 7), std::out_of_range, "Indices out of bounds");
    EXPECT_THROW_MSG(MutableVariant().setElementByVariant({0}, 7), std::invalid_argument,
                     "setElementByVariant: argument must be well-known type");
    EXPECT_TRUE(Variant(std::move(value)).isIdenticalTo(Variant{8, 7}));

    MutableVariant cell(cellOf(Variant()));
    EXPECT_THROW_MSG(cell.setElementByVariant({0}, 1.5), std::invalid_argument, "Unable to check conversion");
    cell.setElementByVariant({0}, cellOf(1.5));
    EXPECT_EQ(cell.element<Variant>({0}).value<double>(), 1.5);
}

TEST(Struct, fields_in_byte_order) {
    Struct record;
    for (const char* key : {"b", "", "\xC3\xA9", "B", "a", "ab"}) {
        record.set(ZString(key), std::string(key));
    }
    EXPECT_EQ(textsOf(record.keys()), (std::vector<std::string>{"", "B", "a", "ab", "b", "\xC3\xA9"}));
    record.set(ZString("a"), 1);
    EXPECT_EQ(record.keys().size(), 6u);
    EXPECT_TRUE(record.get(ZString("a")).isIdenticalTo(1));
    EXPECT_TRUE(record.get(ZString("missing")).isIdenticalTo(Variant()));
}

TEST(Struct, copies_are_independent) {
    Struct record;
    record.set(ZString("a"), Variant{1, 2});
    Struct copy(record), assigned;
    assigned.set(ZString("old"), 1);
    assigned = record;
    copy.set(ZString("a"), 5);
    copy.set(ZString("b"), 6);
    EXPECT_TRUE(record.get(ZString("a")).isIdenticalTo(Variant{1, 2}));
    EXPECT_EQ(record.keys().size(), 1u);
    EXPECT_TRUE(assigned.isEqual(record, Identical));
    Struct& itself = assigned;
    assigned = itself;
    EXPECT_TRUE(assigned.isEqual(record, Identical));
    assigned = std::move(copy);
    EXPECT_EQ(assigned.get(ZString("b")).value<int>(), 6);
}

TEST(Struct, equality_looks_at_keys_and_fields) {
    const auto with = [](const char* key, Variant value) {
        Struct record;
        record.set(ZString("same"), 1);
        record.set(ZString(key), std::move(value));
        return record;
    };
    const Struct record = with("x", 2);
    EXPECT_TRUE(record.isEqual(with("x", 2), Identical) && record.isEqual(with("x", 2.0), Equivalent));
    for (const Struct& other : {with("x", 3), with("y", 2), with("same", 1)}) {
        EXPECT_FALSE(record.isEqual(other, Equivalent) || other.isEqual(record, Equivalent));
    }
    EXPECT_FALSE(record.isEqual(with("x", 2.0), Identical));
}

TEST(Nesting, deep_values_are_destroyed_without_recursion) {
    nested([](Variant inner, int) { return cellOf(std::move(inner)); });
    nested([](Variant inner, int) { return structOf(std::move(inner)); });
    nested([](Variant inner, int depth) {
        return depth % 2 ? structOf(std::move(inner))
                         : Variant(std::vector<Variant>{2, std::move(inner), "x"});
    });
    // A part that somebody else holds outlives the rest.
    Variant kept;
    nested([&kept](Variant inner, int depth) {
        if (depth == kDepth / 2) {
            kept = inner;
        }
        return cellOf(std::move(inner));
    });
    int depth = 0;
    for (; kept.wellKnownType().isCellArray(); ++depth) {
        kept = kept.value<Variant>();
    }
    EXPECT_EQ(depth, kDepth / 2);
    EXPECT_EQ(kept.value<double>(), 1.0);

    MutableVariant outer(cellOf(nested([](Variant inner, int) { return cellOf(std::move(inner)); })));
    outer.setElement<Variant>({0}, 5);
    Struct record;
    record.set(ZString("deep"), nested([](Variant inner, int) { return structOf(std::move(inner)); }));
    record.set(ZString("deep"), 5);
    EXPECT_EQ(record.get(ZString("deep")).value<int>(), outer.element<Variant>({0}).value<int>());
}
