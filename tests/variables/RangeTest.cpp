#include <support/ExpectThrow.h>

#include <zelm/variables/ZVariable.h>

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <functional>
#include <limits>

namespace Zelm {
namespace {

constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max();

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

/// Values alike in type, shape and elements, or the same failure.
void expectSameOutcome(const std::function<Variant()>& actual, const std::function<Variant()>& model) {
    Variant value, expected;
    std::string failure, expectedFailure;
    for (const bool isModel : {false, true}) {
        try {
            (isModel ? expected : value) = isModel ? model() : actual();
        } catch (const std::exception& error) {
            (isModel ? expectedFailure : failure) = std::string(typeid(error).name()) + ": " + error.what();
        }
    }
    EXPECT_EQ(failure, expectedFailure);
    // Appended rows of an array claim more elements than there are, and then differ even from themselves.
    EXPECT_EQ(value.isIdenticalTo(expected), expected.isIdenticalTo(expected));
    EXPECT_TRUE(value.dimensions().isIdenticalTo(expected.dimensions()));
    EXPECT_STREQ(value.wellKnownType().ToString(), expected.wellKnownType().ToString());
}

TEST(Range, IsItsFormulaForEveryPairOfTypes) {
    // Scalars of every kind of number, one of them in the shape of an array, arrays, and no numbers.
    // clang-format off
    const Variant all[] = {
        1.5, 1.0f, std::numeric_limits<float>::infinity(), true, -7, std::int64_t{1} << 40, kLargest, Variant(), "text",
        static_cast<unsigned char>(200), Complex<int>(3, 4), std::complex<double>(1, -2), std::complex<float>(.5f, .25f),
        Variant({2.5}, ArrayDimensions{1, 1}, ColumnMajor), Variant({1.0, 2.0}, ArrayDimensions{1, 2}),
        Variant({1, 2, 3, 4, 5, 6}, ArrayDimensions{1, 2, 3}, ColumnMajor)};
    // clang-format on
    for (const Variant& start : all) {
        for (const Variant& step : all) {
            SCOPED_TRACE(std::string(start.wellKnownType().ToString()) + " and " +
                         step.wellKnownType().ToString());
            const ZVariable range(start, 4, step, ZUnit());
            // A step that equals 1 is left out of the tree, and with it its type.
            const Variant stored = step.isEquivalentTo(Variant(1.0)) ? Variant(1.0) : step;
            for (const std::uint64_t i : {std::uint64_t{0}, std::uint64_t{3}, (std::uint64_t{1} << 24) + 1,
                                          (std::uint64_t{1} << 53) + 1, std::uint64_t{kLargest}}) {
                expectSameOutcome([&] { return range[i]; }, [&] { return formula(start, stored, i); });
            }
            expectSameOutcome([&] { return range.valuesAtIndexInStoredUnit(1, 2); },
                              [&] {
                                  Variant rows = formula(start, stored, 1);
                                  rows.append(formula(start, stored, 2));
                                  return rows;
                              });
            expectSameOutcome([&] { return range.dataInStoredUnit(); },
                              [&] { return arrayModel(start, stored, 4); });
        }
    }
}

TEST(Range, KeepsItsBounds) {
    ZVariable range(Variant(1.0), 5, Variant(0.5), ZUnit());
    EXPECT_EQ(range.size(), 5u);
    EXPECT_TRUE(range.dimensions().isIdenticalTo({5}));
    EXPECT_EQ(range.valueAtInStoredUnit(4).value<double>(), 3.0);
    EXPECT_THROW_MSG(range.valueAtInStoredUnit(5), std::runtime_error, "offset is out of bounds");
    const auto refuses = [&range](std::size_t first, std::size_t last, const char* text) {
        EXPECT_THROW_MSG(range.valuesAtIndexInStoredUnit(first, last), std::invalid_argument, text);
    };
    refuses(5, 1, "start Index is out of bounds");
    refuses(0, kLargest, "end Index is out of bounds");
    refuses(3, 1, "end index can not be less than start");
    range.setDataAsRange(Variant(1.0), 0, Variant(0.5), ZUnit());
    refuses(0, 0, "start Index is out of bounds");
    EXPECT_TRUE(range.begin() == range.end());
    // Row 0 alone takes a start that the formula refuses.
    range.setDataAsRange(Variant((std::int64_t{1} << 53) + 1), 1, Variant(2), ZUnit());
    EXPECT_EQ(range.dataInStoredUnit().value<std::int64_t>(), (std::int64_t{1} << 53) + 1);
    EXPECT_THROW_MSG(range[0], std::runtime_error, "Conversion check failed");
}

TEST(Range, RefusesWhatNoMemoryHolds) {
    for (const Variant& start : {Variant(1.0), Variant({1.0, 2.0, 3.0, 4.0}, ArrayDimensions{1, 4})}) {
        for (const std::size_t count :
             {std::size_t{1} << 60, std::size_t{1} << 62, (std::size_t{1} << 62) + 1, kLargest}) {
            const ZVariable range(start, count, Variant(0.5), ZUnit());
            EXPECT_ANY_THROW(range.dataInStoredUnit()) << count;
            EXPECT_EQ(range[1].value<double>(), 1.5);
        }
    }
    const ZVariable nothing(Variant(), std::size_t{1} << 60, Variant(), ZUnit());
    EXPECT_TRUE(nothing.valuesAtIndexInStoredUnit(0, 1000000000).dimensions().isEmpty());
}

TEST(Range, WritesAndConvertsItsStepAsItsStart) {
    ZVariable range(Variant(1.0), 3, Variant(1), ZUnit());
    EXPECT_FALSE(range.propertyHandle().hasChild("Step"));
    range.setDataAsRange(Variant(1.0), 3, Variant(2.0), ZUnit());
    range.setDataAsRange(Variant(1000.0), 3, Variant(1), ZUnit::FromSiString("mK"));
    EXPECT_TRUE(range.propertyHandle().child("Step").getValue().isIdenticalTo(Variant(1)));
    const ZUnit celsius(ZUnitType::ThermodynamicTemperature(), "°C", 1.0, 273.15, 0.0);
    const ZVariable converted = range.convertToUnit(celsius);
    EXPECT_EQ(converted.strategyVariableType(), "RangeVar");
    EXPECT_EQ(converted[0].value<double>(), 1.0 - 273.15);
    EXPECT_EQ(converted.propertyHandle().child("Step").getValue().value<double>(), 0.001 - 273.15);
}

} // namespace
} // namespace Zelm
