#include <support/Allocations.h>
#include <variant/Samples.h>

#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/VariantAccess.h>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

const std::vector<IndexSet> kAll{IndexRange::all}, kFirst{IndexValue(0, false)};

const void* storageIn(const Variant& value) {
    return details::VariantAccess::storage(value).get();
}

template <class... Sources>
constexpr bool noneMakesAVariant = !(std::is_constructible_v<Variant, Sources> || ...);

} // namespace

static_assert(noneMakesAVariant<char, wchar_t, char16_t, std::nullptr_t, int*, void (*)(), long double,
                                DataOrdering, std::initializer_list<const char*>,
                                std::initializer_list<Variant>, std::vector<const char*>, std::vector<char>>);

TEST(Variant, element_type_of_each_constructor_argument) {
    char writable[] = "abc";
    const char* const pointer = writable;
    const std::string text = "abc";
    const auto expectScalars = [](auto expected, const auto&... values) {
        const Variant scalar(std::vector<decltype(expected)>{expected});
        EXPECT_TRUE((scalar.isIdenticalTo(values) && ...)) << typeid(expected).name();
    };
    expectScalars(1, 1, Variant{1}, Variant{Variant{1}}, Variant(MutableVariant(Variant(1))));
    expectScalars(1u, 1u);
    expectScalars(std::int64_t(1), 1l, 1ll, Variant{1ll});
    expectScalars(std::uint64_t(1), 1ul, 1ull);
    expectScalars(true, true, std::vector<bool>{true});
    expectScalars(ZString("abc"), "abc", writable, pointer, ZString("abc"), Variant{"abc"});
    expectScalars(text, text, Variant{text}, std::vector<std::string>{text});
    expectScalars(Variant("cell"), std::vector<Variant>{"cell"});
    EXPECT_TRUE(Variant({1, 2}, {2, 1}).isIdenticalTo(Variant(std::vector<int>{1, 2}, {2, 1})));
    EXPECT_TRUE(Variant(std::vector<long long>{}).isIdenticalTo(std::vector<std::int64_t>{}));
    const std::uint64_t half = 1ull << 32;
    for (const ArrayDimensions& shape :
         {ArrayDimensions{half, half}, {3, 0xAAAAAAAAAAAAAAABu}, {~0ull}, {2}}) {
        EXPECT_THROW_MSG(Variant({1}, shape), std::length_error, "Dimensions don't match size");
    }
    EXPECT_TRUE(Variant().wellKnownType().isUnknown() && Variant().dimensions().isIdenticalTo({}));
}

TEST(Variant, scalars_copies_and_appends_cost_few_allocations) {
    Variant scalar, copy, array{1, 2, 3}, growing(0.0);
    EXPECT_LE(allocationsOf([&] { scalar = 1.5; }), 3);
    EXPECT_EQ(allocationsOf([&] {
                  copy = scalar;
                  scalar.value<float>();
                  copy = scalar.convertedTo(WellKnownType::Double());
                  array = MutableVariant(std::move(array));
              }),
              0);
    EXPECT_LE(allocationsOf([&] {
                  for (int i = 0; i < 10000; ++i) {
                      growing.append(1.0);
                  }
              }),
              30032);
}

TEST(Variant, exhausted_memory_changes_nothing) {
    const Variant texts(samples<std::string>(3)), more(samples<std::string>(3, 3));
    for (unsigned bits = 0; bits < 4; ++bits) {
        int failures = 0;
        for (bool failed = true; failed; failures += failed) {
            Variant value = bits & 1 ? texts : Variant(samples<std::string>(3));
            failAllocationAfter(failures);
            try {
                bits & 2 ? value.append(more) : value.assignSlice(kAll, more);
                failed = false;
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(value.isIdenticalTo(texts)) << "after " << failures << " allocations";
            }
            failAllocationAfter(-1);
        }
        EXPECT_GT(failures, 0);
    }
}

TEST(Variant, value_and_convertedTo) {
    EXPECT_EQ((Variant{3.0, 4.0}.value<int>()), 3);
    // All elements are converted, so that any of them can fail.
    EXPECT_THROW_MSG((Variant{1.0, 1.5}.value<int>()), std::runtime_error, "Conversion check failed");
    const Variant source({1, 2, 3, 4}, {2, 2}, ColumnMajor);
    for (const Variant& none : {Variant(), Variant(std::vector<int>())}) {
        EXPECT_OUT_OF_BOUNDS(none.value<int>());
        EXPECT_OUT_OF_BOUNDS(none.value<double>());
    }
    EXPECT_TRUE(source.convertedTo(WellKnownType::Double())
                    .isIdenticalTo(Variant({1.0, 2.0, 3.0, 4.0}, {2, 2}, ColumnMajor)));
    EXPECT_THROW_MSG(source.convertedTo(WellKnownType()), std::invalid_argument,
                     "Cannot convert to non-well-known type");
}

