// Environment variables beside those of Qt, where that is installed.

#ifdef ZELM_BENCH_QT
#include "Compare.h"

#include <zelm/files/Environment.h>

#include <QString>

#include <cstdlib>
#include <string>

namespace Zelm::Bench {
namespace {

constexpr const char kName[] = "ZELM_BENCH_VARIABLE";

template <std::size_t size>
void ours(benchmark::State& state) {
    ::setenv(kName, std::string(size, 'x').c_str(), 1);
    repeat(state, [] { return Environment::getenv_zstring(kName); });
}

template <std::size_t size>
void peer(benchmark::State& state) {
    ::setenv(kName, std::string(size, 'x').c_str(), 1);
    repeat(state, [] { return qEnvironmentVariable(kName); });
}

const Comparison word("variable of 10 bytes / qEnvironmentVariable", 0.6, ours<10>, peer<10>);
const Comparison path("variable of 60 bytes / qEnvironmentVariable", 0.6, ours<60>, peer<60>);

} // namespace
} // namespace Zelm::Bench
#endif
