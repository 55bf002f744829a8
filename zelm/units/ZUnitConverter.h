#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/variant/Variant.h>

#include <complex>
#include <cstddef>

namespace Zelm {

class ZUnit;

namespace details {

/// The way of a number into the base unit of its quantity: `scale * v + offset`, or, with a logarithm
/// multiplier other than 0, `scale * 10^(v / logMultiplier) + offset`.
struct UnitMap {
    double scale = 1.0;
    double offset = 0.0;
    double logMultiplier = 0.0;
};

} // namespace details

/// The conversion from one unit to another, prepared: it reads both units once, where ZUnit::ConvertTo()
/// reads their trees on every call. Results are those of ZUnit::ConvertTo() to the last bit. Later changes of
/// the units do not show.
///
/// A small value: copies share the two SI texts and allocate nothing, moves do not throw. All calls are
/// const, and any number of threads may make them on the same converter.
class ZELM_EXPORT ZUnitConverter {
public:
    /// Units that are not commensurable are refused here, so that numbers convert without failures: throws
    /// `std::runtime_error` "Units X is not commensurable to Y" with the SI texts of `to` and of `from`.
    ZUnitConverter(const ZUnit& from, const ZUnit& to);

    /// Takes a few nanoseconds between linear units.
    double operator()(double value) const noexcept;
    /// Real and imaginary part, each by itself, also for logarithmic units.
    std::complex<double> operator()(std::complex<double> value) const noexcept;
    std::complex<double> operator()(std::complex<float> value) const noexcept {
        return (*this)(std::complex<double>(value));
    }
    /// `count` numbers from `in` to `out`, which are the same array or do not overlap. Allocates nothing.
    void operator()(const double* in, double* out, std::size_t count) const noexcept;
    /// All elements, as ZUnit::ConvertTo() converts them: in place if nobody else holds them, and not at all
    /// between units with equal SI texts. Throws `std::runtime_error` "Failed convering units from Y to X" if
    /// an element is no number or does not survive as a double.
    Variant operator()(Variant value) const;

private:
    details::UnitMap from_;
    details::UnitMap to_;
    ZString fromText_;
    ZString toText_;
};

} // namespace Zelm