TEST(Variant, writing_never_shows_in_a_copy) {
    Variant value{1, 2};
    const Variant copy = value;
    value.assignSlice(kFirst, 9);
    const void* const own = storageIn(value);
    value.assignSlice(kFirst, 8.0);
    EXPECT_EQ(storageIn(value), own);
    value.assignSlice(kAll, value);
    EXPECT_THROW_MSG(value.assignSlice(kFirst, 8.5), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(value.assignSlice(kAll, 8), std::length_error, "Cannot assign to diffent dimensions");
    Variant grown = value;
    grown.append(Variant{3, 4});
    grown.append(grown);
    for (const Variant& wrong : {Variant(1.0), Variant(), movedFrom()}) {
        EXPECT_THROW_MSG(grown.append(wrong), std::invalid_argument, "Incompatible data for append");
    }
    MutableVariant changed{Variant(value)};
    changed.setElement<int>({1}, 7);
    EXPECT_TRUE(Variant(std::move(changed)).isIdenticalTo(Variant{8, 7}));
    EXPECT_TRUE(grown.isIdenticalTo(Variant{8, 2, 3, 4, 8, 2, 3, 4}));
    EXPECT_TRUE(value.isIdenticalTo(Variant{8, 2}) && copy.isIdenticalTo(Variant{1, 2}));
    Variant empties[] = {Variant(), std::vector<ZString>(), movedFrom()};
    for (Variant& empty : empties) {
        empty.append(copy);
        EXPECT_EQ(storageIn(empty), storageIn(copy));
        // The comparison stays that of the empty value; what is made of the value compares as it should.
        EXPECT_TRUE(empty.slice(kAll).isIdenticalTo(copy));
    }
}

TEST(Variant, slices_and_values_moved_from) {
    const Variant matrix({1, 2, 3, 4, 5, 6}, {2, 3}, ColumnMajor);
    const Variant row = matrix.slice({IndexValue::end(0), IndexRange::all});
    EXPECT_TRUE(row.isIdenticalTo(Variant({2, 4, 6}, {1, 3}, ColumnMajor)));
    Variant moved = movedFrom(), null;
    for (const Variant& value : {matrix, null, moved}) {
        EXPECT_THROW_MSG(value.slice(kAll), std::invalid_argument, "Array slice invalid");
        EXPECT_THROW(moved.isEquivalentTo(value), std::bad_function_call);
        EXPECT_THROW(value.isIdenticalTo(moved), std::bad_function_call);
    }
    EXPECT_FALSE(cell({moved}).isEquivalentTo(cell({moved})));
    EXPECT_THROW_MSG(moved.value<double>(), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(moved.convertedTo(WellKnownType::Double()), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(row * moved, std::invalid_argument, "Wrong data type");
    moved.assignSlice(kAll, matrix);
    null.assignSlice(kAll, matrix);
    MutableVariant emptied(std::move(moved));
    EXPECT_THROW_MSG(emptied.element<double>({0}), std::invalid_argument, "Wrong data type");
    EXPECT_TRUE(emptied.wellKnownType().isUnknown() && emptied.dimensions().isIdenticalTo({}));
    EXPECT_TRUE(null.isIdenticalTo(Variant()));
}

TEST(MutableVariant, elements_and_their_failures) {
    MutableVariant value(Variant({1, 2, 3, 4}, {2, 2})), null, cells(cell({Variant()}));
    EXPECT_THROW_MSG(value.element<double>({0, 0}), std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(value.element<int>({0}), std::invalid_argument, "Too few indices");
    EXPECT_THROW_MSG(value.setElement<int>({0, 2}, 1), std::out_of_range, "Indices out of bounds");
    EXPECT_THROW_MSG(null.element<float>({}), std::invalid_argument, "Cannot access element of null variant");
    value.assignSlice({IndexValue(1, false), IndexRange::all}, Variant({5, 6}, {1, 2}));
    value.setElementByVariant({0, 1}, 7.0);
    EXPECT_THROW_MSG(value.setElementByVariant({0, 0}, Variant{1, 2}), std::invalid_argument,
                     "setElementByVariant: argument must be scalar");
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
    EXPECT_EQ(original.keys(), (std::vector<ZString>{"", "B", "a", "ab", "b", "\xC3\xA9"}));
    EXPECT_TRUE(original.get("missing").isIdenticalTo(Variant()));
    Struct copy(original);
    assigned = original;
    copy.set("a", 5);
    EXPECT_TRUE(assigned.isEqual(original, Identical) && !copy.isEqual(original, Identical));
    assigned = static_cast<const Struct&>(assigned);
    EXPECT_EQ(assigned.get("a").value<std::string>(), "a");
}
