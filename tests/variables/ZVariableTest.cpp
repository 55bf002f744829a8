#include <support/ExpectThrow.h>

#include <zelm/tree/ZObserver.h>
#include <zelm/variables/ZVariable.h>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace Zelm {
namespace {

static_assert(std::is_nothrow_move_constructible_v<ZVariable> &&
              std::is_nothrow_move_assignable_v<ZVariable>);

ZVariable numbered(double value) {
    return ZVariable(Variant(value), ZUnit());
}

Variant matrix() {
    return Variant({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, ArrayDimensions{3, 4});
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
    ZVariable variable(matrix(), ZUnit::FromSiString("V"));
    EXPECT_EQ(variable.strategyVariableType(), "ExplVar");
    EXPECT_EQ(variable.size(), 12u);
    EXPECT_TRUE(variable.dimensions().isIdenticalTo({3, 4}));
    EXPECT_TRUE(variable[1].isIdenticalTo(Variant({5, 6, 7, 8}, ArrayDimensions{1, 4})));
    EXPECT_TRUE(variable.valueAtInStoredUnit(2).isIdenticalTo(variable[2]));
    // A pair of positions means these two rows, not those between them, in whatever order.
    EXPECT_TRUE(variable.valuesAtIndexInStoredUnit(2, 0).isIdenticalTo(
        Variant({1, 2, 3, 4, 9, 10, 11, 12}, ArrayDimensions{2, 4})));
    EXPECT_TRUE(variable.valuesAtIndexInStoredUnit(1, 1).isIdenticalTo(variable[1]));
    for (const std::size_t past : {std::size_t{3}, std::numeric_limits<std::size_t>::max()}) {
        EXPECT_THROW_MSG(variable[past], std::invalid_argument, "Array slice invalid");
        EXPECT_THROW_MSG(variable.valuesAtIndexInStoredUnit(0, past), std::invalid_argument,
                         "Array slice invalid");
    }
    MutableVariant changed = variable.mutableDataInStoredUnit();
    changed.setElement<int>({0, 0}, 100);
    EXPECT_TRUE(variable.dataInStoredUnit().isIdenticalTo(matrix()));
    EXPECT_TRUE(variable.end() == ZVariableIterator(&variable, 12));
}

TEST(ZVariable, NullDataHasNoRows) {
    const ZVariable variable;
    EXPECT_EQ(variable.size(), 0u);
    EXPECT_EQ(variable.strategyVariableType(), "ExplVar");
    EXPECT_THROW_MSG(variable[0], std::invalid_argument, "Array slice invalid");
    EXPECT_EQ(ZVariable(ZGenericObject(variable)).strategyVariableType(), "ExplVar");
}

TEST(ZVariable, IteratesOverRows) {
    ZVariable variable(Variant({1.0, 2.0, 3.0}), ZUnit());
    ZVariable range(Variant(1.0), 3, Variant(1.0), ZUnit());
    EXPECT_TRUE(variable.begin() == range.begin());
    for (ZVariable* each : {&variable, &range}) {
        double expected = 1.0;
        for (const Variant& row : *each) {
            EXPECT_EQ(row.value<double>(), expected++);
        }
        EXPECT_EQ(expected, 4.0);
        auto position = each->begin();
        EXPECT_TRUE(position++ == each->begin());
        EXPECT_TRUE(++position == ZVariableIterator(each, 2));
    }
}

TEST(ZVariable, ComesBackFromItsTree) {
    ZVariable variable(Variant({1.0, 2.0}), ZUnit::FromSiString("kHz"));
    variable.setIndep(ZVariable(Variant(1.0), 2, Variant(0.5), ZUnit::FromSiString("m")), 0);
    const ZVariable back{ZGenericObject(variable)};
    EXPECT_TRUE(back.isEquivalentTo(variable));
    EXPECT_EQ(back.unitOfData(), ZUnit::FromSiString("kHz"));

    // Once explicit, always explicit: the tree keeps its data when the variable becomes a range.
    ZVariable both(Variant({7.0}), ZUnit());
    both.setDataAsRange(Variant(1.0), 3, Variant(0.5), ZUnit());
    EXPECT_EQ(both.strategyVariableType(), "RangeVar");
    EXPECT_EQ(ZVariable(ZGenericObject(both)).strategyVariableType(), "ExplVar");
    EXPECT_EQ(ZVariable(ZGenericObject(both)).dataInStoredUnit().value<double>(), 7.0);

    EXPECT_THROW_MSG(ZVariable(ZGenericObject(ZObject("Variable"))), std::invalid_argument,
                     "Object does not represent a valid ZVariable");
    EXPECT_THROW_MSG(ZVariable(ZGenericObject(ZUnit())), std::logic_error, "Variable expected but not found");
    EXPECT_THROW_MSG(ZVariable(ZGenericObject()), std::runtime_error, "Unable to resolve path: empty basis");
}

TEST(ZVariable, FindsItsUnitThroughALink) {
    const ZPropertyHandle plain = numbered(1.0).propertyHandle();
    const auto with = [&](const ZPropertyHandle& unit) {
        return ZVariable(ZGenericObject(plain.insertChild("Unit", unit)));
    };
    const ZUnit volt = ZUnit::FromSiString("V");
    const ZPropertyHandle link = ZPropertyHandle(ZGenericObject(ZObserver()));
    EXPECT_EQ(with(link.insertChild("Link", volt.propertyHandle())).unitOfData(), volt);
    EXPECT_THROW_MSG(with(link).unitOfData(), std::runtime_error, "Property \"Link\" not found");
    EXPECT_THROW_MSG(with(plain).unitOfData(), std::logic_error, "Unit expected but not found");
    EXPECT_THROW_MSG(ZVariable(ZGenericObject(plain.removeChild("Unit"))).unitOfData(), std::runtime_error,
                     "Property \"Unit\" not found");
    EXPECT_THROW_MSG(with(volt.propertyHandle()).convertToUnit(ZUnit::FromSiString("A")), std::runtime_error,
                     "To units are not commensurable - from: V to A");
}

TEST(ZVariable, ListsIndependentsByTheTextOfTheirNumbers) {
    ZVariable variable = numbered(0.0);
    EXPECT_EQ(variable.indepCount(), 0u);
    EXPECT_TRUE(variable.indeps().empty());
    for (int i = 0; i < 12; ++i) {
        variable.setIndep(numbered(i), static_cast<std::size_t>(i));
    }
    variable.setIndep(numbered(99.0), std::size_t{1} << 32);
    EXPECT_EQ(indepValues(variable), (std::vector<double>{0, 1, 10, 11, 2, 3, 4, 99, 5, 6, 7, 8, 9}));
    EXPECT_EQ(variable.indep(2).dataInStoredUnit().value<double>(), 10.0);
    for (const std::size_t past : {std::size_t{13}, std::numeric_limits<std::size_t>::max()}) {
        EXPECT_THROW(variable.indep(past), std::out_of_range);
    }
    variable.setIndeps({numbered(50.0), numbered(51.0)});
    EXPECT_EQ(variable.indepCount(), 13u);
    EXPECT_EQ(indepValues(variable)[1], 51.0);

    ZVariable gaps = numbered(0.0);
    gaps.setIndep(numbered(5.0), 5);
    EXPECT_EQ(gaps.indepCount(), 1u);
    EXPECT_EQ(gaps.indep(0).dataInStoredUnit().value<double>(), 5.0);
}

TEST(ZVariable, SkipsWhatIsNoIndependent) {
    const ZPropertyHandle folder = ZPropertyHandle(ZGenericObject(ZObject("")))
                                       .insertChild("0", numbered(1.0).propertyHandle())
                                       .insertChild("1", ZUnit().propertyHandle())
                                       .insertChild("x", numbered(2.0).propertyHandle())
                                       .setChildValue("2", Variant(1.0));
    const ZPropertyHandle tree = numbered(0.0).propertyHandle();
    EXPECT_EQ(indepValues(ZVariable(ZGenericObject(tree.insertChild("Indeps", folder)))),
              (std::vector<double>{1.0}));

    const ZPropertyHandle link = ZPropertyHandle(ZGenericObject(ZObserver()));
    const auto withLink = [&](const ZPropertyHandle& third) {
        return ZVariable(ZGenericObject(tree.insertChild("Indeps", folder.insertChild("3", third))));
    };
    EXPECT_EQ(indepValues(withLink(link.insertChild("Link", numbered(4.0).propertyHandle()))),
              (std::vector<double>{1.0, 4.0}));
    EXPECT_EQ(withLink(link).indepCount(), 0u);
    EXPECT_THROW_MSG(withLink(link).indeps(), std::runtime_error, "Property \"Link\" not found");
}

TEST(ZVariable, AnIndependentIsACopy) {
    ZVariable x = numbered(1.0);
    const ZVariable y = numbered(2.0);
    ZVariable a = numbered(3.0);
    a.setIndep(x, 0);
    a.setIndep(x, 1);
    ZVariable b = numbered(4.0);
    b.setIndep(a, 0);
    ZVariable c = b.indep(0);
    c.setIndep(y, 0);
    x.setData(Variant(9.0), ZUnit());
    EXPECT_EQ(indepValues(a), (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(indepValues(b.indep(0)), (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(indepValues(c), (std::vector<double>{2.0, 1.0}));
}

TEST(ZVariable, EquivalenceLooksAtValuesUnitsIndependentsAndMetadata) {
    const auto unit = [](const char* text) { return ZUnit::FromSiString(text); };
    const ZVariable metres(Variant({1000.0, 2000.0}), unit("m"));
    const ZVariable kilometres(Variant({1, 2}), unit("km"));
    EXPECT_TRUE(metres.isEquivalentTo(kilometres) && kilometres.isEquivalentTo(metres));
    EXPECT_TRUE(metres.isEquivalentTo(ZVariable(Variant(1000.0), 2, Variant(1000.0), unit("m"))));
    EXPECT_FALSE(metres.isEquivalentTo(ZVariable(Variant({1000.0, 2000.0}), unit("s"))));
    EXPECT_FALSE(metres.isEquivalentTo(ZVariable(Variant({1000.0, 2001.0}), unit("m"))));

    ZVariable one = metres;
    one.setIndep(metres, 0);
    ZVariable other = kilometres;
    EXPECT_FALSE(one.isEquivalentTo(other));
    other.setIndep(kilometres, 7);
    EXPECT_TRUE(one.isEquivalentTo(other));
    other.setIndep(numbered(1.0), 7);
    EXPECT_FALSE(one.isEquivalentTo(other));

    ZVariable marked = metres;
    marked.setMetadata(
        ZGenericObject(ZObjectMetadata().propertyHandle().setChildValue("origin", Variant("bench"))));
    EXPECT_FALSE(marked.isEquivalentTo(metres));
    EXPECT_TRUE(marked.isEquivalentTo(ZVariable(marked)));

    const ZVariable range(Variant(1.0), 0, Variant(0.5), unit("m"));
    EXPECT_FALSE(metres.isEquivalentTo(range));
    EXPECT_THROW_MSG(range.isEquivalentTo(metres), std::length_error, "Cannot assign to diffent dimensions");
}

TEST(ZVariable, NestsIndependentsToAnyDepth) {
    ZVariable deep = numbered(1.0);
    for (int i = 0; i < 20000; ++i) {
        ZVariable next = numbered(1.0);
        next.setIndep(deep, 0);
        deep = next;
    }
    EXPECT_TRUE(deep.isEquivalentTo(deep));
}

TEST(ZVariable, MovingLeavesTheSourceReadable) {
    ZVariable source = numbered(1.0);
    const ZVariable target = std::move(source);
    EXPECT_TRUE(source.isEquivalentTo(target)); // NOLINT: a moved-from variable is a copy
}

} // namespace
} // namespace Zelm
