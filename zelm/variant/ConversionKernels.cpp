#include <zelm/variant/ConversionKernels.h>

#include <zelm/variant/ElementConversion.h>

#include <type_traits>

namespace Zelm::details {

namespace {

template <class From, class To>
void convertNumbers(const void* from, void* to, std::size_t count) noexcept {
    const From* const __restrict source = static_cast<const From*>(from);
    To* const __restrict target = static_cast<To*>(to);
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = convertNumber<To>(source[i]);
    }
}

// A loop of its own over what convertNumbers() wrote: g++ vectorises the two, but not both in one.
template <class From, class To>
bool allSurvive(const void* from, const void* to, std::size_t count) noexcept {
    const From* const source = static_cast<const From*>(from);
    const To* const target = static_cast<const To*>(to);
    BitsOf<From> loss = 0;
    for (std::size_t i = 0; i < count; ++i) {
        loss = static_cast<BitsOf<From>>(loss | lossOf(source[i], target[i]));
    }
    return loss == 0;
}

template <class T>
void takeRealParts(const void* complex, void* real, std::size_t count) noexcept {
    const T* const __restrict parts = static_cast<const T*>(complex);
    T* const __restrict target = static_cast<T*>(real);
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = parts[2 * i];
    }
}

template <class T>
bool isReal(const void* complex, std::size_t count) noexcept {
    const T* const parts = static_cast<const T*>(complex);
    BitsOf<T> loss = 0;
    for (std::size_t i = 0; i < count; ++i) {
        loss = static_cast<BitsOf<T>>(loss | lossOf(parts[2 * i + 1], T(0)));
    }
    return loss == 0;
}

template <class T>
void addImaginaryParts(const void* real, void* complex, std::size_t count) noexcept {
    const T* const __restrict source = static_cast<const T*>(real);
    T* const __restrict parts = static_cast<T*>(complex);
    for (std::size_t i = 0; i < count; ++i) {
        parts[2 * i] = source[i];
        parts[2 * i + 1] = T(0);
    }
}

/// Calls `visit` with the tag of a real type.
template <class Visitor>
void visitRealType(WellKnownType type, Visitor&& visit) {
    visitElementType(type, [&](auto tag) {
        if constexpr (std::is_arithmetic_v<typename decltype(tag)::type>) {
            visit(tag);
        }
    });
}

} // namespace

NumberConversion::NumberConversion(WellKnownType from, WellKnownType to, bool checked) noexcept
    : fromComplex_(from.isComplex()), toComplex_(to.isComplex()) {
    visitRealType(from.baseType(), [&](auto fromTag) {
        using From = typename decltype(fromTag)::type;
        takeRealParts_ = &takeRealParts<From>;
        isReal_ = checked ? &isReal<From> : nullptr;
        visitRealType(to.baseType(), [&](auto toTag) {
            using To = typename decltype(toTag)::type;
            convert_ = &convertNumbers<From, To>;
            addImaginaryParts_ = &addImaginaryParts<To>;
            if constexpr (!alwaysSurvives<From, To>()) {
                allSurvive_ = checked ? &allSurvive<From, To> : nullptr;
            }
        });
    });
}

bool NumberConversion::operator()(const void* from, void* to, std::size_t count) const noexcept {
    if (fromComplex_ == toComplex_) {
        return convertParts(from, to, fromComplex_ ? 2 * count : count);
    }
    alignas(double) std::byte reals[kLongestRun * sizeof(double)];
    if (fromComplex_) {
        takeRealParts_(from, reals, count);
        return convertParts(reals, to, count) && (isReal_ == nullptr || isReal_(from, count));
    }
    const bool allSurvive = convertParts(from, reals, count);
    addImaginaryParts_(reals, to, count);
    return allSurvive;
}

bool NumberConversion::convertParts(const void* from, void* to, std::size_t count) const noexcept {
    convert_(from, to, count);
    return allSurvive_ == nullptr || allSurvive_(from, to, count);
}

} // namespace Zelm::details
