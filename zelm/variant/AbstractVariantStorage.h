#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>
#include <zelm/arrays/IndexSet.h>
#include <zelm/variant/ConversionPolicy.h>
#include <zelm/variant/WellKnownType.h>

#include <cstdint>
#include <memory>
#include <typeinfo>
#include <vector>

namespace Zelm {

class Variant;

namespace details {

/// The typed payload of a Variant: flat elements of one type with a shape and a data ordering.
///
/// A storage has no lock and shares nothing: it is shared by its owners, who clone it before a change. The
/// order of the virtual operations is part of the binary interface.
class ZELM_EXPORT AbstractVariantStorage {
public:
    virtual ~AbstractVariantStorage();

    virtual ArrayDimensions dimensions() const = 0;
    virtual DataOrdering dataOrdering() const = 0;
    virtual WellKnownType wellKnownType() const = 0;
    /// `typeid(T)` of the element type, `typeid(void)` of a null storage. Ask it before casting an element
    /// pointer.
    virtual const std::type_info& typeInfo() const = 0;

    /// Replaces the shape without a look at the element count; a shape that claims more elements than there
    /// are makes later operations throw `std::out_of_range` "Offset out of bounds". A null storage takes
    /// empty shapes alone and throws `std::invalid_argument` "Cannot set non-empty ArrayDimensions in
    /// NulLVariantStorage" for others.
    virtual void setDimensions(ArrayDimensions dimensions) = 0;
    /// Declares the elements to be in another order; they stay where they are.
    virtual void setDataOrdering(DataOrdering ordering) = 0;
    /// Rearranges the elements into another order. Throws `std::out_of_range` "Offset out of bounds", with no
    /// change, if the shape claims more elements than there are.
    virtual void convertDataOrdering(DataOrdering ordering) = 0;

    /// The first element; null for a null storage. Pointers to elements live until the storage changes.
    virtual const void* data() const = 0;
    /// The element at these indices. Throws as ArrayIndexing does: `std::invalid_argument` "Too few indices",
    /// `std::out_of_range` "Indices out of bounds" or "Offset out of bounds". A call with a braced list of
    /// one integer picks the offset form: spell the vector.
    virtual const void* element(std::vector<std::uint64_t> indices) const = 0;
    /// The element at this flat offset. Throws `std::out_of_range` "Offset out of bounds".
    virtual const void* element(std::uint64_t offset) const = 0;
    virtual void* data() = 0;
    virtual void* element(std::vector<std::uint64_t> indices) = 0;
    virtual void* element(std::uint64_t offset) = 0;

    /// Appends the other's elements. A vector shape gets the new count as its first extent, whichever axis
    /// was long; any other shape stays and no longer tells the number of elements. Throws
    /// `std::invalid_argument` "Incompatible data for append", with no change, unless `other` holds the same
    /// element type.
    virtual void append(std::shared_ptr<AbstractVariantStorage> other) = 0;
    /// A new storage with the same content, owned by the caller.
    virtual AbstractVariantStorage* clone() const = 0;

    /// A new storage of the given type with converted elements, the same shape and ordering. See
    /// ConversionPolicy.
    virtual std::unique_ptr<AbstractVariantStorage> convertTo(WellKnownType type,
                                                              ConversionPolicy policy) const = 0;
    /// A new storage with the selected elements, in this storage's ordering; null if the slice does not fit
    /// the shape and for a null storage. `self` keeps this storage alive during the call.
    virtual std::unique_ptr<AbstractVariantStorage>
    slice(const std::vector<IndexSet>& indexSets, std::shared_ptr<AbstractVariantStorage> self) const = 0;
    /// Writes the elements of `value`, converted with a check, over the selected ones: flat order to flat
    /// order, whatever the ordering of `value`. Throws `std::length_error` "Cannot assign to diffent
    /// dimensions" if the shapes of slice and value are not equivalent. A null storage ignores the call.
    virtual void assignSlice(const std::vector<IndexSet>& indexSets,
                             std::shared_ptr<AbstractVariantStorage> self, Variant value) = 0;

protected:
    AbstractVariantStorage() = default;
    AbstractVariantStorage(const AbstractVariantStorage&) = default;
    AbstractVariantStorage& operator=(const AbstractVariantStorage&) = default;
};

} // namespace details
} // namespace Zelm
