#include <variant/Samples.h>

#include <zelm/variant/VariantAccess.h>
#include <zelm/variant/VariantElementIterator.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>

namespace Zelm::Testing {
namespace {

WellKnownType resultTypeOf(WellKnownType a, WellKnownType b) {
    const WellKnownType common = WellKnownType::GetCommonWellKnownType(a, b);
    const bool isWide = common.isComplex() && common != WellKnownType::ComplexFloat();
    return isWide ? WellKnownType::ComplexDouble() : common;
}

/// The value with a storage of its own in the given ordering.
Variant ownCopy(Variant value, DataOrdering ordering) {
    MutableVariant own(std::move(value));
    details::VariantAccess::storage(own)->convertDataOrdering(ordering);
    return own;
}

TEST(VariantArithmetic, CombinesAllPairsOfTypesByIndex) {
    std::mt19937 random(45);
    std::vector<double> first, second;
    for (int i = 0; i < 17 * 18; ++i) {
        first.push_back(random() % 2 ? 1.0 : 0.0);
        second.push_back(random() % 2 ? 1.0 : 0.0);
    }
    const Variant x(first, {17, 18}), y(second, {17, 18});
    const Variant sum = x + y, product = x * y, more = y + Variant(1.0);
    std::vector<WellKnownType> types;
    forEachNumberType(
        [&](auto tag) { types.push_back(details::wellKnownTypeOf<typename decltype(tag)::type>); });
    for (const WellKnownType typeA : types) {
        for (const WellKnownType typeB : types) {
            const WellKnownType type = resultTypeOf(typeA, typeB);
            for (unsigned bits = 0; type != WellKnownType::Bool() && bits < 16; ++bits) {
                SCOPED_TRACE(std::string(typeA.ToString()) + " and " + typeB.ToString());
                const DataOrdering orderingA = DataOrdering(bits & 1),
                                   orderingB = DataOrdering(bits >> 1 & 1);
                const Variant a = ownCopy(x.convertedTo(typeA), orderingA);
                const Variant b = ownCopy(y.convertedTo(typeB), orderingB);
                const Variant one = Variant(1).convertedTo(typeA);
                // Operands that somebody else holds and operands that are given away.
                const auto A = [&] { return bits & 4 ? ownCopy(a, orderingA) : a; };
                const auto B = [&] { return bits & 8 ? ownCopy(b, orderingB) : b; };
                const auto expect = [&](const Variant& result, const Variant& reals, DataOrdering ordering) {
                    EXPECT_TRUE(result.isEquivalentTo(reals));
                    EXPECT_TRUE(result.wellKnownType() == type && result.dataOrdering() == ordering);
                };
                expect(A() + B(), sum, orderingA);
                expect(A() * B(), product, orderingA);
                expect(one + B(), more, orderingB);
                expect(B() * one, y, orderingB);
                EXPECT_TRUE(a.isEquivalentTo(x) && b.isEquivalentTo(y));
                ASSERT_FALSE(HasFailure());
            }
        }
    }
    EXPECT_TRUE((Variant(std::complex<float>(1, 2)) * Variant(Complex<int>(3, -1)))
                    .isIdenticalTo(Variant(std::complex<float>(5, 5))));
    EXPECT_TRUE((Variant(1) + Variant({0.5}, {1, 1})).isIdenticalTo(Variant({1.5}, {1, 1})));
}

/// Numbers of any bits: products of floating ones overflow and underflow, some are NaN.
template <class T>
std::vector<T> randomNumbers(std::mt19937_64& random, std::size_t count) {
    std::vector<T> numbers(count);
    std::vector<std::uint64_t> bits(count * sizeof(T) / 8 + 1);
    std::generate(bits.begin(), bits.end(), std::ref(random));
    std::memcpy(static_cast<void*>(numbers.data()), bits.data(), count * sizeof(T));
    return numbers;
}

/// `a * b + c` as loops have it; integers wrap around.
template <class T>
T multipliedAndAdded(T a, T b, T c) {
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(std::uint64_t(a) * std::uint64_t(b) + std::uint64_t(c));
    } else {
        const T product = a * b;
        return product + c;
    }
}

/// To the last bit, but that NaNs are all the same.
template <class T>
bool isSame(const T& a, const T& b) {
    if constexpr (details::isComplexElement<T>) {
        return isSame(a.real(), b.real()) && isSame(a.imag(), b.imag());
    } else {
        return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
    }
}

template <class T>
void expectAgreementWithLoops() {
    constexpr std::size_t kCount = 420001; // doubles and wider numbers are given large pages
    std::mt19937_64 random(46);
    const std::vector<T> a = randomNumbers<T>(random, kCount), b = randomNumbers<T>(random, kCount),
                         c = randomNumbers<T>(random, kCount);
    const Variant x(a), y(b), arrays = x * y + Variant(c), scalar = Variant(b[1]) * x + Variant(c);
    const T* const withArray = details::VariantAccess::typed<T>(arrays)->elements().data();
    const T* const withScalar = details::VariantAccess::typed<T>(scalar)->elements().data();
    for (std::size_t i = 0; i < kCount; ++i) {
        ASSERT_TRUE(isSame(withArray[i], multipliedAndAdded(a[i], b[i], c[i]))) << typeid(T).name() << i;
        ASSERT_TRUE(isSame(withScalar[i], multipliedAndAdded(b[1], a[i], c[i]))) << typeid(T).name() << i;
    }
}

TEST(VariantArithmetic, AgreesWithLoopsToTheLastBit) {
    forEachNumberType([](auto tag) {
        using T = typename decltype(tag)::type;
        if constexpr (details::isArithmeticElement<T>) {
            expectAgreementWithLoops<T>();
        }
    });
}

TEST(VariantArithmetic, FailsInOrder) {
    const Variant null, one(1.0), three{1.0, 2.0, 3.0}, bigs(std::vector<std::uint64_t>(3, ~0ull));
    const Variant text(std::string("a")), texts{std::string("a"), std::string("b")};
    const std::string unsupported = "Binary operations not yet supported for type: ";
    const char* const mismatched = "Binary operation dimensions mismatched";
    const struct {
        Variant a, b;
        std::string text;
    } refusals[] = {
        {true, true, unsupported + "bool"},
        {texts, text, unsupported + "string"},
        {three, texts, unsupported + "unknown"},
        {Variant({1, 2, 3, 4, 5, 6}, {2, 3}), Variant{1, 2, 3, 4, 5, 6}, mismatched},
        {three, null, mismatched},
    };
    for (const auto& refusal : refusals) {
        EXPECT_THROW_MSG(refusal.a + refusal.b, std::invalid_argument, refusal.text);
        EXPECT_THROW_MSG(refusal.b * refusal.a, std::invalid_argument, refusal.text);
    }
    EXPECT_THROW_MSG(bigs + Variant(1ll), std::runtime_error, "Conversion check failed");
    const Variant none(std::vector<int>(), {0, 3}, ColumnMajor);
    EXPECT_TRUE((null + null).wellKnownType().isUnknown());
    for (const Variant& empty : {null + one, none * one, one + none, none + null, none * none}) {
        EXPECT_TRUE(empty.dimensions().isIdenticalTo({0}) && !empty.wellKnownType().isUnknown());
    }
}

TEST(VariantArithmetic, ReusesOperandsThatNobodyElseHolds) {
    const Variant start({1.5, 2.0, -3.0, 4.0}, {2, 2});
    const auto place = [](const Variant& value) { return details::VariantAccess::storage(value)->data(); };
    Variant sole = start * Variant(2.0);
    const void* const first = place(sole);
    sole = start * (Variant(2.0) * (std::move(sole) + Variant(1.0)) + start);
    sole = mapElements<double>(std::move(sole), [](const double& x) { return x - 1; });
    EXPECT_EQ(place(sole), first);
    EXPECT_TRUE(sole.isIdenticalTo(Variant({13.25, 23.0, 38.0, 87.0}, {2, 2})));
}

TEST(VariantArithmetic, MapsInFlatOrderAndLeavesTheOperandOfAFailure) {
    const Variant value({1.0, 2.0, 3.0, 4.0}, {2, 2}, ColumnMajor);
    const Variant negative = value * Variant(-1.0);
    std::vector<double> seen;
    const auto failing = [&](const double& x) {
        seen.push_back(x);
        return seen.size() == 3 ? throw std::logic_error("no third") : -x;
    };
    EXPECT_THROW_MSG(mapElements<double>(value, failing), std::logic_error, "no third");
    EXPECT_EQ(seen, (std::vector<double>{1, 2, 3}));
    EXPECT_TRUE(mapElements<double>(value, failing).isIdenticalTo(negative));
    EXPECT_THROW(mapElements<float>(value, nullptr), std::bad_function_call);
}

TEST(VariantElementIterator, WalksBothOrderings) {
    const std::string byRows = "012345", byColumns = "031425";
    VariantElementIterator<const char> rows{byRows.data(), RowMajor, {2, 1, 3}};
    VariantElementIterator<const char> columns{byColumns.data(), ColumnMajor, {2, 1, 3}};
    for (; rows.position < 6; ++rows, ++columns) {
        EXPECT_EQ(*rows.rowMajorElement(), byRows[rows.position]);
        EXPECT_EQ(*columns.rowMajorElement(), byRows[rows.position]);
        EXPECT_EQ(*rows.columnMajorElement(), byColumns[rows.position]);
        EXPECT_EQ(*columns.columnMajorElement(), byColumns[rows.position]);
    }
}

} // namespace
} // namespace Zelm::Testing
