#include "Csv.h"
#include "Document.h"
#include "Report.h"
#include "UniformStep.h"

#include <zelm/units/ZUnit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <random>
#include <sstream>

namespace measurement {
namespace {

using Complex = std::complex<double>;

constexpr double kPi = 3.14159265358979323846;

Touchstone parse(const std::string& text, std::size_t ports) {
    return parseTouchstone(text, ports, "f");
}

Measurement measurementOf(const Touchstone& file) {
    return Measurement(file.parameter, file.ports, variablesOf(file));
}

std::vector<double> formula(double start, double step, std::size_t count) {
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) {
        const double product = static_cast<double>(i) * step;
        values.push_back(start + product);
    }
    return values;
}

TEST(UniformStep, FindsTheShortestStepThatGivesEveryValue) {
    EXPECT_EQ(uniformStep(formula(0.02, 0.0001, 1001)), 0.0001);
    EXPECT_EQ(uniformStep({5, 6}), 1.0);
    EXPECT_EQ(uniformStep({0, 1, 3}), std::nullopt);
    EXPECT_EQ(uniformStep({1, 0, -1}), std::nullopt);
    EXPECT_EQ(uniformStep({1, 1, 1}), std::nullopt);
    std::mt19937_64 random(5);
    int found = 0;
    for (int round = 0; round < 2000; ++round) {
        const double start = static_cast<double>(random() % 100000) / 1000.0;
        const double step = static_cast<double>(1 + random() % 100000) / 7000.0;
        std::vector<double> values = formula(start, step, 2 + random() % 60);
        ASSERT_TRUE(uniformStep(values));
        // After a nudge of one unit in the last place there may be another step, or none: but no wrong one.
        double& nudged = values[1 + random() % (values.size() - 1)];
        nudged = std::nextafter(nudged, random() % 2 == 0 ? 0.0 : std::numeric_limits<double>::max());
        if (const auto other = uniformStep(values)) {
            ++found;
            ASSERT_EQ(formula(values[0], *other, values.size()), values);
        }
        if (values.size() > 2) {
            nudged += step / 1000.0;
            ASSERT_FALSE(uniformStep(values));
        }
    }
    EXPECT_GT(found, 20);
}

TEST(Variables, AxisIsARangeExactlyWhereTheFormulaGivesIt) {
    const auto kind = [](const std::vector<double>& values) {
        const Zelm::ZVariable axis = axisOf(values, unitNamed("MHz"));
        EXPECT_EQ(elementsOf<double>(axis.dataInStoredUnit()), values);
        return axis.strategyVariableType().to_string();
    };
    EXPECT_EQ(kind({7}), "RangeVar");
    EXPECT_EQ(kind({1, 2, 3}), "RangeVar");
    EXPECT_EQ(kind(formula(0.045, 0.0001, 50)), "RangeVar");
    EXPECT_EQ(kind({1, 2, 10}), "ExplVar");
    std::vector<double> decimal; // 330, 330.85, ... as a text gives them
    for (int i = 0; i <= 200; ++i) {
        decimal.push_back((33000 + 85 * i) / 100.0);
    }
    EXPECT_EQ(kind(decimal), "ExplVar");
}

TEST(Variables, CarryTheirUnitsAndTheirFrequency) {
    const Touchstone file =
        parse("# MHz RI R 75\n1 1 0 3 4 0 0 .1 0\n2 1 0 6 8 0 0 .1 0\n1 .5 .25 -90 .2\n", 2);
    const Measurement measurement = measurementOf(file);
    EXPECT_EQ(measurement.ports(), 2u);
    EXPECT_EQ(measurement.parameter(), 'S');
    const struct {
        std::string name;
        std::string unit;
        std::vector<double> values;
    } rows[] = {{"Frequency", "MHz", {1, 2}},    {"Reference", "\xCE\xA9", {75}},
                {"Noise frequency", "MHz", {1}}, {"Fmin", "dB10", {.5}},
                {"Gopt magnitude", "", {.25}},   {"Gopt angle", "\xC2\xB0", {-90}},
                {"Rn", "\xCE\xA9", {.2 * 75}}};
    for (const auto& [name, unit, values] : rows) {
        const Zelm::ZVariable variable = measurement.variable(name);
        EXPECT_EQ(variable.unitOfData().GetUnitsLabel().to_string(), unit) << name;
        EXPECT_EQ(elementsOf<double>(variable.dataInStoredUnit()), values) << name;
    }
    const Zelm::ZVariable s21 = measurement.parameterAt(1, 0);
    EXPECT_EQ(elementsOf<Complex>(s21.dataInStoredUnit()), (std::vector<Complex>{{3, 4}, {6, 8}}));
    EXPECT_TRUE(s21.indep(0).isEquivalentTo(measurement.variable("Frequency")));
    EXPECT_TRUE(measurement.variable("Rn").indep(0).isEquivalentTo(measurement.variable("Noise frequency")));

    const Conversions conversions = convert(measurement);
    EXPECT_EQ(elementsOf<double>(conversions.inHertz.dataInStoredUnit()), (std::vector<double>{1e6, 2e6}));
    EXPECT_EQ(conversions.backDeviation, 0.0);
    const auto decibels = [&](std::size_t at) {
        return elementsOf<double>(conversions.decibels[at].variable.dataInStoredUnit());
    };
    EXPECT_EQ(conversions.decibels[2].name, "S21");
    EXPECT_EQ(decibels(0), (std::vector<double>{0, 0}));
    EXPECT_EQ(decibels(1), (std::vector<double>{-6000, -6000}));
    EXPECT_EQ(decibels(2), (std::vector<double>{20 * std::log10(5.0), 20}));
}

TEST(Csv, RowByRowInShortestNumbers) {
    const auto csv = [](const std::string& text, std::size_t ports) {
        std::ostringstream out;
        writeCsv(out, measurementOf(parse(text, ports)));
        return out.str();
    };
    EXPECT_EQ(csv("# kHz Z RI\n0.1 1 2 3 4 5 6 7e-9 -8\n0.30000000000000004 1e9 0 0 0 0 0 0 0\n", 2),
              "frequency [kHz],Z11 re,Z11 im,Z12 re,Z12 im,Z21 re,Z21 im,Z22 re,Z22 im\n"
              "0.1,1,2,5,6,3,4,7e-09,-8\n"
              "0.30000000000000004,1e+09,0,0,0,0,0,0,0\n");
    std::string ten = "#\n1";
    for (int i = 0; i < 200; ++i) {
        ten += " 0";
    }
    const std::string header = csv(ten, 10);
    EXPECT_NE(header.find(",S1_10 im,S2_1 re,"), std::string::npos);
}

TEST(Document, ComesBackIdenticalAndShowsEveryDifference) {
    const std::string file = ::testing::TempDir() + "measurement_document.json";
    const Touchstone original = readTouchstone(MEASUREMENT_EXAMPLE_FILE);
    const std::vector<NamedVariable> variables = variablesOf(original);
    const Measurement saved = measurementOf(original);
    saveDocument(file, saved);
    EXPECT_EQ(differenceBetween(saved, variables, loadDocument(file)), "");

    Touchstone changed = original;
    changed.parameters[2][7] += 1e-12;
    EXPECT_EQ(differenceBetween(saved, variables, measurementOf(changed)), "S21");
    changed = original;
    changed.parameter = 'T';
    EXPECT_THROW(differenceBetween(saved, variables, measurementOf(changed)), std::runtime_error);
    std::filesystem::remove(file);
    EXPECT_THROW(loadDocument(file), std::runtime_error);
    EXPECT_THROW(saveDocument("/dev/null", saved), std::runtime_error);
    EXPECT_THROW(saveDocument("/nowhere/x.json", saved), std::runtime_error);
}

/// The file comes from the ladder. Here the transfer function comes from its poles, and the noise figure at
/// 50 ohms from the available gain, which for a passive 2-port is its inverse.
TEST(ExampleFile, AgreesWithTheClosedFormulas) {
    const Touchstone file = readTouchstone(MEASUREMENT_EXAMPLE_FILE);
    ASSERT_EQ(file.frequency.size(), 201u);
    const double width = std::asinh(1.0 / std::sqrt(std::pow(10.0, 0.01) - 1.0)) / 5.0;
    for (std::size_t point = 0; point < file.frequency.size(); ++point) {
        const Complex s(1.0 / 200.0, file.frequency[point] / 1000.0);
        Complex transfer = 1.0;
        for (int k = 1; k <= 5; ++k) {
            const double angle = (2 * k - 1) * kPi / 10.0;
            const Complex pole(-std::sinh(width) * std::sin(angle), std::cosh(width) * std::cos(angle));
            transfer *= -pole / (s - pole);
        }
        EXPECT_LT(std::abs(file.parameters[2][point] - transfer), 1e-8);
        EXPECT_EQ(file.parameters[1][point], file.parameters[2][point]);
    }
    const NoiseColumns& noise = file.noise;
    ASSERT_EQ(noise.frequency.size(), 10u);
    for (std::size_t row = 0; row < 10; ++row) {
        const std::size_t point = static_cast<std::size_t>(noise.frequency[row]) / 10 - 1;
        const Complex best = std::polar(noise.magnitude[row], noise.angle[row] * kPi / 180.0);
        const double figure = std::pow(10.0, noise.minimumFigure[row] / 10.0) +
                              4.0 * noise.resistance[row] * std::norm(best) / std::norm(1.0 + best);
        const double gain =
            std::norm(file.parameters[2][point]) / (1.0 - std::norm(file.parameters[3][point]));
        EXPECT_NEAR(figure * gain, 1.0, 1e-6);
    }
}

} // namespace
} // namespace measurement
