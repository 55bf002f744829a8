#include <zelm/arrays/SlicePlan.h>

#include "ArrayModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <tuple>

using namespace Zelm;
using namespace Zelm::Testing;
using details::IndexRun;
using details::SlicePlan;

namespace {

using Runs = std::vector<std::tuple<std::uint64_t, std::uint64_t, std::uint64_t>>;

const IndexSet kAll(IndexRange::all);

IndexRange range(std::uint64_t first, std::uint64_t last, std::uint64_t step) {
    return {IndexValue(first, false), IndexValue(last, false), step};
}

Runs runsOf(const SlicePlan& plan) {
    Runs runs;
    plan.forEachRun([&](const IndexRun& run) { runs.emplace_back(run.first, run.step, run.count); });
    return runs;
}

} // namespace

TEST(SlicePlan, size_and_largest_offset_of_random_slices) {
    std::mt19937 random(99);
    std::size_t joined = 0;
    for (int i = 0; i < 1000; ++i) {
        const RandomSlice model(random);
        const SlicePlan plan(model.sets, model.extents, model.source, model.slice);
        const auto largest = std::max_element(model.offsets.begin(), model.offsets.end());
        ASSERT_EQ(plan.size(), model.offsets.size());
        ASSERT_EQ(plan.largestOffset(), largest == model.offsets.end() ? 0 : *largest);
        joined += runsOf(plan).size() == 1 && model.sliceExtents.size() > 1 && plan.size() > 4;
    }
    EXPECT_GT(joined, 50u);
}

TEST(SlicePlan, dimensions_are_joined_where_strides_allow) {
    struct Row {
        std::vector<IndexSet> sets;
        ArrayDimensions dims;
        DataOrdering source, slice;
        Runs runs;
    };
    const IndexSet scattered{IndexValue(0, false), IndexValue(4, false), IndexValue(5, false),
                             IndexValue(6, false)};
    const Row rows[] = {
        {{range(2, 4, 1), kAll, kAll}, {9, 5, 4}, RowMajor, RowMajor, {{40, 1, 60}}},
        {{kAll, kAll, range(2, 4, 1)}, {4, 5, 9}, ColumnMajor, ColumnMajor, {{40, 1, 60}}},
        {{kAll, range(1, 5, 2)}, {50, 6}, RowMajor, RowMajor, {{1, 2, 150}}},
        {{kAll, IndexValue(3, false), kAll}, {50, 6, 1}, RowMajor, RowMajor, {{3, 6, 50}}},
        {{kAll, kAll}, {2, 3}, RowMajor, ColumnMajor, {{0, 3, 2}, {1, 3, 2}, {2, 3, 2}}},
        {{kAll, range(0, 1, 1)}, {3, 4}, RowMajor, RowMajor, {{0, 1, 2}, {4, 1, 2}, {8, 1, 2}}},
        {{IndexValue(1, false), scattered}, {2, 8}, RowMajor, RowMajor, {{8, 4, 2}, {13, 1, 2}}},
        {{IndexValue(1, false), IndexValue(2, false)}, {2, 8}, RowMajor, RowMajor, {{10, 1, 1}}},
        {{kAll, {range(0, 3, 1), IndexValue(4, false)}}, {2, 5}, RowMajor, RowMajor, {{0, 1, 10}}},
        {{kAll, IndexSet()}, {2, 5}, RowMajor, RowMajor, {}},
        {{kAll, IndexValue(5, false)}, {2, 5}, RowMajor, RowMajor, {}},
        {{kAll}, {2, 5}, RowMajor, RowMajor, {}},
        {std::vector<IndexSet>(100000, kAll), Numbers(100000, 1), RowMajor, RowMajor, {{0, 1, 1}}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(runsOf(SlicePlan(row.sets, row.dims, row.source, row.slice)), row.runs);
    }
}

TEST(SlicePlan, huge_virtual_slices_cost_nothing) {
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
    const SlicePlan large({kAll, kAll}, {1ull << 30, 1ull << 29}, RowMajor, RowMajor);
    EXPECT_EQ(large.size(), 1ull << 59);
    EXPECT_EQ(large.largestOffset(), (1ull << 59) - 1);
    EXPECT_EQ(runsOf(large), (Runs{{0, 1, 1ull << 59}}));
    const SlicePlan beyond({kAll, kAll}, {1ull << 33, 1ull << 33}, RowMajor, RowMajor);
    EXPECT_EQ(beyond.size(), kMax);
    EXPECT_EQ(beyond.largestOffset(), kMax);
    // The offset 2^64 would wrap around to the first element.
    const SlicePlan wrapping(ArraySliceFromIndices({1ull << 31, 0}), {1ull << 33, 1ull << 33}, RowMajor,
                             RowMajor);
    EXPECT_EQ(wrapping.size(), 1u);
    EXPECT_EQ(wrapping.largestOffset(), kMax);
}

TEST(SlicePlan, indices_of_users_items_that_lie_outside_are_seen_in_the_largest_offset) {
    class Outside : public IndexItem {
    public:
        Numbers values(std::uint64_t extent) const override { return {0, extent + 9}; }
        bool isValid(std::uint64_t) const override { return true; }
        Outside* clone() const override { return new Outside; }
    };
    const auto largest = [](const ArrayDimensions& dims) {
        std::vector<IndexSet> sets(dims.numberOfDimensions(), Outside());
        return SlicePlan(sets, dims, RowMajor, RowMajor).largestOffset();
    };
    EXPECT_EQ(largest({5}), 14u);
    EXPECT_EQ(largest({5, 6}), 14u * 6 + 15u);
    EXPECT_EQ(largest({0}), 9u);
    // Trailing extents of 1 and shapes of several dimensions without elements have no strides.
    EXPECT_EQ(largest({5, 1}), 14u);
    EXPECT_EQ(largest({5, 0}), 0u);
}
