#include <zelm/arrays/IndexSet.h>

#include <zelm/arrays/IndexSelection.h>

#include <algorithm>
#include <utility>

namespace Zelm {

namespace {

bool fits(const IndexItem& item, std::uint64_t extent) {
    if (details::exactly<IndexRange>(item) || details::exactly<IndexValue>(item)) {
        return item.isValid(extent);
    }
    // A user's own item may note down what it is asked: a copy answers, and the one in the set stays as it
    // was.
    return std::unique_ptr<const IndexItem>(item.clone())->isValid(extent);
}

} // namespace

IndexSet::~IndexSet() = default;

IndexSet::IndexSet(const IndexSet& other) {
    items_.reserve(other.items_.size());
    for (const auto& item : other.items_) {
        add(*item);
    }
}

IndexSet& IndexSet::operator=(const IndexSet& other) {
    IndexSet copy(other);
    items_.swap(copy.items_);
    return *this;
}

void IndexSet::add(const IndexItem& item) {
    std::unique_ptr<const IndexItem> copy(item.clone());
    items_.push_back(std::move(copy));
}

bool IndexSet::isValid(std::uint64_t extent) const {
    return std::all_of(items_.begin(), items_.end(),
                       [extent](const auto& item) { return fits(*item, extent); });
}

std::set<std::uint64_t> IndexSet::values(std::uint64_t extent) const {
    std::set<std::uint64_t> indices;
    for (const details::IndexRun& run : details::IndexSelection(*this, extent)) {
        std::uint64_t next = run.first;
        for (std::uint64_t i = 0; i < run.count; ++i, next += run.step) {
            indices.insert(indices.end(), next);
        }
    }
    return indices;
}

std::uint64_t IndexSet::size(std::uint64_t extent) const {
    return details::IndexSelection(*this, extent).size();
}

std::vector<IndexSet> ArraySliceFromIndices(const std::vector<std::uint64_t>& indices) {
    std::vector<IndexSet> sets;
    sets.reserve(indices.size());
    for (const std::uint64_t index : indices) {
        sets.emplace_back(IndexValue(index, false));
    }
    return sets;
}

} // namespace Zelm
