#include "Compare.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <vector>

namespace Zelm::Bench {

namespace {

constexpr const char* kOurs = "/ours";
constexpr const char* kPeer = "/peer";

struct Row {
    std::string name;
    double goal;
};

std::vector<Row>& rows() {
    static std::vector<Row> all;
    return all;
}

/// Keeps the shortest time of each benchmark: what disturbs a run only ever makes it longer.
class ShortestTimes : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                double& shortest =
                    nanoseconds_.emplace(run.run_name.function_name, std::numeric_limits<double>::infinity())
                        .first->second;
                shortest = std::min(shortest, run.GetAdjustedCPUTime() /
                                                  benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9);
            }
        }
    }

    void printTable() const {
        std::printf("%-58s %12s %12s %7s %6s  %s\n", "", "ours [ns]", "peer [ns]", "ratio", "goal", "");
        for (const Row& row : rows()) {
            const auto ours = nanoseconds_.find(row.name + kOurs);
            const auto peer = nanoseconds_.find(row.name + kPeer);
            if (ours == nanoseconds_.end() || peer == nanoseconds_.end()) {
                continue;
            }
            const double ratio = ours->second / peer->second;
            std::printf("%-58s %12.1f %12.1f %7.2f %6.2f  %s\n", row.name.c_str(), ours->second, peer->second,
                        ratio, row.goal, ratio <= row.goal ? "met" : "missed");
        }
    }

private:
    std::map<std::string, double> nanoseconds_;
};

} // namespace

Comparison::Comparison(const std::string& row, double goal, Function ours, Function peer) {
    rows().push_back({row, goal});
    benchmark::RegisterBenchmark((row + kOurs).c_str(), ours);
    benchmark::RegisterBenchmark((row + kPeer).c_str(), peer);
}

} // namespace Zelm::Bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    Zelm::Bench::ShortestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    times.printTable();
    return 0;
}
