#include <support/Allocations.h>
#include <variant/Samples.h>

#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/VariantAccess.h>

#include <cmath>
#include <limits>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

const void* storageIn(const Variant& value) {
    return details::VariantAccess::storage(value).get();
}

/// Whether the value holds these elements in this shape.
template <class T>
bool holds(const Variant& value, const std::vector<T>& elements, const ArrayDimensions& shape,
           DataOrdering ordering = RowMajor) {
    return value.isIdenticalTo(Variant(elements, shape, ordering));
}

Variant movedFrom() {
    Variant value(1.5);
    const Variant taken(std::move(value));
    return value;
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

template <class A, class B, class = void>
constexpr bool canAdd = false;
template <class A, class B>
constexpr bool canAdd<A, B, std::void_t<decltype(std::declval<A>() + std::declval<B>())>> = true;

template <class... Sources>
constexpr bool noneMakesAVariant = !(std::is_constructible_v<Variant, Sources> || ...);

} // namespace

static_assert(
    noneMakesAVariant<char, wchar_t, char16_t, char32_t, std::nullptr_t, int*, const void*, void (*)(),
                      long double, const char16_t*, DataOrdering, std::initializer_list<const char*>,
                      std::initializer_list<Variant>, std::vector<const char*>, std::vector<char>>);
static_assert(!std::is_convertible_v<Variant, MutableVariant> && std::is_nothrow_move_assignable_v<Variant>);
static_assert(canAdd<Variant, int> && canAdd<double, Variant> && !canAdd<ZString, int>);

TEST(Variant, element_type_of_each_constructor_argument) {
    char writable[] = "abc";
    const char array[] = "abc";
    const char* const pointer = array;
    const std::string text = "abc";
    const auto expectScalars = [](auto expected, const auto&... values) {
        EXPECT_TRUE((holds<decltype(expected)>(values, {expected}, {1}) && ...)) << typeid(expected).name();
    };
    expectScalars(1, 1, Variant{1}, Variant{Variant{1}}, Variant(MutableVariant(Variant(1))));
    expectScalars(1u, 1u);
    expectScalars(std::int64_t(1), 1l, 1ll, Variant{1ll});
    expectScalars(std::uint64_t(1), 1ul, 1ull);
    expectScalars(true, true, std::vector<bool>{true});
    expectScalars(ZString("abc"), "abc", array, writable, pointer, ZString("abc"), Variant{"abc"});
    expectScalars(text, text, Variant{text}, std::vector<std::string>{text});
    expectScalars(Complex<int>(1, 2), Complex<int>(1, 2));
    expectScalars(Variant("cell"), std::vector<Variant>{"cell"});
    EXPECT_TRUE(holds<int>(Variant({1, 2, 3}, {3, 1}, ColumnMajor), {1, 2, 3}, {3, 1}, ColumnMajor));
    EXPECT_TRUE(holds<std::int64_t>(std::vector<long long>{}, {}, {0}));
    EXPECT_THROW_MSG(Variant({1, 2, 3}, {2, 2}), std::length_error, "Dimensions don't match size");
    EXPECT_TRUE(Variant().wellKnownType().isUnknown() && Variant().dimensions().isIdenticalTo({}));
}

TEST(Variant, scalars_copies_and_appends_cost_few_allocations) {
    Variant scalar, copy, array{1, 2, 3}, growing(0.0);
    EXPECT_EQ(allocationsOf([] { Variant(); }), 0);
    EXPECT_LE(allocationsOf([&] { scalar = 1.5; }), 3);
    EXPECT_EQ(allocationsOf([&] {
                  copy = scalar;
                  scalar.value<double>();
                  scalar.value<float>();
                  copy = scalar.convertedTo(WellKnownType::Double());
                  array = MutableVariant(std::move(array));
              }),
              0);
    EXPECT_EQ(storageIn(copy), storageIn(scalar));
    std::vector<double> large(1000, 1.0);
    const double* data = large.data();
    EXPECT_EQ(&MutableVariant(Variant(std::move(large))).element<double>({0}), data);
    constexpr int appends = 10000;
    EXPECT_LE(allocationsOf([&] {
                  for (int i = 0; i < appends; ++i) {
                      growing.append(1.0);
                  }
              }),
              3 * appends + 32);
    EXPECT_TRUE(growing.dimensions().isIdenticalTo({appends + 1}));
}

TEST(Variant, exhausted_memory_changes_nothing) {
    const std::vector<IndexSet> all{IndexRange::all};
    const Variant texts(samples<std::string>(3)), more(samples<std::string>(3, 3));
    const auto failsEverywhere = [&](bool shared, auto&& action) {
        int failures = 0;
        for (bool failed = true; failed; failures += failed) {
            Variant value = shared ? texts : Variant(samples<std::string>(3));
            failAllocationAfter(failures);
            try {
                action(value);
                failed = false;
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(value.isIdenticalTo(texts)) << "after " << failures << " allocations";
            }
            failAllocationAfter(-1);
        }
        EXPECT_GT(failures, 0);
    };
    for (const bool shared : {false, true}) {
        failsEverywhere(shared, [&](Variant& value) { value.append(more); });
        failsEverywhere(shared, [&](Variant& value) { value.assignSlice(all, more); });
    }
}

