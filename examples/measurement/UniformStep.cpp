#include "UniformStep.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

namespace measurement {
namespace {

/// Doubles from 0 up have the order of their bits: bisection over the bits ends after 63 halvings.
std::uint64_t bitsOf(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

double fromBits(std::uint64_t bits) {
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// The smallest double above `low`, up to `high`, for which `holds` is true, if it is false at `low`, true at
/// `high`, and changes once between.
template <class Predicate>
double firstAbove(double low, double high, Predicate holds) {
    std::uint64_t below = bitsOf(low);
    std::uint64_t above = bitsOf(high);
    while (above - below > 1) {
        const std::uint64_t middle = below + (above - below) / 2;
        (holds(fromBits(middle)) ? above : below) = middle;
    }
    return fromBits(above);
}

double shortestBetween(double low, double high) {
    const double middle = low + (high - low) / 2.0;
    for (int decimals = 0; decimals < std::numeric_limits<double>::max_digits10; ++decimals) {
        std::array<char, 40> buffer;
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), middle,
                                       std::chars_format::scientific, decimals)
                             .ptr;
        double rounded = 0.0;
        std::from_chars(buffer.data(), end, rounded);
        if (low <= rounded && rounded <= high) {
            return rounded;
        }
    }
    return middle;
}

} // namespace

// The value of position i never falls as the step grows, so the steps that give values[i] are neighbours:
// each position narrows one interval. Only few positions narrow it, so the cost is that of one pass.
std::optional<double> uniformStep(const std::vector<double>& values) {
    double low = 0.0;
    double high = std::numeric_limits<double>::max();
    for (std::size_t i = 1; i < values.size(); ++i) {
        const auto at = [&, position = static_cast<double>(i)](double step) {
            const double product = position * step;
            return values.front() + product;
        };
        const double value = values[i];
        if (at(high) < value || at(low) > value) {
            return std::nullopt;
        }
        if (at(low) < value) {
            low = firstAbove(low, high, [&](double step) { return at(step) >= value; });
        }
        if (at(low) > value) {
            return std::nullopt;
        }
        if (at(high) > value) {
            const double above = firstAbove(low, high, [&](double step) { return at(step) > value; });
            high = fromBits(bitsOf(above) - 1);
        }
    }
    return low > 0.0 ? std::optional(shortestBetween(low, high)) : std::nullopt;
}

} // namespace measurement
