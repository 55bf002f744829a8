#include <zelm/arrays/IndexSet.h>

#include "ArrayModel.h"

#include <support/ExpectThrow.h>

#include <limits>
#include <stdexcept>
#include <type_traits>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kHalf = 1ull << 63;

static_assert(std::is_abstract_v<IndexItem> && std::has_virtual_destructor_v<IndexItem>);
static_assert(std::is_convertible_v<IndexRange, IndexSet> && std::is_convertible_v<IndexValue, IndexSet>);
static_assert(!std::is_convertible_v<int, IndexSet> && !std::is_polymorphic_v<IndexSet>);
static_assert(std::is_nothrow_move_constructible_v<IndexSet>);

IndexValue fromStart(std::uint64_t value) {
    return {value, false};
}

IndexRange range(std::uint64_t first, std::uint64_t last, std::uint64_t step = 1) {
    return {fromStart(first), fromStart(last), step};
}

Numbers listed(const IndexSet& set, std::uint64_t extent) {
    const std::set<std::uint64_t> values = set.values(extent);
    EXPECT_EQ(set.size(extent), values.size());
    return {values.begin(), values.end()};
}

/// A user's own item: its values are unsorted and doubled, and being asked for validity spoils it.
class Scattered : public IndexItem {
public:
    Numbers values(std::uint64_t) const override { return asked_ ? Numbers{} : Numbers{4, 0, 4, 2}; }
    bool isValid(std::uint64_t extent) const override {
        asked_ = true;
        return extent > 4;
    }
    Scattered* clone() const override { return new Scattered(*this); }

private:
    mutable bool asked_ = false;
};

/// Derived from a known item, yet with a meaning of its own.
class NextToo : public IndexValue {
public:
    using IndexValue::IndexValue;
    Numbers values(std::uint64_t extent) const override { return {offset(extent), offset(extent) + 1}; }
    NextToo* clone() const override { return new NextToo(*this); }
};

} // namespace

TEST(IndexValue, counts_from_the_start_or_back_from_the_last_index) {
    for (std::uint64_t extent = 1; extent <= 6; ++extent) {
        for (std::uint64_t i = 0; i < extent; ++i) {
            EXPECT_EQ(fromStart(i).offset(extent), i);
            EXPECT_EQ(IndexValue::end(i).offset(extent), extent - 1 - i);
            EXPECT_EQ(IndexValue::end(i).values(extent), Numbers{extent - 1 - i});
        }
        for (const std::uint64_t past : {extent, extent + 1, kHalf, kMax}) {
            for (const bool fromEnd : {false, true}) {
                const IndexValue value(past, fromEnd);
                EXPECT_FALSE(value.isValid(extent));
                EXPECT_THROW_MSG(value.offset(extent), std::out_of_range, "Index value out-of-range");
                EXPECT_THROW_MSG(value.values(extent), std::out_of_range, "Index value out-of-range");
                EXPECT_THROW_MSG(IndexSet(value).values(extent), std::out_of_range,
                                 "Index value out-of-range");
                EXPECT_THROW_MSG(IndexSet(fromStart(0), value).size(extent), std::out_of_range,
                                 "Index value out-of-range");
            }
        }
        EXPECT_TRUE(fromStart(extent - 1).isValid(extent) && IndexValue::end(extent - 1).isValid(extent));
    }
    EXPECT_FALSE(IndexValue().isValid(0));
    EXPECT_EQ(fromStart(5).offset(0), 5u);
    EXPECT_EQ(IndexValue::end(0).offset(0), kMax);
    EXPECT_EQ(IndexValue(), fromStart(0));
    EXPECT_NE(IndexValue(), IndexValue::end(0));
}

TEST(IndexValue, minus_moves_the_operand_toward_the_start) {
    IndexValue index = fromStart(7);
    EXPECT_EQ(&(index - 2), &index);
    EXPECT_EQ(index, fromStart(5));
    EXPECT_EQ(IndexValue::end(0) - 2, IndexValue::end(2));
    EXPECT_FALSE((index - 6).isValid(kMax));
    EXPECT_EQ(index.value, kMax);
}

TEST(IndexRange, values_and_validity) {
    EXPECT_EQ(IndexRange(fromStart(1), IndexValue::end(0), 2).values(6), (Numbers{1, 3, 5}));
    EXPECT_EQ(IndexRange(IndexValue::end(3), IndexValue::end(1) - 1, 1).values(6), (Numbers{2, 3}));
    EXPECT_TRUE(range(4, 1).isValid(5));
    EXPECT_FALSE(range(1, 3, 0).isValid(10));
    EXPECT_FALSE(range(10, 1).isValid(10));
    EXPECT_FALSE(IndexRange::all.isValid(0));
    for (std::uint64_t first = 0; first < 7; ++first) {
        for (std::uint64_t last = first; last < 7; ++last) {
            for (std::uint64_t step = 1; step < 9; ++step) {
                Numbers expected;
                for (std::uint64_t i = first; i <= last; i += step) {
                    expected.push_back(i);
                }
                ASSERT_EQ(range(first, last, step).values(7), expected);
                ASSERT_EQ(listed(range(first, last, step), 7), expected);
            }
        }
    }
    EXPECT_THROW_MSG(range(0, 5).values(5), std::out_of_range, "Index value out-of-range");
    EXPECT_THROW_MSG(range(5, 0).values(5), std::out_of_range, "Index value out-of-range");
}

