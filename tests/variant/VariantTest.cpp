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

bool hasShape(const Variant& value, const ArrayDimensions& shape) {
    return value.dimensions().isIdenticalTo(shape);
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
static_assert(!std::is_convertible_v<Variant, MutableVariant> && std::is_nothrow_move_assignable_v<Variant> &&
              std::is_nothrow_move_constructible_v<MutableVariant>);
static_assert(canAdd<Variant, int> && canAdd<double, Variant> && !canAdd<ZString, int> &&
              !canAdd<Struct, int>);

TEST(Variant, element_type_of_each_constructor_argument) {
    const char array[] = "array";
    char writable[] = "writable";
    const char* const pointer = array;
    const std::string text = "text";
    const auto scalars = [](WellKnownType type, const auto&... values) {
        EXPECT_TRUE(((Variant(values).wellKnownType() == type && hasShape(values, {1})) && ...))
            << type.ToString();
    };
    scalars(WellKnownType::Int32(), 1);
    scalars(WellKnownType::UnsignedInt32(), 1u);
    scalars(WellKnownType::Int64(), 1l, 1ll);
    scalars(WellKnownType::UnsignedInt64(), 1ul, ~0ull);
    scalars(WellKnownType::Bool(), true);
    scalars(WellKnownType::Float(), 1.5f);
    scalars(WellKnownType::ZString(), "abc", array, writable, pointer, ZString("abc"), Variant{"abc"});
    scalars(WellKnownType::String(), text, Variant{text});
    scalars(WellKnownType::String16(), std::u16string(u"abc"));
    scalars(WellKnownType::Struct(), Struct());
    scalars(WellKnownType::ComplexFloat(), std::complex<float>(1, 2));
    scalars(WellKnownType::ComplexInt32(), Complex<int>(1, 2));
    scalars(WellKnownType::Cell(), std::vector<Variant>{"cell"});
    const Variant ofMutable = MutableVariant(Variant(1.5));
    scalars(WellKnownType::Double(), 1.5, ofMutable);
    EXPECT_TRUE(holds<double>(Variant{1.0, 2.0}, {1, 2}, {2}));
    EXPECT_TRUE(holds<int>(Variant({1, 2, 3}, {3, 1}), {1, 2, 3}, {3, 1}));
    EXPECT_TRUE(holds<int>(Variant{Variant{1, 2}}, {1, 2}, {2}));
    EXPECT_TRUE(holds<std::int64_t>(Variant({1ll, 2ll}), {1, 2}, {2}));
    EXPECT_TRUE(holds<std::int64_t>(std::vector<long long>{}, {}, {0}));
    EXPECT_TRUE(holds<bool>(std::vector<bool>{true, false, true}, {true, false, true}, {3}));
    EXPECT_THROW_MSG(Variant({1, 2, 3}, {2, 2}), std::length_error, "Dimensions don't match size");
    EXPECT_TRUE(Variant().wellKnownType().isUnknown() && hasShape(Variant(), {}));
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
    EXPECT_TRUE(hasShape(growing, {appends + 1}));
}

TEST(Variant, exhausted_memory_changes_nothing) {
    const Variant texts(samples<std::string>(3)), more(samples<std::string>(3, 3));
    Struct record;
    record.set(ZString("key"), 1);
    const auto failsEverywhere = [](auto&& start, auto&& action, auto&& isUnchanged) {
        int failures = 0;
        for (bool failed = true; failed; failures += failed) {
            auto value = start();
            failAllocationAfter(failures);
            try {
                action(value);
                failed = false;
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(isUnchanged(value)) << "after " << failures << " allocations";
            }
            failAllocationAfter(-1);
        }
        EXPECT_GT(failures, 0);
    };
    const auto sole = [&] { return Variant(samples<std::string>(3)); };
    const auto isSame = [&](const Variant& value) { return value.isIdenticalTo(texts); };
    const std::vector<IndexSet> all{IndexRange::all};
    failsEverywhere(
        sole, [&](Variant& value) { value.append(more); }, isSame);
    failsEverywhere(
        sole, [&](Variant& value) { value.assignSlice(all, more); }, isSame);
    failsEverywhere([&] { return texts; }, [&](Variant& value) { value.assignSlice(all, more); }, isSame);
    const auto hasOneField = [](const Struct& value) { return value.keys().size() == 1; };
    failsEverywhere([&] { return record; }, [](Struct& value) { value.set(ZString("a"), 2); }, hasOneField);
}

TEST(Variant, value_and_convertedTo) {
    EXPECT_EQ((Variant{3.0, 4.0}.value<int>()), 3);
    EXPECT_EQ(Variant(2.5f).value<double>(), 2.5);
    EXPECT_TRUE(std::isnan(Variant(std::numeric_limits<double>::quiet_NaN()).value<double>()));
    EXPECT_THROW_MSG(Variant(1.5).value<int>(), std::runtime_error, "Conversion check failed");
    // All elements are converted, so that any of them can fail.
    EXPECT_THROW_MSG((Variant{1.0, 1.5}.value<int>()), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(Variant(1.5).value<ZString>(), std::invalid_argument, "No conversion available");
    EXPECT_THROW_MSG(Variant(1.5).value<Variant>(), std::invalid_argument, "Unable to check conversion");
    const Variant broken(1);
    details::VariantAccess::storage(broken)->setDimensions({2, 3});
    EXPECT_THROW_MSG(broken.value<double>(), std::length_error, "Dimensions don't match size");
    EXPECT_EQ(broken.value<int>(), 1);
    EXPECT_OUT_OF_BOUNDS(Variant().value<double>());
    EXPECT_OUT_OF_BOUNDS(Variant(std::vector<int>()).value<int>());
    EXPECT_OUT_OF_BOUNDS(Variant(std::vector<int>()).value<double>());

    const Variant source({1, 2, 3, 4}, {2, 2}, ColumnMajor);
    const Variant converted = source.convertedTo(WellKnownType::Double());
    EXPECT_TRUE(holds<double>(converted, {1, 2, 3, 4}, {2, 2}, ColumnMajor));
    EXPECT_TRUE(holds<int>(source, {1, 2, 3, 4}, {2, 2}, ColumnMajor));
    EXPECT_TRUE(hasShape(Variant().convertedTo(WellKnownType::Struct()), {0}));
    EXPECT_THROW_MSG(source.convertedTo(WellKnownType()), std::invalid_argument,
                     "Cannot convert to non-well-known type");
}

TEST(Variant, slice) {
    const std::vector<IndexSet> all{IndexRange::all};
    const Variant matrix({1, 2, 3, 4, 5, 6}, {2, 3}, ColumnMajor);
    EXPECT_TRUE(
        holds<int>(matrix.slice({IndexValue::end(0), IndexRange::all}), {2, 4, 6}, {1, 3}, ColumnMajor));
    for (const Variant& value : {matrix, Variant(), movedFrom()}) {
        EXPECT_THROW_MSG(value.slice(all), std::invalid_argument, "Array slice invalid");
    }
    Variant broken({1, 2, 3, 4, 5}, {1, 5});
    broken.append(Variant{6, 7, 8});
    EXPECT_OUT_OF_BOUNDS(broken.slice({IndexRange::all, IndexRange::all}));
    EXPECT_TRUE(holds<int>(broken.slice({IndexValue(1, false), IndexValue(2, false)}), {8}, {1, 1}));
}

TEST(Variant, assignSlice_never_shows_in_a_copy) {
    const std::vector<IndexSet> first{IndexValue(0, false)}, all{IndexRange::all};
    Variant value{1, 2, 3}, null;
    const Variant copy = value;
    value.assignSlice(first, 9);
    EXPECT_TRUE(holds<int>(value, {9, 2, 3}, {3}) && holds<int>(copy, {1, 2, 3}, {3}));
    const void* const own = storageIn(value);
    value.assignSlice(first, 8.0);
    EXPECT_EQ(storageIn(value), own);
    EXPECT_THROW_MSG(value.assignSlice(first, 8.5), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(value.assignSlice(all, 8), std::length_error, "Cannot assign to diffent dimensions");
    value.assignSlice(all, value);
    null.assignSlice(all, value);
    EXPECT_TRUE(holds<int>(value, {8, 2, 3}, {3}) && null.wellKnownType().isUnknown());
    const Variant source(samples<std::string>(2));
    Variant texts = source;
    texts.append(texts);
    texts.assignSlice({IndexRange(IndexValue(1, false), IndexValue(2, false), 1)}, source);
    const std::vector<std::string> two = samples<std::string>(2);
    EXPECT_TRUE(holds<std::string>(texts, {two[0], two[0], two[1], two[1]}, {4}) && holds(source, two, {2}));
}

TEST(Variant, append_clones_shares_and_refuses) {
    Variant value{1, 2};
    const Variant copy = value;
    value.append(Variant{3, 4});
    value.append(value);
    for (const Variant& wrong : {Variant(1.0), Variant(), movedFrom()}) {
        EXPECT_THROW_MSG(value.append(wrong), std::invalid_argument, "Incompatible data for append");
    }
    EXPECT_TRUE(holds<int>(value, {1, 2, 3, 4, 1, 2, 3, 4}, {8}) && holds<int>(copy, {1, 2}, {2}));
    Variant empties[] = {Variant(), std::vector<double>(), std::vector<ZString>(), movedFrom()};
    for (Variant& empty : empties) {
        empty.append(copy);
        EXPECT_EQ(storageIn(empty), storageIn(copy));
    }
    // The comparison stays that of the empty value; what is made of the value compares as it should.
    EXPECT_FALSE(empties[0].isEquivalentTo(empties[0]) || empties[2].isEquivalentTo(empties[2]));
    EXPECT_TRUE(holds<int>(empties[0].slice({IndexRange::all}), {1, 2}, {2}));
}

TEST(Variant, moved_from_values_do_no_harm) {
    const std::vector<IndexSet> all{IndexRange::all};
    const auto isNull = [](const auto& value) {
        return value.wellKnownType().isUnknown() && value.dimensions().isIdenticalTo({}) &&
               value.dataOrdering() == RowMajor;
    };
    Variant value = movedFrom(), target{1, 2};
    EXPECT_THROW_MSG(value.value<double>(), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(value.convertedTo(WellKnownType::Double()), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(target.assignSlice(all, value), std::length_error,
                     "Cannot assign to diffent dimensions");
    value.assignSlice(all, target);
    EXPECT_TRUE(isNull(value));
    MutableVariant emptied(std::move(value));
    emptied.assignSlice(all, target);
    EXPECT_TRUE(isNull(emptied));
    EXPECT_THROW_MSG(emptied.element<double>({0}), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(emptied.setElementByVariant({0}, 1), std::invalid_argument,
                     "setElementByVariant: argument must be well-known type");
    target = std::move(emptied);
    EXPECT_TRUE(isNull(target));
    target = 2.5;
    EXPECT_EQ(target.value<double>(), 2.5);
}
