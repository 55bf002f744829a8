#pragma once

#include <algorithm>
#include <cstddef>

namespace Zelm::details {

/// Where the largest suffix of a needle in the order of `less` starts, and with what period it repeats.
struct Suffix {
    std::size_t start;
    std::size_t period;
};

template <class At, class Less>
Suffix largestSuffix(At needle, std::size_t length, Less less) {
    Suffix largest{0, 1};
    std::size_t candidate = 1;
    std::size_t equal = 0;
    while (candidate + equal < length) {
        const char challenging = needle(candidate + equal);
        const char leading = needle(largest.start + equal);
        if (challenging == leading) {
            if (++equal == largest.period) {
                candidate += largest.period;
                equal = 0;
            }
        } else if (less(challenging, leading)) {
            candidate += equal + 1;
            equal = 0;
            largest.period = candidate - largest.start;
        } else {
            largest = {candidate, 1};
            ++candidate;
            equal = 0;
        }
    }
    return largest;
}

/// The two-way algorithm. The needle is cut where its local period is its period: a match is tried from the
/// cut to the right, then from the cut to the left. A mismatch on the right moves the cut behind it, one on
/// the left moves the needle by its period, with what is then known to match remembered.
template <class TextAt, class NeedleAt>
std::size_t findTwoWay(TextAt text, std::size_t textLength, NeedleAt needle, std::size_t length) {
    const Suffix rising = largestSuffix(needle, length, [](char a, char b) { return a < b; });
    const Suffix falling = largestSuffix(needle, length, [](char a, char b) { return a > b; });
    const auto [cut, period] = rising.start > falling.start ? rising : falling;
    std::size_t repeated = 0;
    while (repeated < cut && needle(repeated) == needle(repeated + period)) {
        ++repeated;
    }
    const bool isPeriodic = repeated == cut;
    const std::size_t shift = isPeriodic ? period : std::max(cut, length - cut) + 1;
    std::size_t known = 0;
    for (std::size_t start = 0; start + length <= textLength;) {
        std::size_t i = std::max(cut, known);
        while (i < length && needle(i) == text(start + i)) {
            ++i;
        }
        if (i < length) {
            start += i - cut + 1;
            known = 0;
            continue;
        }
        i = cut;
        while (i > known && needle(i - 1) == text(start + i - 1)) {
            --i;
        }
        if (i <= known) {
            return start;
        }
        start += shift;
        known = isPeriodic ? length - period : 0;
    }
    return static_cast<std::size_t>(-1);
}

/// The first match of a needle that is not empty in a text, all bits set if there is none. Both are functions
/// from index to character, so that one search serves either direction and either sense of case; `next` skips
/// to the first position from a given one on where the text has the needle's first character, or to the end.
/// Linear in the sum of both lengths, in place.
template <class TextAt, class NeedleAt, class Next>
std::size_t findMatch(TextAt text, std::size_t textLength, NeedleAt needle, std::size_t length, Next next) {
    constexpr std::size_t npos = static_cast<std::size_t>(-1);
    std::size_t compared = 0;
    for (std::size_t start = next(0); start + length <= textLength; start = next(start + 1)) {
        std::size_t equal = 1;
        while (equal < length && needle(equal) == text(start + equal)) {
            ++equal;
        }
        if (equal == length) {
            return start;
        }
        // Trying each position is fastest as long as mismatches come early.
        compared += equal;
        if (compared > 64 + 8 * start) {
            const std::size_t rest = start + 1;
            const auto textRest = [&](std::size_t i) { return text(rest + i); };
            const std::size_t found = findTwoWay(textRest, textLength - rest, needle, length);
            return found == npos ? npos : rest + found;
        }
    }
    return npos;
}

} // namespace Zelm::details
