#include <arrays/ArrayModel.h>
#include <variant/Samples.h>

#include <zelm/arrays/SliceFlattener.h>
#include <zelm/variant/VectorVariantStorage.h>

#include <random>

using namespace Zelm;
using namespace Zelm::Testing;
using details::AbstractVariantStorage;
using VariantOps::constructVariantStorage;

namespace {

DataOrdering otherThan(DataOrdering ordering) {
    return ordering == RowMajor ? ColumnMajor : RowMajor;
}

std::mt19937 s_random(3);

std::uint64_t draw(std::uint64_t low, std::uint64_t high) {
    return std::uniform_int_distribution<std::uint64_t>(low, high)(s_random);
}

/// Random extents and a set for each of them.
std::vector<IndexSet> drawSets(Numbers& extents) {
    std::vector<IndexSet> sets;
    extents.resize(draw(1, 5));
    for (std::uint64_t& extent : extents) {
        extent = draw(1, 2 + 20 / extents.size());
        const std::uint64_t first = draw(0, extent - 1), last = draw(first, extent - 1);
        sets.emplace_back(IndexRange(IndexValue(first, false), IndexValue(last, false), draw(1, 2)),
                          IndexValue(draw(0, extent - 1), true));
    }
    return sets;
}

/// Expects that each element can be read under its indices when the storage has changed its ordering.
template <class T>
void expectConversionByIndex(const Numbers& extents, DataOrdering from) {
    const std::vector<T> elements = samples<T>(ArrayDimensions(extents).countAllElements());
    const Storage before = storageOf<T>(elements, extents, from), after(before->clone());
    after->convertDataOrdering(otherThan(from));
    EXPECT_EQ(after->dataOrdering(), otherThan(from));
    for (const Numbers& indices : allIndices(extents, RowMajor)) {
        EXPECT_TRUE(same<T>(*static_cast<const T*>(before->element(indices)),
                            *static_cast<const T*>(after->element(indices))));
    }
}

const std::vector<IndexSet> kAll{IndexRange::all, IndexRange::all};

} // namespace

TEST(Storage, five_construction_forms_of_every_element_type) {
    forEachElementType([](auto tag) {
        using T = typename decltype(tag)::type;
        const auto expectMade = [](AbstractVariantStorage* made, const std::vector<T>& elements,
                                   const ArrayDimensions& shape, DataOrdering ordering) {
            const std::unique_ptr<AbstractVariantStorage> owner(made);
            expectHolds<T>(*made, elements, shape, ordering);
            EXPECT_EQ(made->wellKnownType(), details::wellKnownTypeOf<T>);
        };
        // A shape without elements counts as omitted, whatever the data.
        const T one = sample<T>(1), two = sample<T>(2);
        expectMade(constructVariantStorage<T>(sample<T>(1)), {one}, {1}, RowMajor);
        expectMade(constructVariantStorage<T>({one, two}), {one, two}, {2}, RowMajor);
        expectMade(constructVariantStorage<T>({one, two}, {2, 1}, ColumnMajor), {one, two}, {2, 1},
                   ColumnMajor);
        expectMade(constructVariantStorage<T>({}, {}, ColumnMajor), {}, {0}, ColumnMajor);
        expectMade(constructVariantStorage<T>(samples<T>(2, 1)), {one, two}, {2}, RowMajor);
        expectMade(constructVariantStorage<T>(samples<T>(2, 1), {0, 4}, RowMajor), {one, two}, {2}, RowMajor);
    });
}

TEST(Storage, shapes_have_to_fit_the_data_and_none_wraps_around) {
    const std::uint64_t half = 1ull << 32;
    for (const ArrayDimensions& shape :
         {ArrayDimensions{half, half}, {3, 0xAAAAAAAAAAAAAAABu}, {~0ull}, {2}, {1, 1, 3}}) {
        EXPECT_THROW_MSG(storageOf<int>({1}, shape), std::length_error, "Dimensions don't match size");
    }
    expectHolds<int>(details::VectorVariantStorage<int>({}, {0, half, half}, RowMajor), {}, {0, half, half});
    expectHolds<int>(details::VectorVariantStorage<int>({}, {}, RowMajor), {}, {});
}

