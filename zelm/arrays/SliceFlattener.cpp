#include <zelm/arrays/SliceFlattener.h>

#include <zelm/arrays/SlicePlan.h>

namespace Zelm {

SliceFlattener::SliceFlattener(const std::vector<IndexSet>& indexSets, const ArrayDimensions& dims,
                               DataOrdering sourceOrdering, DataOrdering sliceOrdering) {
    computeOffsets(indexSets, dims, sourceOrdering, sliceOrdering);
}

void SliceFlattener::computeOffsets(const std::vector<IndexSet>& indexSets, const ArrayDimensions& dims,
                                    DataOrdering sourceOrdering, DataOrdering sliceOrdering) {
    const details::SlicePlan plan(indexSets, dims, sourceOrdering, sliceOrdering);
    valid_ = plan.isValid();
    sliceDimension_ = plan.dimensions();
    if (plan.size() > offsets_.max_size()) {
        details::throwVectorTooLong();
    }
    offsets_.resize(plan.size());
    std::uint64_t* out = offsets_.data();
    plan.forEachRun([&out](const details::IndexRun& run) { out = run.writeTo(out); });
}

} // namespace Zelm
