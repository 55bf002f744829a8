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

bool samePath(const ZPath& ours, const StandardPath& peer) {
    return ours.generic_string() == peer.string();
}

const Comparison construction(
    "path of 11 elements / std::filesystem::path", 0.6,
    [] {
        const std::string text = kElevenElements;
        return [=] { return ZPath(text); };
    },
    [] {
        const std::string text = kElevenElements;
        return [=] { return StandardPath(text); };
    },
    samePath);

const Comparison normalisation(
    "normal form of a path / lexically_normal", 0.3,
    [] {
        const ZPath path(kUntidy);
        return [=] { return ZPath(path).normalize(); };
    },
    [] {
        const StandardPath path(kUntidy);
        return [=] { return path.lexically_normal(); };
    },
    samePath);

const Comparison relation(
    "way between paths / lexically_relative", 0.7,
    [] {
        const ZPath path(kElevenElements), base(kBase);
        return [=, ok = false]() mutable { return ZPath::make_relative_path(path, base, &ok, 10); };
    },
    [] {
        const StandardPath path(kElevenElements), base(kBase);
        return [=] { return path.lexically_relative(base); };
    },
    samePath);

} // namespace
} // namespace Zelm::Bench
