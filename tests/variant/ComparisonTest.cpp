#include <support/ExpectThrow.h>
#include <variant/NumberArrays.h>

#include <zelm/variant/Struct.h>

#include <cmath>
#include <functional>
#include <limits>

namespace Zelm::Testing {
namespace {

enum Relation { Different, Alike, Same };

void expectRelation(const Variant& a, const Variant& b, Relation relation) {
    EXPECT_EQ(a.isEquivalentTo(b), relation != Different);
    EXPECT_EQ(b.isEquivalentTo(a), relation != Different);
    EXPECT_EQ(a.isIdenticalTo(b), relation == Same);
    EXPECT_EQ(b.isIdenticalTo(a), relation == Same);
}

Struct record(std::initializer_list<std::pair<const char*, Variant>> fields) {
    Struct result;
    for (const auto& field : fields) {
        result.set(field.first, field.second);
    }
    return result;
}

Variant cell(std::vector<Variant> elements) {
    return Variant(std::move(elements));
}

TEST(VariantComparison, FollowsTheTable) {
    const double nan = std::nan("");
    const std::int64_t odd = (std::int64_t(1) << 53) + 1;
    const std::vector<int> noInts;
    const struct {
        Variant a, b;
        Relation relation;
    } rows[] = {
        {Variant(), Variant(), Same},
        {Variant(), noInts, Alike},
        {noInts, std::vector<ZString>(), Alike},
        {Variant(noInts, {0, 3}), Variant(noInts, {2, 0}), Same}, // both become {0}
        {noInts, 1, Different},
        {Variant(), 0, Different},
        {1, 1.0, Alike},
        {1, 1.5, Different},
        {1, 1, Same},
        {true, 1, Alike},
        {true, 2, Different},
        {std::complex<double>(2, 0), 2, Alike},
        {std::complex<double>(2, 1), 2, Different},
        {Complex<int>(2, 1), std::complex<float>(2, 1), Alike},
        {std::int64_t(odd), std::uint64_t(odd), Different}, // they meet in double, which loses it
        {std::int64_t(odd), std::int64_t(odd), Same},
        {std::int64_t(odd), static_cast<double>(odd), Different},
        {nan, nan, Different},
        {nan, nanf(""), Different},
        {0.0, -0.0, Same},
        {INFINITY, INFINITY, Same},
        {std::complex<double>(1, nan), std::complex<double>(1, nan), Different},
        {std::string("a"), 1.0, Different},
        {std::string("a"), ZString("a"), Different},
        {std::string("a\0b", 3), std::string("a\0c", 3), Different},
        {std::u16string(u"\u00b5"), std::u16string(u"\u00b5"), Same},
        {ZString("ab"), ZString("ab"), Same},
        {ZString("ab"), ZString("abc"), Different},
        {Variant({1, 2, 3}), Variant({1, 2, 3}, {3, 1}), Alike},
        {Variant({1, 2, 3}), Variant({1, 2, 3}, {1, 3}), Different},
        {Variant({1, 2, 3}), Variant({1, 2, 3}, {3}, ColumnMajor), Alike},
        {Variant({1, 2, 3, 4}, {2, 2}), Variant({1, 3, 2, 4}, {2, 2}, ColumnMajor), Alike},
        {Variant({1, 2, 3, 4}, {2, 2}), Variant({1.0, 3.0, 2.0, 4.0}, {2, 2, 1}, ColumnMajor), Alike},
        {Variant({1, 2, 3, 4}, {2, 2}), Variant({1, 2, 3, 4}, {2, 2}, ColumnMajor), Different},
        {cell({1, ZString("x"), Variant()}), cell({1, ZString("x"), Variant()}), Same},
        {cell({1, Variant()}), cell({1.0, noInts}), Alike},
        {cell({1, 2}), cell({1, 3}), Different},
        {cell({1}), 1, Different},
        {cell({cell({nan})}), cell({cell({nan})}), Different},
        {cell({cell({1}), 2}), cell({cell({1.0}), 3}), Different},
        {Variant(std::vector<Variant>{1, 2, cell({3}), 4}, {2, 2}),
         Variant(std::vector<Variant>{1, cell({3.0}), 2, 4}, {2, 2}, ColumnMajor), Alike},
        {record({{"a", 1}, {"b", ZString("x")}}), record({{"b", ZString("x")}, {"a", 1}}), Same},
        {record({{"a", 1}}), record({{"a", 1.0}}), Alike},
        {record({{"a", 1}}), record({{"b", 1}}), Different},
        {record({{"a", 1}}), record({{"a", 1}, {"b", 1}}), Different},
        {record({{"a", 1}, {"b", 2}}), record({{"a", 1}, {"b", 3}}), Different},
        {record({{"a", record({{"b", nan}})}}), record({{"a", record({{"b", nan}})}}), Different},
        {std::vector<Struct>{record({{"a", 1}}), record({})},
         std::vector<Struct>{record({{"a", 1}}), record({})}, Same},
        {record({}), cell({}), Different},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        expectRelation(row.a, row.b, row.relation);
    }
    const Variant self(nan);
    expectRelation(self, self, Different);
}

TEST(VariantComparison, NumbersMeetInTheirCommonType) {
    std::mt19937 random(48);
    int alike = 0, lost = 0;
    for (const NumberType& a : allNumberTypes()) {
        for (const NumberType& b : allNumberTypes()) {
            const NumberType common = commonTypeOf(a, b);
            for (int round = 0; round < 8; ++round) {
                const Number x = drawNumbers(random, 1, a, b, true)[0];
                const Number y = round % 2 == 0 ? converted(x, a, b) : drawNumbers(random, 1, b, a, false)[0];
                const bool survive = a.tag() == b.tag() || (isKept(x, converted(x, a, common)) &&
                                                            isKept(y, converted(y, b, common)));
                const Variant left = variantOf({a, {1}, RowMajor, {x}}),
                              right = variantOf({b, {1}, RowMajor, {y}});
                const bool equal = isKept(x, y);
                expectRelation(left, right,
                               !survive || !equal   ? Different
                               : a.tag() == b.tag() ? Same
                                                    : Alike);
                ASSERT_FALSE(HasFailure()) << left.wellKnownType().ToString() << ' '
                                           << right.wellKnownType().ToString() << ' ' << double(x.re);
                alike += survive && equal;
                lost += !survive && equal;
            }
        }
    }
    EXPECT_GT(alike, 1000);
    EXPECT_GT(lost, 0);
}

/// Elements of every type that differ for different `n` from 0 to 1.
template <class T>
T element(int n) {
    if constexpr (std::is_same_v<T, Struct>) {
        return record({{"n", n}});
    } else if constexpr (details::isComplexElement<T>) {
        return T(1, static_cast<details::RealPartOf<T>>(n));
    } else if constexpr (details::isNumericElement<T>) {
        return static_cast<T>(n);
    } else if constexpr (std::is_same_v<T, Variant>) {
        return Variant(n);
    } else {
        return n == 0 ? T() : T(1, 'x');
    }
}
template <>
ZString element<ZString>(int n) {
    return n == 0 ? ZString() : ZString("x");
}

template <class T>
void expectOneDifferenceIsSeenAnywhere() {
    for (const std::size_t count : Numbers{1, 2, 63, 64, 65, 130}) {
        const std::vector<T> elements(count, element<T>(0));
        expectRelation(elements, elements, Same);
        for (std::size_t i = 0; i < count; i = i < 3 || i > 60 ? i + 1 : 61) {
            std::vector<T> other = elements;
            other[i] = element<T>(1);
            expectRelation(elements, other, Different);
        }
    }
}

TEST(VariantComparison, OneDifferentElementIsSeenInEveryTypeAndPlace){
#define ZELM_CHECK(type, Name, value, keyword)                                                               \
    {                                                                                                        \
        SCOPED_TRACE(keyword);                                                                               \
        expectOneDifferenceIsSeenAnywhere<type>();                                                           \
    }
    ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_CHECK)
#undef ZELM_CHECK
}

TEST(VariantComparison, OrderingsAndTypesAreBroughtTogetherByIndex) {
    std::mt19937 random(49);
    for (const NumberType& type : allNumberTypes()) {
        for (const NumberType& other : {type, allNumberTypes()[type.isComplex ? 1 : 0]}) {
            const NumberType common = commonTypeOf(type, other);
            Numbers extents = drawExtents(random);
            std::replace(extents.begin(), extents.end(), 0u, 2u);
            NumberArray array{type, extents, RowMajor,
                              drawNumbers(random, countOf(extents), type, other, true)};
            for (Number& number : array.numbers) {
                const bool usable = isKept(number, number) && survives(number, type, common);
                number = usable ? number : Number();
            }
            NumberArray twin = array;
            twin.type = other;
            twin.ordering = ColumnMajor;
            const Variant a = variantOf(array), b = variantOf(twin);
            expectRelation(a, b, Alike);
            Number& changed = twin.numbers[draw(random, 0, twin.numbers.size() - 1)];
            changed.re = changed.re == 0 ? 1 : 0;
            expectRelation(a, variantOf(twin), Different);
            EXPECT_EQ(b.dataOrdering(), ColumnMajor);
            EXPECT_TRUE(areSame(numbersByIndex(b), array.numbers));
        }
    }
}

TEST(VariantComparison, ValuesMovedFromHaveNoComparison) {
    Variant moved(1.0);
    const Variant taken(std::move(moved)), null;
    for (const Variant& other : {taken, null, moved}) {
        EXPECT_THROW(moved.isEquivalentTo(other), std::bad_function_call);
        EXPECT_THROW(other.isEquivalentTo(moved), std::bad_function_call);
        EXPECT_THROW(moved.isIdenticalTo(other), std::bad_function_call);
        EXPECT_THROW(other.isIdenticalTo(moved), std::bad_function_call);
    }
    const Variant holder = cell({moved});
    EXPECT_FALSE(holder.isEquivalentTo(holder));
    EXPECT_THROW(holder.isIdenticalTo(holder), std::bad_function_call);
}

TEST(VariantComparison, BrokenValuesAreDifferentAndHarmless) {
    // An empty value that receives elements keeps the comparison that it had.
    Variant grown;
    grown.append(Variant(1.0));
    EXPECT_FALSE(grown.isEquivalentTo(grown));
    EXPECT_FALSE(grown.isIdenticalTo(Variant(1.0)));
    EXPECT_TRUE(Variant(1.0).isEquivalentTo(grown));
    Variant mistaken{std::vector<ZString>()};
    mistaken.append(Variant({static_cast<signed char>(1), static_cast<signed char>(2)}));
    EXPECT_FALSE(mistaken.isEquivalentTo(mistaken));
    EXPECT_FALSE(mistaken.isIdenticalTo(mistaken));

    Variant claiming({1, 2, 3, 4, 5}, {1, 5});
    claiming.append(Variant({6, 7, 8}));
    for (const Variant& other : {claiming, Variant(std::vector<int>(40), {8, 5}),
                                 Variant(std::vector<double>(40), {8, 5}, ColumnMajor)}) {
        EXPECT_FALSE(claiming.isEquivalentTo(other));
        EXPECT_FALSE(other.isEquivalentTo(claiming));
        EXPECT_FALSE(claiming.isIdenticalTo(other));
    }
    Variant longer({1, 2, 3, 4}, {2, 2});
    longer.append(Variant(5));
    expectRelation(longer, Variant({1, 2, 3, 4}, {2, 2}), Same);
    expectRelation(longer, Variant({1, 3, 2, 4}, {2, 2}, ColumnMajor), Alike);
}

Variant nested(std::size_t depth, Variant innermost) {
    for (; depth > 0; --depth) {
        innermost = depth % 2 == 0 ? cell({innermost, 1}) : Variant(record({{"a", innermost}, {"b", 1}}));
    }
    return innermost;
}

TEST(VariantComparison, DepthOfNestingCostsNoStack) {
    const std::size_t depth = 50000;
    const Variant deep = nested(depth, 1);
    expectRelation(deep, nested(depth, 1), Same);
    expectRelation(deep, nested(depth, 1.0), Alike);
    expectRelation(deep, nested(depth, 2), Different);
}

} // namespace
} // namespace Zelm::Testing
