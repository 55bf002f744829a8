#include <zelm/arrays/ArrayIndexing.h>
#include <zelm/arrays/IndexMapper.h>
#include <zelm/arrays/SliceFlattener.h>

#include "ArrayModel.h"

#include <support/ExpectThrow.h>

#include <limits>
#include <stdexcept>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

const IndexSet kAll(IndexRange::all);
const IndexSet kReversed(IndexRange(IndexValue(2, false), IndexValue(0, false), 1));

IndexSet one(std::uint64_t index) {
    return IndexValue(index, false);
}

} // namespace

TEST(SliceFlattener, written_out_examples) {
    struct Row {
        std::vector<IndexSet> sets;
        ArrayDimensions dims;
        DataOrdering source, slice;
        Numbers sliceExtents, offsets;
    };
    const Row rows[] = {
        {ArraySliceFromIndices({1, 2}), {3, 4}, RowMajor, RowMajor, {1, 1}, {6}},
        {{kAll, one(1)}, {2, 3}, ColumnMajor, RowMajor, {2, 1}, {2, 3}},
        {{kAll, kAll}, {2, 3}, RowMajor, ColumnMajor, {2, 3}, {0, 3, 1, 4, 2, 5}},
        {{{IndexValue(3, false), IndexValue(0, false)}}, {4}, RowMajor, ColumnMajor, {2}, {0, 3}},
        {{IndexSet(), kAll}, {2, 3}, RowMajor, RowMajor, {0, 3}, {}},
        {{IndexSet(), IndexSet()}, {0, 3}, RowMajor, RowMajor, {0, 0}, {}},
        {{}, {}, RowMajor, RowMajor, {}, {}},
    };
    for (const Row& row : rows) {
        const SliceFlattener flattener(row.sets, row.dims, row.source, row.slice);
        EXPECT_TRUE(flattener.validSlice());
        EXPECT_EQ(flattener.sliceDimension().asVector(), row.sliceExtents);
        EXPECT_EQ(flattener.offsets(), row.offsets);
    }
}

TEST(SliceFlattener, agrees_with_counting_through_random_slices) {
    std::mt19937 random(20240501);
    std::size_t elements = 0;
    for (int i = 0; i < 2000; ++i) {
        const RandomSlice model(random);
        SliceFlattener flattener(model.sets, model.extents, model.source, model.slice);
        ASSERT_TRUE(flattener.validSlice());
        ASSERT_EQ(flattener.sliceDimension().asVector(), model.sliceExtents);
        ASSERT_EQ(flattener.offsets(), model.offsets);
        ASSERT_EQ(std::move(flattener).offsets(), model.offsets);
        elements += model.offsets.size();
    }
    EXPECT_GT(elements, 20000u);
}

TEST(SliceFlattener, dimensions_are_taken_in_order_up_to_the_first_that_does_not_fit) {
    struct Row {
        std::vector<IndexSet> sets;
        ArrayDimensions dims;
        Numbers sliceExtents;
    };
    const Row rows[] = {
        {{kAll, kAll}, {2, 3, 4}, {}},
        {{kAll}, {}, {}},
        {{}, {3}, {}},
        {{kAll, one(9)}, {3, 4}, {3}},
        {{kAll, one(9), kReversed}, {3, 4, 3}, {3}},
        {{one(3), kReversed}, {3, 3}, {}},
        {{kAll}, {0}, {}},
        {{IndexSet(), kAll}, {3, 0}, {0}},
    };
    for (const Row& row : rows) {
        const SliceFlattener flattener(row.sets, row.dims, RowMajor, RowMajor);
        EXPECT_FALSE(flattener.validSlice());
        EXPECT_EQ(flattener.sliceDimension().asVector(), row.sliceExtents);
        EXPECT_TRUE(flattener.offsets().empty());
    }
    // A set that fits may still fail, before a later one that does not fit.
    for (const auto& sets :
         {std::vector<IndexSet>{kReversed, one(9)}, {kAll, kReversed}, {kReversed, kAll}}) {
        EXPECT_THROW_MSG(SliceFlattener(sets, {3, 3}, RowMajor, RowMajor), std::length_error,
                         "vector<T> too long");
    }
}

TEST(SliceFlattener, more_elements_than_a_list_can_hold) {
    const std::uint64_t half = 1ull << 32;
    for (const ArrayDimensions& dims : {ArrayDimensions{half, half}, ArrayDimensions{half, 1ull << 28}}) {
        EXPECT_THROW_MSG(SliceFlattener({kAll, kAll}, dims, RowMajor, RowMajor), std::length_error,
                         "vector<T> too long");
    }
    const SliceFlattener corner(ArraySliceFromIndices({half - 1, half - 2}), {half, half}, RowMajor,
                                RowMajor);
    EXPECT_EQ(corner.offsets(), Numbers{std::numeric_limits<std::uint64_t>::max() - 1});
    EXPECT_EQ(SliceFlattener({kAll, IndexSet()}, {half, half}, RowMajor, RowMajor).offsets(), Numbers{});
}

TEST(IndexMapper, agrees_with_looking_the_elements_up) {
    const IndexMapper example(IndexSet(IndexValue(1, false), IndexValue(4, false)), {2, 3}, RowMajor,
                              ColumnMajor);
    EXPECT_EQ(example.offsets(), (Numbers{3, 2}));
    std::mt19937 random(7);
    for (int i = 0; i < 1000; ++i) {
        const auto source = DataOrdering(draw(random, 0, 1)), target = DataOrdering(draw(random, 0, 1));
        Numbers extents;
        for (std::uint64_t dimensions = draw(random, 1, 3); dimensions > 0; --dimensions) {
            extents.push_back(draw(random, 1, 4));
        }
        const auto places = storagePlaces(extents, source);
        const std::vector<Numbers> elements = allIndices(extents, target);
        const RandomSet drawn(random, elements.size());
        Numbers expected;
        for (const std::uint64_t number : drawn.indices()) {
            expected.push_back(places.at(elements[number]));
        }
        IndexMapper mapper(drawn.set, extents, source, target);
        ASSERT_TRUE(mapper.validList());
        ASSERT_EQ(mapper.sliceDimension().asVector(), Numbers{expected.size()});
        ASSERT_EQ(mapper.offsets(), expected);
        ASSERT_EQ(std::move(mapper).offsets(), expected);
    }
}

TEST(IndexMapper, sets_that_do_not_fit_the_element_count) {
    for (const ArrayDimensions& dims : {ArrayDimensions{}, ArrayDimensions{2, 0}, ArrayDimensions{2, 3}}) {
        const IndexMapper mapper(one(6), dims, RowMajor, ColumnMajor);
        EXPECT_FALSE(mapper.validList());
        EXPECT_TRUE(mapper.sliceDimension().isIdenticalTo({}));
        EXPECT_TRUE(mapper.offsets().empty());
        const IndexMapper nothing(IndexSet(), dims, RowMajor, ColumnMajor);
        EXPECT_TRUE(nothing.validList());
        EXPECT_TRUE(nothing.sliceDimension().isIdenticalTo({0}));
    }
    EXPECT_THROW_MSG(IndexMapper(kReversed, {2, 3}, RowMajor, ColumnMajor), std::length_error,
                     "vector<T> too long");
    EXPECT_THROW_MSG(IndexMapper(kAll, {1ull << 32, 1ull << 32}, RowMajor, ColumnMajor), std::length_error,
                     "vector<T> too long");
}