TEST(Variant, value_and_convertedTo) {
    const Variant source({1, 2, 3, 4}, {2, 2}, ColumnMajor), broken(1), none(std::vector<int>{});
    EXPECT_EQ((Variant{3.0, 4.0}.value<int>()), 3);
    EXPECT_TRUE(std::isnan(Variant(NAN).value<float>()));
    EXPECT_THROW_MSG(Variant(1.5).value<int>(), std::runtime_error, "Conversion check failed");
    // All elements are converted, so that any of them can fail.
    EXPECT_THROW_MSG((Variant{1.0, 1.5}.value<int>()), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(Variant(1.5).value<ZString>(), std::invalid_argument, "No conversion available");
    EXPECT_THROW_MSG(Variant(1.5).value<Variant>(), std::invalid_argument, "Unable to check conversion");
    details::VariantAccess::storage(broken)->setDimensions({2, 3});
    EXPECT_THROW_MSG(broken.value<double>(), std::length_error, "Dimensions don't match size");
    EXPECT_OUT_OF_BOUNDS(Variant().value<double>());
    EXPECT_OUT_OF_BOUNDS(none.value<int>());
    EXPECT_OUT_OF_BOUNDS(none.value<double>());
    const Variant converted = source.convertedTo(WellKnownType::Double());
    EXPECT_TRUE(holds<double>(converted, {1, 2, 3, 4}, {2, 2}, ColumnMajor));
    EXPECT_TRUE(holds<int>(source, {1, 2, 3, 4}, {2, 2}, ColumnMajor));
    EXPECT_THROW_MSG(source.convertedTo(WellKnownType()), std::invalid_argument,
                     "Cannot convert to non-well-known type");
}

TEST(Variant, writing_never_shows_in_a_copy) {
    const std::vector<IndexSet> first{IndexValue(0, false)}, all{IndexRange::all};
    Variant value{1, 2}, null;
    const Variant copy = value;
    value.assignSlice(first, 9);
    const void* const own = storageIn(value);
    value.assignSlice(first, 8.0);
    EXPECT_EQ(storageIn(value), own);
    EXPECT_THROW_MSG(value.assignSlice(first, 8.5), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(value.assignSlice(all, 8), std::length_error, "Cannot assign to diffent dimensions");
    value.assignSlice(all, value);
    null.assignSlice(all, value);
    EXPECT_TRUE(null.wellKnownType().isUnknown());
    Variant grown = value;
    grown.append(Variant{3, 4});
    grown.append(grown);
    for (const Variant& wrong : {Variant(1.0), Variant(), movedFrom()}) {
        EXPECT_THROW_MSG(grown.append(wrong), std::invalid_argument, "Incompatible data for append");
    }
    EXPECT_TRUE(holds<int>(grown, {8, 2, 3, 4, 8, 2, 3, 4}, {8}));
    EXPECT_TRUE(holds<int>(value, {8, 2}, {2}) && holds<int>(copy, {1, 2}, {2}));
    Variant empties[] = {Variant(), std::vector<ZString>(), movedFrom()};
    for (Variant& empty : empties) {
        empty.append(copy);
        EXPECT_EQ(storageIn(empty), storageIn(copy));
        // The comparison stays that of the empty value; what is made of the value compares as it should.
        EXPECT_TRUE(holds<int>(empty.slice({IndexRange::all}), {1, 2}, {2}));
    }
    const Variant source(samples<std::string>(2));
    const std::vector<std::string> two = samples<std::string>(2);
    Variant texts = source;
    texts.append(texts);
    texts.assignSlice({IndexRange(IndexValue(1, false), IndexValue(2, false), 1)}, source);
    EXPECT_TRUE(holds<std::string>(texts, {two[0], two[0], two[1], two[1]}, {4}) && holds(source, two, {2}));
}

TEST(Variant, slices_and_values_moved_from) {
    const std::vector<IndexSet> all{IndexRange::all};
    const Variant matrix({1, 2, 3, 4, 5, 6}, {2, 3}, ColumnMajor);
    const Variant row = matrix.slice({IndexValue::end(0), IndexRange::all});
    EXPECT_TRUE(holds<int>(row, {2, 4, 6}, {1, 3}, ColumnMajor));
    for (const Variant& value : {matrix, Variant(), movedFrom()}) {
        EXPECT_THROW_MSG(value.slice(all), std::invalid_argument, "Array slice invalid");
    }
    Variant value = movedFrom();
    EXPECT_THROW_MSG(value.value<double>(), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(value.convertedTo(WellKnownType::Double()), std::invalid_argument, "Wrong data type");
    value.assignSlice(all, matrix);
    MutableVariant emptied(std::move(value));
    emptied.assignSlice(all, matrix);
    EXPECT_TRUE(emptied.wellKnownType().isUnknown() && emptied.dimensions().isIdenticalTo({}));
    EXPECT_THROW_MSG(emptied.element<double>({0}), std::invalid_argument, "Wrong data type");
    value = std::move(emptied);
    EXPECT_EQ(value.dataOrdering(), RowMajor);
}

TEST(MutableVariant, allocated_arrays_hold_default_elements) {
    const auto allocate = &MutableVariant::createWithAllocatedArrayOfWellKnownType;
    forEachElementType([&](auto tag) {
        using T = typename decltype(tag)::type;
        const WellKnownType type = details::wellKnownTypeOf<T>;
        MutableVariant made = allocate(type, {2, 3}, ColumnMajor);
        made.setElement<T>({1, 0}, sample<T>(7));
        std::vector<T> expected(6);
        expected[1] = sample<T>(7);
        EXPECT_TRUE(same<T>(made.element<T>({1, 0}), sample<T>(7)));
        EXPECT_TRUE(Variant(std::move(made)).isIdenticalTo(Variant(expected, {2, 3}, ColumnMajor)));
        const Variant empty = allocate(type, {2, 0, 3}, ColumnMajor);
        EXPECT_TRUE(empty.isIdenticalTo(Variant(std::vector<T>(), {0}, ColumnMajor)));
        EXPECT_THROW(allocate(type, {1ull << 32, 1ull << 32}, RowMajor), std::length_error);
    });
    EXPECT_TRUE(Variant(allocate(WellKnownType(), {2}, RowMajor)).isIdenticalTo(Variant()));
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

TEST(MutableVariant, elements_and_their_failures) {
    MutableVariant value(Variant({1, 2, 3, 4}, {2, 2})), null, cells(cell({Variant()}));
    EXPECT_THROW_MSG(value.element<double>({0, 0}), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(value.element<int>({0}), std::invalid_argument, "Too few indices");
    EXPECT_THROW_MSG(value.setElement<int>({0, 2}, 1), std::out_of_range, "Indices out of bounds");
    EXPECT_THROW_MSG(null.element<float>({}), std::invalid_argument, "Cannot access element of null variant");
    value.assignSlice({IndexValue(1, false), IndexRange::all}, Variant({5, 6}, {1, 2}));
    value.setElementByVariant({0, 1}, 7.0);
    for (const Variant& wrong : {Variant{1, 2}, Variant()}) {
        EXPECT_THROW_MSG(value.setElementByVariant({0, 0}, wrong), std::invalid_argument,
                         "setElementByVariant: argument must be scalar");
    }
    EXPECT_THROW_MSG(value.setElementByVariant({0, 0}, 7.5), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(null.setElementByVariant({0}, 7), std::invalid_argument,
                     "setElementByVariant: argument must be well-known type");
    EXPECT_TRUE(Variant(std::move(value)).isIdenticalTo(Variant({1, 7, 5, 6}, {2, 2})));
    EXPECT_THROW_MSG(cells.setElementByVariant({0}, 1.5), std::invalid_argument,
                     "Unable to check conversion");
    cells.setElementByVariant({0}, cell({1.5}));
    EXPECT_EQ(cells.element<Variant>({0}).value<double>(), 1.5);
}

TEST(Struct, fields_in_byte_order_and_copies_of_their_own) {
    Struct original, assigned;
    for (const char* key : {"b", "", "\xC3\xA9", "B", "a", "ab", "a"}) {
        original.set(ZString(key), std::string(key));
    }
    const std::vector<ZString> keys{"", "B", "a", "ab", "b", "\xC3\xA9"};
    EXPECT_EQ(original.keys(), keys);
    EXPECT_TRUE(original.get("missing").isIdenticalTo(Variant()));
    Struct copy(original);
    assigned.set("old", 1);
    assigned = original;
    copy.set("a", 5);
    copy.set("new", 6);
    EXPECT_TRUE(assigned.isEqual(original, Identical) && original.get("a").isIdenticalTo(std::string("a")));
    const Struct& itself = assigned;
    assigned = itself;
    EXPECT_EQ(assigned.keys(), keys);
    assigned = std::move(copy);
    EXPECT_EQ(assigned.get("a").value<int>(), 5);
}

TEST(Nesting, deep_values_are_destroyed_without_recursion) {
    nested([](Variant inner) { return record({{"inner", cell({2, inner, "x"})}}); });
    // A part that somebody else holds outlives the rest.
    Variant kept = nested([](Variant inner) { return cell({inner}); });
    for (int depth = 0; depth < kDepth; ++depth) {
        ASSERT_TRUE(kept.wellKnownType().isCellArray());
        kept = kept.value<Variant>();
    }
    EXPECT_EQ(kept.value<double>(), 1.0);
    MutableVariant outer(cell({nested([](Variant inner) { return cell({inner}); })}));
    outer.setElement<Variant>({0}, 5);
    EXPECT_EQ(outer.element<Variant>({0}).value<int>(), 5);
}
