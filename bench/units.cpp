// Units: reading and converting beside udunits, which takes its best spelling of each unit, and beside the
// plain loop over log10.

#include "Compare.h"

#include <zelm/units/ZUnit.h>
#include <zelm/units/ZUnitConverter.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VariantAccess.h>

#ifdef ZELM_BENCH_UDUNITS
#include <udunits2.h>
#endif

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace Zelm::Bench {
namespace {

constexpr std::size_t kCount = 1000000;

bool sameElements(const Variant& ours, const std::vector<double>& peer) {
    const auto* storage = details::VariantAccess::typed<double>(ours);
    return storage && storage->elements() == peer;
}

std::vector<double> powers() {
    std::vector<double> result(kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        result[i] = 0.001 + static_cast<double>(i) * 0.25;
    }
    return result;
}

std::vector<double> levels() {
    std::vector<double> result = powers();
    for (double& value : result) {
        value = 10 * std::log10(value);
    }
    return result;
}

/// A new array that nobody has zeroed.
using Array = std::unique_ptr<double[]>;

/// To the roundings of a few steps: the peers take others.
bool near(double a, double b) {
    return std::abs(a - b) <= 1e-14 * std::max(1.0, std::abs(b));
}

bool nearElements(const Variant& ours, const Array& peer) {
    const auto* storage = details::VariantAccess::typed<double>(ours);
    return storage && std::equal(storage->elements().begin(), storage->elements().end(), peer.get(),
                                 peer.get() + kCount, near);
}

/// The function that makes our action: all of `values` from one unit to another into a new array.
auto converted(const char* from, const char* to, std::vector<double> (*values)()) {
    return [=] {
        const ZUnit source = ZUnit::FromSiString(from);
        const ZUnit target = ZUnit::FromSiString(to);
        return [=, value = Variant(values())] { return source.ConvertTo(target, value); };
    };
}

const Comparison intoDecibels(
    "10^6 values from mW to dB(mW) / a plain log10 loop", 1.05, converted("mW", "dB(mW)", powers),
    [] {
        return [values = powers()] {
            Array result(new double[kCount]);
            for (std::size_t i = 0; i < kCount; ++i) {
                result[i] = 10 * std::log10(values[i]);
            }
            return result;
        };
    },
    nearElements);

const Comparison single = Comparison::withLimit(
    "one value through a converter / 10 ns", 10.0,
    [] {
        const ZUnitConverter toMega(ZUnit::FromSiString("kHz"), ZUnit::FromSiString("MHz"));
        return [=] { return toMega(1500.0); };
    },
    [](double megahertz) { return megahertz == 1.5; });

#ifdef ZELM_BENCH_UDUNITS
struct Free {
    void operator()(ut_unit* unit) const { ut_free(unit); }
    void operator()(cv_converter* converter) const { cv_free(converter); }
};
using UdUnit = std::unique_ptr<ut_unit, Free>;
using UdConverter = std::shared_ptr<cv_converter>;

UdUnit read(const char* text) {
    static ut_system* const system = [] {
        ut_set_error_message_handler(ut_ignore); // it complains about its own catalogue
        return ut_read_xml(nullptr);
    }();
    return UdUnit(ut_parse(system, text, UT_UTF8));
}

UdConverter converter(const ut_unit* from, const ut_unit* to) {
    return UdConverter(ut_get_converter(const_cast<ut_unit*>(from), const_cast<ut_unit*>(to)), Free());
}

/// A unit is made of the text and freed again. Both stand for the same if they lead to the same base unit.
Comparison reading(const std::string& text, const char* peerText, const char* base, const char* peerBase) {
    return Comparison(
        "read " + text + " / ut_parse of " + peerText, 1.2,
        [=] { return [text = ZString(text)] { return ZUnit::FromSiString(text); }; },
        [=] { return [=] { return read(peerText); }; },
        [=](const ZUnit& ours, const UdUnit& peer) {
            const UdConverter toBase = converter(peer.get(), read(peerBase).get());
            return near(ours.ConvertTo(ZUnit::FromSiString(base), 20.0),
                        cv_convert_double(toBase.get(), 20.0));
        });
}

const Comparison readings[] = {
    reading("kg*m/s^2", "kg*m/s^2", "N", "N"),
    reading("mm^2", "mm^2", "m^2", "m^2"),
    reading("dB(mW)", "dBm", "W", "W"),
};

/// The function that makes the peer's action.
auto convertedByUdunits(const char* from, const char* to, std::vector<double> (*values)()) {
    return [=] {
        return [convert = converter(read(from).get(), read(to).get()), values = values()] {
            Array result(new double[kCount]);
            cv_convert_doubles(convert.get(), values.data(), kCount, result.get());
            return result;
        };
    };
}

const Comparison linear("10^6 values from kHz to MHz / udunits", 1.3, converted("kHz", "MHz", powers),
                        convertedByUdunits("kHz", "MHz", powers), nearElements);

const Comparison fromDecibels("10^6 values from dB(mW) to mW / udunits from dBm", 0.95,
                              converted("dB(mW)", "mW", levels), convertedByUdunits("dBm", "mW", levels),
                              nearElements);
#endif

} // namespace
} // namespace Zelm::Bench
