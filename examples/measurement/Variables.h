#pragma once

#include "Touchstone.h"

#include <zelm/units/ZUnit.h>
#include <zelm/variables/ZVariable.h>

#include <string>
#include <vector>

namespace measurement {

struct NamedVariable {
    std::string name;
    Zelm::ZVariable variable;
};

/// The names under which a document holds what belongs to no single parameter.
namespace names {
constexpr const char* kFrequency = "Frequency";
constexpr const char* kReference = "Reference";
constexpr const char* kNoiseFrequency = "Noise frequency";
constexpr const char* kMinimumFigure = "Fmin";
constexpr const char* kBestMagnitude = "Gopt magnitude";
constexpr const char* kBestAngle = "Gopt angle";
constexpr const char* kNoiseResistance = "Rn";
constexpr const char* kMarker = "Marker";
} // namespace names

/// "S21"; from ten ports on with a mark between row and column, "S2_1", since S111 could be 1,11 or 11,1.
/// Rows and columns count from 0.
std::string parameterName(char parameter, std::size_t ports, std::size_t row, std::size_t column);

/// A unit of the catalogue, such as "MHz", "dB20", "°".
Zelm::ZUnit unitNamed(const char* name);

/// A frequency axis: a range if one gives every value exactly, else an explicit array.
Zelm::ZVariable axisOf(const std::vector<double>& values, const Zelm::ZUnit& unit);

/// The magnitudes of complex values, in dB (20 log10). A magnitude of 0 comes out at the unit's floor, -6000
/// dB.
Zelm::ZVariable magnitudeInDecibel(const Zelm::ZVariable& parameter);

/// Everything in the file as variables: the frequency in the file's unit; the parameters row by row, without
/// dimension, each with the frequency as its independent; the reference resistance; and the noise data, if
/// any, with a frequency of their own.
std::vector<NamedVariable> variablesOf(const Touchstone& file);

/// All elements of a value of a type that converts to `T`, which is `double` or `std::complex<double>`.
template <class T>
std::vector<T> elementsOf(const Zelm::Variant& value);

extern template std::vector<double> elementsOf(const Zelm::Variant& value);
extern template std::vector<std::complex<double>> elementsOf(const Zelm::Variant& value);

} // namespace measurement
