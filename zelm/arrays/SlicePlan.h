#pragma once

#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>
#include <zelm/arrays/IndexSelection.h>
#include <zelm/arrays/IndexSet.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Zelm::details {

/// A slice of an array as nested strided loops over the flat source, without a list of offsets.
///
/// Neighbouring dimensions are joined where their strides allow it: some full rows of a row-major array are a
/// single run of step 1, every second column a single run of step 2.
class SlicePlan {
public:
    /// Plans the slice of an array of the shape `source`, to be visited in `sliceOrdering`. The dimensions
    /// are taken in order, up to the first whose set does not fit.
    /// @throws what `IndexSet::size` throws.
    SlicePlan(const std::vector<IndexSet>& indexSets, const ArrayDimensions& source,
              DataOrdering sourceOrdering, DataOrdering sliceOrdering);

    /// Whether there is one set for each dimension and each set fits.
    bool isValid() const noexcept { return valid_; }

    /// The shape of the slice; of an invalid plan the extents that came before the fault.
    const ArrayDimensions& dimensions() const& noexcept { return dimensions_; }
    ArrayDimensions dimensions() && noexcept { return std::move(dimensions_); }

    /// The number of elements of the slice; 0 for an invalid plan, 2^64-1 for 2^64 or more.
    std::uint64_t size() const noexcept { return size_; }

    /// The largest source offset of all runs; 0 if there are none. A loop over storage that has more elements
    /// than this needs no further test. 2^64-1 if it does not fit into 64 bits.
    std::uint64_t largestOffset() const noexcept { return largestOffset_; }

    /// The length of the first run that forEachRun() will visit; the others are as long but for irregular
    /// slices.
    std::uint64_t firstRunLength() const noexcept { return axes_.empty() ? 1 : axes_.back().begin()->count; }

    /// Calls `visit(const IndexRun&)` with runs of source offsets that together are the elements of the
    /// slice, in the slice's own ordering. Each run has at least one element.
    template <class Visit>
    void forEachRun(Visit&& visit) const {
        if (size_ == 0) {
            return;
        }
        if (axes_.empty()) {
            visit(IndexRun{origin_, 1, 1});
        } else if (axes_.size() == 1) {
            visitFastest(origin_, visit);
        } else {
            visitSlower(0, origin_, visit);
        }
    }

private:
    /// Adds the loop over one dimension and returns its number of indices.
    std::uint64_t addDimension(const IndexSet& set, std::uint64_t extent, std::uint64_t stride);
    void joinAxes();

    // The depth stays below 64 for every size of less than 2^64, since each axis has two elements or more.
    // The fastest loop stands apart from the recursion: runs of two or three elements come twice as fast.
    template <class Visit>
    void visitSlower(std::size_t axis, std::uint64_t origin, Visit& visit) const {
        for (const IndexRun& run : axes_[axis]) {
            std::uint64_t next = origin + run.first;
            for (std::uint64_t i = 0; i < run.count; ++i, next += run.step) {
                if (axis + 2 < axes_.size()) {
                    visitSlower(axis + 1, next, visit);
                } else {
                    visitFastest(next, visit);
                }
            }
        }
    }

    template <class Visit>
    void visitFastest(std::uint64_t origin, Visit& visit) const {
        for (const IndexRun& run : axes_.back()) {
            visit(IndexRun{origin + run.first, run.step, run.count});
        }
    }

    bool valid_ = true;
    ArrayDimensions dimensions_;
    std::uint64_t size_ = 0;
    std::uint64_t origin_ = 0;
    std::uint64_t largestOffset_ = 0;
    /// The loops, the slowest first: each is the offsets that it adds. The size of one that was joined is not
    /// kept.
    std::vector<IndexSelection> axes_;
};

} // namespace Zelm::details
