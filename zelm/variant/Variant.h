#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>
#include <zelm/arrays/IndexSet.h>
#include <zelm/text/ZString.h>
#include <zelm/variant/AbstractVariantStorage.h>
#include <zelm/variant/Comparison.h>
#include <zelm/variant/ElementTypes.h>

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm {

class MutableVariant;

namespace details {

/// The element type under which a C++ value goes into a Variant. Both 64-bit integer types of the language
/// are taken, text literals and character pointers become ZString. Characters of other kinds, pointers and
/// all else are refused.
template <class T>
struct VariantElement {
    using type = T;
};
template <>
struct VariantElement<long long> {
    using type = std::int64_t;
};
template <>
struct VariantElement<unsigned long long> {
    using type = std::uint64_t;
};
template <>
struct VariantElement<const char*> {
    using type = ZString;
};
template <>
struct VariantElement<char*> {
    using type = ZString;
};
template <>
struct VariantElement<ZStringLiteral> {
    using type = ZString;
};
template <class T>
using VariantElementOf = typename VariantElement<std::decay_t<T>>::type;

template <class T>
using RequireScalar =
    std::enable_if_t<isElementType<VariantElementOf<T>> && !std::is_same_v<VariantElementOf<T>, Variant>>;
/// Elements of a list or vector: no pointers, since a list of literals would name no clear type.
template <class T>
using RequireListElement =
    std::enable_if_t<isElementType<VariantElementOf<T>> && !std::is_pointer_v<T> && !std::is_array_v<T>>;

template <class T>
ZELM_EXPORT std::shared_ptr<AbstractVariantStorage>
makeStorage(std::vector<StoredElement<T>>&& elements, ArrayDimensions dimensions, DataOrdering ordering);
template <class T>
ZELM_EXPORT std::shared_ptr<AbstractVariantStorage> makeScalarStorage(T&& element);

struct VariantAccess;

} // namespace details

/// A typed multi-dimensional value: a scalar, vector or array of one of the 27 element types with a shape and
/// a data ordering, or null. A scalar is an array of shape `{1}`; a null Variant has the shape `{}` and the
/// unknown type.
///
/// Copies share the elements, and no operation writes through a shared storage: what one copy does never
/// shows in another. Copying costs an atomic increment and no allocation. Copies may be used from several
/// threads; one object belongs to one thread at a time while anybody changes it. A moved-from Variant is to
/// be assigned or destroyed.
class ZELM_EXPORT Variant {
public:
    /// A null Variant. No allocation.
    Variant() noexcept;

    /// A scalar. Integers keep their width and signedness, text literals and `const char*` become ZString.
    template <class T, class = details::RequireScalar<T>>
    Variant(T&& value)
        : storage(details::makeScalarStorage<details::VariantElementOf<T>>(
              details::VariantElementOf<T>(std::forward<T>(value)))),
          compare(&details::compareStorages<details::VariantElementOf<T>>) {}

    /// A vector of the listed elements, or an array of them in the given shape and ordering. A shape of no
    /// elements counts as omitted; one that does not fit throws `std::length_error` "Dimensions don't match
    /// size". Cells are made of a `std::vector<Variant>`: a braced list of Variants is a copy, never a cell.
    template <class T, class = details::RequireListElement<T>, class = details::RequireScalar<T>>
    Variant(std::initializer_list<T> elements, ArrayDimensions dimensions = {},
            DataOrdering ordering = RowMajor)
        : Variant(ofElements<T>(elements, std::move(dimensions), ordering)) {}

    /// The same of a vector, which is moved in where its elements can stay as they are.
    template <class T, class = details::RequireListElement<T>>
    Variant(std::vector<T> elements, ArrayDimensions dimensions = {}, DataOrdering ordering = RowMajor)
        : Variant(ofElements<T>(std::move(elements), std::move(dimensions), ordering)) {}

    /// Takes the storage over; nothing is copied.
    Variant(MutableVariant&& value) noexcept;

    Variant(const Variant&) = default;
    Variant(Variant&&) noexcept = default;
    Variant& operator=(const Variant&) = default;
    Variant& operator=(Variant&&) noexcept = default;
    ~Variant() = default;

    ArrayDimensions dimensions() const;
    DataOrdering dataOrdering() const;
    WellKnownType wellKnownType() const;

    /// The same values, allowing for element type, trailing 1s of the shape, and ordering; exact, without
    /// tolerance. Two empty values are equivalent whatever their types, a NaN makes a value differ from
    /// itself. Throws `std::bad_function_call` on a moved-from Variant and nothing else.
    bool isEquivalentTo(const Variant& other) const;
    /// The same type, shape entry by entry, ordering and elements.
    bool isIdenticalTo(const Variant& other) const;

    /// The first element as a `T`. A value of another type is converted as by convertedTo(), all elements of
    /// it. Throws `std::invalid_argument` "Wrong data type" on a moved-from Variant, `std::out_of_range`
    /// "Offset out of bounds" if there is no element, and the failures of conversion. No allocation for a
    /// scalar number.
    template <class T, class = details::RequireElementType<T>>
    T value() const;

    /// The value with elements of another type, every element tested to survive the way back. Shares the
    /// storage if the type is the same. Throws `std::invalid_argument` "Cannot convert to non-well-known
    /// type" for an unknown type and the failures of conversion: `std::invalid_argument` "No conversion
    /// available", "Unable to check conversion", `std::runtime_error` "Conversion check failed".
    Variant convertedTo(WellKnownType type) const;

    /// The elements selected by one set a dimension, in this value's ordering. Throws `std::invalid_argument`
    /// "Array slice invalid" if the sets do not fit the shape.
    Variant slice(const std::vector<IndexSet>& indexSets) const;
    /// Writes the elements of `value` over the selected ones, flat order to flat order; a shared storage is
    /// cloned before. Throws `std::length_error` "Cannot assign to diffent dimensions" and the failures of
    /// conversion.
    void assignSlice(const std::vector<IndexSet>& indexSets, Variant value);

    /// Appends the elements of `other`, which must have the same element type: `std::invalid_argument`
    /// "Incompatible data for append" otherwise. A vector gets the new count as its first extent. A value
    /// without elements becomes one that shares the elements of `other`. Amortised linear for a sole owner.
    void append(Variant other);

    /// Element-wise sum and product. The operands meet in their common type, complex integers in
    /// `complexDouble`; a scalar goes with every element of the other operand; arrays combine by index,
    /// whatever their orderings, and the result has the form of the left one. Integers wrap. Throws
    /// `std::invalid_argument` "Binary operations not yet supported for type: " with the type's keyword,
    /// "Binary operation dimensions mismatched", the failures of conversion, and `std::out_of_range` "Offset
    /// out of bounds" for a shape that claims more elements than there are.
    friend ZELM_EXPORT Variant operator+(Variant a, Variant b);
    friend ZELM_EXPORT Variant operator*(Variant a, Variant b);

private:
    friend class MutableVariant;
    friend struct details::VariantAccess;

    using Comparison = std::function<details::StorageComparison>;

    Variant(std::shared_ptr<details::AbstractVariantStorage> newStorage, Comparison newCompare) noexcept
        : storage(std::move(newStorage)), compare(std::move(newCompare)) {}

    template <class T, class Elements>
    static Variant ofElements(Elements&& elements, ArrayDimensions dimensions, DataOrdering ordering) {
        using Element = details::VariantElementOf<T>;
        using Vector = std::vector<details::StoredElement<Element>>;
        const auto make = [&](Vector&& stored) {
            return Variant(details::makeStorage<Element>(std::move(stored), std::move(dimensions), ordering),
                           &details::compareStorages<Element>);
        };
        if constexpr (std::is_same_v<std::decay_t<Elements>, Vector>) {
            return make(std::forward<Elements>(elements));
        } else {
            return make(Vector(elements.begin(), elements.end()));
        }
    }

    std::shared_ptr<details::AbstractVariantStorage> storage;
    Comparison compare;
};

#define ZELM_EXTERN(type, Name, value_, keyword)                                                             \
    extern template ZELM_EXPORT std::shared_ptr<details::AbstractVariantStorage> details::makeStorage<type>( \
        std::vector<details::StoredElement<type>>&&, ArrayDimensions, DataOrdering);                         \
    extern template ZELM_EXPORT std::shared_ptr<details::AbstractVariantStorage>                             \
        details::makeScalarStorage<type>(type &&);                                                           \
    extern template ZELM_EXPORT type Variant::value<type>() const;
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_EXTERN)
#undef ZELM_EXTERN

/// A new value of the same shape and ordering with `function` of each element, which is converted to `T` with
/// a check before. `T` is a real number other than `bool`, or a `std::complex`.
template <class T, class = details::RequireArithmeticElement<T>>
ZELM_EXPORT Variant mapElements(Variant value, std::function<T(const T&)> function);

} // namespace Zelm
