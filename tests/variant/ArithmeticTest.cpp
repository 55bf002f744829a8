#include <support/ExpectThrow.h>
#include <variant/NumberArrays.h>

#include <zelm/variant/Struct.h>
#include <zelm/variant/VariantElementIterator.h>

#include <complex>
#include <limits>
#include <stdexcept>

namespace Zelm::Testing {
namespace {

__extension__ typedef unsigned __int128 Wide;

const std::string kUnsupported = "Binary operations not yet supported for type: ";

/// An operation on parts of one kind, computed in 128 bits and cut for integers.
Real combinedReal(Real a, Real b, bool multiply, const NumberKind& kind) {
    if (kind.kind == 'f' && kind.bits == 64) {
        const double x = static_cast<double>(a), y = static_cast<double>(b);
        return multiply ? x * y : x + y;
    }
    if (kind.kind == 'f') {
        const float x = static_cast<float>(a), y = static_cast<float>(b);
        return multiply ? x * y : x + y;
    }
    const auto wide = [](Real n) { return n < 0 ? -static_cast<Wide>(-n) : static_cast<Wide>(n); };
    const Wide all = multiply ? wide(a) * wide(b) : wide(a) + wide(b);
    const auto low = static_cast<Real>(static_cast<std::uint64_t>(all & ((Wide(1) << kind.bits) - 1)));
    return kind.kind == 'i' && low >= std::ldexp(Real(1), kind.bits - 1)
               ? low - std::ldexp(Real(1), kind.bits)
               : low;
}

template <class Part>
Number combinedComplex(const Number& a, const Number& b, bool multiply) {
    const auto x = elementOf<std::complex<Part>>(a), y = elementOf<std::complex<Part>>(b);
    return numberOf<std::complex<Part>>(multiply ? x * y : x + y);
}

/// Complex numbers are calculated in the floating types only.
NumberType calculationTypeOf(const NumberType& common) {
    const bool isFloat = common.part.kind == 'f' && common.part.bits == 32;
    return common.isComplex && !isFloat ? NumberType{kNumberKinds.front(), true} : common;
}

Number combined(const Number& a, const Number& b, bool multiply, const NumberType& type) {
    if (type.isComplex) {
        return type.part.bits == 32 ? combinedComplex<float>(a, b, multiply)
                                    : combinedComplex<double>(a, b, multiply);
    }
    return {combinedReal(a.re, b.re, multiply, type.part), 0};
}

Variant combine(Variant a, Variant b, bool multiply) {
    return multiply ? std::move(a) * std::move(b) : std::move(a) + std::move(b);
}

struct Case {
    NumberArray a, b;
    NumberType type;
    bool multiply;
};

Case drawCase(std::mt19937& random, const NumberType& a, const NumberType& b) {
    const NumberType type = calculationTypeOf(commonTypeOf(a, b));
    const Numbers scalar(draw(random, 1, 2), 1);
    const Numbers extents = drawExtents(random);
    Numbers longer = extents;
    longer.insert(longer.end(), draw(random, 0, 2), 1);
    Case drawn{{a, extents, DataOrdering(draw(random, 0, 1)), {}},
               {b, longer, DataOrdering(draw(random, 0, 1)), {}},
               type,
               draw(random, 0, 1) == 1};
    for (NumberArray* operand : {&drawn.a, &drawn.b}) {
        if (draw(random, 0, 3) == 0) {
            operand->extents = scalar;
        }
        const bool tame = draw(random, 0, 3) != 0;
        operand->numbers = drawNumbers(random, countOf(operand->extents), operand->type, type, tame);
    }
    return drawn;
}

bool isScalar(const NumberArray& array) {
    return countOf(array.extents) == 1;
}

bool allSurvive(const NumberArray& array, const NumberType& type) {
    return std::all_of(array.numbers.begin(), array.numbers.end(),
                       [&](const Number& n) { return survives(n, array.type, type); });
}

NumberArray expectedOf(const Case& c) {
    const bool scalarA = isScalar(c.a), scalarB = isScalar(c.b);
    NumberArray result = scalarA ? c.b : c.a;
    for (std::size_t i = 0; i < result.numbers.size(); ++i) {
        result.numbers[i] =
            combined(c.a.numbers[scalarA ? 0 : i], c.b.numbers[scalarB ? 0 : i], c.multiply, c.type);
    }
    result.type = c.type;
    result.extents = result.numbers.empty() ? Numbers{0} : result.extents;
    return result;
}

void expectArray(const Variant& value, const NumberArray& expected) {
    EXPECT_EQ(value.wellKnownType(), expected.type.tag()) << value.wellKnownType().ToString();
    EXPECT_EQ(value.dimensions().asVector(), expected.extents);
    EXPECT_EQ(value.dataOrdering(), expected.ordering);
    EXPECT_TRUE(areSame(numbersByIndex(value), expected.numbers));
    EXPECT_EQ(value.isIdenticalTo(value),
              std::none_of(expected.numbers.begin(), expected.numbers.end(),
                           [](const Number& n) { return std::isnan(n.re) || std::isnan(n.im); }));
}

/// Returns whether there was a result.
bool check(const Case& c, bool giveA, bool giveB) {
    const Variant a = variantOf(c.a), b = variantOf(c.b);
    const auto run = [&] {
        return combine(giveA ? variantOf(c.a) : a, giveB ? variantOf(c.b) : b, c.multiply);
    };
    const bool succeeds = c.type.part.kind != 'b' && allSurvive(c.a, c.type) && allSurvive(c.b, c.type);
    if (c.type.part.kind == 'b') {
        EXPECT_THROW_MSG(run(), std::invalid_argument, kUnsupported + "bool");
    } else if (!succeeds) {
        EXPECT_THROW_MSG(run(), std::runtime_error, "Conversion check failed");
    } else {
        expectArray(run(), expectedOf(c));
    }
    EXPECT_TRUE(areSame(numbersByIndex(a), c.a.numbers));
    EXPECT_TRUE(areSame(numbersByIndex(b), c.b.numbers));
    return succeeds;
}

TEST(VariantArithmetic, AgreesWithTheFormulaForAllPairsOfNumberTypes) {
    std::mt19937 random(45);
    int results = 0, failures = 0;
    for (const NumberType& a : allNumberTypes()) {
        for (const NumberType& b : allNumberTypes()) {
            for (int round = 0; round < 6; ++round) {
                const Case drawn = drawCase(random, a, b);
                const bool giveA = draw(random, 0, 1) == 1, giveB = draw(random, 0, 1) == 1;
                SCOPED_TRACE(std::string(a.tag().ToString()) + (drawn.multiply ? " * " : " + ") +
                             b.tag().ToString());
                ++(check(drawn, giveA, giveB) ? results : failures);
                ASSERT_FALSE(HasFailure());
            }
        }
    }
    EXPECT_GT(results, 1500);
    EXPECT_GT(failures, 100);
}

TEST(VariantArithmetic, LongerArraysOfEveryTypeAreCombinedWhole) {
    std::mt19937 random(46);
    for (const NumberType& type : allNumberTypes()) {
        for (const Numbers& extents : {Numbers{139}, Numbers{19, 35}, Numbers{5, 7, 11}}) {
            for (const bool multiply : {false, true}) {
                const NumberType target = calculationTypeOf(type);
                const auto drawArray = [&](DataOrdering ordering) {
                    return NumberArray{type, extents, ordering,
                                       drawNumbers(random, countOf(extents), type, target, true)};
                };
                check({drawArray(RowMajor), drawArray(ColumnMajor), target, multiply}, multiply, !multiply);
                check({drawArray(ColumnMajor), drawArray(ColumnMajor), target, multiply}, false, false);
                ASSERT_FALSE(HasFailure()) << type.tag().ToString();
            }
        }
    }
}

TEST(VariantArithmetic, FailuresComeInTheirOrder) {
    const Variant null, one(1.0), flag(true), flags{{true, false, true}}, three{{1.0, 2.0, 3.0}};
    const Variant text(std::string("a")), texts(std::vector<std::string>{"a", "b"}), halves{{0.5f, 0.25f}};
    const Variant cell(std::vector<Variant>{one}), record{Struct()}, text16(std::u16string(u"a")), ztext("a");
    const Variant matrix({1, 2, 3, 4, 5, 6}, {2, 3}), big(std::numeric_limits<std::uint64_t>::max());
    const Variant flat{{1, 2, 3, 4, 5, 6}}, bigs(std::vector<std::uint64_t>(3, ~std::uint64_t(0)));
    const Variant row({1.0, 2.0, 3.0}, {1, 3});
    const struct {
        Variant a, b;
        std::string text;
    } refusals[] = {
        {flag, flag, kUnsupported + "bool"},
        {flags, flag, kUnsupported + "bool"},
        {null, flag, kUnsupported + "bool"},
        {text, text, kUnsupported + "string"},
        {texts, text, kUnsupported + "string"},
        {text16, text16, kUnsupported + "string16"},
        {ztext, ztext, kUnsupported + "zstring"},
        {cell, cell, kUnsupported + "cell"},
        {null, cell, kUnsupported + "cell"},
        {record, record, kUnsupported + "struct"},
        {text, one, kUnsupported + "unknown"},
        {ztext, text, kUnsupported + "unknown"},
        {cell, one, kUnsupported + "unknown"},
        {three, texts, kUnsupported + "unknown"},
        {texts, Variant(std::vector<std::string>{"a"}, {1, 1}), kUnsupported + "string"},
        {matrix, flat, "Binary operation dimensions mismatched"},
        {three, row, "Binary operation dimensions mismatched"},
        {three, null, "Binary operation dimensions mismatched"},
        {bigs, Variant({std::int64_t(1), std::int64_t(2)}), "Binary operation dimensions mismatched"},
    };
    for (const auto& refusal : refusals) {
        EXPECT_THROW_MSG(refusal.a + refusal.b, std::invalid_argument, refusal.text);
        EXPECT_THROW_MSG(refusal.b * refusal.a, std::invalid_argument, refusal.text);
    }
    EXPECT_THROW_MSG(big + Variant(std::int64_t(1)), std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(Variant(std::nanf("")) + three, std::runtime_error, "Conversion check failed");
    EXPECT_THROW_MSG(three * Variant(std::nanf("")), std::runtime_error, "Conversion check failed");
    Variant moved(1.0);
    const Variant taken(std::move(moved));
    EXPECT_THROW_MSG(moved + one, std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(one * moved, std::invalid_argument, "Wrong data type");
    EXPECT_THROW_MSG(moved + moved, std::invalid_argument, "Wrong data type");
}

TEST(VariantArithmetic, NullAndEmptyOperandsGiveEmptyResults) {
    const Variant null, one(1.0), none(std::vector<int>(), {0, 3}, ColumnMajor);
    EXPECT_TRUE((null + null).wellKnownType().isUnknown());
    for (const Variant& empty :
         {null + one, one * null, none + one, one + none, none + null, null * none, none * none}) {
        EXPECT_EQ(empty.dimensions().asVector(), Numbers{0});
        EXPECT_FALSE(empty.wellKnownType().isUnknown());
    }
    EXPECT_EQ((none * Variant(2)).dataOrdering(), ColumnMajor);
    EXPECT_EQ((one + none).wellKnownType(), WellKnownType::Double());
}

TEST(VariantArithmetic, ShapesThatClaimMoreThanThereIsAreRefusedAndLessIsCut) {
    Variant wide({1, 2, 3, 4, 5}, {1, 5});
    wide.append(Variant({6, 7, 8}));
    ASSERT_EQ(wide.dimensions().asVector(), (Numbers{8, 5}));
    const Variant full(std::vector<int>(40, 1), {8, 5}),
        columns(std::vector<int>(40, 1), {8, 5}, ColumnMajor);
    const auto twice = [](const int& n) { return 2 * n; };
    for (const Variant& other : {Variant(1), full, columns, wide}) {
        EXPECT_THROW_MSG(wide + other, std::out_of_range, "Offset out of bounds");
        EXPECT_THROW_MSG(other * wide, std::out_of_range, "Offset out of bounds");
    }
    EXPECT_THROW_MSG(mapElements<int>(wide, twice), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(wide + Variant(0.5), std::length_error, "Dimensions don't match size");

    Variant longer({1, 2, 3, 4}, {2, 2});
    longer.append(Variant({5, 6, 7}));
    for (const bool sole : {false, true}) {
        const auto operand = [&] { return sole ? Variant(MutableVariant(Variant(longer))) : longer; };
        for (const Variant& result :
             {operand() + Variant(1), operand() * longer, mapElements<int>(operand(), twice),
              operand() + Variant({0, 0, 0, 0}, {2, 2}, ColumnMajor)}) {
            EXPECT_EQ(result.dimensions().asVector(), (Numbers{2, 2}));
            // Tells whether the elements are exactly as many as the shape says.
            EXPECT_NO_THROW(result.convertedTo(WellKnownType::Double()));
        }
    }
}

TEST(VariantArithmetic, OperandsThatOthersHoldStayAndSoleOnesAreReused) {
    const auto place = [](Variant& value) {
        MutableVariant elements(std::move(value));
        const double* first = &elements.element<double>({0, 0});
        value = Variant(std::move(elements));
        return first;
    };
    const Variant start({1.5, 2.0, -3.0, 4.0}, {2, 2});
    const Variant copy = start;
    EXPECT_TRUE((start + start).isIdenticalTo(Variant({3.0, 4.0, -6.0, 8.0}, {2, 2})));
    EXPECT_TRUE((start * copy).isIdenticalTo(Variant({2.25, 4.0, 9.0, 16.0}, {2, 2})));
    EXPECT_TRUE(start.isIdenticalTo(Variant({1.5, 2.0, -3.0, 4.0}, {2, 2})));

    Variant sole = start * Variant(2.0);
    const double* const first = place(sole);
    sole = std::move(sole) + Variant(1.0);
    sole = Variant(2.0) * std::move(sole);
    sole = std::move(sole) + start;
    sole = start * std::move(sole);
    sole = mapElements<double>(std::move(sole), [](const double& x) { return x - 1; });
    EXPECT_EQ(place(sole), first);
    EXPECT_TRUE(sole.isIdenticalTo(Variant({13.25, 23.0, 38.0, 87.0}, {2, 2})));

    // A null value that received elements still compares as a null one; a result in its place does not.
    Variant grown;
    grown.append(Variant({1.0, 2.0}));
    EXPECT_TRUE((std::move(grown) + Variant(1.0)).isIdenticalTo(Variant({2.0, 3.0})));
}

TEST(VariantArithmetic, AFailingFunctionLeavesItsOperandAlone) {
    const Variant value({1.0, 2.0, 3.0, 4.0}, {2, 2}, ColumnMajor);
    std::vector<double> seen;
    const auto failing = [&](const double& x) {
        seen.push_back(x);
        return seen.size() == 3 ? throw std::logic_error("no third") : -x;
    };
    EXPECT_THROW_MSG(mapElements<double>(value, failing), std::logic_error, "no third");
    EXPECT_EQ(seen, (std::vector<double>{1, 2, 3}));
    EXPECT_TRUE(value.isIdenticalTo(Variant({1.0, 2.0, 3.0, 4.0}, {2, 2}, ColumnMajor)));
    EXPECT_THROW(mapElements<double>(value, nullptr), std::bad_function_call);
    EXPECT_THROW_MSG(mapElements<int>(Variant(1.5), nullptr), std::runtime_error, "Conversion check failed");
}

TEST(VariantArithmetic, MapsEveryTypeOfArithmetic) {
    for (const NumberType& type : allNumberTypes()) {
        visitNumberType(type.tag(), [&](auto tag) {
            using T = typename decltype(tag)::type;
            if constexpr (!std::is_same_v<details::RealPartOf<T>, bool> &&
                          !std::is_same_v<T, Complex<details::RealPartOf<T>>>) {
                const Variant source({1, 2, 3, 4, 5, 6}, {2, 3}, ColumnMajor);
                int calls = 0;
                const Variant mapped = mapElements<T>(source, [&calls](const T& x) {
                    return static_cast<T>(x * x + T(static_cast<details::RealPartOf<T>>(calls++)));
                });
                EXPECT_EQ(mapped.wellKnownType(), type.tag());
                EXPECT_TRUE(mapped.isEquivalentTo(Variant({1, 5, 11, 19, 29, 41}, {2, 3}, ColumnMajor)));
                EXPECT_EQ(mapped.dataOrdering(), ColumnMajor);
            }
        });
    }
}

TEST(VariantElementIterator, WalksBothOrderings) {
    std::mt19937 random(47);
    for (int round = 0; round < 200; ++round) {
        const Numbers extents = drawExtents(random);
        for (const DataOrdering stored : {RowMajor, ColumnMajor}) {
            const auto places = storagePlaces(extents, stored);
            for (const DataOrdering walk : {RowMajor, ColumnMajor}) {
                std::vector<int> elements(places.size() + 1);
                VariantElementIterator<int> position{elements.data(), stored, ArrayDimensions(extents)};
                for (const Numbers& indices : allIndices(extents, walk)) {
                    const int* found =
                        walk == RowMajor ? position.rowMajorElement() : position.columnMajorElement();
                    EXPECT_EQ(static_cast<std::uint64_t>(found - elements.data()), places.at(indices));
                    ++position;
                }
                EXPECT_EQ(position.position, places.size());
            }
        }
    }
}

} // namespace
} // namespace Zelm::Testing
