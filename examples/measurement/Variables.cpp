#include "Variables.h"

#include "UniformStep.h"

#include <zelm/units/ZSystemOfUnits.h>
#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/WellKnownType.h>

#include <cmath>
#include <optional>
#include <type_traits>

namespace measurement {
namespace {

using Zelm::Variant;
using Zelm::ZUnit;
using Zelm::ZVariable;

ZVariable along(const ZVariable& axis, Variant values, const ZUnit& unit) {
    ZVariable variable(std::move(values), unit);
    variable.setIndep(axis, 0);
    return variable;
}

void addNoise(std::vector<NamedVariable>& variables, const Touchstone& file) {
    const NoiseColumns& noise = file.noise;
    const ZVariable axis = axisOf(noise.frequency, unitNamed(file.unit.c_str()));
    std::vector<double> resistance = noise.resistance;
    for (double& value : resistance) {
        value *= file.reference;
    }
    variables.push_back({names::kNoiseFrequency, axis});
    variables.push_back({names::kMinimumFigure, along(axis, noise.minimumFigure, unitNamed("dB"))});
    variables.push_back({names::kBestMagnitude, along(axis, noise.magnitude, ZUnit())});
    variables.push_back({names::kBestAngle, along(axis, noise.angle, unitNamed("\xC2\xB0"))});
    variables.push_back({names::kNoiseResistance, along(axis, resistance, unitNamed("\xCE\xA9"))});
}

} // namespace

std::string parameterName(char parameter, std::size_t ports, std::size_t row, std::size_t column) {
    const char* mark = ports < 10 ? "" : "_";
    return parameter + std::to_string(row + 1) + mark + std::to_string(column + 1);
}

ZUnit unitNamed(const char* name) {
    return Zelm::ZSystemOfUnits::instance().GetUnitsByName(name);
}

ZVariable axisOf(const std::vector<double>& values, const ZUnit& unit) {
    const std::optional<double> step = values.size() == 1 ? 1.0 : uniformStep(values);
    if (step) {
        ZVariable range(Variant(values.front()), values.size(), Variant(*step), unit);
        if (elementsOf<double>(range.dataInStoredUnit()) == values) {
            return range;
        }
    }
    return ZVariable(Variant(values), unit);
}

ZVariable magnitudeInDecibel(const ZVariable& parameter) {
    std::vector<double> magnitudes;
    for (const std::complex<double>& value : elementsOf<std::complex<double>>(parameter.dataInStoredUnit())) {
        magnitudes.push_back(std::abs(value));
    }
    return ZVariable(Variant(std::move(magnitudes)), parameter.unitOfData()).convertToUnit(unitNamed("dB20"));
}

std::vector<NamedVariable> variablesOf(const Touchstone& file) {
    const ZVariable frequency = axisOf(file.frequency, unitNamed(file.unit.c_str()));
    std::vector<NamedVariable> variables;
    variables.push_back({names::kFrequency, frequency});
    for (std::size_t row = 0; row < file.ports; ++row) {
        for (std::size_t column = 0; column < file.ports; ++column) {
            variables.push_back({parameterName(file.parameter, file.ports, row, column),
                                 along(frequency, file.parameters[row * file.ports + column], ZUnit())});
        }
    }
    variables.push_back({names::kReference, ZVariable(Variant(file.reference), unitNamed("\xCE\xA9"))});
    if (!file.noise.empty()) {
        addNoise(variables, file);
    }
    return variables;
}

template <class T>
std::vector<T> elementsOf(const Variant& value) {
    constexpr Zelm::WellKnownType kType =
        std::is_same_v<T, double> ? Zelm::WellKnownType::Double() : Zelm::WellKnownType::ComplexDouble();
    Zelm::MutableVariant elements(value.convertedTo(kType));
    const std::uint64_t count = elements.dimensions().countAllElements();
    std::vector<T> result;
    result.reserve(count);
    for (std::uint64_t index = 0; index < count; ++index) {
        result.push_back(elements.element<T>({index}));
    }
    return result;
}

template std::vector<double> elementsOf(const Variant& value);
template std::vector<std::complex<double>> elementsOf(const Variant& value);

} // namespace measurement
