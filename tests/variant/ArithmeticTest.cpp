#include <variant/Samples.h>

#include <zelm/variant/VariantAccess.h>
#include <zelm/variant/VariantElementIterator.h>

#include <random>

namespace Zelm::Testing {
namespace {

template <class T, class = void>
constexpr bool canMap = false;
template <class T>
constexpr bool canMap<T, std::void_t<decltype(mapElements<T>(Variant(), nullptr))>> = true;
static_assert(canMap<double> && canMap<signed char> && canMap<std::complex<float>>);
static_assert(!canMap<bool> && !canMap<Complex<int>> && !canMap<ZString> && !canMap<long double>);

const std::string kUnsupported = "Binary operations not yet supported for type: ";

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
    const auto pick = [&] { return random() % 2 ? 1.0 : 0.0; };
    std::vector<double> bitsA, bitsB, sums, products, more;
    for (int i = 0; i < 17 * 18; ++i) {
        bitsA.push_back(pick());
        bitsB.push_back(pick());
        sums.push_back(bitsA.back() + bitsB.back());
        products.push_back(bitsA.back() * bitsB.back());
        more.push_back(bitsB.back() + 1);
    }
    const auto matrix = [](std::vector<double> numbers) { return Variant(std::move(numbers), {17, 18}); };
    const Variant x = matrix(bitsA), y = matrix(bitsB), sum = matrix(sums), product = matrix(products);
    std::vector<WellKnownType> types;
    forEachElementType([&](auto tag) {
        const WellKnownType type = details::wellKnownTypeOf<typename decltype(tag)::type>;
        types.insert(types.end(), type.isNumeric() ? 1 : 0, type);
    });
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
                const Variant added = A() + B(), multiplied = A() * B(), shifted = one + B(),
                              scaled = B() * one;
                EXPECT_TRUE(added.isEquivalentTo(sum) && multiplied.isEquivalentTo(product));
                EXPECT_TRUE(shifted.isEquivalentTo(matrix(more)) && scaled.isEquivalentTo(y));
                EXPECT_TRUE(added.wellKnownType() == type && scaled.wellKnownType() == type);
                EXPECT_TRUE(added.dataOrdering() == orderingA && scaled.dataOrdering() == orderingB);
                EXPECT_TRUE(a.isEquivalentTo(x) && b.isEquivalentTo(y));
                ASSERT_FALSE(HasFailure());
            }
        }
    }
    EXPECT_TRUE((Variant(std::complex<float>(1, 2)) * Variant(Complex<int>(3, -1)))
                    .isIdenticalTo(Variant(std::complex<float>(5, 5))));
    EXPECT_TRUE((Variant(1) + Variant({0.5}, {1, 1})).isIdenticalTo(Variant({1.5}, {1, 1})));
    EXPECT_TRUE((Variant{1, 2} + Variant({1, 2}, {2, 1})).isIdenticalTo(Variant{2, 4}));
}

TEST(VariantArithmetic, WrapsIntegersAround) {
    __extension__ typedef unsigned __int128 Wide;
    forEachElementType([](auto tag) {
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

TEST(VariantArithmetic, FailsInOrder) {
    const Variant null, one(1.0), three{1.0, 2.0, 3.0}, bigs(std::vector<std::uint64_t>(3, ~0ull));
    const Variant text(std::string("a")), texts{std::string("a"), std::string("b")};
    const char* const mismatched = "Binary operation dimensions mismatched";
    const struct {
        Variant a, b;
        std::string text;
    } refusals[] = {
        {true, true, kUnsupported + "bool"},
        {texts, text, kUnsupported + "string"},
        {"a", "b", kUnsupported + "zstring"},
        {null, std::vector<Variant>{1}, kUnsupported + "cell"},
        {three, texts, kUnsupported + "unknown"},
        {Variant({1, 2, 3, 4, 5, 6}, {2, 3}), Variant{1, 2, 3, 4, 5, 6}, mismatched},
        {three, null, mismatched},
        {bigs, Variant{1ll, 2ll}, mismatched},
    };
    for (const auto& refusal : refusals) {
        EXPECT_THROW_MSG(refusal.a + refusal.b, std::invalid_argument, refusal.text);
        EXPECT_THROW_MSG(refusal.b * refusal.a, std::invalid_argument, refusal.text);
    }
    EXPECT_THROW_MSG(bigs + Variant(1ll), std::runtime_error, "Conversion check failed");
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
        EXPECT_OUT_OF_BOUNDS(wide + other);
        EXPECT_OUT_OF_BOUNDS(other * wide);
    }
    EXPECT_OUT_OF_BOUNDS(mapElements<int>(wide, negative));
    for (const Variant& result :
         {longer + Variant(1), longer * longer, ownCopy(longer, RowMajor) + Variant(1),
          longer + Variant({0, 0, 0, 0}, {2, 2}, ColumnMajor)}) {
        EXPECT_EQ(details::VariantAccess::typed<int>(result)->elements().size(), 4u);
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
    const Variant value({1.0, 2.0, 3.0, 4.0}, {2, 2}, ColumnMajor), copy({1, 2, 3, 4}, {2, 2}, ColumnMajor);
    std::vector<double> seen;
    const auto failing = [&](const double& x) {
        seen.push_back(x);
        return seen.size() == 3 ? throw std::logic_error("no third") : -x;
    };
    EXPECT_THROW_MSG(mapElements<double>(value, failing), std::logic_error, "no third");
    EXPECT_EQ(seen, (std::vector<double>{1, 2, 3}));
    EXPECT_TRUE(mapElements<double>(copy, failing).isIdenticalTo(value * Variant(-1.0)));
    EXPECT_TRUE(value.isEquivalentTo(copy));
    EXPECT_THROW(mapElements<float>(value, nullptr), std::bad_function_call);
}

TEST(VariantElementIterator, WalksBothOrderings) {
    using Walk = VariantElementIterator<const char>;
    const auto walked = [](DataOrdering stored, ArrayDimensions shape, const char* (Walk::*element)() const) {
        std::string text;
        for (Walk walk{"012345", stored, std::move(shape)}; walk.position < 6; ++walk) {
            text += *(walk.*element)();
        }
        return text;
    };
    for (const ArrayDimensions& shape : {ArrayDimensions{2, 3}, {2, 1, 3}}) {
        EXPECT_EQ(walked(RowMajor, shape, &Walk::rowMajorElement), "012345");
        EXPECT_EQ(walked(ColumnMajor, shape, &Walk::rowMajorElement), "024135");
        EXPECT_EQ(walked(RowMajor, shape, &Walk::columnMajorElement), "031425");
        EXPECT_EQ(walked(ColumnMajor, shape, &Walk::columnMajorElement), "012345");
    }
    EXPECT_EQ(walked(ColumnMajor, {1, 6}, &Walk::rowMajorElement), "012345");
}

} // namespace
} // namespace Zelm::Testing
