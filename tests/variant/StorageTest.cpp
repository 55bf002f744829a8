#include <arrays/ArrayModel.h>
#include <variant/StorageSamples.h>

#include <zelm/variant/VectorVariantStorage.h>

using namespace Zelm;
using namespace Zelm::Testing;
using details::AbstractVariantStorage;
using VariantOps::constructVariantStorage;

namespace {

void expectIndexFailures(AbstractVariantStorage& storage) {
    const AbstractVariantStorage& constant = storage;
    EXPECT_THROW_MSG(storage.element(Numbers{1}), std::invalid_argument, "Too few indices");
    EXPECT_THROW_MSG(constant.element(Numbers{2, 0}), std::out_of_range, "Indices out of bounds");
    EXPECT_THROW_MSG(storage.element(Numbers{1, 1, 1}), std::out_of_range, "Indices out of bounds");
    EXPECT_THROW_MSG(storage.element(~std::uint64_t{0}), std::out_of_range, "Offset out of bounds");
}

void expectIncompatible(AbstractVariantStorage& storage, WellKnownType other) {
    const Storage null(VariantOps::constructNullVariantStorage());
    for (const Storage& wrong : {Storage(null->convertTo(other, NoCheck)), null, Storage()}) {
        EXPECT_THROW_MSG(storage.append(wrong), std::invalid_argument, "Incompatible data for append");
    }
}

const Variant kNull;

} // namespace

TEST(Storage, five_construction_forms_of_every_element_type) {
    forEachElementType([](auto tag) {
        using T = typename decltype(tag)::type;
        const T one = sample<T>(1), two = sample<T>(2);
        const std::vector<T> both{one, two}, none;
        const auto made = [](AbstractVariantStorage* storage) { return Storage(storage); };
        // A shape without elements counts as omitted, whatever the data.
        const struct {
            Storage storage;
            std::vector<T> elements;
            ArrayDimensions shape;
            DataOrdering ordering;
        } rows[] = {
            {made(constructVariantStorage<T>(sample<T>(1))), {one}, {1}, RowMajor},
            {made(constructVariantStorage<T>({one, two})), both, {2}, RowMajor},
            {made(constructVariantStorage<T>({one, two}, {2, 1}, ColumnMajor)), both, {2, 1}, ColumnMajor},
            {made(constructVariantStorage<T>({}, {}, ColumnMajor)), none, {0}, ColumnMajor},
            {made(constructVariantStorage<T>(samples<T>(2, 1))), both, {2}, RowMajor},
            {storageOf<T>(both, {1, 2}, ColumnMajor), both, {1, 2}, ColumnMajor},
            {storageOf<T>(both, {0, 4}), both, {2}, RowMajor},
        };
        for (const auto& row : rows) {
            expectHolds<T>(*row.storage, row.elements, row.shape, row.ordering);
            EXPECT_EQ(row.storage->wellKnownType(), details::wellKnownTypeOf<T>);
        }
    });
}

TEST(Storage, shapes_have_to_fit_the_data_and_none_wraps_around) {
    const std::uint64_t half = std::uint64_t{1} << 32;
    for (const ArrayDimensions& shape :
         {ArrayDimensions{half, half}, {3, 0xAAAAAAAAAAAAAAABu}, {~0ull}, {2}, {1, 1, 3}}) {
        EXPECT_THROW_MSG(storageOf<int>({1}, shape), std::length_error, "Dimensions don't match size");
    }
    EXPECT_TRUE(hasShape(details::VectorVariantStorage<int>({}, {0, half, half}, RowMajor), {0, half, half}));
    EXPECT_TRUE(hasShape(details::VectorVariantStorage<int>({}, {}, RowMajor), {}));
}

TEST(Storage, elements_are_reached_by_pointer_indices_and_offset) {
    forEachKindOfElement([](auto tag) {
        using T = typename decltype(tag)::type;
        for (const DataOrdering ordering : {RowMajor, ColumnMajor}) {
            const Storage storage = storageOf<T>(samples<T>(6), {2, 3, 1}, ordering);
            const AbstractVariantStorage& constant = *storage;
            const auto* first = static_cast<const T*>(constant.data());
            EXPECT_EQ(storage->data(), first);
            for (const auto& [indices, offset] : storagePlaces({2, 3}, ordering)) {
                EXPECT_EQ(constant.element(indices), first + offset);
                EXPECT_EQ(storage->element(indices), first + offset);
                EXPECT_EQ(storage->element(offset), first + offset);
            }
            expectIndexFailures(*storage);
        }
    });
}

