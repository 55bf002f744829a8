#include <zelm/arrays/IndexMapper.h>
#include <zelm/arrays/SliceFlattener.h>

#include <arrays/ArrayModel.h>
#include <support/ExpectThrow.h>

#include <map>
#include <random>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr std::uint64_t kMax = ~std::uint64_t{0}, kHalf = std::uint64_t{1} << 63;

static_assert(!std::is_convertible_v<int, IndexSet> && !std::is_polymorphic_v<IndexSet>);

IndexRange range(std::uint64_t first, std::uint64_t last, std::uint64_t step = 1) {
    return {IndexValue(first, false), IndexValue(last, false), step};
}

Numbers listed(const IndexSet& set, std::uint64_t extent) {
    const std::set<std::uint64_t> values = set.values(extent);
    EXPECT_EQ(set.size(extent), values.size());
    return {values.begin(), values.end()};
}

/// A user's own item: its values are unsorted and doubled, and being asked for validity spoils it.
class Scattered : public IndexValue {
public:
    Numbers values(std::uint64_t) const override { return asked_ ? Numbers{} : Numbers{4, 0, 4, 2}; }
    bool isValid(std::uint64_t extent) const override { return (asked_ = true) && extent > 4; }
    Scattered* clone() const override { return new Scattered(*this); }

private:
    mutable bool asked_ = false;
};

const IndexSet kAll(IndexRange::all), kNine(IndexValue(9, false)), kReversed(range(2, 0));

/// A random set for an extent, and the indices that it means.
struct RandomSet {
    IndexSet set;
    std::set<std::uint64_t> indices;

    RandomSet(std::mt19937& random, std::uint64_t extent) {
        const auto written = [&](std::uint64_t index) {
            return random() % 2 ? IndexValue(index, false) : IndexValue::end(extent - 1 - index);
        };
        for (std::uint64_t items = extent == 0 ? 0 : random() % 4; items > 0; --items) {
            const std::uint64_t first = random() % 2 ? 0 : random() % extent;
            const std::uint64_t last = random() % 2 ? extent - 1 : first + random() % (extent - first);
            const std::uint64_t step = 1 + random() % 2;
            first == last ? set.add(written(first))
                          : set.add(IndexRange(written(first), written(last), step));
            for (std::uint64_t i = first; i <= last; i += step) {
                indices.insert(i);
            }
        }
    }
};

} // namespace

TEST(IndexValue, counts_from_either_end) {
    EXPECT_EQ(IndexValue(3, false).offset(5) + IndexValue::end(1).offset(5), 6u);
    for (const IndexValue& past : {IndexValue(5, false), IndexValue::end(5), IndexValue(kMax, true)}) {
        EXPECT_FALSE(past.isValid(5));
        EXPECT_THROW_MSG(past.offset(5), std::out_of_range, "Index value out-of-range");
        EXPECT_THROW_MSG(IndexSet(range(0, 1), past).size(5), std::out_of_range, "Index value out-of-range");
    }
    IndexValue index(7, false);
    EXPECT_TRUE(&(index - 2) == &index && index == IndexValue(5, false) && !(index - 6).isValid(kMax));
    EXPECT_EQ(IndexValue::end(0) - 2, IndexValue::end(2));
}

TEST(IndexRange, extremes_end) {
    const std::tuple<IndexRange, std::uint64_t, Numbers> ends[] = {
        {{IndexValue(), IndexValue::end(0), kHalf}, kHalf + 1, {0, kHalf}},
        {range(3, 5, kMax), 6, {3}},
        {range(kMax - 3, kMax - 1, 2), kMax, {kMax - 3, kMax - 1}},
        {IndexRange::all, 0, {}},
        {range(4, 3), 5, {}}, // one past the end: the count is 0
    };
    for (const auto& [item, extent, expected] : ends) {
        EXPECT_EQ(item.values(extent), expected);
        EXPECT_EQ(listed(IndexSet(item, item), extent), expected);
    }
    for (const IndexRange& item : {range(4, 3, 2), range(5, 0, kMax), range(1, 3, 0), IndexRange::all}) {
        const std::uint64_t extent = std::uint64_t{1} << 60;
        EXPECT_THROW_MSG(item.values(extent), std::length_error, "vector<T> too long");
        EXPECT_THROW_MSG(IndexSet(item).size(extent), std::length_error, "vector<T> too long");
        EXPECT_THROW_MSG(IndexSet(IndexValue(), item).values(extent), std::length_error,
                         "vector<T> too long");
    }
    EXPECT_TRUE(range(4, 1).isValid(5) && !range(1, 3, 0).isValid(10) && !range(10, 1).isValid(10));
    EXPECT_EQ(IndexSet(IndexRange::all).size(1ull << 40), 1ull << 40);
}

