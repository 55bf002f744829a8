#include <zelm/variables/StrategySupport.h>

#include <zelm/variables/ZVariable.h>

#include <utility>

namespace Zelm::details {

const Variant& propertyOf(const ZVariable& variable, ZStringView name) {
    const ZPropertyTreeNode* child = variable.propertyHandle().node().findChild(name);
    if (!child) {
        Private::throwPropertyNotFound(name);
    }
    return child->value();
}

std::vector<IndexSet> rowSlice(IndexSet rows, std::uint64_t numberOfDimensions) {
    std::vector<IndexSet> sets(numberOfDimensions, IndexSet(IndexRange::all));
    if (!sets.empty()) {
        sets.front() = std::move(rows);
    }
    return sets;
}

} // namespace Zelm::details
