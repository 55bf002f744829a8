#include <zelm/units/ZUnitConverter.h>

#include <zelm/units/UnitConversion.h>
#include <zelm/units/ZUnit.h>

#include <stdexcept>
#include <type_traits>
#include <utility>

namespace Zelm {

namespace details {

UnitMap mapOf(const ZUnit& unit) {
    return {unit.GetScale(), unit.GetOffset(), unit.GetLogMultiplier()};
}

void throwIncommensurable(const ZString& from, const ZString& to) {
    throw std::runtime_error(("Units " + to + " is not commensurable to " + from).to_string());
}

void throwFailedConversion(const ZString& from, const ZString& to) {
    throw std::runtime_error(("Failed convering units from " + from + " to " + to).to_string());
}

} // namespace details

static_assert(std::is_nothrow_copy_constructible_v<ZUnitConverter> &&
              std::is_nothrow_move_assignable_v<ZUnitConverter>);

ZUnitConverter::ZUnitConverter(const ZUnit& from, const ZUnit& to)
    : from_(details::mapOf(from)), to_(details::mapOf(to)), fromText_(from.GetSiUnits()),
      toText_(to.GetSiUnits()) {
    if (!from.IsCommensurable(to)) {
        details::throwIncommensurable(fromText_, toText_);
    }
}

double ZUnitConverter::operator()(double value) const noexcept {
    return details::convertNumber(from_, to_, value);
}

std::complex<double> ZUnitConverter::operator()(std::complex<double> value) const noexcept {
    return {(*this)(value.real()), (*this)(value.imag())};
}

void ZUnitConverter::operator()(const double* in, double* out, std::size_t count) const noexcept {
    details::convertNumbers(from_, to_, in, out, count);
}

Variant ZUnitConverter::operator()(Variant value) const {
    if (fromText_ == toText_) {
        return value;
    }
    try {
        return details::convertElements(from_, to_, std::move(value));
    } catch (...) {
        details::throwFailedConversion(fromText_, toText_);
    }
}

} // namespace Zelm
