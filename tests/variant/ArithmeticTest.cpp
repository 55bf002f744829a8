#include <support/ExpectThrow.h>
#include <variant/NumberModel.h>

#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/VariantElementIterator.h>

#include <stdexcept>

namespace Zelm::Testing {
namespace {

template <class T, class = void>
constexpr bool canMap = false;
template <class T>
constexpr bool canMap<T, std::void_t<decltype(mapElements<T>(Variant(), nullptr))>> = true;
static_assert(canMap<double> && canMap<signed char> && canMap<std::complex<float>>);
static_assert(!canMap<bool> && !canMap<Complex<int>> && !canMap<ZString> && !canMap<long double>);

constexpr DataOrdering kOrderings[] = {RowMajor, ColumnMajor};
constexpr std::size_t kRows = 17, kColumns = 18;
const std::string kUnsupported = "Binary operations not yet supported for type: ";

/// Small numbers, or truth values, by the place of an element when the last index runs fastest.
Real numberAt(std::size_t place, std::size_t first, const NumberType& type) {
    return static_cast<Real>((first + place) % (type.kind == 'b' ? 2 : 11));
}

Variant matrix(const NumberType& type, std::size_t first, DataOrdering ordering) {
    NumberList numbers;
    for (std::size_t i = 0; i < kRows * kColumns; ++i) {
        const std::size_t place = ordering == RowMajor ? i : i % kRows * kColumns + i / kRows;
        numbers.push_back({numberAt(place, first, type), 0});
    }
    return valueOf(type.tag, numbers, {kRows, kColumns}, ordering);
}

WellKnownType resultTypeOf(WellKnownType a, WellKnownType b) {
    const WellKnownType common = WellKnownType::GetCommonWellKnownType(a, b);
    return common.isComplex() && common != WellKnownType::ComplexFloat() ? WellKnownType::ComplexDouble()
                                                                         : common;
}

/// Expects `a + b` and `a * b` by index, in the form of `form`, whoever else holds the operands.
template <class NumberA, class NumberB>
void check(const Variant& a, const Variant& b, const Variant& form, NumberA&& numberA, NumberB&& numberB) {
    const WellKnownType type = resultTypeOf(a.wellKnownType(), b.wellKnownType());
    std::vector<double> sums, products;
    for (std::size_t i = 0; i < kRows * kColumns; ++i) {
        sums.push_back(static_cast<double>(numberA(i) + numberB(i)));
        products.push_back(static_cast<double>(numberA(i) * numberB(i)));
    }
    const Variant sum(sums, {kRows, kColumns}), product(products, {kRows, kColumns}), copyA = a, copyB = b;
    for (const bool giveA : {false, true}) {
        for (const bool giveB : {false, true}) {
            const auto operand = [](const Variant& value, bool give) {
                return give ? Variant(MutableVariant(Variant(value))) : value;
            };
            const Variant added = operand(a, giveA) + operand(b, giveB);
            const Variant multiplied = operand(a, giveA) * operand(b, giveB);
            EXPECT_TRUE(added.isEquivalentTo(sum) && multiplied.isEquivalentTo(product));
            EXPECT_TRUE(added.wellKnownType() == type && multiplied.wellKnownType() == type);
            EXPECT_EQ(added.dataOrdering(), form.dataOrdering());
            EXPECT_TRUE(added.dimensions().isIdenticalTo(form.dimensions()));
        }
    }
    EXPECT_TRUE(copyA.isIdenticalTo(a) && copyB.isIdenticalTo(b));
}

TEST(VariantArithmetic, CombinesAllPairsOfTypesByIndex) {
    for (const NumberType& typeA : kNumberTypes) {
        for (const NumberType& typeB : kNumberTypes) {
            SCOPED_TRACE(std::string(typeA.tag.ToString()) + " and " + typeB.tag.ToString());
            if (resultTypeOf(typeA.tag, typeB.tag) == WellKnownType::Bool()) {
                continue;
            }
            const Variant scalar = valueOf(typeA.tag, {{1, 0}}, {1, 1});
            const auto one = [](std::size_t) { return Real(1); };
            const auto numberA = [&](std::size_t i) { return numberAt(i, 3, typeA); };
            const auto numberB = [&](std::size_t i) { return numberAt(i, 5, typeB); };
            for (const DataOrdering ordering : kOrderings) {
                const Variant b = matrix(typeB, 5, ordering);
                check(matrix(typeA, 3, RowMajor), b, matrix(typeA, 3, RowMajor), numberA, numberB);
                check(scalar, b, b, one, numberB);
                check(b, scalar, b, numberB, one);
            }
            ASSERT_FALSE(HasFailure());
        }
    }
    EXPECT_TRUE((Variant(std::complex<float>(1, 2)) * Variant(Complex<int>(3, -1)))
                    .isIdenticalTo(Variant(std::complex<float>(5, 5))));
    EXPECT_TRUE((Variant(1) + Variant({0.5}, {1, 1})).isIdenticalTo(Variant({1.5}, {1, 1})));
    EXPECT_TRUE((Variant{1, 2} + Variant({1, 2}, {2, 1})).isIdenticalTo(Variant{2, 4}));
}

TEST(VariantArithmetic, WrapsIntegersAround) {
    __extension__ typedef unsigned __int128 Wide;
    for (const NumberType& type : kNumberTypes) {
        visitNumberType(type.tag, [](auto tag) {
            using T = typename decltype(tag)::type;
            if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
                constexpr T low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
                for (const T a : {low, high, T(high / 2), T(100), T(-1)}) {
                    for (const T b : {low, high, T(3), T(100), T(-1)}) {
                        const T sum = static_cast<T>(Wide(a) + Wide(b)),
                                product = static_cast<T>(Wide(a) * Wide(b));
                        EXPECT_TRUE((Variant(a) + Variant(b)).isIdenticalTo(sum));
                        EXPECT_TRUE((Variant(a) * Variant{b, b}).isIdenticalTo(Variant{product, product}));
                    }
                }
            }
        });
    }
}

TEST(VariantArithmetic, FailsInOrder) {
    const Variant null, one(1.0), flag(true), three{1.0, 2.0, 3.0},
        bigs(std::vector<std::uint64_t>(3, ~0ull));
    const Variant text(std::string("a")), texts{std::string("a"), std::string("b")};
    const char* const mismatched = "Binary operation dimensions mismatched";
    const struct {
        Variant a, b;
        std::string text;
    } refusals[] = {
        {flag, flag, kUnsupported + "bool"},
        {null, flag, kUnsupported + "bool"},
        {texts, text, kUnsupported + "string"},
        {"a", "b", kUnsupported + "zstring"},
        {null, std::vector<Variant>{1}, kUnsupported + "cell"},
        {three, texts, kUnsupported + "unknown"},
        {Variant({1, 2, 3, 4, 5, 6}, {2, 3}), Variant{1, 2, 3, 4, 5, 6}, mismatched},
        {three, Variant({1.0, 2.0, 3.0}, {1, 3}), mismatched},
        {three, null, mismatched},
        {bigs, Variant{1ll, 2ll}, mismatched},
    };
    for (const auto& refusal : refusals) {
        EXPECT_THROW_MSG(refusal.a + refusal.b, std::invalid_argument, refusal.text);
        EXPECT_THROW_MSG(refusal.b * refusal.a, std::invalid_argument, refusal.text);
    }
    EXPECT_THROW_MSG(bigs + Variant(1ll), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(Variant(std::nanf("")) * three, std::runtime_error, "Conversion check failed");
    Variant moved(1.0);
    const Variant taken(std::move(moved));
    EXPECT_THROW_MSG(moved + one, std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(one * moved, std::invalid_argument, "Wrong data type");

    const Variant none(std::vector<int>(), {0, 3}, ColumnMajor);
    EXPECT_TRUE((null + null).wellKnownType().isUnknown());
    for (const Variant& empty : {null + one, one * null, none * one, one + none, none + null, none * none}) {
        EXPECT_TRUE(empty.dimensions().isIdenticalTo({0}) && !empty.wellKnownType().isUnknown());
    }
}

TEST(VariantArithmetic, RefusesShapesThatClaimTooMuchAndCutsTails) {
    Variant wide({1, 2, 3, 4, 5}, {1, 5}), longer({1, 2, 3, 4}, {2, 2});
    wide.append(Variant{6, 7, 8});
    longer.append(Variant{5, 6, 7});
    const auto negative = [](const int& n) { return -n; };
    const std::vector<int> forty(40, 1);
    for (const Variant& other : {Variant(1), Variant(forty, {8, 5}), Variant(forty, {8, 5}, ColumnMajor)}) {
        EXPECT_THROW_MSG(wide + other, std::out_of_range, "Offset out of bounds");
        EXPECT_THROW_MSG(other * wide, std::out_of_range, "Offset out of bounds");
    }
    EXPECT_THROW_MSG(mapElements<int>(wide, negative), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(wide + Variant(0.5), std::length_error, "Dimensions don't match size");
    for (const Variant& result : {longer + Variant(1), longer * longer, mapElements<int>(longer, negative),
                                  Variant(MutableVariant(Variant(longer))) + Variant(1),
                                  longer + Variant({0, 0, 0, 0}, {2, 2}, ColumnMajor)}) {
        EXPECT_EQ(numbersOf(*details::VariantAccess::storage(result)).size(), 4u);
    }
}

TEST(VariantArithmetic, ReusesOperandsThatNobodyElseHolds) {
    const Variant start({1.5, 2.0, -3.0, 4.0}, {2, 2});
    const auto place = [](const Variant& value) { return details::VariantAccess::storage(value)->data(); };
    Variant sole = start * Variant(2.0), grown;
    const void* const first = place(sole);
    sole = Variant(2.0) * (std::move(sole) + Variant(1.0));
    sole = start * (std::move(sole) + start);
    sole = mapElements<double>(std::move(sole), [](const double& x) { return x - 1; });
    EXPECT_EQ(place(sole), first);
    EXPECT_TRUE(sole.isIdenticalTo(Variant({13.25, 23.0, 38.0, 87.0}, {2, 2})));
    // A null value that received elements still compares as a null one; a result in its place does not.
    grown.append(Variant{1.0, 2.0});
    EXPECT_TRUE((std::move(grown) + Variant(1.0)).isIdenticalTo(Variant{2.0, 3.0}));
}

TEST(VariantArithmetic, MapsInFlatOrderAndLeavesTheOperandOfAFailure) {
    using Element = std::complex<float>;
    const Variant value({1, 2, 3, 4}, {2, 2}, ColumnMajor), copy = value;
    std::vector<Element> seen;
    const auto failing = [&](const Element& x) {
        seen.push_back(x);
        return seen.size() == 3 ? throw std::logic_error("no third") : -x;
    };
    EXPECT_THROW_MSG(mapElements<Element>(value, failing), std::logic_error, "no third");
    EXPECT_EQ(seen, (std::vector<Element>{1, 2, 3}));
    EXPECT_TRUE(mapElements<Element>(value, failing)
                    .isIdenticalTo(Variant(std::vector<Element>{-1, -2, -3, -4}, {2, 2}, ColumnMajor)));
    EXPECT_TRUE(value.isIdenticalTo(copy));
    EXPECT_THROW(mapElements<double>(value, nullptr), std::bad_function_call);
}

TEST(VariantElementIterator, WalksBothOrderings) {
    const int data[24] = {};
    const ArrayDimensions shape{2, 3, 4}, mirrored{4, 3, 2}, vector{1, 24};
    const VariantElementIterator<const int> plain{data, ColumnMajor, vector, 5};
    EXPECT_EQ(plain.rowMajorElement(), data + 5);
    for (const DataOrdering ordering : kOrderings) {
        VariantElementIterator<const int> rows{data, ordering, shape};
        VariantElementIterator<const int> columns{data, ordering == RowMajor ? ColumnMajor : RowMajor,
                                                  mirrored};
        for (std::ptrdiff_t i = 0; i < 2; ++i) {
            for (std::ptrdiff_t j = 0; j < 3; ++j) {
                for (std::ptrdiff_t k = 0; k < 4; ++k, ++rows, ++columns) {
                    const std::ptrdiff_t offset =
                        ordering == RowMajor ? (i * 3 + j) * 4 + k : i + 2 * (j + 3 * k);
                    EXPECT_EQ(rows.rowMajorElement(), data + offset);
                    EXPECT_EQ(columns.columnMajorElement(), data + offset);
                }
            }
        }
    }
}

} // namespace
} // namespace Zelm::Testing
