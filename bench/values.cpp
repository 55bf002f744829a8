// Arrays of 10^6 doubles beside Eigen with evaluated operators, and memcmp.

#include "Compare.h"

#include <zelm/arrays/IndexSet.h>
#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VariantAccess.h>

#include <Eigen/Core>

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

const Comparison multiplyAdd(
    "a*b + c, 10^6 doubles / Eigen, each operator evaluated", 0.6,
    [](benchmark::State& state) {
        const Variant a(numbers());
        const Variant b(numbers());
        const Variant c(numbers());
        repeat(state, [&] { return a * b + c; });
    },
    [](benchmark::State& state) {
        const Array a = eigenNumbers();
        const Array b = a;
        const Array c = a;
        repeat(state, [&] {
            const Array product = a * b;
            return Array(product + c);
        });
    });

const Comparison checkedConversion(
    "checked double to int32, 10^6 / Eigen cast, cast back, compare", 1.2,
    [](benchmark::State& state) {
        const Variant value(numbers());
        repeat(state, [&] { return value.convertedTo(WellKnownType::Int32()); });
    },
    [](benchmark::State& state) {
        const Array value = eigenNumbers();
        repeat(state, [&] {
            Eigen::Array<int, Eigen::Dynamic, 1> converted = value.cast<int>();
            benchmark::DoNotOptimize((converted.cast<double>() == value).all());
            return converted;
        });
    });

const Comparison sliceOfRows(
    "every row but the outer ones of 1000 x 1000 / Eigen block", 1.3,
    [](benchmark::State& state) {
        const Variant value = square();
        const std::vector<IndexSet> rows{IndexSet(IndexRange(IndexValue(1, false), IndexValue::end(1), 1)),
                                         IndexSet(IndexRange::all)};
        repeat(state, [&] { return value.slice(rows); });
    },
    [](benchmark::State& state) {
        const Matrix value = eigenSquare();
        repeat(state, [&] { return Matrix(value.middleRows(1, kSide - 2)); });
    });

const Comparison sliceOfColumns(
    "every second column of 1000 x 1000 / Eigen map with stride", 2.0,
    [](benchmark::State& state) {
        const Variant value = square();
        const std::vector<IndexSet> columns{
            IndexSet(IndexRange::all), IndexSet(IndexRange(IndexValue(0, false), IndexValue::end(0), 2))};
        repeat(state, [&] { return value.slice(columns); });
    },
    [](benchmark::State& state) {
        const Matrix value = eigenSquare();
        using Stride = Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>;
        repeat(state, [&] {
            return Matrix(
                Eigen::Map<const Matrix, 0, Stride>(value.data(), kSide, kSide / 2, Stride(kSide, 2)));
        });
    });

const Comparison transposition(
    "row-major to column-major, 1000 x 1000 / Eigen transpose", 1.5,
    [](benchmark::State& state) {
        MutableVariant value(square());
        auto& storage = *details::VariantAccess::storage(value);
        DataOrdering next = ColumnMajor;
        for (auto _ : state) {
            storage.convertDataOrdering(next);
            next = next == RowMajor ? ColumnMajor : RowMajor;
            benchmark::DoNotOptimize(storage.data());
        }
    },
    [](benchmark::State& state) {
        const Matrix value = eigenSquare();
        repeat(state, [&] { return Matrix(value.transpose()); });
    });

const Comparison comparison(
    "isIdenticalTo, 10^6 doubles / memcmp", 1.5,
    [](benchmark::State& state) {
        const Variant a(numbers());
        const Variant b(numbers());
        repeat(state, [&] { return a.isIdenticalTo(b); });
    },
    [](benchmark::State& state) {
        const std::vector<double> a = numbers();
        const std::vector<double> b = numbers();
        repeat(state, [&] { return std::memcmp(a.data(), b.data(), a.size() * sizeof(double)); });
    });

} // namespace
} // namespace Zelm::Bench
