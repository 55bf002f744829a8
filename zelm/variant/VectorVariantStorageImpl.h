#pragma once

#include <zelm/variant/VectorVariantStorage.h>

#include <zelm/arrays/ArrayIndexing.h>
#include <zelm/arrays/SlicePlan.h>
#include <zelm/variant/Conversion.h>
#include <zelm/variant/NestedStorages.h>
#include <zelm/variant/RoomForElements.h>
#include <zelm/variant/StridedCopy.h>
#include <zelm/variant/Transposition.h>
#include <zelm/variant/VariantAccess.h>

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <utility>

// The bodies of VectorVariantStorage, for the sources that instantiate it.

namespace Zelm::details {

[[noreturn]] void throwDimensionsDontMatchSize();
[[noreturn]] void throwIncompatibleDataForAppend();
[[noreturn]] void throwCannotAssignToDifferentDimensions();

/// Throws `std::out_of_range` "Offset out of bounds" if the plan reaches beyond `count` elements.
void requireInside(const SlicePlan& plan, std::size_t count);

template <class T>
VectorVariantStorage<T>::VectorVariantStorage() : dims_{0}, ordering_(RowMajor) {}

template <class T>
VectorVariantStorage<T>::VectorVariantStorage(std::vector<Element> data, ArrayDimensions dimensions,
                                              DataOrdering ordering)
    : data_(std::move(data)), dims_(std::move(dimensions)), ordering_(ordering) {
    if (dims_.countAllElements() != data_.size()) {
        throwDimensionsDontMatchSize();
    }
}

template <class T>
VectorVariantStorage<T>::~VectorVariantStorage() {
    if constexpr (std::is_same_v<T, Variant> || std::is_same_v<T, Struct>) {
        releaseNested(data_);
    }
}

template <class T>
void VectorVariantStorage<T>::convertDataOrdering(DataOrdering ordering) {
    if (ordering == ordering_) {
        return;
    }
    const std::uint64_t count = dims_.countAllElements();
    if (count > data_.size()) {
        throwOffsetOutOfBounds();
    }
    const TranspositionPlan plan(dims_, ordering_);
    if (!plan.isIdentity()) {
        auto target = roomForElements<Element>(data_.size());
        target.resize(data_.size());
        transpose(data_.data(), target.data(), plan);
        const auto tail = static_cast<std::ptrdiff_t>(count);
        std::move(data_.begin() + tail, data_.end(), target.begin() + tail);
        data_.swap(target);
    }
    ordering_ = ordering;
}

template <class T>
std::size_t VectorVariantStorage<T>::checkedOffset(const std::vector<std::uint64_t>& indices) const {
    std::uint64_t offset = 0;
    if (ordering_ == ColumnMajor) {
        ArrayIndexing::CalculateOffsetColumnMajor(&offset, indices, dims_, true);
    } else {
        ArrayIndexing::CalculateOffsetRowMajor(&offset, indices, dims_, true);
    }
    return checkedOffset(offset);
}

template <class T>
std::size_t VectorVariantStorage<T>::checkedOffset(std::uint64_t offset) const {
    if (offset >= data_.size()) {
        throwOffsetOutOfBounds();
    }
    return offset;
}

template <class T>
const void* VectorVariantStorage<T>::element(std::vector<std::uint64_t> indices) const {
    return &data_[checkedOffset(indices)];
}

template <class T>
const void* VectorVariantStorage<T>::element(std::uint64_t offset) const {
    return &data_[checkedOffset(offset)];
}

template <class T>
void* VectorVariantStorage<T>::element(std::vector<std::uint64_t> indices) {
    return &data_[checkedOffset(indices)];
}

template <class T>
void* VectorVariantStorage<T>::element(std::uint64_t offset) {
    return &data_[checkedOffset(offset)];
}

template <class T>
void VectorVariantStorage<T>::append(std::shared_ptr<AbstractVariantStorage> other) {
    const VectorVariantStorage* source =
        storageOf<T>(static_cast<const AbstractVariantStorage*>(other.get()));
    if (!source) {
        throwIncompatibleDataForAppend();
    }
    if (std::is_trivially_copyable_v<Element> && source != this) {
        data_.insert(data_.end(), source->data_.begin(), source->data_.end());
    } else {
        // A vector that grows moves its elements before it copies others in: the copies have to stand before.
        static_assert(std::is_nothrow_move_constructible_v<Element>);
        std::vector<Element> copies(source->data_);
        data_.insert(data_.end(), std::make_move_iterator(copies.begin()),
                     std::make_move_iterator(copies.end()));
    }
    if (dims_.isVector()) {
        dims_[0] = data_.size();
    }
}

template <class T>
AbstractVariantStorage* VectorVariantStorage<T>::clone() const {
    return new VectorVariantStorage(*this);
}

template <class T>
std::unique_ptr<AbstractVariantStorage> VectorVariantStorage<T>::convertTo(WellKnownType type,
                                                                           ConversionPolicy policy) const {
    return convertStorage(*this, type, policy);
}

template <class T>
auto VectorVariantStorage<T>::select(const SlicePlan& plan) const -> std::vector<Element> {
    requireInside(plan, data_.size());
    return gather(data_.data(), plan);
}

template <class T>
std::unique_ptr<AbstractVariantStorage>
VectorVariantStorage<T>::slice(const std::vector<IndexSet>& indexSets,
                               std::shared_ptr<AbstractVariantStorage>) const {
    const SlicePlan plan(indexSets, dims_, ordering_, ordering_);
    if (!plan.isValid()) {
        return nullptr;
    }
    return std::make_unique<VectorVariantStorage>(select(plan), plan.dimensions(), ordering_);
}

template <class T>
void VectorVariantStorage<T>::assignSlice(const std::vector<IndexSet>& indexSets,
                                          std::shared_ptr<AbstractVariantStorage>, Variant value) {
    const SlicePlan plan(indexSets, dims_, ordering_, ordering_);
    const ArrayDimensions& shape = VariantAccess::shape(value);
    if (plan.isValid() ? plan.dimensions() != shape : !shape.isEmpty()) {
        throwCannotAssignToDifferentDimensions();
    }
    VariantAccess::convert<T>(value);
    const VectorVariantStorage* source = VariantAccess::typed<T>(value);
    const std::size_t count = plan.size();
    requireInside(plan, data_.size());
    if (count > source->data_.size()) {
        throwOffsetOutOfBounds();
    }
    if (std::is_trivially_copyable_v<Element> && source != this) {
        scatter(source->data_.data(), data_.data(), plan);
        return;
    }
    // Copies are made before the first write, so that a failure of one leaves this storage as it was.
    std::vector<Element> copies;
    if (VectorVariantStorage* sole = VariantAccess::soleTyped<T>(value)) {
        copies = std::move(sole->data_);
    } else {
        copies.assign(source->data_.begin(), source->data_.begin() + static_cast<std::ptrdiff_t>(count));
    }
    scatter(std::make_move_iterator(copies.begin()), data_.data(), plan);
}

} // namespace Zelm::details
