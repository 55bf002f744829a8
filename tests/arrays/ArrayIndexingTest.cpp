#include <zelm/arrays/ArrayIndexing.h>

#include <arrays/ArrayModel.h>
#include <support/ExpectThrow.h>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr std::uint64_t kMax = ~std::uint64_t{0}, kHalf = std::uint64_t{1} << 32;

std::uint64_t offsetOf(DataOrdering ordering, const Numbers& indices, const ArrayDimensions& dims,
                       bool check = true) {
    std::uint64_t offset = 12345;
    (ordering == RowMajor ? ArrayIndexing::CalculateOffsetRowMajor
                          : ArrayIndexing::CalculateOffsetColumnMajor)(&offset, indices, dims, check);
    return offset;
}

Numbers indicesOf(DataOrdering ordering, std::uint64_t offset, const ArrayDimensions& dims,
                  bool check = true) {
    Numbers indices{7, 7, 7, 7, 7, 7};
    (ordering == RowMajor ? ArrayIndexing::CalculateIndicesRowMajor
                          : ArrayIndexing::CalculateIndicesColumnMajor)(indices, offset, dims, check);
    return indices;
}

} // namespace

TEST(ArrayDimensions, properties_and_equivalence_of_shapes) {
    const std::tuple<ArrayDimensions, ArrayDimensions, std::uint64_t, bool, bool> rows[] = {
        {{}, {}, 0, false, false},
        {{kHalf, kHalf, 0}, {}, 0, false, false},
        {{1, 1, 1}, {1}, 1, true, true},
        {{5}, {5}, 5, false, true},
        {{5, 1}, {5}, 5, false, true},
        {{1, 5, 1}, {1, 5}, 5, false, true},
        {{2, 2}, {2, 2}, 4, false, false},
        // Products that would wrap around to 0 and 1.
        {{kHalf, kHalf}, {kHalf, kHalf}, kMax, false, false},
        {{3, 0xAAAAAAAAAAAAAAABu}, {3, 0xAAAAAAAAAAAAAAABu}, kMax, false, false},
    };
    for (const auto& [dims, canonical, count, scalar, vector] : rows) {
        EXPECT_TRUE(dims.canonicalForm().isIdenticalTo(canonical)) << ::testing::PrintToString(canonical);
        EXPECT_TRUE(dims.countAllElements() == count && dims.isEmpty() == (count == 0)) << count;
        EXPECT_TRUE(dims.isScalar() == scalar && dims.isVector() == vector) << count;
        for (const auto& [other, otherCanonical, otherCount, s, v] : rows) {
            EXPECT_EQ(dims == other, canonical.isIdenticalTo(otherCanonical));
            EXPECT_EQ(dims.isIdenticalTo(other), &dims == &other);
        }
    }
}

TEST(ArrayIndexing, offsets_and_indices_of_every_element_agree_with_counting) {
    for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
        for (const Numbers& last : allIndices({4, 3, 4}, ordering)) {
            const ArrayDimensions dims{last[0] + 1, last[1] + 1, last[2] + 1};
            std::uint64_t offset = 0;
            for (Numbers indices : allIndices(dims.asVector(), ordering)) {
                ASSERT_EQ(indicesOf(ordering, offset, dims), indices);
                indices.push_back(0);
                ASSERT_EQ(offsetOf(ordering, indices, dims), offset);
                indices.resize(dims.canonicalForm().numberOfDimensions());
                ASSERT_EQ(offsetOf(ordering, indices, dims), offset++);
            }
            EXPECT_THROW_MSG(indicesOf(ordering, offset, dims), std::invalid_argument, "Too few indices");
        }
    }
    EXPECT_EQ(ArrayIndexing::CalculateDimStrideRowMajor(0, {2, 3, 4}), 12u);
    EXPECT_EQ(ArrayIndexing::CalculateDimStrideColumnMajor(2, {2, 3, 4}), 6u);
    EXPECT_EQ(ArrayIndexing::CalculateDimStrideRowMajor(kMax, {2, 3}), 0u);
    EXPECT_EQ(ArrayIndexing::CalculateDimStrideColumnMajor(2, {2, 3}), 0u);
}

TEST(ArrayIndexing, too_few_indices_always_fail_and_others_only_on_request) {
    const std::pair<Numbers, ArrayDimensions> outside[] = {{{3}, {3}},       {{2, 1}, {3}}, {{3, 0}, {3, 4}},
                                                           {{0, 4}, {3, 4}}, {{1}, {}},     {{0, 1}, {2, 0}}};
    for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
        for (const auto& row : outside) {
            EXPECT_THROW_MSG(offsetOf(ordering, row.first, row.second), std::out_of_range,
                             "Indices out of bounds");
        }
        EXPECT_THROW_MSG(offsetOf(ordering, {1}, {1, 3}, false), std::invalid_argument, "Too few indices");
        EXPECT_THROW_MSG(indicesOf(ordering, 0, {}), std::invalid_argument, "Too few indices");
        EXPECT_EQ(offsetOf(ordering, {}, {}) + offsetOf(ordering, {0, 0, 0}, {2, 0, 5}), 0u);
        EXPECT_EQ(offsetOf(ordering, {2, 5, 9}, {3, 1}, false), 2u);
    }
}

TEST(ArrayIndexing, zero_strides_and_products_beyond_64_bits) {
    EXPECT_EQ(indicesOf(RowMajor, 5, {3, 0}, false), (Numbers{0, 5}));
    EXPECT_EQ(indicesOf(ColumnMajor, 5, {0, 3}, false), (Numbers{0, 0}));
    EXPECT_EQ(indicesOf(ColumnMajor, 7, {3, 1}, false), (Numbers{7, 0}));
    EXPECT_EQ(offsetOf(RowMajor, {1, 0, 0}, {kHalf, kHalf, kHalf}), kMax);
    EXPECT_EQ(offsetOf(ColumnMajor, {7, 3, 0}, {kHalf, kHalf, kHalf}), 7 + 3 * kHalf);
    EXPECT_EQ(indicesOf(RowMajor, 5 + 3 * kHalf, {kHalf, kHalf, kHalf}), (Numbers{0, 3, 5}));
}
