#include <zelm/variant/ConversionKernels.h>

#include <zelm/variant/ElementConversion.h>

#include <algorithm>
#include <cfloat>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace Zelm::details {

namespace {

template <class From, class To>
bool convertNumbers(const void* from, void* to, std::size_t count) noexcept {
    const From* const __restrict source = static_cast<const From*>(from);
    To* const __restrict target = static_cast<To*>(to);
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = convertNumber<To>(source[i]);
    }
    return true;
}

/// Converts doubles to integers by addition: 1.5 * 2^52 moves a whole number below 2^51, as it is in two's
/// complement, into the low bits of the sum. True if all elements were such numbers and `To` holds them; if
/// not, it is left open which of them survive. Vectorises where a cast does not: SSE2 has none to 64 bits,
/// and one to 32 bits wants the range tested before.
template <class To>
bool convertInMantissa(const double* __restrict source, To* __restrict target, std::size_t count) noexcept {
    constexpr double kShift = 6755399441055744.0;
    constexpr double kLimit = std::min(static_cast<double>(std::numeric_limits<To>::max()), 0x1p51);
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    // Carries into the place of the sign from a limit on, and from infinities and NaNs.
    const std::uint64_t toSign = kSign - bitsOf(kLimit);
    std::uint64_t outside = 0;
    std::uint64_t lost = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t bits = bitsOf(source[i]);
        const double sum = source[i] + kShift;
        target[i] = static_cast<To>(bitsOf(sum) - bitsOf(kShift));
        outside |= ((bits & ~kSign) + toSign) | (std::is_signed_v<To> ? 0 : bits);
        lost |= bitsOf((sum - kShift) - source[i]);
    }
    return (outside & kSign) == 0 && !isLost<double, To>(lost);
}

template <class From, class To>
inline constexpr bool isFoundInMantissa = std::is_same_v<From, double>&& std::is_integral_v<To> &&
                                          !std::is_same_v<To, bool> && FLT_EVAL_METHOD == 0;

template <class From, class To>
bool convertChecked(const void* from, void* to, std::size_t count) noexcept {
    const From* const source = static_cast<const From*>(from);
    To* const target = static_cast<To*>(to);
    if constexpr (isFoundInMantissa<From, To>) {
        if (convertInMantissa(source, target, count)) {
            return true;
        }
    }
    convertNumbers<From, To>(from, to, count);
    // A loop of its own: g++ vectorises the two, but not both in one.
    BitsOf<From> losses = 0;
    for (std::size_t i = 0; i < count; ++i) {
        losses = static_cast<BitsOf<From>>(losses | lossOf(source[i], target[i]));
    }
    return !isLost<From, To>(losses);
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
                convert_ = checked ? &convertChecked<From, To> : convert_;
            }
        });
    });
}

bool NumberConversion::operator()(const void* from, void* to, std::size_t count) const noexcept {
    if (fromComplex_ == toComplex_) {
        return convert_(from, to, fromComplex_ ? 2 * count : count);
    }
    alignas(double) std::byte reals[kLongestRun * sizeof(double)];
    if (fromComplex_) {
        takeRealParts_(from, reals, count);
        return convert_(reals, to, count) && (isReal_ == nullptr || isReal_(from, count));
    }
    const bool allSurvive = convert_(from, reals, count);
    addImaginaryParts_(reals, to, count);
    return allSurvive;
}

} // namespace Zelm::details