TEST(Storage, clone_is_independent_and_setters_leave_elements_in_place) {
    forEachKindOfElement([](auto tag) {
        using T = typename decltype(tag)::type;
        const Storage storage = storageOf<T>(samples<T>(6), {2, 3}, ColumnMajor);
        const Storage copy(storage->clone());
        *static_cast<T*>(copy->data()) = sample<T>(10);
        copy->setDataOrdering(RowMajor);
        copy->setDimensions({5});
        expectHolds<T>(*storage, samples<T>(6), {2, 3}, ColumnMajor);
        std::vector<T> changed = samples<T>(6);
        changed[0] = sample<T>(10);
        expectHolds<T>(*copy, changed, {5});
    });
}

TEST(Storage, shapes_that_claim_too_much_fail_and_tails_stay) {
    const Storage storage = storageOf<int>({1, 2, 3});
    storage->setDimensions({2, 3});
    const std::vector<IndexSet> all{IndexRange::all, IndexRange::all};
    EXPECT_THROW_MSG(storage->convertDataOrdering(ColumnMajor), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(storage->element(Numbers{1, 0}), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(storage->slice(all, storage), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(storage->assignSlice(all, storage, Variant(samples<int>(6), {2, 3})), std::out_of_range,
                     "Offset out of bounds");
    EXPECT_TRUE(holds<int>(*storage, {1, 2, 3}));
    EXPECT_EQ(storage->dataOrdering(), RowMajor);
    storage->setDimensions({1ull << 32, 1ull << 32});
    EXPECT_THROW_MSG(storage->convertDataOrdering(ColumnMajor), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(storage->slice(all, storage), std::out_of_range, "Offset out of bounds");

    const Storage longer = storageOf<int>({1, 2, 3, 4, 5, 6, 7});
    longer->setDimensions({2, 3});
    longer->convertDataOrdering(ColumnMajor);
    EXPECT_TRUE(holds<int>(*longer, {1, 4, 2, 5, 3, 6, 7}));
    for (const ArrayDimensions& empty : {ArrayDimensions{}, {0, 3}, {2, 0, 2}}) {
        longer->setDimensions(empty);
        longer->convertDataOrdering(longer->dataOrdering() == RowMajor ? ColumnMajor : RowMajor);
        EXPECT_TRUE(holds<int>(*longer, {1, 4, 2, 5, 3, 6, 7}));
    }
}

TEST(Storage, append_writes_the_count_into_the_first_extent_of_vectors) {
    forEachKindOfElement([](auto tag) {
        using T = typename decltype(tag)::type;
        struct {
            ArrayDimensions before, after;
        } const rows[] = {{{5}, {8}}, {{1, 5}, {8, 5}}, {{5, 1}, {8, 1}}, {{1, 5, 1}, {8, 5, 1}}};
        for (const auto& row : rows) {
            const Storage storage = storageOf<T>(samples<T>(5), row.before);
            storage->append(storageOf<T>(samples<T>(3, 5)));
            expectHolds<T>(*storage, samples<T>(8), row.after);
        }
        const Storage matrix = storageOf<T>(samples<T>(6), {2, 3});
        matrix->append(storageOf<T>(samples<T>(2, 6)));
        expectHolds<T>(*matrix, samples<T>(8), {2, 3});

        std::vector<T> twice = samples<T>(3);
        const Storage self = storageOf<T>(samples<T>(3));
        self->append(self);
        const std::vector<T> again = samples<T>(3);
        twice.insert(twice.end(), again.begin(), again.end());
        expectHolds<T>(*self, twice, {6});

        expectIncompatible(*self, std::is_same_v<T, float> ? WellKnownType::Int32() : WellKnownType::Float());
        expectHolds<T>(*self, twice, {6});
    });
}

TEST(Storage, slices_that_do_not_fit_and_empty_ones) {
    const Storage storage = storageOf<int>(samples<int>(12), {3, 4});
    const std::vector<IndexSet> tooFew{IndexRange::all};
    const std::vector<IndexSet> beyond{IndexRange::all, IndexValue(9, false)};
    const std::vector<IndexSet> backwards{IndexRange(IndexValue(2, false), IndexValue(0, false), 1),
                                          IndexRange::all};
    EXPECT_EQ(storage->slice(tooFew, storage), nullptr);
    EXPECT_EQ(storage->slice(beyond, storage), nullptr);
    EXPECT_THROW_MSG(storage->slice(backwards, storage), std::length_error, "vector<T> too long");
    EXPECT_TRUE(hasShape(*storage->slice({IndexSet(), IndexRange::all}, storage), {0, 4}));

    // A slice that does not fit has the shape {}: only a value without elements passes, and writes nothing.
    const std::vector<IndexSet> row{IndexValue(1, false), IndexRange::all};
    const char* const text = "Cannot assign to diffent dimensions";
    EXPECT_THROW_MSG(storage->assignSlice(beyond, storage, Variant{1, 2, 3}), std::length_error, text);
    EXPECT_THROW_MSG(storage->assignSlice(row, storage, Variant{1, 2, 3, 4}), std::length_error, text);
    EXPECT_THROW_MSG(storage->assignSlice(row, storage, kNull), std::length_error, text);
    EXPECT_THROW_MSG(storage->assignSlice(row, storage, Variant({1.5, 2., 3., 4.}, {1, 4})),
                     std::runtime_error, "Conversion check failed");
    storage->assignSlice(beyond, storage, kNull);
    storage->assignSlice(tooFew, storage, Variant(std::vector<double>()));
    storage->assignSlice({IndexSet(), IndexRange::all}, storage, kNull);
    EXPECT_TRUE(holds<int>(*storage, samples<int>(12)));

    Variant brokenRow({1, 2, 3, 4, 5}, {1, 5});
    brokenRow.append(Variant{6, 7, 8});
    EXPECT_THROW_MSG(storageOf<int>(samples<int>(40), {8, 5})
                         ->assignSlice({IndexRange::all, IndexRange::all}, storage, brokenRow),
                     std::out_of_range, "Offset out of bounds");
}

TEST(Storage, assignment_converts_and_ignores_the_ordering_of_the_value) {
    const Storage storage = storageOf<int>(samples<int>(6), {2, 3}, ColumnMajor);
    storage->assignSlice({IndexRange::all, IndexRange::all}, storage,
                         Variant({10., 11., 12., 13., 14., 15.}, {2, 3}, RowMajor));
    EXPECT_TRUE(holds<int>(*storage, samples<int>(6, 10)));
    EXPECT_EQ(storage->dataOrdering(), ColumnMajor);
}

TEST(Storage, null_storage) {
    const Storage null(VariantOps::constructNullVariantStorage());
    const AbstractVariantStorage& constant = *null;
    EXPECT_TRUE(hasShape(*null, {}));
    EXPECT_EQ(null->dataOrdering(), RowMajor);
    EXPECT_TRUE(null->wellKnownType().isUnknown());
    EXPECT_TRUE(null->typeInfo() == typeid(void));
    null->setDimensions({});
    null->setDimensions({0});
    EXPECT_THROW_MSG(null->setDimensions({1}), std::invalid_argument,
                     "Cannot set non-empty ArrayDimensions in NulLVariantStorage");
    null->setDataOrdering(ColumnMajor);
    null->convertDataOrdering(ColumnMajor);
    null->append(storageOf<int>({1}));
    null->assignSlice({IndexRange::all}, null, Variant(1));
    EXPECT_EQ(null->dataOrdering(), RowMajor);
    for (const void* pointer : {null->data(), null->element(Numbers{7}), null->element(std::uint64_t{7})}) {
        EXPECT_EQ(pointer, nullptr);
    }
    for (const void* pointer :
         {constant.data(), constant.element(Numbers{}), constant.element(std::uint64_t{0})}) {
        EXPECT_EQ(pointer, nullptr);
    }
    EXPECT_EQ(null->slice({}, null), nullptr);
    EXPECT_TRUE(Storage(null->clone())->wellKnownType().isUnknown());
    forEachElementType([&](auto tag) {
        using T = typename decltype(tag)::type;
        const auto converted = null->convertTo(details::wellKnownTypeOf<T>, ConversionPolicy(7));
        expectHolds<T>(*converted, {}, {0});
    });
    EXPECT_THROW_MSG(null->convertTo(WellKnownType(), NoCheck), std::invalid_argument,
                     "Cannot convert data into new storage, destination type unknown");
    EXPECT_THROW_MSG(storageOf<int>({1})->convertTo(WellKnownType(), NoCheck), std::invalid_argument,
                     "Cannot convert data into new storage, unknown destination type");
}
