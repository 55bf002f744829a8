#include <zelm/variables/StrategySupport.h>

#include <zelm/variables/ZVariable.h>

#include <utility>

namespace Zelm::details {

const Variant& propertyOf(const ZVariable& variable, ZStringView name) {
    const ZPropertyHandle& tree = variable.propertyHandle();
    const ZPropertyTreeNode* child = tree.node().findChild(name);
    // The handle on a child costs allocations; it is made only to fail, in the words of the tree.
    return child ? child->value() : tree.child(ZString(name)).sharedNode()->value();
}

std::vector<IndexSet> rowSlice(IndexSet rows, std::uint64_t numberOfDimensions) {
    std::vector<IndexSet> sets(numberOfDimensions, IndexSet(IndexRange::all));
    if (!sets.empty()) {
        sets.front() = std::move(rows);
    }
    return sets;
}

} // namespace Zelm::details
