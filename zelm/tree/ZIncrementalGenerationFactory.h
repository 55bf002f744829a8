#pragma once

#include <zelm/Export.h>

#include <atomic>
#include <cstdint>

namespace Zelm::Details {

/// Numbers the versions of one lineage of trees: 1, 2, 3, ... A tree and every tree derived from it share one
/// factory, so no two versions of a lineage carry the same generation. Safe from several threads.
class ZELM_EXPORT ZIncrementalGenerationFactory {
public:
    ZIncrementalGenerationFactory() noexcept;
    ZIncrementalGenerationFactory(const ZIncrementalGenerationFactory&) = delete;
    ZIncrementalGenerationFactory& operator=(const ZIncrementalGenerationFactory&) = delete;

    /// The next generation; the first one is 1.
    std::uint64_t next() noexcept { return counter_.fetch_add(1, std::memory_order_relaxed) + 1; }

    /// A number that no other factory of the process has or ever had, unlike its address. It tells nodes of
    /// equal generation from different lineages apart.
    std::uint64_t lineage() const noexcept { return lineage_; }

private:
    std::atomic<std::uint64_t> counter_{0};
    const std::uint64_t lineage_;
};

} // namespace Zelm::Details
