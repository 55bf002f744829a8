#include <arrays/ArrayModel.h>
#include <support/ExpectThrow.h>
#include <tree/AllocationCount.h>
#include <variant/Samples.h>

#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/VariantAccess.h>

#include <cmath>
#include <limits>
#include <stdexcept>

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
static_assert(!std::is_convertible_v<Variant, MutableVariant> &&
              !std::is_copy_constructible_v<MutableVariant>);
static_assert(std::is_nothrow_move_constructible_v<Variant> && std::is_nothrow_move_assignable_v<Variant>);
static_assert(std::is_nothrow_move_constructible_v<MutableVariant> &&
              std::is_nothrow_move_constructible_v<Struct>);
static_assert(canAdd<Variant, int> && canAdd<double, Variant> && !canAdd<ZString, int> &&
              !canAdd<Struct, int>);

TEST(Variant, element_type_of_each_constructor_argument) {
    const char array[] = "array";
    char writable[] = "writable";
    const char* const pointer = array;
    const std::string text = "text";
    struct {
        Variant value;
        WellKnownType type;
        ArrayDimensions shape;
    } const rows[] = {
        {1, WellKnownType::Int32(), {1}},
        {1u, WellKnownType::UnsignedInt32(), {1}},
        {1l, WellKnownType::Int64(), {1}},
        {1ll, WellKnownType::Int64(), {1}},
        {1ul, WellKnownType::UnsignedInt64(), {1}},
        {1ull, WellKnownType::UnsignedInt64(), {1}},
        {true, WellKnownType::Bool(), {1}},
        {1.5f, WellKnownType::Float(), {1}},
        {1.5, WellKnownType::Double(), {1}},
        {"abc", WellKnownType::ZString(), {1}},
        {array, WellKnownType::ZString(), {1}},
        {writable, WellKnownType::ZString(), {1}},
        {pointer, WellKnownType::ZString(), {1}},
        {ZString("abc"), WellKnownType::ZString(), {1}},
        {text, WellKnownType::String(), {1}},
        {std::u16string(u"abc"), WellKnownType::String16(), {1}},
        {Struct(), WellKnownType::Struct(), {1}},
        {std::complex<float>(1, 2), WellKnownType::ComplexFloat(), {1}},
        {Complex<int>(1, 2), WellKnownType::ComplexInt32(), {1}},
        {Variant{1.0, 2.0}, WellKnownType::Double(), {2}},
        {Variant({1, 2, 3}, {3, 1}), WellKnownType::Int32(), {3, 1}},
        {Variant({1ll, 2ll}), WellKnownType::Int64(), {2}},
        {Variant{"x"}, WellKnownType::ZString(), {1}},
        {Variant{text}, WellKnownType::String(), {1}},
        {Variant{Variant{1, 2}}, WellKnownType::Int32(), {2}},
        {std::vector<bool>{true, false}, WellKnownType::Bool(), {2}},
        {Variant(std::vector<float>(6), {2, 3}, ColumnMajor), WellKnownType::Float(), {2, 3}},
        {std::vector<Variant>{1, "x"}, WellKnownType::Cell(), {2}},
        {std::vector<long long>{}, WellKnownType::Int64(), {0}},
        {MutableVariant(Variant(1.5)), WellKnownType::Double(), {1}},
        {Variant(), WellKnownType(), {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(row.value.wellKnownType(), row.type);
        EXPECT_TRUE(hasShape(row.value, row.shape));
    }
    EXPECT_EQ(Variant(~0ull).value<std::uint64_t>(), ~0ull);
    EXPECT_EQ(Variant{"x"}.value<ZString>(), ZString("x"));
    EXPECT_EQ(Variant(writable).value<ZString>(), ZString("writable"));
    EXPECT_TRUE(holds<bool>(std::vector<bool>{true, false, true}, {true, false, true}, {3}));
    EXPECT_THROW_MSG(Variant({1, 2, 3}, {2, 2}), std::length_error, "Dimensions don't match size");
}

TEST(Variant, scalars_and_copies_cost_few_allocations) {
    const auto allocationsOf = [](auto&& action) {
        const int before = allocationCount();
        action();
        return allocationCount() - before;
    };
    Variant scalar, copy, array{1, 2, 3};
    EXPECT_EQ(allocationsOf([] { Variant(); }), 0);
    EXPECT_LE(allocationsOf([&] { scalar = 1.5; }), 3);
    EXPECT_EQ(allocationsOf([&] { copy = scalar; }), 0);
    EXPECT_EQ(storageIn(copy), storageIn(scalar));
    EXPECT_EQ(allocationsOf([&] { scalar.value<double>(); }), 0);
    EXPECT_EQ(allocationsOf([&] { scalar.value<float>(); }), 0);
    EXPECT_EQ(allocationsOf([&] { copy = scalar.convertedTo(WellKnownType::Double()); }), 0);
    EXPECT_EQ(storageIn(copy), storageIn(scalar));
    EXPECT_EQ(allocationsOf([&] { array = MutableVariant(std::move(array)); }), 0);
    std::vector<double> large(1000, 1.0);
    const double* data = large.data();
    MutableVariant taken{Variant(std::move(large))};
    EXPECT_EQ(&taken.element<double>({0}), data);

    Variant growing(0.0);
    const int appends = 10000;
    EXPECT_LE(allocationsOf([&] {
                  for (int i = 0; i < appends; ++i) {
                      growing.append(1.0);
                  }
              }),
              3 * appends + 32);
    EXPECT_TRUE(hasShape(growing, {appends + 1}));
}

TEST(Variant, value_reads_the_first_element_and_converts) {
    EXPECT_EQ((Variant{3.0, 4.0}.value<int>()), 3);
    EXPECT_EQ(Variant(2.5f).value<double>(), 2.5);
    EXPECT_EQ(Variant(7).value<std::complex<double>>(), std::complex<double>(7));
    EXPECT_TRUE(std::isnan(Variant(std::numeric_limits<double>::quiet_NaN()).value<double>()));
    EXPECT_THROW_MSG(Variant(1.5).value<int>(), std::runtime_error, "Conversion check failed");
    // All elements are converted, so that any of them can fail.
    EXPECT_THROW_MSG((Variant{1.0, 1.5}.value<int>()), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(Variant(1.5).value<ZString>(), std::invalid_argument, "No conversion available");
    EXPECT_THROW_MSG(Variant(1.5).value<Variant>(), std::invalid_argument, "Unable to check conversion");
    EXPECT_THROW_MSG(Variant().value<double>(), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(Variant(std::vector<int>()).value<int>(), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(Variant(std::vector<int>()).value<double>(), std::out_of_range, "Offset out of bounds");
}

TEST(Variant, convertedTo_makes_a_value_of_its_own) {
    const Variant source({1, 2, 3, 4}, {2, 2}, ColumnMajor);
    EXPECT_TRUE(
        holds<double>(source.convertedTo(WellKnownType::Double()), {1, 2, 3, 4}, {2, 2}, ColumnMajor));
    EXPECT_TRUE(holds<int>(source, {1, 2, 3, 4}, {2, 2}, ColumnMajor));
    EXPECT_TRUE(hasShape(Variant().convertedTo(WellKnownType::Struct()), {0}));
    EXPECT_THROW_MSG(source.convertedTo(WellKnownType()), std::invalid_argument,
                     "Cannot convert to non-well-known type");
    EXPECT_THROW_MSG(source.convertedTo(WellKnownType::String()), std::invalid_argument,
                     "No conversion available");
}

TEST(Variant, slice) {
    const Variant matrix({1, 2, 3, 4, 5, 6}, {2, 3});
    EXPECT_TRUE(holds<int>(matrix.slice({IndexRange::all, IndexValue(1, false)}), {2, 5}, {2, 1}));
    const Variant columns({1, 2, 3, 4, 5, 6}, {2, 3}, ColumnMajor);
    EXPECT_TRUE(
        holds<int>(columns.slice({IndexRange::all, IndexRange(IndexValue(0, false), IndexValue::end(0), 2)}),
                   {1, 2, 5, 6}, {2, 2}, ColumnMajor));
    for (const Variant& value : {matrix, Variant(), movedFrom()}) {
        EXPECT_THROW_MSG(value.slice({IndexRange::all}), std::invalid_argument, "Array slice invalid");
    }
    Variant broken({1, 2, 3, 4, 5}, {1, 5});
    broken.append(Variant{6, 7, 8});
    EXPECT_THROW_MSG(broken.slice({IndexRange::all, IndexRange::all}), std::out_of_range,
                     "Offset out of bounds");
    EXPECT_TRUE(holds<int>(broken.slice({IndexValue(1, false), IndexValue(2, false)}), {8}, {1, 1}));
}

TEST(Variant, writing_never_shows_in_a_copy) {
    const std::vector<IndexSet> first{IndexValue(0, false)}, all{IndexRange::all};
    Variant value{1, 2, 3};
    const Variant copy = value;
    value.assignSlice(first, Variant(9));
    EXPECT_TRUE(holds<int>(value, {9, 2, 3}, {3}) && holds<int>(copy, {1, 2, 3}, {3}));
    const void* const own = storageIn(value);
    value.assignSlice(first, 8.0);
    EXPECT_EQ(storageIn(value), own);
    EXPECT_THROW_MSG(value.assignSlice(first, 8.5), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(value.assignSlice(all, 8), std::length_error, "Cannot assign to diffent dimensions");
    EXPECT_TRUE(holds<int>(value, {8, 2, 3}, {3}));

    const std::vector<IndexSet> backwards{
        IndexSet(IndexValue(2, false), IndexValue(1, false), IndexValue(0, false))};
    value.assignSlice(backwards, value);
    EXPECT_TRUE(holds<int>(value, {8, 2, 3}, {3}));
    Variant texts{std::string("a"), std::string("b")};
    texts.assignSlice(all, texts);
    texts.append(texts);
    EXPECT_TRUE(holds<std::string>(texts, {"a", "b", "a", "b"}, {4}));
    Variant null;
    null.assignSlice(all, Variant(1));
    EXPECT_TRUE(null.wellKnownType().isUnknown());
}

TEST(Variant, append_clones_shares_and_refuses) {
    Variant value{1, 2};
    const Variant copy = value;
    value.append(Variant{3, 4});
    value.append(value);
    EXPECT_TRUE(holds<int>(value, {1, 2, 3, 4, 1, 2, 3, 4}, {8}) && holds<int>(copy, {1, 2}, {2}));
    EXPECT_THROW_MSG(value.append(1.0), std::invalid_argument, "Incompatible data for append");
    EXPECT_THROW_MSG(value.append(Variant()), std::invalid_argument, "Incompatible data for append");
    EXPECT_THROW_MSG(value.append(movedFrom()), std::invalid_argument, "Incompatible data for append");
    EXPECT_TRUE(hasShape(value, {8}));

    Variant empties[] = {Variant(), Variant(std::vector<double>()), Variant(std::vector<ZString>()),
                         movedFrom()};
    for (Variant& empty : empties) {
        empty.append(copy);
        EXPECT_EQ(storageIn(empty), storageIn(copy));
        EXPECT_EQ(empty.wellKnownType(), WellKnownType::Int32());
    }
    // The comparison stays that of the empty value; what is made of the value compares as it should.
    EXPECT_FALSE(empties[0].isEquivalentTo(empties[0]));
    EXPECT_FALSE(empties[2].isEquivalentTo(empties[2]));
    EXPECT_TRUE(copy.isEquivalentTo(empties[0]));
    EXPECT_TRUE(holds<int>(empties[0].slice({IndexRange::all}), {1, 2}, {2}));
}

TEST(Variant, moved_from_values_do_no_harm) {
    const std::vector<IndexSet> all{IndexRange::all};
    Variant value = movedFrom();
    EXPECT_TRUE(hasShape(value, {}));
    EXPECT_EQ(value.dataOrdering(), RowMajor);
    EXPECT_TRUE(value.wellKnownType().isUnknown());
    EXPECT_THROW_MSG(value.value<double>(), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(value.convertedTo(WellKnownType::Double()), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(value.convertedTo(WellKnownType()), std::invalid_argument,
                     "Cannot convert to non-well-known type");
    value.assignSlice(all, Variant(1));
    Variant target{1, 2};
    EXPECT_THROW_MSG(target.assignSlice(all, value), std::length_error,
                     "Cannot assign to diffent dimensions");
    MutableVariant mutableValue(std::move(value));
    EXPECT_TRUE(mutableValue.dimensions().isIdenticalTo({}));
    EXPECT_EQ(mutableValue.dataOrdering(), RowMajor);
    EXPECT_TRUE(mutableValue.wellKnownType().isUnknown());
    mutableValue.assignSlice(all, Variant(1));
    EXPECT_THROW_MSG(mutableValue.element<double>({0}), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(mutableValue.setElementByVariant({0}, Variant(1)), std::invalid_argument,
                     "setElementByVariant: argument must be well-known type");
    EXPECT_THROW_MSG(mutableValue.setElementByVariant({0}, value), std::invalid_argument,
                     "setElementByVariant: argument must be scalar");
    target = Variant(std::move(mutableValue));
    EXPECT_TRUE(hasShape(target, {}));
    target = 2.5;
    EXPECT_EQ(target.value<double>(), 2.5);
}
