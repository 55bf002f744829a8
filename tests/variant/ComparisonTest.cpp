#include <variant/Samples.h>

#include <cmath>
#include <functional>

namespace Zelm::Testing {
namespace {

enum Relation { Different, Alike, Same };

void expectRelation(const Variant& a, const Variant& b, Relation relation) {
    EXPECT_EQ(a.isEquivalentTo(b), relation != Different);
    EXPECT_EQ(b.isEquivalentTo(a), relation != Different);
    EXPECT_EQ(a.isIdenticalTo(b), relation == Same);
    EXPECT_EQ(b.isIdenticalTo(a), relation == Same);
}

TEST(VariantComparison, FollowsTheTable) {
    const std::int64_t odd = (std::int64_t(1) << 53) + 1;
    const std::vector<int> noInts;
    const Variant matrix({1, 2, 3, 4}, {2, 2});
    Variant longer = matrix;
    longer.append(Variant(5));
    const struct {
        Variant a, b;
        Relation relation;
    } rows[] = {
        {Variant(), Variant(), Same},
        {Variant(), noInts, Alike},
        {noInts, std::vector<ZString>(), Alike},
        {Variant(), 0, Different},
        {true, 1, Alike},
        {std::complex<double>(2, 0), Complex<short>(2, 0), Alike},
        {std::complex<double>(2, 1), 2, Different},
        {1, 1.5, Different},
        {std::int64_t(odd), std::uint64_t(odd), Different}, // they meet in double, which loses it
        {NAN, NAN, Different},
        {0.0, -0.0, Same},
        {std::complex<double>(1, NAN), std::complex<double>(1, NAN), Different},
        {std::string("a"), 1.0, Different},
        {std::string("a"), ZString("a"), Different},
        {Variant{1, 2, 3}, Variant({1, 2, 3}, {3, 1}), Alike},
        {Variant{1, 2, 3}, Variant({1, 2, 3}, {3}, ColumnMajor), Alike},
        {matrix, Variant({1.0, 3.0, 2.0, 4.0}, {2, 2, 1}, ColumnMajor), Alike},
        {matrix, Variant({1, 2, 3, 4}, {2, 2}, ColumnMajor), Different},
        {longer, matrix, Same},
        {longer, Variant({1, 3, 2, 4}, {2, 2}, ColumnMajor), Alike},
        {cell({1, Variant()}), cell({1.0, noInts}), Alike},
        {cell({1}), 1, Different},
        {cell({cell({NAN})}), cell({cell({NAN})}), Different},
        {cell({1, 2, cell({3}), 4}, {2, 2}), cell({1, cell({3.0}), 2, 4}, {2, 2}, ColumnMajor), Alike},
        {record({{"a", 1}, {"b", ZString("x")}}), record({{"b", ZString("x")}, {"a", 1}}), Same},
        {record({{"a", 1}}), record({{"b", 1}}), Different},
        {record({{"a", 1}}), record({{"a", 1}, {"b", 1}}), Different},
        {record({{"a", record({{"b", NAN}})}}), record({{"a", record({{"b", NAN}})}}), Different},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        expectRelation(row.a, row.b, row.relation);
    }
}

TEST(VariantComparison, SeesOneDifferentElementOfAnyTypeAnywhere) {
    forEachElementType([](auto tag) {
        using T = typename decltype(tag)::type;
        constexpr std::uint64_t kRows = 20, kColumns = 7;
        const std::vector<T> same(kRows * kColumns, sample<T>(0));
        for (const std::size_t place : {0u, 1u, 31u, 63u, 64u, 139u}) {
            std::vector<T> other = same, transposed = same;
            other[place] = transposed[place % kColumns * kRows + place / kColumns] = sample<T>(1);
            expectRelation(same, same, Same);
            expectRelation(other, same, Different);
            const Variant byColumns(transposed, {kRows, kColumns}, ColumnMajor);
            expectRelation(Variant(other, {kRows, kColumns}), byColumns, Alike);
            expectRelation(Variant(same, {kRows, kColumns}), byColumns, Different);
        }
    });
}

TEST(VariantComparison, ThrowsForValuesMovedFrom) {
    Variant moved(1.0);
    const Variant taken(std::move(moved)), holder = cell({moved});
    for (const Variant& other : {taken, Variant(), moved}) {
        EXPECT_THROW(moved.isEquivalentTo(other), std::bad_function_call);
        EXPECT_THROW(other.isIdenticalTo(moved), std::bad_function_call);
    }
    EXPECT_FALSE(holder.isEquivalentTo(holder));
    EXPECT_THROW(holder.isIdenticalTo(holder), std::bad_function_call);
}

TEST(VariantComparison, FindsBrokenValuesDifferent) {
    // An empty value that receives elements keeps the comparison that it had.
    Variant grown, mistaken{std::vector<ZString>()}, claiming({1, 2, 3, 4, 5}, {1, 5});
    grown.append(Variant(1.0));
    mistaken.append(std::vector<signed char>{1, 2});
    claiming.append(Variant{6, 7, 8});
    for (const Variant& broken : {grown, mistaken, claiming}) {
        expectRelation(broken, broken, Different);
    }
    EXPECT_TRUE(Variant(1.0).isEquivalentTo(grown));
    expectRelation(claiming, Variant(std::vector<int>(40), {8, 5}), Different);
    expectRelation(claiming, Variant(std::vector<double>(40), {8, 5}, ColumnMajor), Different);
}

TEST(VariantComparison, NeedsNoStackForDepth) {
    const auto nested = [](Variant innermost) {
        for (int depth = 0; depth < 30000; ++depth) {
            innermost = depth % 2 ? cell({innermost, 1}) : record({{"a", innermost}, {"b", 1}});
        }
        return innermost;
    };
    const Variant deep = nested(1), alike = nested(1.0);
    expectRelation(deep, deep, Same);
    expectRelation(deep, alike, Alike);
    expectRelation(deep, nested(2), Different);
    EXPECT_TRUE(record({{"a", deep}}).isEqual(record({{"a", alike}}), Equivalent));
    EXPECT_FALSE(record({{"a", deep}}).isEqual(record({{"a", alike}}), Identical));
}

} // namespace
} // namespace Zelm::Testing
