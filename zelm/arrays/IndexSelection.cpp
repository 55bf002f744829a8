#include <zelm/arrays/IndexSelection.h>

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace Zelm::details {

namespace {

void append(std::vector<std::uint64_t>& list, const IndexRun& run) {
    if (run.count > list.max_size() - list.size()) {
        throwVectorTooLong();
    }
    const std::size_t before = list.size();
    list.resize(before + run.count);
    run.writeTo(list.data() + before);
}

/// What an item selects whose class is known; a step of 0 for all others.
IndexRun runOfKnown(const IndexItem& item, std::uint64_t extent) {
    if (const auto* range = exactly<IndexRange>(item)) {
        return runOf(*range, extent);
    }
    if (const auto* value = exactly<IndexValue>(item)) {
        return {value->offset(extent), 1, 1};
    }
    return {0, 0, 0};
}

void append(std::vector<std::uint64_t>& list, const IndexItem& item, std::uint64_t extent) {
    const IndexRun run = runOfKnown(item, extent);
    if (run.step != 0) {
        append(list, run);
    } else {
        const std::vector<std::uint64_t> indices = item.values(extent);
        list.insert(list.end(), indices.begin(), indices.end());
    }
}

void sortWithoutDoubles(std::vector<std::uint64_t>& list) {
    const auto notAscending = std::adjacent_find(list.begin(), list.end(), std::greater_equal<>());
    if (notAscending != list.end()) {
        std::sort(list.begin(), list.end());
        list.erase(std::unique(list.begin(), list.end()), list.end());
    }
}

/// The longest run that begins at `from`.
IndexRun leadingRun(const std::vector<std::uint64_t>& indices, std::size_t from) {
    if (from + 1 == indices.size()) {
        return {indices[from], 1, 1};
    }
    const std::uint64_t step = indices[from + 1] - indices[from];
    std::size_t last = from + 1;
    while (last + 1 < indices.size() && indices[last + 1] - indices[last] == step) {
        ++last;
    }
    return {indices[from], step, last - from + 1};
}

} // namespace

void throwVectorTooLong() {
    throw std::length_error("vector<T> too long");
}

IndexRun runOf(const IndexRange& range, std::uint64_t extent) {
    const std::uint64_t first = range.start.offset(extent);
    const std::uint64_t last = range.end.offset(extent);
    if (range.step == 0) {
        throwVectorTooLong();
    }
    // The count is meant to wrap: it is 0 for a whole dimension of extent 0 and for a start one past the end.
    const std::uint64_t count = (range.step == 1 ? last - first : (last - first) / range.step) + 1;
    if (count == 0) {
        return {first, range.step, 0};
    }
    if (first > last || count > std::vector<std::uint64_t>().max_size()) {
        throwVectorTooLong();
    }
    return {first, range.step, count};
}

IndexSelection::IndexSelection(const IndexSet& set, std::uint64_t extent)
    : only_(set.items_.size() == 1 ? runOfKnown(*set.items_.front(), extent) : IndexRun{0, 0, 0}),
      size_(only_.count) {
    if (only_.step != 0) {
        return;
    }
    only_ = IndexRun();
    std::vector<std::uint64_t> indices;
    for (const auto& item : set.items_) {
        append(indices, *item, extent);
    }
    sortWithoutDoubles(indices);
    setSorted(indices);
}

std::vector<std::uint64_t> IndexSelection::list() const {
    std::vector<std::uint64_t> indices(size_);
    std::uint64_t* out = indices.data();
    for (const IndexRun& run : *this) {
        out = run.writeTo(out);
    }
    return indices;
}

void IndexSelection::setOnly(const IndexRun& run) noexcept {
    only_ = run;
    size_ = run.count;
}

void IndexSelection::setSorted(const std::vector<std::uint64_t>& indices) {
    if (indices.empty()) {
        return;
    }
    const IndexRun first = leadingRun(indices, 0);
    if (first.count == indices.size()) {
        return setOnly(first);
    }
    for (std::size_t i = 0; i < indices.size(); i += runs_.back().count) {
        runs_.push_back(leadingRun(indices, i));
    }
    size_ = indices.size();
}

} // namespace Zelm::details
