#include <zelm/arrays/SlicePlan.h>

#include <gtest/gtest.h>

using namespace Zelm;
using details::SlicePlan;

TEST(SlicePlan, knows_its_largest_offset) {
    class Outside : public IndexItem {
    public:
        std::vector<std::uint64_t> values(std::uint64_t extent) const override { return {0, extent + 9}; }
        bool isValid(std::uint64_t) const override { return true; }
        Outside* clone() const override { return new Outside; }
    };
    const auto largest = [](const std::vector<IndexSet>& sets, const ArrayDimensions& dims) {
        return SlicePlan(sets, dims, RowMajor, RowMajor).largestOffset();
    };
    EXPECT_EQ(largest({Outside()}, {0}), 9u);
    EXPECT_EQ(largest({Outside(), Outside()}, {5, 6}), 14u * 6 + 15u);
    // The offset 2^64 would wrap around to the first element.
    EXPECT_EQ(largest(ArraySliceFromIndices({1ull << 31, 0}), {1ull << 33, 1ull << 33}), ~std::uint64_t{0});
}
