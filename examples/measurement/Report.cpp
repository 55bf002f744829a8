#include "Report.h"

#include "Number.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace measurement {
namespace {

using Zelm::ZVariable;

std::string fixedText(double value, int decimals) {
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

/// A frequency without an exponent, as long as that can be read.
std::string frequencyText(double value) {
    constexpr double kReadable = 1e15;
    if (value < kReadable && value == std::floor(value)) {
        return fixedText(value, 0);
    }
    return shortestText(value);
}

std::string padded(std::string text, std::size_t width) {
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

std::string unitOf(const ZVariable& variable) {
    return variable.unitOfData().GetUnitsLabel().to_string();
}

std::string spanOf(const ZVariable& axis) {
    const std::vector<double> values = elementsOf<double>(axis.dataInStoredUnit());
    const std::string unit = " " + unitOf(axis);
    return frequencyText(values.front()) + unit + " to " + frequencyText(values.back()) + unit;
}

std::string decibelText(double value) {
    constexpr double kFloor = -6000.0;
    if (value <= kFloor) {
        return "0 (-6000 dB)";
    }
    const std::string text = fixedText(value, 3);
    return (text == "-0.000" ? "0.000" : text) + " dB";
}

/// The value at `index` and the frequency there.
std::string placeText(const std::vector<double>& decibels, std::size_t index, const std::vector<double>& axis,
                      const std::string& unit) {
    return padded(decibelText(decibels[index]), 13) + " at " + frequencyText(axis[index]) + " " + unit;
}

void printExtremes(std::ostream& out, const Measurement& measurement,
                   const std::vector<NamedVariable>& decibels) {
    const ZVariable frequency = measurement.variable(names::kFrequency);
    const std::vector<double> axis = elementsOf<double>(frequency.dataInStoredUnit());
    const std::string unit = unitOf(frequency);
    constexpr std::size_t kColumn = 36;
    out << "  magnitude  largest" << std::string(kColumn - 7, ' ') << "smallest\n";
    for (const auto& [name, variable] : decibels) {
        const std::vector<double> values = elementsOf<double>(variable.dataInStoredUnit());
        const auto smallest = std::min_element(values.begin(), values.end());
        const auto largest = std::max_element(values.begin(), values.end());
        std::string text = "  " + name;
        text.resize(std::max<std::size_t>(text.size(), 9), ' ');
        std::string first = placeText(values, static_cast<std::size_t>(largest - values.begin()), axis, unit);
        first.resize(std::max(first.size(), kColumn), ' ');
        out << text << first
            << placeText(values, static_cast<std::size_t>(smallest - values.begin()), axis, unit) << '\n';
    }
}

void printNoise(std::ostream& out, const Measurement& measurement) {
    const ZVariable axis = measurement.variable(names::kNoiseFrequency);
    const std::vector<double> frequencies = elementsOf<double>(axis.dataInStoredUnit());
    const std::vector<double> figures =
        elementsOf<double>(measurement.variable(names::kMinimumFigure).dataInStoredUnit());
    const auto best = std::min_element(figures.begin(), figures.end());
    out << "noise      " << figures.size() << " rows, " << spanOf(axis) << ", lowest Fmin "
        << fixedText(*best, 3) << " dB at "
        << frequencyText(frequencies[static_cast<std::size_t>(best - figures.begin())]) << " " << unitOf(axis)
        << '\n';
}

double largestDeviation(const std::vector<double>& a, const std::vector<double>& b) {
    double largest = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        largest = std::max(largest, std::abs(a[i] - b[i]));
    }
    return largest;
}

} // namespace

Conversions convert(const Measurement& measurement) {
    const ZVariable frequency = measurement.variable(names::kFrequency);
    const ZVariable inHertz = frequency.convertToUnit(unitNamed("Hz"));
    const ZVariable back = inHertz.convertToUnit(frequency.unitOfData());
    Conversions result{inHertz,
                       largestDeviation(elementsOf<double>(back.dataInStoredUnit()),
                                        elementsOf<double>(frequency.dataInStoredUnit())),
                       {}};
    const std::size_t ports = measurement.ports();
    for (std::size_t row = 0; row < ports; ++row) {
        for (std::size_t column = 0; column < ports; ++column) {
            std::string name = parameterName(measurement.parameter(), ports, row, column);
            ZVariable decibel = magnitudeInDecibel(measurement.variable(name));
            result.decibels.push_back({std::move(name), std::move(decibel)});
        }
    }
    return result;
}

void printReport(std::ostream& out, const std::string& file, const Measurement& measurement,
                 const Conversions& conversions) {
    const ZVariable frequency = measurement.variable(names::kFrequency);
    const ZVariable reference = measurement.variable(names::kReference);
    const std::size_t ports = measurement.ports();
    const bool isRange = frequency.strategyVariableType() == "RangeVar";
    out << "file       " << file << '\n'
        << "ports      " << ports << ", " << measurement.parameter() << " parameters, reference "
        << shortestText(elementsOf<double>(reference.dataInStoredUnit()).front()) << " " << unitOf(reference)
        << '\n'
        << "points     " << frequency.size() << ", " << spanOf(frequency)
        << (isRange ? ", a range\n" : ", an explicit axis\n") << "in hertz   " << spanOf(conversions.inHertz)
        << "; back in " << unitOf(frequency) << " "
        << (conversions.backDeviation == 0.0
                ? "the same numbers"
                : "within " + shortestText(conversions.backDeviation) + " " + unitOf(frequency))
        << '\n';
    if (measurement.hasNoise()) {
        printNoise(out, measurement);
    }
    printExtremes(out, measurement, conversions.decibels);
}

void printDocument(std::ostream& out, const std::string& document, std::uintmax_t bytes,
                   const std::vector<StepTime>& times) {
    out << "document   " << document << ", " << bytes << " bytes\n"
        << "time      ";
    const char* separator = " ";
    for (const StepTime& step : times) {
        out << separator << step.name << " " << fixedText(step.milliseconds, 2) << " ms";
        separator = ", ";
    }
    out << '\n';
}

} // namespace measurement
