// Units: the parser beside memcpy of 1 MB (the goal is 3 us where that takes 50), arrays beside the plain
// loop, and the catalogue beside a fixed time.

#include "Compare.h"

#include <zelm/units/ZSystemOfUnits.h>
#include <zelm/units/ZUnit.h>
#include <zelm/variables/ZVariable.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VariantAccess.h>

#include <cstring>
#include <vector>

namespace Zelm::Bench {
namespace {

constexpr std::size_t kCount = 1000000;

std::vector<double> numbers() {
    std::vector<double> result(kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        result[i] = static_cast<double>(i) * 0.25;
    }
    return result;
}

bool sameElements(const Variant& ours, const std::vector<double>& peer) {
    const auto* storage = details::VariantAccess::typed<double>(ours);
    return storage && storage->elements() == peer;
}

const Comparison parser(
    "FromSiString(\"kg*m/s^2\") / memcpy of 1 MB", 0.06,
    [] { return [=] { return ZUnit::FromSiString("kg*m/s^2"); }; },
    [] {
        const std::vector<char> source(1 << 20, 'x');
        std::vector<char> target(1 << 20);
        return [=]() mutable { return std::memcpy(target.data(), source.data(), source.size()); };
    },
    Anything());

const Comparison conversion(
    "10^6 doubles from km to m / the plain loop", 1.1,
    [] {
        const ZUnit km = ZUnit::FromSiString("km");
        const ZUnit m = ZUnit::FromSiString("m");
        const Variant value(numbers());
        return [=] { return km.ConvertTo(m, value); };
    },
    [] {
        const std::vector<double> source = numbers();
        const double scale = 1000.0;
        const double offset = 0.0;
        const double toScale = 1.0;
        const double toOffset = 0.0;
        return [=] {
            std::vector<double> result;
            result.reserve(source.size());
            for (const double value : source) {
                result.push_back((offset + scale * value - toOffset) / toScale);
            }
            return result;
        };
    },
    sameElements);

const Comparison rangeElement(
    "element of a range / 340 dependent additions", 1.0,
    [] {
        const ZVariable range(Variant(1.0), kCount, Variant(0.5), ZUnit::FromSiString("Hz"));
        std::size_t i = 0;
        return [=]() mutable { return range[i++ % kCount]; };
    },
    [] {
        // About 200 ns on the machine of docs/performance.md, which is what an element may cost there.
        double step = 0.5;
        benchmark::DoNotOptimize(step);
        return [=] {
            double sum = 1.0;
            for (int i = 0; i < 340; ++i) {
                sum += step;
            }
            return sum;
        };
    },
    Anything());

const Comparison rangeArray(
    "range of 10^6 materialised / plain fill", 3.0,
    [] {
        const ZVariable range(Variant(1.0), kCount, Variant(0.5), ZUnit::FromSiString("Hz"));
        return [=] { return range.dataInStoredUnit(); };
    },
    [] {
        return [=] {
            std::vector<double> result(kCount);
            for (std::size_t i = 0; i < kCount; ++i) {
                result[i] = 1.0 + static_cast<double>(i) * 0.5;
            }
            return result;
        };
    },
    sameElements);

} // namespace
} // namespace Zelm::Bench
