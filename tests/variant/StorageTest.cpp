#include <arrays/ArrayModel.h>
#include <variant/Samples.h>

#include <zelm/arrays/SliceFlattener.h>
#include <zelm/variant/VectorVariantStorage.h>

#include <map>
#include <random>

using namespace Zelm;
using namespace Zelm::Testing;
using details::AbstractVariantStorage;
using VariantOps::constructVariantStorage;

namespace {

void expectFailuresOfIndicesAndAppend(AbstractVariantStorage& storage, WellKnownType other) {
    EXPECT_THROW_MSG(storage.element(Numbers{1}), std::invalid_argument, "Too few indices");
    EXPECT_THROW_MSG(storage.element(Numbers{2, 0}), std::out_of_range, "Indices out of bounds");
    EXPECT_THROW_MSG(storage.element(Numbers{1, 1, 1}), std::out_of_range, "Indices out of bounds");
    const Storage null(VariantOps::constructNullVariantStorage());
    for (const Storage& wrong : {Storage(null->convertTo(other, NoCheck)), null, Storage()}) {
        EXPECT_THROW_MSG(storage.append(wrong), std::invalid_argument, "Incompatible data for append");
    }
}

DataOrdering otherThan(DataOrdering ordering) {
    return ordering == RowMajor ? ColumnMajor : RowMajor;
}

/// Where each element of a shape is stored, by its indices.
std::map<Numbers, std::uint64_t> placesOf(const Numbers& extents, DataOrdering ordering) {
    std::map<Numbers, std::uint64_t> places;
    for (const Numbers& indices : allIndices(extents, ordering)) {
        places.emplace(indices, places.size());
    }
    return places;
}

std::mt19937 s_random(3);

std::uint64_t draw(std::uint64_t low, std::uint64_t high) {
    return std::uniform_int_distribution<std::uint64_t>(low, high)(s_random);
}

Numbers randomExtents() {
    Numbers extents(draw(1, 5));
    for (std::uint64_t& extent : extents) {
        extent = draw(1, 2 + 20 / extents.size());
    }
    return extents;
}

std::vector<IndexSet> randomSets(const Numbers& extents) {
    std::vector<IndexSet> sets;
    for (const std::uint64_t extent : extents) {
        const std::uint64_t first = draw(0, extent - 1), last = draw(first, extent - 1);
        sets.emplace_back(IndexRange(IndexValue(first, false), IndexValue(last, false), draw(1, 2)),
                          IndexValue(draw(0, extent - 1), true));
    }
    return sets;
}

const std::vector<IndexSet> kAll{IndexRange::all, IndexRange::all};

} // namespace

