#pragma once

#include <zelm/variant/AbstractVariantStorage.h>
#include <zelm/variant/ElementTypes.h>

#include <vector>

namespace Zelm::details {

class SlicePlan;

/// The storage of an array with elements of type `T`: a flat vector, its shape, and the ordering in which the
/// vector is laid out over the shape. Instantiated for the 27 element types.
template <class T>
class VectorVariantStorage final : public AbstractVariantStorage {
public:
    using Element = StoredElement<T>;

    /// No elements, shape `{0}`, row-major.
    VectorVariantStorage();
    /// Takes the elements over. Throws `std::length_error` "Dimensions don't match size" unless the shape has
    /// exactly as many elements.
    VectorVariantStorage(std::vector<Element> data, ArrayDimensions dimensions, DataOrdering ordering);
    ~VectorVariantStorage() override;

    ArrayDimensions dimensions() const override { return dims_; }
    DataOrdering dataOrdering() const override { return ordering_; }
    WellKnownType wellKnownType() const override { return wellKnownTypeOf<T>; }
    const std::type_info& typeInfo() const override { return typeid(T); }

    void setDimensions(ArrayDimensions dimensions) override { dims_ = std::move(dimensions); }
    void setDataOrdering(DataOrdering ordering) override { ordering_ = ordering; }
    void convertDataOrdering(DataOrdering ordering) override;

    const void* data() const override { return data_.data(); }
    const void* element(std::vector<std::uint64_t> indices) const override;
    const void* element(std::uint64_t offset) const override;
    void* data() override { return data_.data(); }
    void* element(std::vector<std::uint64_t> indices) override;
    void* element(std::uint64_t offset) override;

    void append(std::shared_ptr<AbstractVariantStorage> other) override;
    AbstractVariantStorage* clone() const override;

    std::unique_ptr<AbstractVariantStorage> convertTo(WellKnownType type,
                                                      ConversionPolicy policy) const override;
    std::unique_ptr<AbstractVariantStorage>
    slice(const std::vector<IndexSet>& indexSets,
          std::shared_ptr<AbstractVariantStorage> self) const override;
    void assignSlice(const std::vector<IndexSet>& indexSets, std::shared_ptr<AbstractVariantStorage> self,
                     Variant value) override;

    /// The elements of a slice, whose plan is valid for this shape and has this ordering on both sides.
    /// Throws `std::out_of_range` "Offset out of bounds" if the shape claims more elements than there are.
    std::vector<Element> select(const SlicePlan& plan) const;

    /// The elements and the shape themselves, for code that knows `T`.
    std::vector<Element>& elements() noexcept { return data_; }
    const std::vector<Element>& elements() const noexcept { return data_; }
    const ArrayDimensions& shape() const noexcept { return dims_; }

private:
    std::size_t checkedOffset(const std::vector<std::uint64_t>& indices) const;
    std::size_t checkedOffset(std::uint64_t offset) const;

    std::vector<Element> data_;
    ArrayDimensions dims_;
    DataOrdering ordering_;
};

#define ZELM_EXTERN(type, Name, value, keyword) extern template class ZELM_EXPORT VectorVariantStorage<type>;
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_EXTERN)
#undef ZELM_EXTERN

/// The storage as that of elements of type `T`, null if it holds another type or nothing.
template <class T>
const VectorVariantStorage<T>* storageOf(const AbstractVariantStorage* storage) noexcept {
    return storage && storage->wellKnownType() == wellKnownTypeOf<T>
               ? static_cast<const VectorVariantStorage<T>*>(storage)
               : nullptr;
}
template <class T>
VectorVariantStorage<T>* storageOf(AbstractVariantStorage* storage) noexcept {
    return const_cast<VectorVariantStorage<T>*>(
        storageOf<T>(static_cast<const AbstractVariantStorage*>(storage)));
}

/// Calls `visit(const VectorVariantStorage<T>&)` with the concrete storage and returns true; false for a null
/// storage.
template <class Visitor>
bool visitStorage(const AbstractVariantStorage& storage, Visitor&& visit) {
    return visitElementType(storage.wellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        visit(static_cast<const VectorVariantStorage<T>&>(storage));
    });
}

} // namespace Zelm::details
