// Paths beside those of the standard library.

#include "Compare.h"

#include <zelm/files/ZPath.h>

#include <filesystem>
#include <string>

namespace Zelm::Bench {
namespace {

using StandardPath = std::filesystem::path;

constexpr const char* kElevenElements =
    "/home/user/projects/antenna/variants/run 17/results/far field/cut/phi 90/gain.json";
constexpr const char* kUntidy =
    "/home/user/./projects/antenna/../filter/variants/run 17/./results/../plots/s11.json";
constexpr const char* kBase = "/home/user/projects/antenna/variants/run 18/setup/ports";

const Comparison construction(
    "path of 11 elements / std::filesystem::path", 0.6,
    [](benchmark::State& state) {
        const std::string text = kElevenElements;
        repeat(state, [&] { return ZPath(text); });
    },
    [](benchmark::State& state) {
        const std::string text = kElevenElements;
        repeat(state, [&] { return StandardPath(text); });
    });

const Comparison normalisation(
    "normal form of a path / lexically_normal", 0.3,
    [](benchmark::State& state) {
        const ZPath path(kUntidy);
        repeat(state, [&] { return ZPath(path).normalize(); });
    },
    [](benchmark::State& state) {
        const StandardPath path(kUntidy);
        repeat(state, [&] { return path.lexically_normal(); });
    });

const Comparison relation(
    "way between paths / lexically_relative", 0.7,
    [](benchmark::State& state) {
        const ZPath path(kElevenElements), base(kBase);
        bool ok = false;
        repeat(state, [&] { return ZPath::make_relative_path(path, base, &ok, 10); });
    },
    [](benchmark::State& state) {
        const StandardPath path(kElevenElements), base(kBase);
        repeat(state, [&] { return path.lexically_relative(base); });
    });

} // namespace
} // namespace Zelm::Bench