TEST(Storage, elements_clones_and_appends) {
    const Storage null(VariantOps::constructNullVariantStorage());
    forEachKindOfElement([&](auto tag) {
        using T = typename decltype(tag)::type;
        const Storage storage = storageOf<T>(samples<T>(6), {2, 3, 1}, ColumnMajor);
        const AbstractVariantStorage& constant = *storage;
        const auto* first = static_cast<const T*>(constant.data());
        for (std::uint64_t i = 0; i < 6; ++i) {
            const Numbers indices{i % 2, i / 2};
            EXPECT_TRUE(constant.element(indices) == first + i && constant.element(i) == first + i);
            EXPECT_TRUE(storage->element(indices) == first + i && storage->element(i) == first + i);
        }
        EXPECT_THROW_MSG(storage->element(Numbers{1}), std::invalid_argument, "Too few indices");
        EXPECT_THROW_MSG(storage->element(Numbers{1, 1, 1}), std::out_of_range, "Indices out of bounds");
        const Storage copy(storage->clone());
        std::vector<T> changed = samples<T>(6);
        changed[0] = *static_cast<T*>(copy->data()) = sample<T>(10);
        copy->setDataOrdering(RowMajor);
        copy->setDimensions({5});
        expectHolds<T>(*storage, samples<T>(6), {2, 3, 1}, ColumnMajor);
        expectHolds<T>(*copy, changed, {5});
        // The first extent of a vector becomes the count, whichever axis is long.
        struct {
            ArrayDimensions before, after;
        } const rows[] = {{{6}, {9}}, {{1, 6}, {9, 6}}, {{1, 6, 1}, {9, 6, 1}}, {{2, 3}, {2, 3}}};
        for (const auto& row : rows) {
            const Storage growing = storageOf<T>(samples<T>(6), row.before);
            growing->append(storageOf<T>(samples<T>(3, 6)));
            expectHolds<T>(*growing, samples<T>(9), row.after);
        }
        copy->append(copy);
        changed.reserve(12);
        changed.insert(changed.end(), changed.begin(), changed.end());
        for (const Storage& wrong : {null, storageOf(std::vector<float>(1)), Storage()}) {
            EXPECT_THROW_MSG(copy->append(wrong), std::invalid_argument, "Incompatible data for append");
        }
        expectHolds<T>(*copy, changed, {12});
    });
}

TEST(Storage, shapes_that_claim_too_much_fail_and_tails_stay) {
    const Storage storage = storageOf<int>({1, 2, 3}), longer = storageOf<int>({1, 2, 3, 4, 5, 6, 7});
    for (const ArrayDimensions& shape : {ArrayDimensions{1ull << 32, 1ull << 32}, {2, 3}}) {
        storage->setDimensions(shape);
        EXPECT_OUT_OF_BOUNDS(storage->convertDataOrdering(ColumnMajor));
        EXPECT_OUT_OF_BOUNDS(storage->slice(kAll, storage));
    }
    EXPECT_OUT_OF_BOUNDS(storage->element(Numbers{1, 0}));
    EXPECT_OUT_OF_BOUNDS(storage->assignSlice(kAll, storage, Variant(samples<int>(6), {2, 3})));
    expectHolds<int>(*storage, {1, 2, 3}, {2, 3});
    for (const ArrayDimensions& shape : {ArrayDimensions{2, 3}, {}, {0, 3}, {2, 0, 2}}) {
        const DataOrdering next = otherThan(longer->dataOrdering());
        longer->setDimensions(shape);
        longer->convertDataOrdering(next);
        expectHolds<int>(*longer, {1, 4, 2, 5, 3, 6, 7}, shape, next);
    }
}

