#include <zelm/variant/Conversion.h>

#include <zelm/variant/ConversionKernels.h>
#include <zelm/variant/ElementConversion.h>
#include <zelm/variant/ObjectConversion.h>
#include <zelm/variant/RoomForElements.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

namespace Zelm::details {

namespace {

[[noreturn]] void throwCheckFailed() {
    throw std::runtime_error("Conversion check failed");
}

/// The tests that look at no element, in their order. Returns whether the elements are to be checked.
bool requireConversion(WellKnownType from, std::size_t count, WellKnownType to, ConversionPolicy policy) {
    if (to.isUnknown()) {
        throw std::invalid_argument("Cannot convert data into new storage, unknown destination type");
    }
    if (count > 0 && policy != NoCheck && policy != CheckAlways && policy != CheckLossy) {
        throw std::invalid_argument("Unknown conversion policy");
    }
    if (!hasConversion(from, to)) {
        throw std::invalid_argument("No conversion available");
    }
    const bool checked = policy == CheckAlways || (policy == CheckLossy && isLossyConversion(from, to));
    if (checked && count > 0 && !hasConversion(to, from)) {
        throw std::invalid_argument("Unable to check conversion");
    }
    return checked;
}

/// Numbers of a type that is known at run time, with the form that a result takes over.
struct NumberArray {
    WellKnownType type;
    const void* elements;
    std::size_t elementSize;
    std::size_t count;
    const ArrayDimensions& shape;
    DataOrdering ordering;

    const void* at(std::size_t index) const noexcept {
        return static_cast<const unsigned char*>(elements) + index * elementSize;
    }
};

/// The elements get their values a run at a time, in the cache, and the result is written once.
template <class To>
std::vector<StoredElement<To>> convertNumbers(const NumberArray& from, const NumberConversion& convert) {
    std::array<StoredElement<To>, NumberConversion::kLongestRun> run;
    auto to = roomForElements<StoredElement<To>>(from.count);
    while (to.size() < from.count) {
        const std::size_t count = std::min(from.count - to.size(), run.size());
        if (!convert(from.at(to.size()), run.data(), count)) {
            throwCheckFailed();
        }
        to.insert(to.end(), run.data(), run.data() + count);
    }
    return to;
}

std::unique_ptr<AbstractVariantStorage> convertNumberStorage(const NumberArray& from, WellKnownType type,
                                                             bool checked) {
    const NumberConversion convert(from.type, type, checked);
    std::unique_ptr<AbstractVariantStorage> result;
    visitElementType(type, [&](auto tag) {
        using To = typename decltype(tag)::type;
        if constexpr (isNumericElement<To>) {
            result = std::make_unique<VectorVariantStorage<To>>(convertNumbers<To>(from, convert), from.shape,
                                                                from.ordering);
        }
    });
    return result;
}

template <class From, class To>
std::vector<To> convertObjects(const std::vector<StoredElement<From>>& from, [[maybe_unused]] bool checked) {
    std::vector<To> to;
    to.reserve(from.size());
    for (const auto& stored : from) {
        const From& element = stored;
        to.push_back(convertObject<To>(element));
        if constexpr (hasConversion(wellKnownTypeOf<To>, wellKnownTypeOf<From>)) {
            if (checked && !survivesObject(element, to.back())) {
                throwCheckFailed();
            }
        }
    }
    return to;
}

} // namespace

template <class From>
std::unique_ptr<AbstractVariantStorage> convertStorage(const VectorVariantStorage<From>& source,
                                                       WellKnownType type, ConversionPolicy policy) {
    constexpr WellKnownType from = wellKnownTypeOf<From>;
    const auto& elements = source.elements();
    const bool checked = requireConversion(from, elements.size(), type, policy);
    if constexpr (isNumericElement<From>) {
        if (type.isNumeric()) {
            return convertNumberStorage(
                {from, elements.data(), sizeof(From), elements.size(), source.shape(), source.dataOrdering()},
                type, checked);
        }
    }
    std::unique_ptr<AbstractVariantStorage> result;
    visitElementType(type, [&](auto tag) {
        using To = typename decltype(tag)::type;
        if constexpr (!isNumericElement<To> && hasConversion(from, wellKnownTypeOf<To>)) {
            result = std::make_unique<VectorVariantStorage<To>>(convertObjects<From, To>(elements, checked),
                                                                source.shape(), source.dataOrdering());
        }
    });
    return result;
}

template <class To>
To convertedScalar(const AbstractVariantStorage& source) {
    constexpr WellKnownType to = wellKnownTypeOf<To>;
    const WellKnownType from = source.wellKnownType();
    const void* const element = source.data();
    if (from == to) {
        return *static_cast<const To*>(element);
    }
    requireConversion(from, 1, to, CheckAlways);
    To result{};
    if constexpr (isNumericElement<To>) {
        if (!NumberConversion(from, to, true)(element, &result, 1)) {
            throwCheckFailed();
        }
    } else if constexpr (isTextElement<To>) {
        visitElementType(from, [&](auto tag) {
            using From = typename decltype(tag)::type;
            if constexpr (hasConversion(wellKnownTypeOf<From>, to)) {
                result = convertObject<To>(*static_cast<const From*>(element));
            }
        });
    }
    return result;
}

#define ZELM_INSTANTIATE(type, Name, value, keyword)                                                         \
    template std::unique_ptr<AbstractVariantStorage> convertStorage<type>(const VectorVariantStorage<type>&, \
                                                                          WellKnownType, ConversionPolicy);  \
    template type convertedScalar<type>(const AbstractVariantStorage&);
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_INSTANTIATE)
#undef ZELM_INSTANTIATE

} // namespace Zelm::details
