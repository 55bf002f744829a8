#pragma once

#include <algorithm>
#include <random>
#include <string>

namespace Zelm::Testing {

inline std::string randomText(std::mt19937& random, std::size_t length, const std::string& letters) {
    std::string text(length, ' ');
    std::generate(text.begin(), text.end(), [&] { return letters[random() % letters.size()]; });
    return text;
}

/// A few letters again and again, with up to three faults: the hard case for a search.
inline std::string nearlyPeriodicText(std::mt19937& random, std::size_t length, const std::string& letters) {
    const std::string unit = randomText(random, 1 + random() % 6, letters);
    std::string text;
    while (text.size() < length) {
        text += unit;
    }
    text.resize(length);
    for (auto faults = text.empty() ? 0 : random() % 4; faults > 0; --faults) {
        text[random() % text.size()] = letters[random() % letters.size()];
    }
    return text;
}

} // namespace Zelm::Testing
