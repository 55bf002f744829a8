#include "Compare.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Zelm::Bench {

namespace {

constexpr const char* kOurs = "/ours";
constexpr const char* kPeer = "/peer";

struct Row {
    std::string name;
    double goal;
    double limit; // nanoseconds; none if there is a peer
};

std::vector<Row>& rows() {
    static std::vector<Row> all;
    return all;
}

/// Has `check` pass once before the first measurement of a row.
std::function<void(benchmark::State&)> checked(std::function<bool()> check,
                                               std::function<void(benchmark::State&)> measure) {
    return [check = std::move(check), measure = std::move(measure),
            isRight = std::make_shared<bool>()](benchmark::State& state) {
        if (!*isRight && !(*isRight = check())) {
            state.SkipWithError("The results differ.");
            return;
        }
        measure(state);
    };
}

std::string time(double nanoseconds) {
    constexpr const char* kUnits[] = {"ns", "µs", "ms", "s"};
    std::size_t unit = 0;
    while (nanoseconds >= 1000 && unit + 1 < std::size(kUnits)) {
        nanoseconds /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit < 2 ? "%.1f %s" : "%.2f %s", nanoseconds, kUnits[unit]);
    return text;
}

/// Keeps the shortest time of each benchmark: what disturbs a run only ever makes it longer.
class ShortestTimes : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const std::string& name = run.run_name.function_name;
            if (run.error_occurred) {
                if (failed_.insert(name).second) {
                    std::fprintf(stderr, "%s: %s\n", name.c_str(), run.error_message.c_str());
                }
            } else if (run.run_type == Run::RT_Iteration) {
                double& shortest = nanoseconds_.emplace(name, kNoGoal).first->second;
                shortest = std::min(shortest, run.GetAdjustedCPUTime() /
                                                  benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9);
            }
        }
    }

    bool failed() const noexcept { return !failed_.empty(); }

    void printTable() const {
        std::printf("| ours / peer | ours | peer | ratio | goal | |\n|---|---|---|---|---|---|\n");
        for (const Row& row : rows()) {
            const double ours = timeOf(row.name + kOurs);
            const double peer = std::isnan(row.limit) ? timeOf(row.name + kPeer) : row.limit;
            const double ratio = ours / peer;
            if (std::isnan(ratio)) {
                continue;
            }
            char figures[64];
            if (row.goal == kNoGoal) {
                std::snprintf(figures, sizeof figures, "%.2f | |", ratio);
            } else {
                std::snprintf(figures, sizeof figures, "%.2f | %.3g | %s", ratio, row.goal,
                              ratio <= row.goal ? "met" : "missed");
            }
            std::printf("| %s | %s | %s | %s |\n", row.name.c_str(), time(ours).c_str(), time(peer).c_str(),
                        figures);
        }
    }

private:
    double timeOf(const std::string& benchmark) const {
        const auto found = nanoseconds_.find(benchmark);
        return found == nanoseconds_.end() ? std::nan("") : found->second;
    }

    std::map<std::string, double> nanoseconds_;
    std::set<std::string> failed_;
};

} // namespace

void Comparison::add(const std::string& row, double goal, Benchmark ours, Benchmark peer, Check check) {
    rows().push_back({row, goal, std::nan("")});
    benchmark::RegisterBenchmark((row + kOurs).c_str(), checked(std::move(check), std::move(ours)));
    benchmark::RegisterBenchmark((row + kPeer).c_str(), std::move(peer));
}

void Comparison::addLimit(const std::string& row, double nanoseconds, Benchmark ours, Check check) {
    rows().push_back({row, 1.0, nanoseconds});
    benchmark::RegisterBenchmark((row + kOurs).c_str(), checked(std::move(check), std::move(ours)));
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
    return times.failed() ? 1 : 0;
}
