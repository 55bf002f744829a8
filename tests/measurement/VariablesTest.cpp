#include "Csv.h"
#include "Document.h"
#include "Report.h"
#include "UniformStep.h"
#include "support/ExpectThrow.h"

#include <zelm/files/ScratchDirectories.h>
#include <zelm/units/ZUnit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>

namespace measurement {
namespace {

using Complex = std::complex<double>;

Touchstone parse(const std::string& text, std::size_t ports) {
    return parseTouchstone(text, ports, "f");
}

Measurement measurementOf(const Touchstone& file) {
    return Measurement(file.parameter, file.ports, variablesOf(file));
}

std::vector<double> formula(double start, double step, std::size_t count) {
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(start + static_cast<double>(i) * step);
    }
    return values;
}

TEST(UniformStep, FindsTheShortestStepThatGivesEveryValue) {
    EXPECT_EQ(uniformStep(formula(0.02, 0.0001, 1001)), 0.0001);
    for (const std::vector<double>& values : {std::vector<double>{0, 1, 3}, {1, 0, -1}, {1, 1, 1}}) {
        EXPECT_FALSE(uniformStep(values));
    }
    std::mt19937_64 random(5);
    for (int round = 0; round < 2000; ++round) {
        const double start = static_cast<double>(random() % 100000) / 1000.0;
        const double step = static_cast<double>(1 + random() % 100000) / 7000.0;
        std::vector<double> values = formula(start, step, 3 + random() % 60);
        ASSERT_TRUE(uniformStep(values));
        // After a nudge of one unit in the last place there may be another step, or none: but no wrong one.
        double& nudged = values[1 + random() % (values.size() - 1)];
        nudged = std::nextafter(nudged, 0.0);
        if (const auto other = uniformStep(values)) {
            ASSERT_EQ(formula(values[0], *other, values.size()), values);
        }
        nudged += step / 1000.0;
        ASSERT_FALSE(uniformStep(values));
    }
}

TEST(Variables, AxisIsARangeExactlyWhereTheFormulaGivesIt) {
    const auto kind = [](const std::vector<double>& values) {
        const Zelm::ZVariable axis = axisOf(values, unitNamed("MHz"));
        EXPECT_EQ(elementsOf<double>(axis.dataInStoredUnit()), values);
        return axis.strategyVariableType().to_string();
    };
    EXPECT_EQ(kind({7}), "RangeVar");
    EXPECT_EQ(kind(formula(0.045, 0.0001, 50)), "RangeVar");
    EXPECT_EQ(kind({1, 2, 10}), "ExplVar");
}

TEST(Variables, CarryTheirUnitsAndTheirFrequency) {
    const Measurement measurement =
        measurementOf(parse("# MHz RI R 75\n1 1 0 3 4 0 0 .1 0\n2 1 0 6 8 0 0 .1 0\n1 .5 .25 -90 .2\n", 2));
    const struct {
        std::string name;
        std::string unit;
        std::vector<double> values;
    } rows[] = {// clang-format off
        {"Frequency", "MHz", {1, 2}}, {"Reference", "Ω", {75}}, {"Noise frequency", "MHz", {1}}, {"Fmin", "dB10", {.5}},
        {"Gopt magnitude", "", {.25}}, {"Gopt angle", "°", {-90}}, {"Rn", "Ω", {.2 * 75}}};
    // clang-format on
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
    const std::vector<double> expected[] = {{0, 0}, {-6000, -6000}, {20 * std::log10(5.0), 20}};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(elementsOf<double>(conversions.decibels[i].variable.dataInStoredUnit()), expected[i]);
    }
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
    EXPECT_EQ(parameterName('S', 10, 1, 0), "S2_1");
}

TEST(Document, ComesBackIdenticalAndShowsEveryDifference) {
    const Zelm::ZPath directory = Zelm::ZPath::from_fs_path(Zelm::makeUniqueScratchDirectory("Prüf stand"));
    Zelm::ZPath file = directory;
    file /= "Grün und weiß.json";
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

    const auto fails = [&](const Zelm::ZPath& path, const std::string& what) {
        const std::string text = path.generic().to_string() + ": " + what;
        EXPECT_THROW_MSG(saveDocument(path, saved), std::runtime_error, text);
    };
    fails("/dev/null", "exists and is no regular file");
    fails(directory, "exists and is no regular file");
    fails("C:/x.json", "cannot be written: No such file or directory");
    directory.removeAllFilesDirectoriesRecursively();
    fails(file, "cannot be written: No such file or directory");
    EXPECT_THROW_MSG(loadDocument(file), std::runtime_error,
                     file.generic().to_string() + ": cannot be read: No such file or directory");
}

} // namespace
} // namespace measurement