TEST(IndexSet, unites_items_in_any_order_and_owns_them) {
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        const RandomSet drawn(random, 12);
        ASSERT_TRUE(drawn.set.values(12) == drawn.indices && drawn.set.isValid(12));
        ASSERT_EQ(drawn.set.size(12), drawn.indices.size());
    }
    EXPECT_TRUE(IndexSet().isValid(0) && !IndexSet(IndexValue(), range(0, 6)).isValid(6));
    IndexSet set{IndexValue(1, false)};
    IndexSet copy(set);
    copy.add(range(3, 4));
    EXPECT_EQ(listed(set, 6), Numbers{1});
    set = copy;
    copy = IndexSet();
    EXPECT_EQ(listed(set, 6), (Numbers{1, 3, 4}));
    const IndexSet scattered{Scattered(), IndexValue(1, false)};
    EXPECT_TRUE(scattered.isValid(5) && !scattered.isValid(4));
    EXPECT_EQ(listed(scattered, 5), (Numbers{0, 1, 2, 4}));
}

TEST(SliceFlattener, agrees_with_counting_through_random_slices) {
    std::mt19937 random(20240501);
    for (int round = 0; round < 2000; ++round) {
        const auto source = DataOrdering(random() % 2), order = DataOrdering(random() % 2);
        Numbers extents, sliceExtents, offsets;
        std::vector<IndexSet> sets;
        std::vector<Numbers> chosen;
        for (auto dimensions = 1 + random() % 4; dimensions > 0; --dimensions) {
            extents.push_back(random() % 10 ? 1 + random() % 7 : 0);
            const RandomSet drawn(random, extents.back());
            sets.push_back(drawn.set);
            chosen.emplace_back(drawn.indices.begin(), drawn.indices.end());
            sliceExtents.push_back(chosen.back().size());
        }
        std::map<Numbers, std::uint64_t> places;
        for (const Numbers& indices : allIndices(extents, source)) {
            places.emplace(indices, places.size());
        }
        for (Numbers element : allIndices(sliceExtents, order)) {
            for (std::size_t i = 0; i < element.size(); ++i) {
                element[i] = chosen[i][element[i]];
            }
            offsets.push_back(places.at(element));
        }
        const SliceFlattener flattener(sets, extents, source, order);
        ASSERT_TRUE(flattener.validSlice());
        ASSERT_EQ(flattener.sliceDimension().asVector(), sliceExtents);
        ASSERT_EQ(flattener.offsets(), offsets);
    }
    EXPECT_EQ(SliceFlattener(ArraySliceFromIndices({1, 2}), {3, 4}, RowMajor, RowMajor).offsets(),
              Numbers{6});
    EXPECT_TRUE(SliceFlattener({}, {}, RowMajor, RowMajor).validSlice());
    // Whatever is not row-major visits a slice in column-major order.
    EXPECT_EQ(SliceFlattener({kAll, kAll}, {2, 3}, RowMajor, DataOrdering(2)).offsets(),
              (Numbers{0, 3, 1, 4, 2, 5}));
}

TEST(SliceFlattener, dimensions_are_taken_in_order_up_to_the_first_that_does_not_fit) {
    const std::tuple<std::vector<IndexSet>, ArrayDimensions, Numbers> rows[] = {
        {{kAll, kAll}, {2, 3, 4}, {}},    {{kAll}, {}, {}},  {{kAll, kNine, kReversed}, {3, 4, 3}, {3}},
        {{kNine, kReversed}, {3, 3}, {}}, {{kAll}, {0}, {}}, {{IndexSet(), kAll}, {3, 0}, {0}},
    };
    for (const auto& [sets, dims, sliceExtents] : rows) {
        const SliceFlattener flattener(sets, dims, RowMajor, RowMajor);
        EXPECT_EQ(flattener.sliceDimension().asVector(), sliceExtents);
        EXPECT_TRUE(!flattener.validSlice() && flattener.offsets().empty());
    }
    EXPECT_THROW_MSG(SliceFlattener({kReversed, kNine}, {3, 3}, RowMajor, RowMajor), std::length_error,
                     "vector<T> too long");
    EXPECT_THROW_MSG(SliceFlattener({kAll, kAll}, {1ull << 32, 1ull << 32}, RowMajor, RowMajor),
                     std::length_error, "vector<T> too long");
}

TEST(IndexMapper, takes_from_the_whole_array_as_a_slice) {
    std::mt19937 random(7);
    for (int i = 0; i < 1000; ++i) {
        const auto source = DataOrdering(random() % 2), target = DataOrdering(random() % 2);
        const ArrayDimensions dims{1 + random() % 4, 1 + random() % 4, 1 + random() % 4};
        const Numbers places = SliceFlattener({kAll, kAll, kAll}, dims, source, target).offsets();
        const RandomSet drawn(random, places.size());
        Numbers expected;
        for (const std::uint64_t number : drawn.indices) {
            expected.push_back(places[number]);
        }
        const IndexMapper mapper(drawn.set, dims, source, target);
        ASSERT_TRUE(mapper.validList() && mapper.sliceDimension() == ArrayDimensions{expected.size()});
        ASSERT_EQ(mapper.offsets(), expected);
    }
    const IndexMapper outside(kNine, {2, 3}, RowMajor, ColumnMajor);
    EXPECT_TRUE(!outside.validList() && outside.offsets().empty());
    EXPECT_TRUE(IndexMapper({}, {}, RowMajor, ColumnMajor).sliceDimension().isIdenticalTo({0}));
}
