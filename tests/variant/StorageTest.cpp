#include <arrays/ArrayModel.h>
#include <variant/Samples.h>

#include <zelm/arrays/SliceFlattener.h>
#include <zelm/variant/VariantAccess.h>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

IndexSet range(std::uint64_t first, std::uint64_t last, std::uint64_t step) {
    return IndexRange(IndexValue(first, false), IndexValue(last, false), step);
}

/// Expects that each element can be read under its indices when the storage has changed its ordering.
template <class T>
void expectReordering(const Numbers& extents, DataOrdering from) {
    const std::vector<T> elements = samples<T>(ArrayDimensions(extents).countAllElements());
    const Storage before = storageOf<T>(elements, extents, from), after(before->clone());
    after->convertDataOrdering(from == RowMajor ? ColumnMajor : RowMajor);
    EXPECT_NE(after->dataOrdering(), from);
    std::vector<T> expected, read;
    for (const Numbers& indices : allIndices(extents, RowMajor)) {
        expected.push_back(*static_cast<const T*>(before->element(indices)));
        read.push_back(*static_cast<const T*>(after->element(indices)));
    }
    EXPECT_TRUE(Variant(read).isIdenticalTo(Variant(expected))) << typeid(T).name();
}

} // namespace

TEST(Storage, forms_of_construction_elements_clones_and_appends) {
    const auto allocate = &MutableVariant::createWithAllocatedArrayOfWellKnownType;
    forEachElementType([&](auto tag) {
        using T = typename decltype(tag)::type;
        constexpr WellKnownType type = details::wellKnownTypeOf<T>;
        const T one = sample<T>(1), two = sample<T>(2);
        expectHolds<T>(*Storage(VariantOps::constructVariantStorage<T>(sample<T>(1))), {one}, {1});
        expectHolds<T>(*Storage(VariantOps::constructVariantStorage<T>({one, two})), {one, two}, {2});
        // A shape without elements counts as omitted, whatever the data.
        expectHolds<T>(*storageOf<T>({one, two}, {0, 4}), {one, two}, {2});
        EXPECT_TRUE(Variant(allocate(type, {2, 0, 3}, RowMajor)).isIdenticalTo(std::vector<T>()));
        EXPECT_THROW(allocate(type, {1ull << 32, 1ull << 32}, RowMajor), std::length_error);
        MutableVariant made = allocate(type, {2, 2}, ColumnMajor);
        made.setElement<T>({1, 0}, sample<T>(1));
        expectHolds<T>(*details::VariantAccess::storage(made), {T(), one, T(), T()}, {2, 2}, ColumnMajor);

        const std::vector<T> six = samples<T>(6);
        const Storage storage = storageOf<T>(six, {2, 3, 1}, ColumnMajor), copy(storage->clone());
        copy->append(copy);
        std::vector<T> twice = six;
        twice.insert(twice.end(), six.begin(), six.end());
        expectHolds<T>(*storage, six, {2, 3, 1}, ColumnMajor);
        expectHolds<T>(*copy, twice, {2, 3, 1}, ColumnMajor);
    });
    EXPECT_TRUE(Variant(allocate(WellKnownType(), {2}, RowMajor)).isIdenticalTo(Variant()));
    // The first extent of a vector becomes the count, whichever axis is long.
    const Storage growing = storageOf<int>(samples<int>(6), {1, 6, 1});
    growing->append(storageOf<int>(samples<int>(3, 6)));
    expectHolds<int>(*growing, samples<int>(9), {9, 6, 1});
}

TEST(Storage, shapes_that_claim_too_much_fail_everywhere) {
    Variant wide({1, 2, 3, 4, 5}, {1, 5});
    wide.append(Variant{6, 7, 8}); // the shape becomes {8, 5}
    const Storage storage = details::VariantAccess::storage(wide);
    const std::vector<IndexSet> all{IndexRange::all, IndexRange::all};
    EXPECT_OUT_OF_BOUNDS(storage->convertDataOrdering(ColumnMajor));
    EXPECT_OUT_OF_BOUNDS(storage->slice(all, storage));
    EXPECT_OUT_OF_BOUNDS(storage->element(Numbers{7, 4}));
    EXPECT_OUT_OF_BOUNDS(mapElements<int>(wide, [](int n) { return -n; }));
    for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
        const Variant other(std::vector<int>(40), {8, 5}, ordering);
        EXPECT_OUT_OF_BOUNDS(wide.assignSlice(all, other));
        EXPECT_OUT_OF_BOUNDS(Variant(other).assignSlice(all, wide));
        EXPECT_OUT_OF_BOUNDS(wide + other);
        EXPECT_OUT_OF_BOUNDS(other * wide);
        EXPECT_FALSE(wide.isEquivalentTo(other) || other.isEquivalentTo(wide));
    }
    EXPECT_FALSE(wide.isIdenticalTo(wide));
    EXPECT_OUT_OF_BOUNDS(wide * Variant(2));
    expectHolds<int>(*storage, {1, 2, 3, 4, 5, 6, 7, 8}, {8, 5});
}

