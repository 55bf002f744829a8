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
    Variant longer = matrix, mistaken = std::vector<ZString>();
    longer.append(Variant(5));
    mistaken.append(1); // keeps the comparison of an empty value
    const struct {
        Variant a, b;
        Relation relation;
    } rows[] = {
        {Variant(), Variant(), Same},
        {std::vector<ZString>(), noInts, Alike},
        {Variant(), 0, Different},
        {true, 1, Alike},
        {std::complex<double>(2, 0), Complex<short>(2, 0), Alike},
        {std::complex<double>(2, 1), 2, Different},
        {1, 1.5, Different},
        {std::int64_t(odd), std::uint64_t(odd), Different}, // they meet in double, which loses it
        {NAN, NAN, Different},
        {0.0, -0.0, Same},
        {std::complex<double>(1, NAN), std::complex<double>(1, NAN), Different},
        {std::string("a"), ZString("a"), Different},
        {Variant{1, 2, 3}, Variant({1, 2, 3}, {3, 1}, ColumnMajor), Alike},
        {matrix, Variant({1.0, 3.0, 2.0, 4.0}, {2, 2, 1}, ColumnMajor), Alike},
        {longer, matrix, Same},
        {mistaken, mistaken, Different},
        {cell({1, Variant()}), cell({1.0, noInts}), Alike},
        {cell({1, 2, cell({3}), 4}, {2, 2}), cell({1, cell({3.0}), 2, 4}, {2, 2}, ColumnMajor), Alike},
        {record({{"a", 1}, {"b", ZString("x")}}), record({{"b", ZString("x")}, {"a", 1}}), Same},
        {record({{"a", 1}}), record({{"b", 1}}), Different},
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
            expectRelation(other, same, Different);
            const Variant byColumns(transposed, {kRows, kColumns}, ColumnMajor);
            expectRelation(Variant(other, {kRows, kColumns}), byColumns, Alike);
            expectRelation(Variant(same, {kRows, kColumns}), byColumns, Different);
        }
    });
}

TEST(VariantComparison, NeedsNoStackForDepthNorDoesDestruction) {
    const auto nested = [](Variant innermost) {
        for (int depth = 0; depth < 30000; ++depth) {
            innermost = depth % 2 ? cell({innermost, 1}) : record({{"a", innermost}, {"b", 1}});
        }
        return innermost;
    };
    const Variant deep = nested(1);
    cell({deep}) = Variant(); // leaves the part that is held elsewhere
    expectRelation(deep, deep, Same);
    expectRelation(deep, nested(1.0), Alike);
    expectRelation(deep, nested(2), Different);
}

} // namespace
} // namespace Zelm::Testing
