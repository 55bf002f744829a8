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
    const std::vector<std::uint64_t> strides = effectiveStrides(source, sourceOrdering);
    std::vector<std::uint64_t> extents;
    extents.reserve(strides.size());
    for (std::size_t i = 0; i < strides.size() && valid_; ++i) {
        valid_ = indexSets[i].isValid(source[i]);
        if (valid_) {
            const IndexSelection selection(indexSets[i], source[i]);
            extents.push_back(selection.size());
            addDimension(selection, strides[i]);
        }
    }
    dimensions_ = ArrayDimensions(std::move(extents));
    size_ = valid_ ? dimensions_.countAllElements() : 0;
    if (size_ == 0) {
        largestOffset_ = 0;
        return;
    }
    if (sliceOrdering == RowMajor) {
        std::reverse(axes_.begin(), axes_.end());
    }
    joinAxes();
}

void SlicePlan::addDimension(const IndexSelection& selection, std::uint64_t stride) {
    if (selection.size() == 0) {
        return;
    }
    const std::uint64_t last = (selection.end() - 1)->last();
    largestOffset_ = saturatingSum(largestOffset_, saturatingProduct(last, stride));
    if (selection.isOneRun()) {
        origin_ += selection.begin()->first * stride;
    }
    if (selection.size() == 1) {
        return;
    }
    Axis axis(selection.begin(), selection.end());
    for (IndexRun& run : axis) {
        run.first = selection.isOneRun() ? 0 : run.first * stride;
        run.step *= stride;
    }
    axes_.push_back(std::move(axis));
}

void SlicePlan::joinAxes() {
    std::vector<Axis> joined;
    joined.reserve(axes_.size());
    for (Axis& axis : axes_) {
        const bool canJoin = !joined.empty() && joined.back().size() == 1 && axis.size() == 1;
        if (!canJoin || !join(joined.back().front(), axis.front())) {
            joined.push_back(std::move(axis));
        }
    }
    axes_ = std::move(joined);
}

} // namespace Zelm::details