TEST(Storage, slices_assignments_and_orderings_go_by_index) {
    const IndexSet all = IndexRange::all, last = IndexValue::end(0);
    const std::pair<Numbers, std::vector<IndexSet>> rows[] = {
        {{41}, {range(1, 40, 2)}},
        {{4, 41}, {all, range(0, 40, 3)}},
        {{3, 4}, {all, last}},
        {{3, 4}, {last, all}},
        {{3, 4}, {range(0, 2, 2), range(1, 3, 1)}},
        {{2, 3, 4}, {all, last, all}},
        {{2, 5, 1, 3}, {all, {IndexValue(3, false), IndexRange::all}, all, range(0, 1, 1)}},
    };
    forEachElementType([&](auto tag) {
        using T = typename decltype(tag)::type;
        for (const auto& [extents, sets] : rows) {
            for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
                const SliceFlattener list(sets, extents, ordering, ordering);
                std::vector<T> elements = samples<T>(ArrayDimensions(extents).countAllElements()), selected;
                const Storage storage = storageOf<T>(elements, extents, ordering);
                const std::vector<T> fresh = samples<T>(list.offsets().size(), 20);
                for (const std::uint64_t offset : list.offsets()) {
                    selected.push_back(elements[offset]);
                    elements[offset] = fresh[selected.size() - 1];
                }
                expectHolds<T>(*storage->slice(sets, storage), selected, list.sliceDimension(), ordering);
                // Flat order to flat order, whatever the ordering and the trailing 1s of the value.
                Numbers shape = list.sliceDimension().asVector();
                shape.push_back(1);
                storage->assignSlice(sets, storage, Variant(fresh, shape, RowMajor));
                expectHolds<T>(*storage, elements, extents, ordering);
                expectReordering<T>(extents, ordering);
            }
        }
        expectReordering<T>({67, 35}, RowMajor);
    });
    expectReordering<double>({70, 3, 130}, ColumnMajor);
}

TEST(Storage, slices_that_do_not_fit_and_empty_ones) {
    const Storage storage = storageOf<int>(samples<int>(12), {3, 4});
    const std::vector<IndexSet> tooFew{IndexRange::all}, nothing{IndexSet(), IndexRange::all},
        beyond{IndexRange::all, IndexValue(9, false)}, backwards{range(2, 0, 1), IndexRange::all};
    EXPECT_THROW_MSG(storage->slice(backwards, storage), std::length_error, "vector<T> too long");
    expectHolds<int>(*storage->slice(nothing, storage), {}, {0, 4});
    // A slice that does not fit has the shape {}: only a value without elements passes, and writes nothing.
    for (const auto& sets : {beyond, tooFew, nothing}) {
        storage->assignSlice(sets, storage, Variant());
        EXPECT_THROW_MSG(storage->assignSlice(sets, storage, 1), std::length_error,
                         "Cannot assign to diffent dimensions");
    }
    expectHolds<int>(*storage, samples<int>(12), {3, 4});
}

TEST(Storage, null_storage) {
    const Storage null(VariantOps::constructNullVariantStorage());
    null->setDimensions({0});
    EXPECT_THROW_MSG(null->setDimensions({1}), std::invalid_argument,
                     "Cannot set non-empty ArrayDimensions in NulLVariantStorage");
    null->convertDataOrdering(ColumnMajor);
    null->append(storageOf<int>({1}));
    EXPECT_TRUE(null->dimensions().isIdenticalTo({}) && null->typeInfo() == typeid(void));
    EXPECT_TRUE(null->wellKnownType().isUnknown() && null->dataOrdering() == RowMajor);
    EXPECT_FALSE(null->data() || null->element(Numbers{7}) || null->slice({}, null));
    expectHolds<short>(*null->convertTo(WellKnownType::Int16(), ConversionPolicy(7)), {}, {0});
    EXPECT_THROW_MSG(null->convertTo(WellKnownType(), NoCheck), std::invalid_argument,
                     "Cannot convert data into new storage, destination type unknown");
}
