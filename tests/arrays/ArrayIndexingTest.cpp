#include <zelm/arrays/ArrayIndexing.h>

#include "ArrayModel.h"

#include <support/ExpectThrow.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

static_assert(RowMajor == 0 && ColumnMajor == 1);
static_assert(std::is_same_v<std::underlying_type_t<DataOrdering>, int>);
static_assert(std::is_nothrow_move_constructible_v<ArrayDimensions> &&
              std::is_nothrow_move_assignable_v<ArrayDimensions>);

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

std::uint64_t strideOf(DataOrdering ordering, std::uint64_t dimension, const ArrayDimensions& dims) {
    return ordering == RowMajor ? ArrayIndexing::CalculateDimStrideRowMajor(dimension, dims)
                                : ArrayIndexing::CalculateDimStrideColumnMajor(dimension, dims);
}

/// The canonical form by its definition: an empty product wins over trailing 1s.
Numbers canonical(Numbers extents) {
    if (std::count(extents.begin(), extents.end(), 0u) > 0) {
        return {};
    }
    while (extents.size() > 1 && extents.back() == 1) {
        extents.pop_back();
    }
    return extents;
}

} // namespace

TEST(ArrayDimensions, properties_of_shapes) {
    struct Row {
        ArrayDimensions dims, canonicalForm;
        std::uint64_t count;
        bool empty, scalar, vector;
    };
    const Row rows[] = {
        {{}, {}, 0, true, false, false},
        {{0}, {}, 0, true, false, false},
        {{0, 1}, {}, 0, true, false, false},
        {{1, 1, 1}, {1}, 1, false, true, true},
        {{5}, {5}, 5, false, false, true},
        {{1, 2, 1}, {1, 2}, 2, false, false, true},
        {{1, 7, 1}, {1, 7}, 7, false, false, true},
        {{2, 2}, {2, 2}, 4, false, false, false},
        {{kMax}, {kMax}, kMax, false, false, true},
        // Products that would wrap around to 0 and 1.
        {{1ull << 32, 1ull << 32}, {1ull << 32, 1ull << 32}, kMax, false, false, false},
        {{3, 0xAAAAAAAAAAAAAAABu}, {3, 0xAAAAAAAAAAAAAAABu}, kMax, false, false, false},
        {{1ull << 32, 1ull << 32, 0}, {}, 0, true, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.dims.asVector()));
        EXPECT_TRUE(row.dims.canonicalForm().isIdenticalTo(row.canonicalForm));
        EXPECT_EQ(row.dims.canonicalSize(), row.canonicalForm.numberOfDimensions());
        EXPECT_EQ(row.dims.countAllElements(), row.count);
        EXPECT_EQ(row.dims.isEmpty(), row.empty);
        EXPECT_EQ(row.dims.isScalar(), row.scalar);
        EXPECT_EQ(row.dims.isVector(), row.vector);
    }
}

TEST(ArrayDimensions, equality_is_that_of_canonical_forms) {
    std::vector<Numbers> shapes;
    for (std::size_t length = 0; length <= 3; ++length) {
        const auto lists = allLists(length, 0, 2);
        shapes.insert(shapes.end(), lists.begin(), lists.end());
    }
    ASSERT_EQ(shapes.size(), 1u + 3 + 9 + 27);
    for (const Numbers& a : shapes) {
        for (const Numbers& b : shapes) {
            const ArrayDimensions left(a), right(b);
            EXPECT_EQ(left == right, canonical(a) == canonical(b));
            EXPECT_NE(left == right, left != right);
            EXPECT_EQ(left.isEquivalentTo(right), left == right);
            EXPECT_EQ(left.isIdenticalTo(right), a == b);
        }
    }
}

TEST(ArrayDimensions, extents_are_moved_in_and_written_in_place) {
    Numbers extents{3, 4};
    const std::uint64_t* place = extents.data();
    ArrayDimensions dims(std::move(extents));
    dims[1] = 9;
    EXPECT_EQ(std::as_const(dims)[1], 9u);
    EXPECT_EQ(dims.extents().data(), place);
    EXPECT_EQ(dims.asVector(), Numbers(dims.begin(), dims.end()));
}

TEST(ArrayIndexing, offsets_and_indices_of_every_element_agree_with_counting) {
    for (std::size_t length = 1; length <= 4; ++length) {
        for (const Numbers& extents : allLists(length, 1, 4)) {
            for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
                std::uint64_t offset = 0;
                for (Numbers indices : allIndices(extents, ordering)) {
                    ASSERT_EQ(indicesOf(ordering, offset, extents), indices);
                    ASSERT_EQ(indicesOf(ordering, offset, extents, false), indices);
                    ASSERT_EQ(offsetOf(ordering, indices, extents), offset);
                    indices.push_back(0);
                    ASSERT_EQ(offsetOf(ordering, indices, extents), offset);
                    indices.resize(canonical(extents).size());
                    ASSERT_EQ(offsetOf(ordering, indices, extents), offset);
                    ++offset;
                }
                ASSERT_EQ(offset, ArrayDimensions(extents).countAllElements());
                EXPECT_THROW_MSG(indicesOf(ordering, offset, extents), std::invalid_argument,
                                 "Too few indices");
            }
        }
    }
}