TEST(Storage, slices_assignments_and_orderings_go_by_index) {
    forEachKindOfElement([](auto tag) {
        using T = typename decltype(tag)::type;
        for (int round = 0; round < 40; ++round) {
            Numbers extents;
            const std::vector<IndexSet> sets = drawSets(extents);
            const DataOrdering ordering = DataOrdering(round % 2);
            const SliceFlattener list(sets, extents, ordering, ordering);
            std::vector<T> elements = samples<T>(ArrayDimensions(extents).countAllElements()), selected;
            const Storage storage = storageOf<T>(elements, extents, ordering);
            // Flat order to flat order, whatever the ordering and the trailing 1s of the value.
            const std::vector<T> fresh = samples<T>(list.offsets().size(), 20);
            for (std::uint64_t offset : list.offsets()) {
                selected.push_back(elements[offset]);
                elements[offset] = fresh[selected.size() - 1];
            }
            expectHolds<T>(*storage->slice(sets, storage), selected, list.sliceDimension(), ordering);
            Numbers shape = list.sliceDimension().asVector();
            shape.resize(shape.size() + draw(0, 2), 1);
            storage->assignSlice(sets, storage, Variant(fresh, shape, DataOrdering(draw(0, 1))));
            expectHolds<T>(*storage, elements, extents, ordering);
            expectConversionByIndex<T>(extents, ordering);
        }
        expectConversionByIndex<T>({67, 35}, RowMajor);
    });
    expectConversionByIndex<double>({70, 3, 130}, ColumnMajor);
}

TEST(Storage, slices_that_do_not_fit_and_empty_ones) {
    const Storage storage = storageOf<int>(samples<int>(12), {3, 4});
    const std::vector<IndexSet> tooFew{IndexRange::all}, nothing{IndexSet(), IndexRange::all},
        row{IndexValue(1, false), IndexRange::all}, beyond{IndexRange::all, IndexValue(9, false)},
        backwards{IndexRange(IndexValue(2, false), IndexValue(0, false), 1), IndexRange::all};
    EXPECT_FALSE(storage->slice(tooFew, storage) || storage->slice(beyond, storage));
    EXPECT_THROW_MSG(storage->slice(backwards, storage), std::length_error, "vector<T> too long");
    expectHolds<int>(*storage->slice(nothing, storage), {}, {0, 4});
    // A slice that does not fit has the shape {}: only a value without elements passes, and writes nothing.
    for (const auto& sets : {beyond, row}) {
        EXPECT_THROW_MSG(storage->assignSlice(sets, storage, Variant{1, 2, 3}), std::length_error,
                         "Cannot assign to diffent dimensions");
    }
    for (const auto& sets : {beyond, tooFew, nothing}) {
        storage->assignSlice(sets, storage, Variant());
    }
    storage->assignSlice(row, storage, Variant({4., 5., 6., 7.}, {1, 4}));
    expectHolds<int>(*storage, samples<int>(12), {3, 4});
    Variant broken({1, 2, 3, 4, 5}, {1, 5});
    broken.append(Variant{6, 7, 8});
    const Storage large = storageOf<int>(samples<int>(40), {8, 5});
    EXPECT_OUT_OF_BOUNDS(large->assignSlice(kAll, large, broken));
}

TEST(Storage, null_storage) {
    const Storage null(VariantOps::constructNullVariantStorage());
    const AbstractVariantStorage& constant = *null;
    null->setDimensions({0});
    EXPECT_THROW_MSG(null->setDimensions({1}), std::invalid_argument,
                     "Cannot set non-empty ArrayDimensions in NulLVariantStorage");
    null->setDataOrdering(ColumnMajor);
    null->convertDataOrdering(ColumnMajor);
    null->append(storageOf<int>({1}));
    null->assignSlice({IndexRange::all}, null, Variant(1));
    for (const Storage& storage : {null, Storage(null->clone())}) {
        EXPECT_TRUE(storage->dimensions().isIdenticalTo({}) && storage->typeInfo() == typeid(void));
        EXPECT_TRUE(storage->wellKnownType().isUnknown() && storage->dataOrdering() == RowMajor);
    }
    const std::uint64_t offset = 7;
    EXPECT_FALSE(null->data() || null->element(Numbers{7}) || null->element(offset) || null->slice({}, null));
    EXPECT_FALSE(constant.data() || constant.element(Numbers{}) || constant.element(offset));
    forEachElementType([&](auto tag) {
        using T = typename decltype(tag)::type;
        expectHolds<T>(*null->convertTo(details::wellKnownTypeOf<T>, ConversionPolicy(7)), {}, {0});
    });
    EXPECT_THROW_MSG(null->convertTo(WellKnownType(), NoCheck), std::invalid_argument,
                     "Cannot convert data into new storage, destination type unknown");
}
