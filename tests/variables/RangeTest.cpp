#include <support/ExpectThrow.h>

#include <zelm/variables/ZVariable.h>
#include <zelm/variant/VariantOps.h>

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <limits>

namespace Zelm {
namespace {

constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max();

/// Scalars of every kind of number, some of which cannot be told apart from an array of one, and arrays.
std::vector<Variant> operands() {
    return {
        Variant(1.5),
        Variant(1.0f),
        Variant(true),
        Variant(static_cast<signed char>(-3)),
        Variant(static_cast<short>(300)),
        Variant(-7),
        Variant(std::int64_t{1} << 40),
        Variant(static_cast<unsigned char>(200)),
        Variant(static_cast<unsigned short>(60000)),
        Variant(5u),
        Variant(std::numeric_limits<std::uint64_t>::max()),
        Variant(std::complex<double>(1.0, -2.0)),
        Variant(std::complex<float>(0.5f, 0.25f)),
        Variant(Complex<int>(3, 4)),
        Variant(Complex<bool>(true, false)),
        Variant({2.5}, ArrayDimensions{1, 1}, ColumnMajor),
        Variant({1.0, 2.0, 3.0}, ArrayDimensions{1, 3}),
        Variant({1, 2, 3, 4, 5, 6}, ArrayDimensions{1, 2, 3}, ColumnMajor),
    };
}

Variant formula(const Variant& start, const Variant& step, std::uint64_t index) {
    return start + Variant(index) * step;
}

/// What an array of a range is: the type of the first element, which has an int32 zero for its index, row by
/// row.
Variant arrayModel(const Variant& start, const Variant& step, std::uint64_t count) {
    const Variant first = start + Variant(0) * step;
    ArrayDimensions shape = first.dimensions();
    shape[0] = count;
    MutableVariant array =
        MutableVariant::createWithAllocatedArrayOfWellKnownType(first.wellKnownType(), shape, RowMajor);
    for (std::uint64_t i = 0; i < count; ++i) {
        std::vector<IndexSet> row(shape.numberOfDimensions(), IndexSet(IndexRange::all));
        row[0] = IndexSet(IndexValue(i, false));
        array.assignSlice(row, i == 0 ? first : formula(start, step, i));
    }
    return Variant(std::move(array));
}

/// The outcome of a call: its value, or the failure in words.
template <class Call>
std::pair<Variant, std::string> outcome(Call&& call) {
    try {
        return {call(), ""};
    } catch (const std::exception& error) {
        return {Variant(), std::string(typeid(error).name()) + ": " + error.what()};
    }
}

template <class Actual, class Model>
void expectSameOutcome(Actual&& actual, Model&& model, const char* what) {
    const auto [value, failure] = outcome(actual);
    const auto [expected, expectedFailure] = outcome(model);
    EXPECT_EQ(failure, expectedFailure) << what;
    // Appended rows of an array claim more elements than there are, and then differ even from themselves.
    EXPECT_EQ(value.isIdenticalTo(expected), expected.isIdenticalTo(expected)) << what;
    EXPECT_TRUE(value.dimensions().isIdenticalTo(expected.dimensions())) << what;
    EXPECT_STREQ(value.wellKnownType().ToString(), expected.wellKnownType().ToString()) << what;
}

TEST(Range, IsItsFormulaForEveryPairOfTypes) {
    const std::vector<Variant> all = operands();
    for (const Variant& start : all) {
        for (const Variant& step : all) {
            SCOPED_TRACE(std::string(start.wellKnownType().ToString()) + " and " +
                         step.wellKnownType().ToString());
            const ZVariable range(start, 4, step, ZUnit());
            // A step that equals 1 is left out of the tree, and with it its type.
            const Variant stored = step.isEquivalentTo(Variant(1.0)) ? Variant(1.0) : step;
            for (const std::uint64_t i :
                 {std::uint64_t{0}, std::uint64_t{3}, std::uint64_t{1} << 24, (std::uint64_t{1} << 24) + 1,
                  std::uint64_t{1} << 53, (std::uint64_t{1} << 53) + 1, std::uint64_t{kLargest}}) {
                expectSameOutcome([&] { return range[i]; }, [&] { return formula(start, stored, i); },
                                  "element");
            }
            expectSameOutcome([&] { return range.valuesAtIndexInStoredUnit(1, 3); },
                              [&] {
                                  Variant rows = formula(start, stored, 1);
                                  rows.append(formula(start, stored, 2));
                                  rows.append(formula(start, stored, 3));
                                  return rows;
                              },
                              "elements 1 to 3");
            expectSameOutcome([&] { return range.dataInStoredUnit(); },
                              [&] { return arrayModel(start, stored, 4); }, "array");
        }
    }
}

TEST(Range, TypesOfElementsAndArrayDiffer) {
    const ZVariable integers(Variant(5), 3, Variant(2), ZUnit());
    EXPECT_EQ(integers[0].wellKnownType(), WellKnownType::Double());
    EXPECT_EQ(integers.dataInStoredUnit().wellKnownType(), WellKnownType::Int32());
    const ZVariable unsignedIntegers(Variant(std::uint64_t{5}), 3, Variant(std::uint64_t{2}), ZUnit());
    EXPECT_EQ(unsignedIntegers[0].wellKnownType(), WellKnownType::UnsignedInt64());
    EXPECT_EQ(unsignedIntegers.dataInStoredUnit().wellKnownType(), WellKnownType::Double());
    const std::int64_t odd = (std::int64_t{1} << 53) + 1;
    const ZVariable single(Variant(odd), 1, Variant(2), ZUnit());
    EXPECT_EQ(single.dataInStoredUnit().value<std::int64_t>(), odd);
    EXPECT_THROW_MSG(single[0], std::runtime_error, "Conversion check failed");
    const ZVariable byOnes(Variant(5), 3, Variant(1), ZUnit());
    EXPECT_EQ(byOnes.dataInStoredUnit().wellKnownType(), WellKnownType::Double());
}

TEST(Range, KeepsItsBounds) {
    const ZVariable range(Variant(1.0), 5, Variant(0.5), ZUnit());
    EXPECT_EQ(range.size(), 5u);
    EXPECT_TRUE(range.dimensions().isIdenticalTo({5}));
    EXPECT_EQ(range.strategyVariableType(), "RangeVar");
    EXPECT_EQ(range[7].value<double>(), 4.5);
    EXPECT_EQ(range.valueAtInStoredUnit(4).value<double>(), 3.0);
    EXPECT_THROW_MSG(range.valueAtInStoredUnit(5), std::runtime_error, "offset is out of bounds");
    EXPECT_THROW_MSG(range.valuesAtIndexInStoredUnit(5, 1), std::invalid_argument,
                     "start Index is out of bounds");
    EXPECT_THROW_MSG(range.valuesAtIndexInStoredUnit(0, kLargest), std::invalid_argument,
                     "end Index is out of bounds");
    EXPECT_THROW_MSG(range.valuesAtIndexInStoredUnit(3, 1), std::invalid_argument,
                     "end index can not be less than start");
    const ZVariable none(Variant(1.0), 0, Variant(0.5), ZUnit());
    EXPECT_THROW_MSG(none.valuesAtIndexInStoredUnit(0, 0), std::invalid_argument,
                     "start Index is out of bounds");
    EXPECT_THROW_MSG(none.dataInStoredUnit(), std::length_error, "Cannot assign to diffent dimensions");
    ZVariable empty = none;
    EXPECT_TRUE(empty.begin() == empty.end());
    EXPECT_FALSE(range.isEquivalentTo(none));
}

TEST(Range, RefusesWhatNoMemoryHolds) {
    for (const std::size_t count : {std::size_t{1} << 59, std::size_t{1} << 60, kLargest}) {
        const ZVariable range(Variant(1.0), count, Variant(0.5), ZUnit());
        EXPECT_ANY_THROW(range.dataInStoredUnit());
        EXPECT_ANY_THROW(range.valuesAtIndexInStoredUnit(0, count - 1));
        EXPECT_EQ(range[1].value<double>(), 1.5);
    }
    for (const std::size_t count : {std::size_t{1} << 62, (std::size_t{1} << 62) + 1}) {
        const ZVariable rows(Variant({1.0, 2.0, 3.0, 4.0}, ArrayDimensions{1, 4}), count, Variant(0.5),
                             ZUnit());
        EXPECT_ANY_THROW(rows.dataInStoredUnit());
        EXPECT_EQ(rows.size(), count);
    }
    const ZVariable nothing(Variant(), std::size_t{1} << 60, Variant(), ZUnit());
    EXPECT_ANY_THROW(nothing.dataInStoredUnit());
    EXPECT_TRUE(nothing.valuesAtIndexInStoredUnit(0, 1000000000).dimensions().isEmpty());
}

TEST(Range, WritesTheStepOnlyWhereItSaysSomething) {
    ZVariable range(Variant(1.0), 3, Variant(1), ZUnit());
    const auto steps = [&] { return range.propertyHandle().hasChild("Step"); };
    EXPECT_FALSE(steps());
    range.setDataAsRange(Variant(1.0), 3, Variant(2.0), ZUnit());
    EXPECT_TRUE(steps());
    range.setDataAsRange(Variant(1.0), 3, Variant(1), ZUnit());
    EXPECT_EQ(range.propertyHandle().child("Step").getValue().wellKnownType(), WellKnownType::Int32());
}

TEST(Range, ConvertsStartAndStepAlike) {
    const ZUnit celsius(ZUnitType::ThermodynamicTemperature(), "°C", 1.0, 273.15, 0.0);
    const ZVariable range(Variant(1000.0), 3, Variant(2000.0), ZUnit::FromSiString("mK"));
    const ZVariable converted = range.convertToUnit(celsius);
    EXPECT_EQ(converted.strategyVariableType(), "RangeVar");
    EXPECT_EQ(converted[0].value<double>(), 1.0 - 273.15);
    EXPECT_EQ(converted.propertyHandle().child("Step").getValue().value<double>(), 2.0 - 273.15);
}

} // namespace
} // namespace Zelm
