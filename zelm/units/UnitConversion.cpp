#include <zelm/units/UnitConversion.h>

#include <zelm/variant/Arithmetic.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <utility>

namespace Zelm::details {

namespace {

/// The formula with the kinds of both units fixed, so that loops over it need not look.
template <bool FromLogarithm, bool ToLogarithm>
struct Formula {
    UnitMap from;
    UnitMap to;

    double operator()(double value) const {
        if constexpr (FromLogarithm) {
            value = std::pow(10.0, value / from.logMultiplier);
        }
        value = (from.offset + from.scale * value - to.offset) / to.scale;
        if constexpr (ToLogarithm) {
            // In this order of arguments a NaN passes through.
            value = to.logMultiplier * std::log10(std::max(value, 1e-300));
        }
        return value;
    }
    std::complex<double> operator()(const std::complex<double>& value) const {
        return {(*this)(value.real()), (*this)(value.imag())};
    }
};

/// `use` of the formula for these two units.
template <class Use>
auto withFormula(const UnitMap& from, const UnitMap& to, Use use) {
    const bool toLogarithm = to.logMultiplier != 0.0;
    if (from.logMultiplier != 0.0) {
        return toLogarithm ? use(Formula<true, true>{from, to}) : use(Formula<true, false>{from, to});
    }
    return toLogarithm ? use(Formula<false, true>{from, to}) : use(Formula<false, false>{from, to});
}

template <class T>
Variant convertAs(const UnitMap& from, const UnitMap& to, Variant&& value) {
    return withFormula(from, to,
                       [&](auto formula) { return mapElementsInline<T>(std::move(value), formula); });
}

} // namespace

double convertNumber(const UnitMap& from, const UnitMap& to, double value) {
    return withFormula(from, to, [value](auto formula) { return formula(value); });
}

Variant convertElements(const UnitMap& from, const UnitMap& to, Variant value) {
    return value.wellKnownType().isComplex() ? convertAs<std::complex<double>>(from, to, std::move(value))
                                             : convertAs<double>(from, to, std::move(value));
}

} // namespace Zelm::details
