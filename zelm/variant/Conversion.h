#pragma once

#include <zelm/variant/AbstractVariantStorage.h>
#include <zelm/variant/VectorVariantStorage.h>

#include <memory>

namespace Zelm::details {

/// A new storage of `type` with the converted elements of `source`, its shape and its ordering. Tests come in
/// this order: the target type, the policy if there are elements, whether the pair has a conversion, then
/// element by element. Throws
/// - `std::invalid_argument` "Cannot convert data into new storage, unknown destination type",
/// - `std::invalid_argument` "Unknown conversion policy",
/// - `std::invalid_argument` "No conversion available",
/// - `std::invalid_argument` "Unable to check conversion" if the pair has no way back and the policy asks for
/// it,
/// - `std::runtime_error` "Conversion check failed" at the first element that does not survive,
/// - what UTF-8 and UTF-16 conversion throws.
template <class From>
std::unique_ptr<AbstractVariantStorage> convertStorage(const VectorVariantStorage<From>& source,
                                                       WellKnownType type, ConversionPolicy policy);

/// The one element of `source` as a `To`, checked as by CheckAlways unless it is a `To` already; the scalar
/// read without an array in between. `source` holds exactly one element.
template <class To>
To convertedScalar(const AbstractVariantStorage& source);

#define ZELM_EXTERN(type, Name, value, keyword)                                                              \
    extern template std::unique_ptr<AbstractVariantStorage> convertStorage<type>(                            \
        const VectorVariantStorage<type>&, WellKnownType, ConversionPolicy);                                 \
    extern template type convertedScalar<type>(const AbstractVariantStorage&);
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_EXTERN)
#undef ZELM_EXTERN

} // namespace Zelm::details
