// Numbers to text and back, beside QString and absl.

#include "Compare.h"

#include <zelm/text/TextConversions.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#ifdef ZELM_BENCH_QT
#include <QString>
#endif
#ifdef ZELM_BENCH_ABSL
#include <absl/strings/numbers.h>
#endif

namespace Zelm::Bench {
namespace {

/// Numbers of many sizes with all their digits.
std::vector<double> numbers() {
    std::vector<double> result(1000);
    double value = 0.123456789e-9;
    for (double& number : result) {
        number = value;
        value *= value < 1e12 ? 1.0442 : -0.7e-21;
    }
    return result;
}

/// An action that converts all `sources`.
template <class Sources, class Convert>
auto converting(Sources sources, Convert convert) {
    return [=] {
        std::vector<decltype(convert(sources[0]))> results;
        results.reserve(sources.size());
        for (const auto& source : sources) {
            results.push_back(convert(source));
        }
        return results;
    };
}

#ifdef ZELM_BENCH_QT

Comparison besideQt(const std::string& row, double goal, char format) {
    return Comparison(
        row, goal,
        [=] { return converting(numbers(), [=](double value) { return fromDouble(value, format, 6); }); },
        [=] {
            return converting(numbers(), [=](double value) { return QString::number(value, format, 6); });
        },
        [](const std::vector<ZString>& ours, const std::vector<QString>& peer) {
            return std::equal(ours.begin(), ours.end(), peer.begin(), peer.end(),
                              [](const ZString& a, const QString& b) { return a == b.toStdString(); });
        });
}

const Comparison general = besideQt("1000 doubles to text with 6 digits / QString", 0.65, 'g');
const Comparison scientific = besideQt("1000 doubles to text, %.6e / QString", 0.65, 'e');
const Comparison fixedPoint = besideQt("1000 doubles to text, %.6f / QString", 0.65, 'f');

#endif
#ifdef ZELM_BENCH_ABSL

/// The numbers as texts of 17 digits.
template <class Text>
std::vector<Text> texts() {
    std::vector<Text> result;
    for (const double number : numbers()) {
        char text[32];
        std::snprintf(text, sizeof text, "%.17g", number);
        result.push_back(std::string(text));
    }
    return result;
}

const Comparison parsing(
    "1000 texts of 17 digits to double / absl::SimpleAtod", 0.75,
    [] { return converting(texts<ZString>(), [](const ZString& text) { return toDouble(text); }); },
    [] {
        return converting(texts<std::string>(), [](const std::string& text) {
            double value = 0;
            return absl::SimpleAtod(text, &value) ? value : 0.0;
        });
    });

#endif

} // namespace
} // namespace Zelm::Bench
