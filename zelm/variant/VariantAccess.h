#pragma once

#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VectorVariantStorage.h>

#include <memory>
#include <utility>
#include <vector>

namespace Zelm::details {

/// Whether nobody else shares this storage, so that its owner may write into it. False for null pointers and
/// for the storage of null values.
bool ownsAlone(const std::shared_ptr<AbstractVariantStorage>& storage) noexcept;

/// The one storage that all null values refer to. It is never destroyed and not counted: getting and copying
/// the pointer costs no allocation and no atomic operation, and its use count is 0.
std::shared_ptr<AbstractVariantStorage> sharedNullStorage() noexcept;

/// The shape of a storage without a copy, the empty shape for a null storage and a null pointer.
const ArrayDimensions& shapeOf(const AbstractVariantStorage* storage) noexcept;
/// The number of elements that a storage holds, whatever its shape says; 0 for a null storage.
std::size_t elementCountOf(const AbstractVariantStorage& storage) noexcept;

/// Throws `std::out_of_range` "Offset out of bounds".
[[noreturn]] void throwOffsetOutOfBounds();
/// Throws `std::invalid_argument` "Wrong data type".
[[noreturn]] void throwWrongDataType();

/// The library's own way to the storage of a value. Not for applications: nothing here keeps copies apart.
struct VariantAccess {
    /// The storage; null only after a move.
    template <class AnyVariant>
    static std::shared_ptr<AbstractVariantStorage>& storage(AnyVariant& value) noexcept {
        return value.storage;
    }
    template <class AnyVariant>
    static const std::shared_ptr<AbstractVariantStorage>& storage(const AnyVariant& value) noexcept {
        return value.storage;
    }
    template <class AnyVariant>
    static auto& compare(AnyVariant& value) noexcept {
        return value.compare;
    }

    /// The typed storage, null if the value holds another type or nothing.
    template <class T, class AnyVariant>
    static const VectorVariantStorage<T>* typed(const AnyVariant& value) noexcept {
        return storageOf<T>(static_cast<const AbstractVariantStorage*>(value.storage.get()));
    }
    /// The same to write to, also null if anybody shares the storage.
    template <class T, class AnyVariant>
    static VectorVariantStorage<T>* soleTyped(AnyVariant& value) noexcept {
        return ownsAlone(value.storage) ? storageOf<T>(value.storage.get()) : nullptr;
    }
    /// The shape without a copy; empty after a move.
    template <class AnyVariant>
    static const ArrayDimensions& shape(const AnyVariant& value) noexcept {
        return shapeOf(value.storage.get());
    }

    /// A value with these elements in exactly this shape. Throws `std::length_error` "Dimensions don't match
    /// size".
    template <class T>
    static Variant make(std::vector<StoredElement<T>> elements, ArrayDimensions dimensions,
                        DataOrdering ordering) {
        return Variant(
            std::make_shared<VectorVariantStorage<T>>(std::move(elements), std::move(dimensions), ordering),
            &compareStorages<T>);
    }
    /// Puts a storage of element type `T` into `value`.
    template <class T, class AnyVariant>
    static void install(AnyVariant& value, std::shared_ptr<AbstractVariantStorage> storage) noexcept {
        value.storage = std::move(storage);
        value.compare = &compareStorages<T>;
    }
    /// Converts in place, with a check on every element; nothing happens if the type is `T` already. Throws
    /// the failures of conversion, and `std::invalid_argument` "Wrong data type" after a move.
    template <class T>
    static void convert(Variant& value) {
        constexpr WellKnownType type = wellKnownTypeOf<T>;
        convert(value, type, &compareStorages<T>);
    }

    /// The storage to write to in place of this one: itself if nobody shares it, else a clone.
    static std::shared_ptr<AbstractVariantStorage>
    writable(const std::shared_ptr<AbstractVariantStorage>& storage);
    /// Writes over a slice, into a clone if the storage is shared. An empty pointer stays one.
    static void assignSlice(std::shared_ptr<AbstractVariantStorage>& storage,
                            const std::vector<IndexSet>& indexSets, Variant value);

    static auto& fields(Struct& record) noexcept { return record.fields_; }
    static const auto& fields(const Struct& record) noexcept { return record.fields_; }

private:
    static void convert(Variant& value, WellKnownType type, StorageComparison* comparison);
};

} // namespace Zelm::details
