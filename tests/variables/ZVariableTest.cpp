#include <support/ExpectThrow.h>

#include <zelm/tree/ZObserver.h>
#include <zelm/variables/ZVariable.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <type_traits>

namespace Zelm {
namespace {

static_assert(std::is_nothrow_move_constructible_v<ZVariable> &&
              std::is_nothrow_move_assignable_v<ZVariable>);

ZVariable numbered(double value) {
    return ZVariable(Variant(value), ZUnit());
}

/// The only value of each independent, in the order of the list.
std::vector<double> indepValues(const ZVariable& variable) {
    std::vector<double> values;
    for (const ZVariable& indep : variable.indeps()) {
        values.push_back(indep.dataInStoredUnit().value<double>());
    }
    return values;
}

TEST(ZVariable, ExplicitDataReadsByRows) {
    const Variant matrix({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, ArrayDimensions{3, 4});
    ZVariable variable(matrix, ZUnit::FromSiString("V"));
    EXPECT_EQ(variable.size(), 12u);
    EXPECT_TRUE(variable.end() == ZVariableIterator(&variable, 12));
    EXPECT_TRUE(variable.dimensions().isIdenticalTo({3, 4}));
    EXPECT_TRUE(variable[1].isIdenticalTo(Variant({5, 6, 7, 8}, ArrayDimensions{1, 4})));
    EXPECT_TRUE(variable.valueAtInStoredUnit(2).isIdenticalTo(variable[2]));
    // A pair of positions means these two rows, not those between them, in whatever order.
    EXPECT_TRUE(variable.valuesAtIndexInStoredUnit(2, 0).isIdenticalTo(
        Variant({1, 2, 3, 4, 9, 10, 11, 12}, ArrayDimensions{2, 4})));
    EXPECT_TRUE(variable.valuesAtIndexInStoredUnit(1, 1).isIdenticalTo(variable[1]));
    EXPECT_TRUE(Variant(variable.mutableDataInStoredUnit()).isIdenticalTo(matrix));

    const ZVariable null;
    EXPECT_EQ(null.size(), 0u);
    EXPECT_EQ(ZVariable(ZGenericObject(null)).strategyVariableType(), "ExplVar");
    constexpr std::size_t largest = std::numeric_limits<std::size_t>::max();
    for (const auto& read : std::vector<std::function<Variant()>>{
             [&] { return variable[3]; }, [&] { return variable[largest]; }, [&] { return null[0]; },
             [&] { return variable.valuesAtIndexInStoredUnit(0, largest); }}) {
        EXPECT_THROW_MSG(read(), std::invalid_argument, "Array slice invalid");
    }
}

TEST(ZVariable, IteratesOverRows) {
    ZVariable variable(Variant({1.0, 2.0, 3.0}), ZUnit()), range(Variant(1.0), 3, Variant(1.0), ZUnit());
    EXPECT_TRUE(variable.begin() == range.begin() && variable.begin() != range.end());
    for (ZVariable* each : {&variable, &range}) {
        double expected = 1.0;
        for (const Variant& row : *each) {
            EXPECT_EQ(row.value<double>(), expected++);
        }
        EXPECT_EQ(expected, 4.0);
        auto position = each->begin();
        EXPECT_TRUE(position++ == each->begin() && ++position == ZVariableIterator(each, 2));
    }
}

TEST(ZVariable, ComesBackFromItsTree) {
    // Once explicit, always explicit: the tree keeps its data when the variable becomes a range.
    ZVariable both(Variant({7.0}), ZUnit());
    both.setDataAsRange(Variant(1.0), 3, Variant(0.5), ZUnit());
    EXPECT_EQ(both.strategyVariableType(), "RangeVar");
    const ZPropertyHandle tree = both.propertyHandle(), range = tree.removeChild("Data");
    EXPECT_EQ(ZVariable(tree).dataInStoredUnit().value<double>(), 7.0);
    EXPECT_THROW_MSG(ZVariable(range.removeChild("Count")).size(), std::runtime_error,
                     "Property \"Count\" not found");
    EXPECT_THROW_MSG(ZVariable(range.removeChild("Start")), std::invalid_argument,
                     "Object does not represent a valid ZVariable");
    EXPECT_THROW_MSG(ZVariable(ZGenericObject(ZUnit())), std::logic_error, "Variable expected but not found");

    const ZPropertyHandle link = ZGenericObject(ZObserver());
    const auto unitOf = [&](const ZPropertyHandle& unit) {
        return ZVariable(tree.insertChild("Unit", unit)).unitOfData();
    };
    const ZUnit volt = ZUnit::FromSiString("V");
    EXPECT_EQ(unitOf(link.insertChild("Link", volt.propertyHandle())), volt);
    EXPECT_THROW_MSG(unitOf(link), std::runtime_error, "Property \"Link\" not found");
    EXPECT_THROW_MSG(unitOf(tree), std::logic_error, "Unit expected but not found");
}

TEST(ZVariable, ListsIndependentsByTheTextOfTheirNumbers) {
    ZVariable variable = numbered(0.0);
    EXPECT_EQ(variable.indepCount() + variable.indeps().size(), 0u);
    for (int i = 0; i < 12; ++i) {
        variable.setIndep(numbered(i), static_cast<std::size_t>(i));
    }
    variable.setIndep(numbered(99.0), std::size_t{1} << 32);
    variable.setIndeps({numbered(50.0), numbered(51.0)});
    // What else is filed among them does not count, and links are seen through.
    const ZPropertyHandle tree = variable.propertyHandle();
    const ZPropertyHandle link = ZGenericObject(ZObserver());
    const ZPropertyHandle folder =
        tree.child("Indeps")
            .insertChild("x", numbered(2.0).propertyHandle())
            .insertChild("12", ZUnit().propertyHandle())
            .insertChild("13", link.insertChild("Link", ZUnit().propertyHandle()))
            .insertChild("14", link.insertChild("Link", numbered(14.0).propertyHandle()));
    const ZVariable mixed(ZGenericObject(tree.insertChild("Indeps", folder)));
    const std::vector<double> expected{50, 51, 10, 11, 14, 2, 3, 4, 99, 5, 6, 7, 8, 9};
    EXPECT_EQ(indepValues(mixed), expected);
    EXPECT_EQ(mixed.indepCount(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(mixed.indep(i).dataInStoredUnit().value<double>(), expected[i]);
    }
    for (const std::size_t past : {expected.size(), std::numeric_limits<std::size_t>::max()}) {
        EXPECT_THROW_MSG(mixed.indep(past), std::out_of_range, "Index of independent out of bounds");
    }
    const ZVariable broken(ZGenericObject(tree.insertChild("Indeps", folder.insertChild("15", link))));
    EXPECT_EQ(broken.indepCount(), 0u);
    EXPECT_THROW_MSG(broken.indeps(), std::runtime_error, "Property \"Link\" not found");
}

TEST(ZVariable, AnIndependentIsACopy) {
    ZVariable x = numbered(1.0), a = numbered(3.0), b = numbered(4.0);
    a.setIndep(x, 0);
    a.setIndep(x, 1);
    b.setIndep(a, 0);
    ZVariable c = b.indep(0);
    c.setIndep(numbered(2.0), 0);
    x.setData(Variant(9.0), ZUnit());
    EXPECT_EQ(indepValues(a), (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(indepValues(b.indep(0)), (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(indepValues(c), (std::vector<double>{2.0, 1.0}));
}

TEST(ZVariable, EquivalenceLooksAtValuesUnitsIndependentsAndMetadata) {
    const auto vector = [](const char* unit, double last) {
        return ZVariable(Variant({1000.0, last}), ZUnit::FromSiString(unit));
    };
    const ZVariable metres = vector("m", 2000.0);
    const ZVariable kilometres(Variant({1, 2}), ZUnit::FromSiString("km"));
    EXPECT_TRUE(metres.isEquivalentTo(kilometres) && kilometres.isEquivalentTo(metres));
    EXPECT_TRUE(metres.isEquivalentTo(ZVariable(Variant(1000.0), 2, Variant(1000.0), metres.unitOfData())));
    EXPECT_FALSE(metres.isEquivalentTo(vector("s", 2000.0)) || metres.isEquivalentTo(vector("m", 2001.0)));

    ZVariable one = metres, other = kilometres;
    one.setIndep(metres, 0);
    EXPECT_FALSE(one.isEquivalentTo(other));
    other.setIndep(kilometres, 7);
    EXPECT_TRUE(one.isEquivalentTo(other));
    other.setIndep(numbered(1.0), 7);
    EXPECT_FALSE(one.isEquivalentTo(other));

    ZVariable marked = metres;
    marked.setMetadata(
        ZGenericObject(ZObjectMetadata().propertyHandle().setChildValue("origin", Variant("bench"))));
    EXPECT_TRUE(marked.isEquivalentTo(marked) && !marked.isEquivalentTo(metres));

    const ZVariable range(Variant(1.0), 0, Variant(0.5), metres.unitOfData());
    EXPECT_FALSE(metres.isEquivalentTo(range));
    EXPECT_THROW_MSG(range.isEquivalentTo(metres), std::length_error, "Cannot assign to diffent dimensions");
}

TEST(ZVariable, NestsIndependentsToAnyDepth) {
    ZVariable deep = numbered(1.0);
    for (int i = 0; i < 20000; ++i) {
        ZVariable next = numbered(1.0);
        next.setIndep(deep, 0);
        deep = std::move(next);
        EXPECT_EQ(next.indepCount(), 1u); // NOLINT: a moved-from variable stays as it was
    }
    EXPECT_TRUE(deep.isEquivalentTo(deep));
}

} // namespace
} // namespace Zelm
