#pragma once

#include <zelm/variant/Variant.h>

namespace Zelm {

/// The form in which a value may be changed: sole owner of its storage. Moves from and to Variant; the step
/// from a Variant clones the storage only if somebody else holds it. Belongs to one thread.
class ZELM_EXPORT MutableVariant {
public:
    /// An array of default elements: zeros, `false`, empty text, null Variants, empty Structs. A shape of no
    /// elements becomes `{0}`. An unknown type gives a null value. Throws `std::length_error` or
    /// `std::bad_alloc` for shapes that no memory holds.
    static MutableVariant createWithAllocatedArrayOfWellKnownType(WellKnownType type,
                                                                  ArrayDimensions dimensions,
                                                                  DataOrdering ordering);

    /// A null value.
    MutableVariant() noexcept;
    /// Takes the storage over if nobody shares it, else clones it; a shared source stays as it was.
    explicit MutableVariant(Variant&& source);

    MutableVariant(MutableVariant&&) noexcept = default;
    MutableVariant& operator=(MutableVariant&&) noexcept = default;
    MutableVariant(const MutableVariant&) = delete;
    MutableVariant& operator=(const MutableVariant&) = delete;
    ~MutableVariant() = default;

    ArrayDimensions dimensions() const;
    DataOrdering dataOrdering() const;
    WellKnownType wellKnownType() const;

    /// One element, to read or write. No conversion: throws `std::invalid_argument` "Cannot access element of
    /// null variant", "Wrong data type", "Too few indices", `std::out_of_range` "Indices out of bounds".
    template <class T, class = details::RequireElementType<T>>
    T& element(std::vector<std::uint64_t> indices);
    template <class T, class = details::RequireElementType<T>>
    void setElement(std::vector<std::uint64_t> indices, T value) {
        element<T>(std::move(indices)) = std::move(value);
    }
    /// Stores a scalar of any convertible type. Throws `std::invalid_argument` "setElementByVariant: argument
    /// must be scalar", "setElementByVariant: argument must be well-known type" if this value is null, the
    /// failures of conversion and of element(). Unchanged after a failure.
    void setElementByVariant(std::vector<std::uint64_t> indices, Variant value);

    /// As Variant::assignSlice.
    void assignSlice(const std::vector<IndexSet>& indexSets, Variant value);

private:
    friend class Variant;
    friend struct details::VariantAccess;

    std::shared_ptr<details::AbstractVariantStorage> storage;
    Variant::Comparison compare;
};

#define ZELM_EXTERN(type, Name, value, keyword)                                                              \
    extern template ZELM_EXPORT type& MutableVariant::element<type>(std::vector<std::uint64_t>);
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_EXTERN)
#undef ZELM_EXTERN

} // namespace Zelm
