#include <zelm/units/UnitConversion.h>

#include <zelm/variant/Arithmetic.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <utility>
#include <vector>

namespace Zelm::details {

namespace {

double powerOfTen(const UnitMap& from, double value) {
    return std::pow(10.0, value / from.logMultiplier);
}

double linear(const UnitMap& from, const UnitMap& to, double value) {
    return (from.offset + from.scale * value - to.offset) / to.scale;
}

double logarithm(const UnitMap& to, double value) {
    // In this order of arguments a NaN passes through.
    return to.logMultiplier * std::log10(std::max(value, 1e-300));
}

[[gnu::always_inline]] inline void linearLoop(UnitMap from, UnitMap to, const double* in, double* out,
                                              std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = linear(from, to, in[i]);
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

void linearNumbers(const UnitMap& from, const UnitMap& to, const double* in, double* out, std::size_t count) {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx")) {
        return linearLoopAvx(from, to, in, out, count);
    }
#endif
    linearLoop(from, to, in, out, count);
}

/// The steps one after the other. A loop of their own lets the linear ones be vectorised, which they are not
/// beside a call of the mathematical library.
void convertChunk(const UnitMap& from, const UnitMap& to, const double* in, double* out, std::size_t count) {
    if (from.logMultiplier != 0.0) {
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = powerOfTen(from, in[i]);
        }
        in = out;
    }
    linearNumbers(from, to, in, out, count);
    if (to.logMultiplier != 0.0) {
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = logarithm(to, out[i]);
        }
    }
}

/// Hands the converted numbers to `take`, a range at a time. The chunk stays in the first cache from step to
/// step, and a fresh array is written once.
template <class T, class Take>
void convertChunks(const UnitMap& from, const UnitMap& to, const T* in, std::size_t count, Take take) {
    constexpr std::size_t parts = sizeof(T) / sizeof(double);
    T chunk[512 / parts];
    while (count > 0) {
        const std::size_t size = std::min(count, std::size(chunk));
        convertChunk(from, to, reinterpret_cast<const double*>(in), reinterpret_cast<double*>(chunk),
                     size * parts);
        take(chunk, chunk + size);
        in += size;
        count -= size;
    }
}

template <class T>
Variant convertAs(const UnitMap& from, const UnitMap& to, Variant&& value) {
    VariantAccess::convert<T>(value);
    const VectorVariantStorage<T>& source = *VariantAccess::typed<T>(value);
    const std::size_t count = countOfShape(source);
    if (count == 0) {
        return emptyArray<T>(source.dataOrdering());
    }
    if (T* out = claimElements<T>(value, count)) {
        convertChunks(from, to, out, count,
                      [&](const T* first, const T* last) { out = std::copy(first, last, out); });
        return std::move(value);
    }
    std::vector<T> result;
    result.reserve(count);
    convertChunks(from, to, source.elements().data(), count,
                  [&](const T* first, const T* last) { result.insert(result.end(), first, last); });
    return VariantAccess::make<T>(std::move(result), source.shape(), source.dataOrdering());
}

} // namespace

double convertNumber(const UnitMap& from, const UnitMap& to, double value) noexcept {
    if (from.logMultiplier != 0.0) {
        value = powerOfTen(from, value);
    }
    value = linear(from, to, value);
    return to.logMultiplier != 0.0 ? logarithm(to, value) : value;
}

void convertNumbers(const UnitMap& from, const UnitMap& to, const double* in, double* out,
                    std::size_t count) noexcept {
    convertChunks(from, to, in, count,
                  [&](const double* first, const double* last) { out = std::copy(first, last, out); });
}

Variant convertElements(const UnitMap& from, const UnitMap& to, Variant value) {
    return value.wellKnownType().isComplex() ? convertAs<std::complex<double>>(from, to, std::move(value))
                                             : convertAs<double>(from, to, std::move(value));
}

} // namespace Zelm::details
