#pragma once

#include <zelm/arrays/DataOrdering.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Zelm::Testing {

using Numbers = std::vector<std::uint64_t>;

/// Counts through the indices of a shape by carrying, with no stride, product or division in it.
inline std::vector<Numbers> allIndices(const Numbers& extents, DataOrdering ordering) {
    std::vector<Numbers> all;
    Numbers indices(extents.size(), 0);
    for (bool more = std::count(extents.begin(), extents.end(), 0u) == 0; more;) {
        all.push_back(indices);
        more = false;
        for (std::size_t rank = 0; rank < extents.size() && !more; ++rank) {
            const std::size_t i = ordering == ColumnMajor ? rank : extents.size() - 1 - rank;
            more = ++indices[i] < extents[i];
            indices[i] = more ? indices[i] : 0;
        }
    }
    return all;
}

} // namespace Zelm::Testing
