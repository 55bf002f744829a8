// Arrays beside Eigen with evaluated operators, a small slice beside a loop, and a range beside xtensor.

#include "Compare.h"

#include <zelm/arrays/IndexSet.h>
#include <zelm/units/ZUnit.h>
#include <zelm/variables/ZVariable.h>
#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VariantAccess.h>

#include <Eigen/Core>
#ifdef ZELM_BENCH_XTENSOR
#include <xtensor/xbuilder.hpp>
#include <xtensor/xtensor.hpp>
#endif

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

namespace Zelm::Bench {
namespace {

using Array = Eigen::Array<double, Eigen::Dynamic, 1>;
using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

std::vector<double> numbers(std::size_t count) {
    std::vector<double> result(count);
    for (std::size_t i = 0; i < count; ++i) {
        result[i] = static_cast<double>(i % 1000);
    }
    return result;
}

Array eigenNumbers(std::size_t count) {
    const std::vector<double> source = numbers(count);
    return Eigen::Map<const Array>(source.data(), static_cast<Eigen::Index>(source.size()));
}

Variant square(std::uint64_t side) {
    return Variant(numbers(side * side), ArrayDimensions{side, side}, RowMajor);
}

Matrix eigenSquare(Eigen::Index side) {
    const Array source = eigenNumbers(static_cast<std::size_t>(side * side));
    return Eigen::Map<const Matrix>(source.data(), side, side);
}

/// Whether the elements of a value are those of an array of the peer, in this order.
struct SameElements {
    template <class Peer>
    bool operator()(const Variant& ours, const Peer& peer) const {
        using Element = std::decay_t<decltype(*peer.data())>;
        const auto* storage = details::VariantAccess::typed<Element>(ours);
        return storage && std::equal(storage->elements().begin(), storage->elements().end(), peer.data(),
                                     peer.data() + peer.size());
    }
};

std::string named(std::size_t count) {
    return count == 1000000 ? "10^6" : "10^7";
}

// Results of this size come from memory that the process kept when it freed others, or from pages that are
// touched for the first time, which takes longer than the arithmetic. glibc decides by the largest block that
// was ever freed: the ratio is that of a program which does just this only where the row runs in a process of
// its own.
Comparison multiplyAdd(std::size_t count, double goal) {
    return Comparison(
        "a*b + c, " + named(count) + " doubles / Eigen, each operator evaluated", goal,
        [=] {
            const Variant a(numbers(count));
            const Variant b(numbers(count));
            const Variant c(numbers(count));
            return [=] { return a * b + c; };
        },
        [=] {
            const Array a = eigenNumbers(count);
            const Array b = a;
            const Array c = a;
            return [=] {
                const Array product = a * b;
                return Array(product + c);
            };
        },
        SameElements());
}

const Comparison multiplyAdds[] = {multiplyAdd(1000000, 0.4), multiplyAdd(10000000, 0.95)};

Comparison checkedConversion(std::size_t count, double goal) {
    return Comparison(
        "checked double to int32, " + named(count) + " / Eigen cast, cast back, compare", goal,
        [=] {
            const Variant value(numbers(count));
            return [=] { return value.convertedTo(WellKnownType::Int32()); };
        },
        [=] {
            const Array value = eigenNumbers(count);
            return [=] {
                Eigen::Array<int, Eigen::Dynamic, 1> converted = value.cast<int>();
                benchmark::DoNotOptimize((converted.cast<double>() == value).all());
                return converted;
            };
        },
        SameElements());
}

const Comparison checkedConversions[] = {checkedConversion(1000000, 0.65), checkedConversion(10000000, 0.9)};

const Comparison equality(
    "isIdenticalTo, 10^6 doubles / Eigen (a == b).all()", 1.1,
    [] {
        const Variant a(numbers(1000000));
        const Variant b(numbers(1000000));
        return [=] { return a.isIdenticalTo(b); };
    },
    [] {
        const Array a = eigenNumbers(1000000);
        const Array b = a;
        return [=] { return (a == b).all(); };
    });

const Comparison scalarTimesArray(
    "2.0 * a, 10^6 doubles / Eigen", kNoGoal,
    [] {
        const Variant a(numbers(1000000));
        return [=] { return Variant(2.0) * a; };
    },
    [] {
        const Array a = eigenNumbers(1000000);
        return [=] { return Array(2.0 * a); };
    },
    SameElements());

IndexSet range(std::uint64_t first, std::uint64_t last, std::uint64_t step = 1) {
    return IndexRange(IndexValue(first, false), IndexValue(last, false), step);
}

/// A slice of a square beside what `peer` makes of it.
template <class MakePeer>
Comparison slice(const std::string& row, double goal, std::uint64_t side, std::vector<IndexSet> sets,
                 MakePeer peer) {
    return Comparison(
        row, goal, [=] { return [=, value = square(side)] { return value.slice(sets); }; }, peer,
        SameElements());
}

const Comparison rows =
    slice("rows 250 to 749 of 1000 x 1000 / Eigen", 1.1, 1000, {range(250, 749), IndexRange::all},
          [] { return [a = eigenSquare(1000)] { return Matrix(a.middleRows(250, 500)); }; });

const Comparison everySecondColumn =
    slice("every second column of 1000 x 1000 / Eigen", 1.4, 1000, {IndexRange::all, range(0, 999, 2)}, [] {
        return [a = eigenSquare(1000)] { return Matrix(a(Eigen::all, Eigen::seqN(0, 500, Eigen::fix<2>))); };
    });

const Comparison oneColumn =
    slice("one column of 1000 x 1000 / Eigen", 2, 1000, {IndexRange::all, range(500, 500)},
          [] { return [a = eigenSquare(1000)] { return Eigen::VectorXd(a.col(500)); }; });

const Comparison smallSlice =
    slice("3 x 4 of 10 x 10 / loop into a vector", 12, 10, {range(2, 4), range(3, 6)}, [] {
        return [a = numbers(100)] {
            std::vector<double> result(12);
            for (std::size_t i = 0; i < 3; ++i) {
                for (std::size_t k = 0; k < 4; ++k) {
                    result[4 * i + k] = a[10 * (i + 2) + k + 3];
                }
            }
            return result;
        };
    });

const Comparison transposition(
    "row-major to column-major, 1000 x 1000 / Eigen transpose", 1.15,
    [] {
        return [value = MutableVariant(square(1000)), next = ColumnMajor]() mutable {
            auto& storage = *details::VariantAccess::storage(value);
            storage.convertDataOrdering(next);
            next = next == RowMajor ? ColumnMajor : RowMajor;
            return static_cast<const double*>(storage.data());
        };
    },
    [] { return [a = eigenSquare(1000)] { return Matrix(a.transpose()); }; },
    [](const double* ours, const Matrix& peer) { return std::equal(ours, ours + peer.size(), peer.data()); });

ZVariable range() {
    return ZVariable(Variant(1.0), 1000000, Variant(0.5), ZUnit::FromSiString("Hz"));
}

const Comparison rangeElement = Comparison::withLimit(
    "element of a range / 200 ns", 200, [] { return [range = range()] { return range[765432]; }; },
    [](const Variant& element) { return element.isIdenticalTo(Variant(1.0 + 765432 * 0.5)); });

#ifdef ZELM_BENCH_XTENSOR
const Comparison rangeToArray(
    "range of 10^6 to an array / xtensor arange", 1.1,
    [] { return [range = range()] { return range.dataInStoredUnit(); }; },
    [] {
        return [] {
            const xt::xtensor<double, 1> result = xt::arange(1.0, 500001.0, 0.5);
            return result;
        };
    },
    SameElements());
#endif

} // namespace
} // namespace Zelm::Bench
