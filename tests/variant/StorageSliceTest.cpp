#include <arrays/ArrayModel.h>
#include <variant/StorageSamples.h>

using namespace Zelm;
using namespace Zelm::Testing;

TEST(StorageLoops, converting_the_ordering_keeps_every_element_at_its_indices) {
    std::mt19937 random(3);
    const auto check = [](auto tag, const Numbers& extents, DataOrdering from) {
        using T = typename decltype(tag)::type;
        const DataOrdering into = from == RowMajor ? ColumnMajor : RowMajor;
        const auto before = storagePlaces(extents, from);
        std::vector<T> expected(before.size());
        for (const auto& [indices, offset] : storagePlaces(extents, into)) {
            expected[offset] = sample<T>(before.at(indices));
        }
        const Storage storage = storageOf<T>(samples<T>(before.size()), extents, from);
        storage->convertDataOrdering(into);
        expectHolds<T>(*storage, expected, extents, into);
        storage->convertDataOrdering(into);
        storage->convertDataOrdering(from);
        EXPECT_TRUE(holds<T>(*storage, samples<T>(before.size())));
    };
    forEachKindOfElement([&](auto tag) {
        for (int round = 0; round < 20; ++round) {
            Numbers extents(draw(random, 1, 5));
            for (std::uint64_t& extent : extents) {
                extent = draw(random, 1, 4);
            }
            check(tag, extents, DataOrdering(round % 2));
        }
        check(tag, {67, 35}, RowMajor);
    });
    check(details::ElementTag<double>(), {70, 3, 130}, ColumnMajor);
    check(details::ElementTag<double>(), {1, 3, 1, 2, 1}, RowMajor);
}

TEST(StorageLoops, slices_and_their_assignment_follow_nested_loops) {
    std::mt19937 random(4);
    forEachKindOfElement([&](auto tag) {
        using T = typename decltype(tag)::type;
        int filled = 0;
        for (int round = 0; round < 80; ++round) {
            const RandomSlice drawn(random);
            if (drawn.slice != drawn.source || drawn.offsets.empty()) {
                continue;
            }
            ++filled;
            std::vector<T> elements = samples<T>(ArrayDimensions(drawn.extents).countAllElements());
            const Storage storage = storageOf<T>(elements, drawn.extents, drawn.source);
            std::vector<T> selected;
            for (const std::uint64_t offset : drawn.offsets) {
                selected.push_back(elements[offset]);
            }
            const auto slice = storage->slice(drawn.sets, storage);
            expectHolds<T>(*slice, selected, drawn.sliceExtents, drawn.source);

            const std::vector<T> fresh = samples<T>(drawn.offsets.size(), 20);
            Numbers valueExtents = drawn.sliceExtents;
            valueExtents.resize(valueExtents.size() + draw(random, 0, 2), 1);
            for (std::uint64_t k = 0; k < fresh.size(); ++k) {
                elements[drawn.offsets[k]] = fresh[k];
            }
            storage->assignSlice(drawn.sets, storage,
                                 Variant(fresh, valueExtents, DataOrdering(draw(random, 0, 1))));
            expectHolds<T>(*storage, elements, drawn.extents, drawn.source);
        }
        EXPECT_GT(filled, 10);
    });
}

TEST(StorageLoops, long_runs_of_every_stride) {
    const std::vector<double> elements = samples<double>(60 * 50);
    const Storage storage = storageOf<double>(elements, {60, 50});
    for (const std::uint64_t step : {1u, 2u, 7u, 25u}) {
        const std::vector<IndexSet> sets{IndexRange(IndexValue(3, false), IndexValue(40, false), step),
                                         IndexRange(IndexValue(1, false), IndexValue::end(0), step)};
        std::vector<double> expected;
        for (std::uint64_t row = 3; row <= 40; row += step) {
            for (std::uint64_t column = 1; column < 50; column += step) {
                expected.push_back(elements[row * 50 + column]);
            }
        }
        EXPECT_TRUE(holds<double>(*storage->slice(sets, storage), expected)) << step;
    }
}
