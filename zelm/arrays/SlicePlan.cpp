#include <zelm/arrays/SlicePlan.h>

#include <zelm/arrays/ArrayIndexing.h>
#include <zelm/arrays/Saturating.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Zelm::details {

namespace {

/// What one index step in each dimension adds to a flat offset. Dimensions beyond the canonical form add
/// nothing; a single dimension always counts.
std::vector<std::uint64_t> effectiveStrides(const ArrayDimensions& source, DataOrdering ordering) {
    std::vector<std::uint64_t> strides = stridesOf(source, ordering);
    if (strides.size() > 1) {
        std::fill(strides.begin() + static_cast<std::ptrdiff_t>(source.canonicalSize()), strides.end(), 0u);
    }
    return strides;
}

/// Appends `slower`, the loop around `faster`, to it if both are one loop of constant step.
bool join(IndexRun& faster, const IndexRun& slower) {
    std::uint64_t span = 0;
    std::uint64_t count = 0;
    if (__builtin_mul_overflow(faster.step, faster.count, &span) || span != slower.step ||
        __builtin_mul_overflow(faster.count, slower.count, &count)) {
        return false;
    }
    faster.count = count;
    return true;
}

} // namespace

SlicePlan::SlicePlan(const std::vector<IndexSet>& indexSets, const ArrayDimensions& source,
                     DataOrdering sourceOrdering, DataOrdering sliceOrdering)
    : valid_(indexSets.size() == source.numberOfDimensions()) {
    if (!valid_) {
        return;
    }
    // Each stride gives way to the extent of the slice.
    std::vector<std::uint64_t> extents = effectiveStrides(source, sourceOrdering);
    axes_.reserve(extents.size());
    std::size_t fitting = 0;
    for (; fitting < extents.size() && indexSets[fitting].isValid(source[fitting]); ++fitting) {
        extents[fitting] = addDimension(indexSets[fitting], source[fitting], extents[fitting]);
    }
    valid_ = fitting == extents.size();
    extents.resize(fitting);
    dimensions_ = ArrayDimensions(std::move(extents));
    size_ = valid_ ? dimensions_.countAllElements() : 0;
    if (size_ == 0) {
        largestOffset_ = 0;
        return;
    }
    if (sliceOrdering != RowMajor) {
        std::reverse(axes_.begin(), axes_.end());
    }
    joinAxes();
}

std::uint64_t SlicePlan::addDimension(const IndexSet& set, std::uint64_t extent, std::uint64_t stride) {
    IndexSelection& selection = axes_.emplace_back(set, extent);
    const std::uint64_t size = selection.size();
    if (size > 0) {
        const std::uint64_t last = (selection.end() - 1)->last();
        largestOffset_ = saturatingSum(largestOffset_, saturatingProduct(last, stride));
    }
    if (selection.isOneRun()) {
        origin_ += std::exchange(selection.begin()->first, 0) * stride;
    }
    if (size < 2) {
        axes_.pop_back();
        return size;
    }
    for (IndexRun& run : selection) {
        run.first *= stride;
        run.step *= stride;
    }
    return size;
}

void SlicePlan::joinAxes() {
    if (axes_.empty()) {
        return;
    }
    auto joined = axes_.end() - 1;
    for (auto axis = joined; axis != axes_.begin();) {
        --axis;
        const bool canJoin = joined->isOneRun() && axis->isOneRun();
        if (canJoin && join(*joined->begin(), *axis->begin())) {
            continue;
        }
        if (--joined != axis) {
            *joined = std::move(*axis);
        }
    }
    axes_.erase(axes_.begin(), joined);
}

} // namespace Zelm::details
