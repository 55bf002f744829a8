#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace Zelm::Bench {

/// The goal of a row that is only watched.
inline constexpr double kNoGoal = std::numeric_limits<double>::infinity();

/// Holds results against each other that may differ: rows of which only the time counts.
struct Anything {
    template <class Ours, class Peer>
    bool operator()(const Ours&, const Peer&) const {
        return true;
    }
};

/// One row of the table: what we take, what a peer takes for the same in the same process, and the largest
/// ratio of the two that we are content with.
///
/// Both sides are given as a function that prepares the data and returns the action to be measured, which
/// returns its result: `[] { return [text = ZString(letters(100))] { return ZString(text); }; }`. Before
/// anything is timed, `same(result of ours, result of the peer)` must hold; if not, the row is an error.
class Comparison {
public:
    template <class MakeOurs, class MakePeer, class Same = std::equal_to<>>
    Comparison(const std::string& row, double goal, MakeOurs makeOurs, MakePeer makePeer, Same same = {}) {
        add(row, goal, timed(makeOurs), timed(makePeer), [=] {
            auto ours = makeOurs();
            auto peer = makePeer();
            return static_cast<bool>(same(ours(), peer()));
        });
    }

    /// A row held against a fixed time. `isRight(result)` must hold before anything is timed.
    template <class MakeOurs, class IsRight>
    static Comparison withLimit(const std::string& row, double nanoseconds, MakeOurs makeOurs,
                                IsRight isRight) {
        Comparison comparison;
        comparison.addLimit(row, nanoseconds, timed(makeOurs), [=] {
            auto ours = makeOurs();
            return static_cast<bool>(isRight(ours()));
        });
        return comparison;
    }

private:
    using Benchmark = std::function<void(benchmark::State&)>;
    using Check = std::function<bool()>;

    Comparison() = default;
    void add(const std::string& row, double goal, Benchmark ours, Benchmark peer, Check check);
    void addLimit(const std::string& row, double nanoseconds, Benchmark ours, Check check);

    template <class Make>
    static Benchmark timed(Make make) {
        return [make](benchmark::State& state) {
            auto action = make();
            for (auto _ : state) {
                const auto result = action();
                benchmark::DoNotOptimize(result);
            }
        };
    }
};

} // namespace Zelm::Bench
