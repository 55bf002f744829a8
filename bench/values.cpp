// Arrays of 10^6 doubles beside Eigen with evaluated operators, and memcmp.

#include "Compare.h"

#include <zelm/arrays/IndexSet.h>
#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VariantAccess.h>

#include <Eigen/Core>

#include <algorithm>
#include <cstring>
#include <vector>

namespace Zelm::Bench {
namespace {

using Array = Eigen::Array<double, Eigen::Dynamic, 1>;
using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

constexpr std::size_t kCount = 1000000;
constexpr std::uint64_t kSide = 1000;

std::vector<double> numbers(std::size_t count = kCount) {
    std::vector<double> result(count);
    for (std::size_t i = 0; i < count; ++i) {
        result[i] = static_cast<double>(i % 1000);
    }
    return result;
}

Array eigenNumbers() {
    const std::vector<double> source = numbers();
    return Eigen::Map<const Array>(source.data(), static_cast<Eigen::Index>(source.size()));
}

Variant square() {
    return Variant(numbers(), ArrayDimensions{kSide, kSide}, RowMajor);
}

Matrix eigenSquare() {
    const std::vector<double> source = numbers();
    return Eigen::Map<const Matrix>(source.data(), kSide, kSide);
}

/// Whether the elements of a row-major value are those of an array of the peer, in this order.
struct SameElements {
    template <class Peer>
    bool operator()(const Variant& ours, const Peer& peer) const {
        const auto* storage = details::VariantAccess::typed<typename Peer::Scalar>(ours);
        return storage && std::equal(storage->elements().begin(), storage->elements().end(), peer.data(),
                                     peer.data() + peer.size());
    }
};

const Comparison multiplyAdd(
    "a*b + c, 10^6 doubles / Eigen, each operator evaluated", 0.6,
    [] {
        const Variant a(numbers());
        const Variant b(numbers());
        const Variant c(numbers());
        return [=] { return a * b + c; };
    },
    [] {
        const Array a = eigenNumbers();
        const Array b = a;
        const Array c = a;
        return [=] {
            const Array product = a * b;
            return Array(product + c);
        };
    },
    SameElements());

const Comparison checkedConversion(
    "checked double to int32, 10^6 / Eigen cast, cast back, compare", 1.2,
    [] {
        const Variant value(numbers());
        return [=] { return value.convertedTo(WellKnownType::Int32()); };
    },
    [] {
        const Array value = eigenNumbers();
        return [=] {
            Eigen::Array<int, Eigen::Dynamic, 1> converted = value.cast<int>();
            benchmark::DoNotOptimize((converted.cast<double>() == value).all());
            return converted;
        };
    },
    SameElements());

const Comparison sliceOfRows(
    "every row but the outer ones of 1000 x 1000 / Eigen block", 1.3,
    [] {
        const Variant value = square();
        const std::vector<IndexSet> rows{IndexSet(IndexRange(IndexValue(1, false), IndexValue::end(1), 1)),
                                         IndexSet(IndexRange::all)};
        return [=] { return value.slice(rows); };
    },
    [] {
        const Matrix value = eigenSquare();
        return [=] { return Matrix(value.middleRows(1, kSide - 2)); };
    },
    SameElements());

const Comparison sliceOfColumns(
    "every second column of 1000 x 1000 / Eigen map with stride", 2.0,
    [] {
        const Variant value = square();
        const std::vector<IndexSet> columns{
            IndexSet(IndexRange::all), IndexSet(IndexRange(IndexValue(0, false), IndexValue::end(0), 2))};
        return [=] { return value.slice(columns); };
    },
    [] {
        const Matrix value = eigenSquare();
        using Stride = Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>;
        return [=] {
            return Matrix(
                Eigen::Map<const Matrix, 0, Stride>(value.data(), kSide, kSide / 2, Stride(kSide, 2)));
        };
    },
    SameElements());

const Comparison transposition(
    "row-major to column-major, 1000 x 1000 / Eigen transpose", 1.5,
    [] {
        return [value = MutableVariant(square()), next = ColumnMajor]() mutable {
            auto& storage = *details::VariantAccess::storage(value);
            storage.convertDataOrdering(next);
            next = next == RowMajor ? ColumnMajor : RowMajor;
            return static_cast<const double*>(storage.data());
        };
    },
    [] {
        const Matrix value = eigenSquare();
        return [=] { return Matrix(value.transpose()); };
    },
    [](const double* ours, const Matrix& peer) { return std::equal(ours, ours + peer.size(), peer.data()); });

const Comparison comparison(
    "isIdenticalTo, 10^6 doubles / memcmp", 1.5,
    [] {
        const Variant a(numbers());
        const Variant b(numbers());
        return [=] { return a.isIdenticalTo(b); };
    },
    [] {
        const std::vector<double> a = numbers();
        const std::vector<double> b = numbers();
        return [=] { return std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0; };
    });

} // namespace
} // namespace Zelm::Bench
