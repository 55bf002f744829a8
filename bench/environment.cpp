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

bool sameText(const ZString& ours, const QString& peer) {
    return ours == peer.toStdString();
}

template <std::size_t size>
auto ours() {
    ::setenv(kName, std::string(size, 'x').c_str(), 1);
    return [=] { return Environment::getenv_zstring(kName); };
}

template <std::size_t size>
auto peer() {
    ::setenv(kName, std::string(size, 'x').c_str(), 1);
    return [] { return qEnvironmentVariable(kName); };
}

const Comparison word("variable of 10 bytes / qEnvironmentVariable", 0.6, ours<10>, peer<10>, sameText);
const Comparison path("variable of 60 bytes / qEnvironmentVariable", 0.6, ours<60>, peer<60>, sameText);

} // namespace
} // namespace Zelm::Bench
#endif
