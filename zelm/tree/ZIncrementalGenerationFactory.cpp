#include <zelm/tree/ZIncrementalGenerationFactory.h>

namespace Zelm::Details {

namespace {

std::atomic<std::uint64_t> s_lineages{0};

} // namespace

ZIncrementalGenerationFactory::ZIncrementalGenerationFactory() noexcept
    : lineage_(s_lineages.fetch_add(1, std::memory_order_relaxed) + 1) {}

} // namespace Zelm::Details
