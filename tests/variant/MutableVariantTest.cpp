#include <arrays/ArrayModel.h>
#include <variant/Samples.h>

#include <zelm/variant/MutableVariant.h>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

MutableVariant array(WellKnownType type, ArrayDimensions shape, DataOrdering ordering = RowMajor) {
    return MutableVariant::createWithAllocatedArrayOfWellKnownType(type, std::move(shape), ordering);
}

Variant cellOf(Variant inner) {
    return std::vector<Variant>{std::move(inner)};
}

Variant structOf(Variant inner) {
    Struct record;
    record.set(ZString("inner"), std::move(inner));
    return record;
}

constexpr int kDepth = 100000;

template <class Wrap>
Variant nested(Wrap&& wrap) {
    Variant value = 1.0;
    for (int depth = 0; depth < kDepth; ++depth) {
        value = wrap(std::move(value));
    }
    return value;
}

} // namespace

TEST(MutableVariant, allocated_arrays_hold_default_elements) {
    forEachElementType([](auto tag) {
        using T = typename decltype(tag)::type;
        const WellKnownType type = details::wellKnownTypeOf<T>;
        MutableVariant made = array(type, {2, 3}, ColumnMajor);
        made.setElement<T>({1, 0}, sample<T>(7));
        EXPECT_TRUE(same<T>(made.element<T>({1, 0}), sample<T>(7))) << type.ToString();
        std::vector<T> expected(6);
        expected[1] = sample<T>(7);
        EXPECT_TRUE(Variant(std::move(made)).isIdenticalTo(Variant(expected, {2, 3}, ColumnMajor)));
        EXPECT_TRUE(array(type, {2, 0, 3}).dimensions().isIdenticalTo({0})) << type.ToString();
        EXPECT_THROW(array(type, {1ull << 32, 1ull << 32}), std::length_error) << type.ToString();
    });
    EXPECT_EQ(array(WellKnownType::Int8(), {0}, ColumnMajor).dataOrdering(), ColumnMajor);
    EXPECT_TRUE(Variant(array(WellKnownType(), {2})).isIdenticalTo(Variant()));
}

TEST(MutableVariant, clones_only_what_is_shared) {
    MutableVariant own(Variant{1.0, 2.0});
    const double* first = &own.element<double>({0});
    MutableVariant again{Variant(std::move(own))};
    EXPECT_EQ(&again.element<double>({0}), first);

    Variant shared{1, 2};
    const Variant copy = shared;
    MutableVariant changed(std::move(shared));
    changed.setElement<int>({1}, 9);
    EXPECT_TRUE(shared.isIdenticalTo(Variant{1, 2}) && copy.isIdenticalTo(Variant{1, 2}));
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

TEST(Struct, fields_in_byte_order_and_copies_of_their_own) {
    Struct record;
    std::vector<std::string> keys;
    for (const char* key : {"b", "", "\xC3\xA9", "B", "a", "ab", "a"}) {
        record.set(ZString(key), std::string(key));
    }
    for (const ZString& key : record.keys()) {
        keys.emplace_back(key.data(), key.size());
        EXPECT_TRUE(record.get(key).isIdenticalTo(keys.back()));
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"", "B", "a", "ab", "b", "\xC3\xA9"}));
    EXPECT_TRUE(record.get(ZString("missing")).isIdenticalTo(Variant()));
    Struct copy(record), assigned;
    assigned.set(ZString("old"), 1);
    assigned = record;
    copy.set(ZString("a"), 5);
    copy.set(ZString("new"), 6);
    EXPECT_TRUE(assigned.isEqual(record, Identical) && record.keys().size() == keys.size());
    const Struct& itself = assigned;
    assigned = itself;
    EXPECT_TRUE(assigned.isEqual(record, Identical));
    assigned = std::move(copy);
    EXPECT_EQ(assigned.get(ZString("a")).value<int>(), 5);
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
    nested([](Variant inner) { return structOf(std::move(inner)); });
    nested([](Variant inner) { return structOf(std::vector<Variant>{2, std::move(inner), "x"}); });
    // A part that somebody else holds outlives the rest.
    Variant kept;
    {
        const Variant whole = nested([](Variant inner) { return cellOf(std::move(inner)); });
        kept = whole;
        for (int depth = 0; depth < kDepth / 2; ++depth) {
            kept = kept.value<Variant>();
        }
    }
    int depth = 0;
    for (; kept.wellKnownType().isCellArray(); ++depth) {
        kept = kept.value<Variant>();
    }
    EXPECT_EQ(depth, kDepth / 2);
    EXPECT_EQ(kept.value<double>(), 1.0);
    MutableVariant outer(cellOf(nested([](Variant inner) { return cellOf(std::move(inner)); })));
    outer.setElement<Variant>({0}, 5);
    EXPECT_EQ(outer.element<Variant>({0}).value<int>(), 5);
}
