#include <zelm/arrays/IndexItem.h>

#include <zelm/arrays/IndexSelection.h>

#include <stdexcept>

namespace Zelm {

IndexItem::~IndexItem() = default;
IndexValue::~IndexValue() = default;
IndexRange::~IndexRange() = default;

const IndexRange IndexRange::all;

std::uint64_t IndexValue::offset(std::uint64_t extent) const {
    const std::uint64_t last = extent - 1;
    if (value > last) {
        throw std::out_of_range("Index value out-of-range");
    }
    return fromEnd ? last - value : value;
}

std::vector<std::uint64_t> IndexValue::values(std::uint64_t extent) const {
    return {offset(extent)};
}

IndexValue* IndexValue::clone() const {
    return new IndexValue(*this);
}

std::vector<std::uint64_t> IndexRange::values(std::uint64_t extent) const {
    const details::IndexRun run = details::runOf(*this, extent);
    std::vector<std::uint64_t> indices(run.count);
    run.writeTo(indices.data());
    return indices;
}

bool IndexRange::isValid(std::uint64_t extent) const {
    return start.isValid(extent) && end.isValid(extent) && step > 0;
}

IndexRange* IndexRange::clone() const {
    return new IndexRange(*this);
}

} // namespace Zelm