TEST(ArrayIndexing, strides_are_products_of_stored_extents) {
    for (const Numbers& e : allLists(3, 0, 3)) {
        const Numbers rowMajor{e[1] * e[2], e[2], 1}, columnMajor{1, e[0], e[0] * e[1]};
        EXPECT_EQ(details::stridesOf(e, RowMajor), rowMajor);
        EXPECT_EQ(details::stridesOf(e, ColumnMajor), columnMajor);
        for (std::uint64_t i = 0; i < 3; ++i) {
            EXPECT_EQ(strideOf(RowMajor, i, e), rowMajor[i]);
            EXPECT_EQ(strideOf(ColumnMajor, i, e), columnMajor[i]);
        }
    }
    for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
        EXPECT_EQ(strideOf(ordering, 2, {2, 3}), 0u);
        EXPECT_EQ(strideOf(ordering, kMax, {2, 3}), 0u);
        EXPECT_EQ(strideOf(ordering, 0, {}), 0u);
        EXPECT_EQ(details::stridesOf({}, ordering), Numbers{});
    }
}

TEST(ArrayIndexing, too_few_indices_always_fail_and_others_only_on_request) {
    struct Row {
        Numbers indices;
        ArrayDimensions dims;
    };
    const Row tooFew[] = {{{}, {3}}, {{1}, {1, 3}}, {{9}, {2, 2}}};
    const Row outside[] = {
        {{3}, {3}}, {{2, 1}, {3}},    {{2, 0, 1}, {3}}, {{0, 4}, {3, 4}},    {{3, 0}, {3, 4}},
        {{1}, {}},  {{0, 1}, {2, 0}}, {{2, 1}, {3, 1}}, {{kMax, 0}, {3, 4}},
    };
    for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
        for (const Row& row : tooFew) {
            EXPECT_THROW_MSG(offsetOf(ordering, row.indices, row.dims), std::invalid_argument,
                             "Too few indices");
            EXPECT_THROW_MSG(offsetOf(ordering, row.indices, row.dims, false), std::invalid_argument,
                             "Too few indices");
        }
        for (const Row& row : outside) {
            EXPECT_THROW_MSG(offsetOf(ordering, row.indices, row.dims), std::out_of_range,
                             "Indices out of bounds");
            EXPECT_NO_THROW(offsetOf(ordering, row.indices, row.dims, false));
        }
        EXPECT_EQ(offsetOf(ordering, {}, {}), 0u);
        EXPECT_EQ(offsetOf(ordering, {}, {2, 0}), 0u);
        EXPECT_EQ(offsetOf(ordering, {0, 0, 0}, {2, 0, 5}), 0u);
        EXPECT_EQ(offsetOf(ordering, {2, 5, 9}, {3, 1}, false), 2u);
    }
    EXPECT_EQ(offsetOf(RowMajor, {5, 7}, {3, 4}, false), 27u);
    EXPECT_EQ(offsetOf(ColumnMajor, {5, 7}, {3, 4}, false), 26u);
}

TEST(ArrayIndexing, indices_of_offsets_that_no_element_has) {
    for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
        for (const ArrayDimensions& dims : {ArrayDimensions{}, ArrayDimensions{0}, ArrayDimensions{2, 0}}) {
            EXPECT_THROW_MSG(indicesOf(ordering, 0, dims), std::invalid_argument, "Too few indices");
        }
        EXPECT_EQ(indicesOf(ordering, 3, {}, false), Numbers{});
        // A stride of 0 would end the process in a division.
        for (const Numbers& extents : allLists(3, 0, 2)) {
            EXPECT_EQ(indicesOf(ordering, 5, extents, false).size(), 3u);
        }
    }
    // Past the end the slowest dimension takes the rest, but column-major leaves extents of 1 at index 0.
    EXPECT_EQ(indicesOf(RowMajor, 7, {1, 3}, false), (Numbers{2, 1}));
    EXPECT_EQ(indicesOf(ColumnMajor, 7, {3, 1}, false), (Numbers{7, 0}));
    EXPECT_EQ(indicesOf(RowMajor, 5, {3, 0}, false), (Numbers{0, 5}));
    EXPECT_EQ(indicesOf(ColumnMajor, 5, {0, 3}, false), (Numbers{0, 0}));
    Numbers cleared{1, 2};
    EXPECT_THROW(ArrayIndexing::CalculateIndicesRowMajor(cleared, 6, {2, 3}, true), std::invalid_argument);
    EXPECT_TRUE(cleared.empty());
}

TEST(ArrayIndexing, products_beyond_64_bits_saturate) {
    const std::uint64_t half = 1ull << 32;
    const ArrayDimensions dims{half, half, half};
    EXPECT_EQ(details::stridesOf(dims, RowMajor), (Numbers{kMax, half, 1}));
    EXPECT_EQ(details::stridesOf(dims, ColumnMajor), (Numbers{1, half, kMax}));
    EXPECT_EQ(strideOf(RowMajor, 0, dims), kMax);
    EXPECT_EQ(strideOf(ColumnMajor, 2, dims), kMax);
    EXPECT_EQ(offsetOf(RowMajor, {1, 0, 0}, dims), kMax);
    EXPECT_EQ(offsetOf(ColumnMajor, {7, 3, 0}, dims), 7 + 3 * half);
    EXPECT_EQ(offsetOf(RowMajor, {half - 1, half - 1}, {half, half}), kMax);
    EXPECT_EQ(indicesOf(RowMajor, 5 + 3 * half, dims), (Numbers{0, 3, 5}));
    EXPECT_EQ(indicesOf(ColumnMajor, 5 + 3 * half, dims), (Numbers{5, 3, 0}));
}
