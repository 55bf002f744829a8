#include <zelm/arrays/IndexMapper.h>

#include <zelm/arrays/ArrayIndexing.h>
#include <zelm/arrays/IndexSelection.h>

namespace Zelm {

namespace {

/// Turns each element number over `dims` in the target ordering into the offset in the source ordering.
void mapNumbers(std::vector<std::uint64_t>& numbers, const ArrayDimensions& dims, DataOrdering sourceOrdering,
                DataOrdering targetOrdering) {
    const auto indicesOf = targetOrdering == ColumnMajor ? ArrayIndexing::CalculateIndicesColumnMajor
                                                         : ArrayIndexing::CalculateIndicesRowMajor;
    const auto offsetOf = sourceOrdering == RowMajor ? ArrayIndexing::CalculateOffsetRowMajor
                                                     : ArrayIndexing::CalculateOffsetColumnMajor;
    std::vector<std::uint64_t> indices;
    for (std::uint64_t& number : numbers) {
        indicesOf(indices, number, dims, false);
        offsetOf(&number, indices, dims, false);
    }
}

} // namespace

IndexMapper::IndexMapper(const IndexSet& set, const ArrayDimensions& dims, DataOrdering sourceOrdering,
                         DataOrdering targetOrdering) {
    const std::uint64_t extent = dims.countAllElements();
    valid_ = set.isValid(extent);
    if (!valid_) {
        return;
    }
    const details::IndexSelection selection(set, extent);
    sliceDimension_ = {selection.size()};
    offsets_ = selection.list();
    if (!dims.isVector() && sourceOrdering != targetOrdering) {
        mapNumbers(offsets_, dims, sourceOrdering, targetOrdering);
    }
}

} // namespace Zelm