TEST(Storage, five_construction_forms_of_every_element_type) {
    forEachElementType([](auto tag) {
        using T = typename decltype(tag)::type;
        const T one = sample<T>(1), two = sample<T>(2);
        const std::vector<T> both{one, two}, none;
        // A shape without elements counts as omitted, whatever the data.
        const struct {
            AbstractVariantStorage* made;
            std::vector<T> elements;
            ArrayDimensions shape;
            DataOrdering ordering;
        } rows[] = {
            {constructVariantStorage<T>(sample<T>(1)), {one}, {1}, RowMajor},
            {constructVariantStorage<T>({one, two}), both, {2}, RowMajor},
            {constructVariantStorage<T>({one, two}, {2, 1}, ColumnMajor), both, {2, 1}, ColumnMajor},
            {constructVariantStorage<T>({}, {}, ColumnMajor), none, {0}, ColumnMajor},
            {constructVariantStorage<T>(samples<T>(2, 1)), both, {2}, RowMajor},
            {constructVariantStorage<T>(samples<T>(2, 1), {1, 2}, ColumnMajor), both, {1, 2}, ColumnMajor},
            {constructVariantStorage<T>(samples<T>(2, 1), {0, 4}, RowMajor), both, {2}, RowMajor},
        };
        for (const auto& row : rows) {
            const std::unique_ptr<AbstractVariantStorage> owner(row.made);
            expectHolds<T>(*row.made, row.elements, row.shape, row.ordering);
            EXPECT_EQ(row.made->wellKnownType(), details::wellKnownTypeOf<T>);
        }
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
    forEachKindOfElement([](auto tag) {
        using T = typename decltype(tag)::type;
        const Storage storage = storageOf<T>(samples<T>(6), {2, 3, 1}, ColumnMajor);
        const AbstractVariantStorage& constant = *storage;
        const auto* first = static_cast<const T*>(constant.data());
        for (const auto& [indices, offset] : placesOf({2, 3}, ColumnMajor)) {
            for (const void* element : {constant.element(indices), constant.element(offset)}) {
                EXPECT_EQ(element, first + offset);
            }
            EXPECT_EQ(storage->element(indices), storage->element(offset));
        }
        EXPECT_EQ(storage->element(std::uint64_t{0}), storage->data());
        expectFailuresOfIndicesAndAppend(*storage, std::is_same_v<T, float> ? WellKnownType::Int32()
                                                                            : WellKnownType::Float());
        const Storage copy(storage->clone());
        *static_cast<T*>(copy->data()) = sample<T>(10);
        copy->setDataOrdering(RowMajor);
        copy->setDimensions({5});
        expectHolds<T>(*storage, samples<T>(6), {2, 3, 1}, ColumnMajor);
        std::vector<T> changed = samples<T>(6);
        changed[0] = sample<T>(10);
        expectHolds<T>(*copy, changed, {5});

        // The first extent of a vector becomes the count, whichever axis is long.
        struct {
            ArrayDimensions before, after;
        } const rows[] = {
            {{6}, {9}}, {{1, 6}, {9, 6}}, {{6, 1}, {9, 1}}, {{1, 6, 1}, {9, 6, 1}}, {{2, 3}, {2, 3}}};
        for (const auto& row : rows) {
            const Storage growing = storageOf<T>(samples<T>(6), row.before);
            growing->append(storageOf<T>(samples<T>(3, 6)));
            expectHolds<T>(*growing, samples<T>(9), row.after);
        }
        copy->append(copy);
        changed.reserve(12);
        changed.insert(changed.end(), changed.begin(), changed.end());
        expectHolds<T>(*copy, changed, {12});
    });
}

TEST(Storage, converting_the_ordering_keeps_every_element_at_its_indices) {
    const auto check = [](auto tag, const Numbers& extents, DataOrdering from) {
        using T = typename decltype(tag)::type;
        const auto before = placesOf(extents, from);
        std::vector<T> expected(before.size());
        for (const auto& [indices, offset] : placesOf(extents, otherThan(from))) {
            expected[offset] = sample<T>(before.at(indices));
        }
        const Storage storage = storageOf<T>(samples<T>(before.size()), extents, from);
        storage->convertDataOrdering(otherThan(from));
        storage->convertDataOrdering(otherThan(from));
        expectHolds<T>(*storage, expected, extents, otherThan(from));
    };
    forEachKindOfElement([&](auto tag) {
        for (int round = 0; round < 20; ++round) {
            check(tag, randomExtents(), DataOrdering(round % 2));
        }
        check(tag, {67, 35}, RowMajor);
    });
    check(details::ElementTag<double>(), {70, 3, 130}, ColumnMajor);
}

TEST(Storage, shapes_that_claim_too_much_fail_and_tails_stay) {
    const Storage storage = storageOf<int>({1, 2, 3});
    storage->setDimensions({2, 3});
    EXPECT_OUT_OF_BOUNDS(storage->element(Numbers{1, 0}));
    EXPECT_OUT_OF_BOUNDS(storage->assignSlice(kAll, storage, Variant(samples<int>(6), {2, 3})));
    for (const ArrayDimensions& shape : {ArrayDimensions{2, 3}, {1ull << 32, 1ull << 32}}) {
        storage->setDimensions(shape);
        EXPECT_OUT_OF_BOUNDS(storage->convertDataOrdering(ColumnMajor));
        EXPECT_OUT_OF_BOUNDS(storage->slice(kAll, storage));
    }
    storage->setDimensions({4});
    EXPECT_OUT_OF_BOUNDS(storage->slice({IndexValue::end(0)}, storage));
    expectHolds<int>(*storage->slice({IndexValue::end(1)}, storage), {3}, {1});
    expectHolds<int>(*storage, {1, 2, 3}, {4});

    const Storage longer = storageOf<int>({1, 2, 3, 4, 5, 6, 7});
    longer->setDimensions({2, 3});
    longer->convertDataOrdering(ColumnMajor);
    expectHolds<int>(*longer, {1, 4, 2, 5, 3, 6, 7}, {2, 3}, ColumnMajor);
    for (const ArrayDimensions& empty : {ArrayDimensions{}, {0, 3}, {2, 0, 2}}) {
        longer->setDimensions(empty);
        const DataOrdering next = otherThan(longer->dataOrdering());
        longer->convertDataOrdering(next);
        expectHolds<int>(*longer, {1, 4, 2, 5, 3, 6, 7}, empty, next);
    }
}

TEST(Storage, slices_and_their_assignment_follow_the_list_of_offsets) {
    forEachKindOfElement([](auto tag) {
        using T = typename decltype(tag)::type;
        for (int round = 0; round < 40; ++round) {
            const Numbers extents = randomExtents();
            const DataOrdering ordering = DataOrdering(round % 2);
            const std::vector<IndexSet> sets = randomSets(extents);
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
        }
    });
}

TEST(Storage, slices_that_do_not_fit_and_empty_ones) {
    const Storage storage = storageOf<int>(samples<int>(12), {3, 4});
    const std::vector<IndexSet> tooFew{IndexRange::all}, nothing{IndexSet(), IndexRange::all},
        row{IndexValue(1, false), IndexRange::all}, beyond{IndexRange::all, IndexValue(9, false)},
        backwards{IndexRange(IndexValue(2, false), IndexValue(0, false), 1), IndexRange::all};
    EXPECT_EQ(storage->slice(tooFew, storage), nullptr);
    EXPECT_EQ(storage->slice(beyond, storage), nullptr);
    EXPECT_THROW_MSG(storage->slice(backwards, storage), std::length_error, "vector<T> too long");
    expectHolds<int>(*storage->slice(nothing, storage), {}, {0, 4});

    // A slice that does not fit has the shape {}: only a value without elements passes, and writes nothing.
    const char* const text = "Cannot assign to diffent dimensions";
    EXPECT_THROW_MSG(storage->assignSlice(beyond, storage, Variant{1, 2, 3}), std::length_error, text);
    EXPECT_THROW_MSG(storage->assignSlice(row, storage, Variant{1, 2, 3, 4}), std::length_error, text);
    EXPECT_THROW_MSG(storage->assignSlice(row, storage, Variant()), std::length_error, text);
    EXPECT_THROW_MSG(storage->assignSlice(row, storage, Variant({1.5, 2., 3., 4.}, {1, 4})),
                     std::runtime_error, "Conversion check failed");
    for (const auto& sets : {beyond, tooFew, nothing}) {
        storage->assignSlice(sets, storage, Variant());
    }
    expectHolds<int>(*storage, samples<int>(12), {3, 4});
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
    null->setDimensions({});
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
    EXPECT_THROW_MSG(storageOf<int>({1})->convertTo(WellKnownType(), NoCheck), std::invalid_argument,
                     "Cannot convert data into new storage, unknown destination type");
}
