#pragma once

#include <zelm/arrays/DataOrdering.h>
#include <zelm/arrays/IndexSet.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

namespace Zelm::Testing {

using Numbers = std::vector<std::uint64_t>;

/// Counts through the indices of a shape by carrying, with no stride, product or division in it.
inline std::vector<Numbers> allIndices(const Numbers& extents, DataOrdering ordering) {
    std::vector<Numbers> all;
    Numbers indices(extents.size(), 0);
    for (bool more = !extents.empty() && std::count(extents.begin(), extents.end(), 0u) == 0; more;) {
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

/// All lists of `length` numbers from `low` to `high`.
inline std::vector<Numbers> allLists(std::size_t length, std::uint64_t low, std::uint64_t high) {
    std::vector<Numbers> all = allIndices(Numbers(length, high - low + 1), RowMajor);
    for (Numbers& list : all) {
        for (std::uint64_t& number : list) {
            number += low;
        }
    }
    return length == 0 ? std::vector<Numbers>{{}} : all;
}

/// A number from `low` to `high`, both included.
inline std::uint64_t draw(std::mt19937& random, std::uint64_t low, std::uint64_t high) {
    return std::uniform_int_distribution<std::uint64_t>(low, high)(random);
}

/// A random set for an extent, and what it means: one flag an index.
struct RandomSet {
    IndexSet set;
    std::vector<bool> chosen;

    RandomSet(std::mt19937& random, std::uint64_t extent) : chosen(extent) {
        for (std::uint64_t items = draw(random, 0, 9) == 0 ? 0 : draw(random, 1, 4); items > 0 && extent > 0;
             --items) {
            const std::uint64_t kind = draw(random, 0, 5);
            const std::uint64_t first = kind == 0 ? 0 : draw(random, 0, extent - 1);
            const std::uint64_t last = kind == 0  ? extent - 1
                                       : kind < 3 ? first
                                                  : draw(random, first, extent - 1);
            const std::uint64_t step = kind == 0 ? 1 : draw(random, 1, 3);
            if (kind == 0) {
                set.add(IndexRange::all);
            } else if (kind < 3) {
                set.add(written(random, first, extent));
            } else {
                set.add(IndexRange(written(random, first, extent), written(random, last, extent), step));
            }
            for (std::uint64_t i = first; i <= last; i += step) {
                chosen[i] = true;
            }
        }
    }

    Numbers indices() const {
        Numbers list;
        for (std::uint64_t i = 0; i < chosen.size(); ++i) {
            if (chosen[i]) {
                list.push_back(i);
            }
        }
        return list;
    }

private:
    static IndexValue written(std::mt19937& random, std::uint64_t index, std::uint64_t extent) {
        return draw(random, 0, 1) == 0 ? IndexValue(index, false) : IndexValue::end(extent - 1 - index);
    }
};

/// Where each element of a shape is stored, by its indices.
inline std::map<Numbers, std::uint64_t> storagePlaces(const Numbers& extents, DataOrdering ordering) {
    std::map<Numbers, std::uint64_t> places;
    for (const Numbers& indices : allIndices(extents, ordering)) {
        places.emplace(indices, places.size());
    }
    return places;
}

/// A random slice with all that it should be, found by counting through it and looking each element up.
struct RandomSlice {
    Numbers extents, sliceExtents, offsets;
    std::vector<IndexSet> sets;
    DataOrdering source, slice;

    explicit RandomSlice(std::mt19937& random)
        : source(DataOrdering(draw(random, 0, 1))), slice(DataOrdering(draw(random, 0, 1))) {
        std::vector<Numbers> indices;
        for (std::uint64_t dimensions = draw(random, 1, 4); dimensions > 0; --dimensions) {
            extents.push_back(draw(random, draw(random, 0, 9) == 0 ? 0 : 1, 7));
            const RandomSet drawn(random, extents.back());
            sets.push_back(drawn.set);
            indices.push_back(drawn.indices());
            sliceExtents.push_back(indices.back().size());
        }
        const auto places = storagePlaces(extents, source);
        for (Numbers element : allIndices(sliceExtents, slice)) {
            for (std::size_t i = 0; i < element.size(); ++i) {
                element[i] = indices[i][element[i]];
            }
            offsets.push_back(places.at(element));
        }
    }
};

} // namespace Zelm::Testing