TEST(IndexRange, extremes_end) {
    struct Row {
        IndexRange range;
        std::uint64_t extent;
        Numbers expected = {};
    };
    const Row ends[] = {
        {{fromStart(0), IndexValue::end(0), kHalf}, kHalf + 1, {0, kHalf}},
        {{fromStart(0), IndexValue::end(0), kHalf}, kMax, {0, kHalf}},
        {range(3, 5, kMax), 6, {3}},
        {range(kMax - 3, kMax - 1, 2), kMax, {kMax - 3, kMax - 1}},
        {IndexRange::all, 0, {}},
        {range(4, 3), 5, {}}, // one past the end: the count is 0
    };
    for (const Row& row : ends) {
        EXPECT_EQ(row.range.values(row.extent), row.expected);
        EXPECT_EQ(listed(row.range, row.extent), row.expected);
        EXPECT_EQ(listed(IndexSet(row.range, row.range), row.extent), row.expected);
    }
    const Row tooLong[] = {
        {range(4, 3, 2), 5},
        {range(5, 0, 17), 9},
        {range(5, 0, kMax), 9},
        {range(1, 3, 0), 9},
        {range(0, 0, 0), 1},
        {IndexRange::all, 1ull << 60},
        {{fromStart(0), IndexValue::end(0), 2}, 0},
    };
    for (const Row& row : tooLong) {
        EXPECT_THROW_MSG(row.range.values(row.extent), std::length_error, "vector<T> too long");
        EXPECT_THROW_MSG(IndexSet(row.range).values(row.extent), std::length_error, "vector<T> too long");
        EXPECT_THROW_MSG(IndexSet(row.range).size(row.extent), std::length_error, "vector<T> too long");
        EXPECT_THROW_MSG(IndexSet(fromStart(0), row.range).size(row.extent), std::length_error,
                         "vector<T> too long");
    }
    EXPECT_EQ(IndexSet(IndexRange::all).size(1ull << 40), 1ull << 40);
}

TEST(IndexSet, unites_items_in_any_order) {
    EXPECT_EQ(listed({fromStart(5), fromStart(2), range(1, 3)}, 6), (Numbers{1, 2, 3, 5}));
    EXPECT_EQ(listed({IndexValue::end(0), fromStart(5), range(0, 5, 5)}, 6), (Numbers{0, 5}));
    EXPECT_EQ(listed({}, 6), Numbers{});
    EXPECT_TRUE(IndexSet().isValid(0));
    EXPECT_FALSE(IndexSet(fromStart(1), range(0, 6)).isValid(6));
    EXPECT_TRUE(IndexSet(fromStart(1), range(0, 6)).isValid(7));
    // The first item that fails decides.
    EXPECT_THROW_MSG(IndexSet(range(4, 1), fromStart(9)).size(6), std::length_error, "vector<T> too long");
    EXPECT_THROW_MSG(IndexSet(fromStart(9), range(4, 1)).size(6), std::out_of_range,
                     "Index value out-of-range");
}

TEST(IndexSet, copies_are_deep_and_independent) {
    IndexSet set{fromStart(1)};
    IndexSet copy(set);
    copy.add(range(3, 4));
    EXPECT_EQ(listed(set, 6), Numbers{1});
    EXPECT_EQ(listed(copy, 6), (Numbers{1, 3, 4}));
    set = copy;
    copy = IndexSet();
    IndexSet& self = set;
    set = self;
    EXPECT_EQ(listed(set, 6), (Numbers{1, 3, 4}));
    const IndexSet taken(std::move(set));
    EXPECT_EQ(listed(taken, 6), (Numbers{1, 3, 4}));
}

TEST(IndexSet, items_of_users_are_asked_for_their_own_meaning) {
    const IndexSet scattered{Scattered(), fromStart(1)};
    EXPECT_FALSE(scattered.isValid(4));
    EXPECT_TRUE(scattered.isValid(5));
    EXPECT_EQ(listed(scattered, 5), (Numbers{0, 1, 2, 4}));
    EXPECT_EQ(listed(NextToo(2, false), 5), (Numbers{2, 3}));
    EXPECT_EQ(listed({NextToo(2, false), fromStart(0)}, 5), (Numbers{0, 2, 3}));
}

TEST(IndexSet, slice_of_one_element) {
    EXPECT_TRUE(ArraySliceFromIndices({}).empty());
    const std::vector<IndexSet> sets = ArraySliceFromIndices({1, kMax});
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(listed(sets[0], 3), Numbers{1});
    EXPECT_FALSE(sets[0].isValid(1));
    EXPECT_FALSE(sets[1].isValid(kMax));
}
