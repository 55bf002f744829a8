#include <zelm/units/UnitConversion.h>

#include <zelm/variant/Arithmetic.h>
#include <zelm/variant/RoomForElements.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <iterator>
#include <limits>
#include <utility>
#include <vector>

namespace Zelm::details {

namespace {

double powerOfTen(const UnitMap& from, double value) {
    return std::pow(10.0, value / from.logMultiplier);
}

/// What the logarithm is taken of is no smaller; elsewhere this is no bound.
double lowestOf(const UnitMap& to) {
    return to.logMultiplier != 0.0 ? 1e-300 : -std::numeric_limits<double>::infinity();
}

double linear(const UnitMap& from, const UnitMap& to, double lowest, double value) {
    // In this order of arguments a NaN passes through.
    return std::max((from.offset + from.scale * value - to.offset) / to.scale, lowest);
}

double logarithm(const UnitMap& to, double value) {
    const double log = std::log10(value);
    return to.logMultiplier * log; // read behind the call, which would have it saved
}

[[gnu::always_inline]] inline void linearLoop(UnitMap from, UnitMap to, const double* in, double* out,
                                              std::size_t count) {
    const double lowest = lowestOf(to);
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = linear(from, to, lowest, in[i]);
    }
}

#if defined(__x86_64__)
/// The division bounds the loop, and wider registers halve what it takes. Each lane rounds as a single number
/// does: the bits are the same.
[[gnu::target("avx")]] void linearLoopAvx(UnitMap from, UnitMap to, const double* in, double* out,
                                          std::size_t count) {
    linearLoop(from, to, in, out, count);
}
#endif

/// How many numbers take the steps together. A loop of their own lets the linear steps be vectorised, which
/// they are not beside a call of the mathematical library; few enough stay in the first cache.
constexpr std::size_t kChunk = 64;

/// All steps but the logarithm, for one chunk. `out` may be `in`.
void convertChunk(const UnitMap& from, const UnitMap& to, const double* in, double* out, std::size_t count) {
    if (from.logMultiplier != 0.0) {
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = powerOfTen(from, in[i]);
        }
        in = out;
    }
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx")) {
        return linearLoopAvx(from, to, in, out, count);
    }
#endif
    linearLoop(from, to, in, out, count);
}

/// The number of doubles in an element.
template <class T>
constexpr std::size_t kParts = sizeof(T) / sizeof(double);

/// `count` elements in a fresh array, which is written once, without being zeroed before.
template <class T>
std::vector<T> convertedElements(const UnitMap& from, const UnitMap& to, const T* in, std::size_t count) {
    std::vector<T> result = roomForElements<T>(count);
    T chunk[8 * kChunk];
    for (std::size_t i = 0; i < count; i += std::size(chunk)) {
        const std::size_t size = std::min(std::size(chunk), count - i);
        convertNumbers(from, to, reinterpret_cast<const double*>(in + i), reinterpret_cast<double*>(chunk),
                       size * kParts<T>);
        result.insert(result.end(), chunk, chunk + size);
    }
    return result;
}

template <class T>
Variant convertAs(const UnitMap& from, const UnitMap& to, Variant&& value) {
    VariantAccess::convert<T>(value);
    const VectorVariantStorage<T>& source = *VariantAccess::typed<T>(value);
    const std::size_t count = countOfShape(source);
    if (count == 0) {
        return emptyArray<T>(source.dataOrdering());
    }
    if (T* const elements = claimElements<T>(value, count)) {
        double* const parts = reinterpret_cast<double*>(elements);
        convertNumbers(from, to, parts, parts, count * kParts<T>);
        return std::move(value);
    }
    return VariantAccess::make<T>(convertedElements(from, to, source.elements().data(), count),
                                  source.shape(), source.dataOrdering());
}

} // namespace

double convertNumber(const UnitMap& from, const UnitMap& to, double value) noexcept {
    if (from.logMultiplier != 0.0) {
        value = powerOfTen(from, value);
    }
    value = linear(from, to, lowestOf(to), value);
    return to.logMultiplier != 0.0 ? logarithm(to, value) : value;
}

void convertNumbers(const UnitMap& from, const UnitMap& to, const double* in, double* out,
                    std::size_t count) noexcept {
    const bool isLinear = from.logMultiplier == 0.0 && to.logMultiplier == 0.0;
    const std::size_t step = isLinear ? count : kChunk;
    for (std::size_t first = 0; first < count; first += step) {
        const std::size_t size = std::min(step, count - first);
        double* const chunk = out + first;
        convertChunk(from, to, in + first, chunk, size);
        if (to.logMultiplier != 0.0) {
            for (std::size_t i = 0; i < size; ++i) {
                chunk[i] = logarithm(to, chunk[i]);
            }
        }
    }
}

Variant convertElements(const UnitMap& from, const UnitMap& to, Variant value) {
    return value.wellKnownType().isComplex() ? convertAs<std::complex<double>>(from, to, std::move(value))
                                             : convertAs<double>(from, to, std::move(value));
}

} // namespace Zelm::details
