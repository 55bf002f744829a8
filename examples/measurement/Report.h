#pragma once

#include "Measurement.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace measurement {

/// How long a step took.
struct StepTime {
    std::string name;
    double milliseconds;
};

/// What the conversion to decibels and to hertz gave.
struct Conversions {
    Zelm::ZVariable inHertz;
    double backDeviation; ///< largest deviation of the axis after the way to Hz and back, in the file's unit
    std::vector<NamedVariable> decibels; ///< the parameters, row by row
};

/// Converts the axis to Hz and back to its own unit, and the magnitudes of all parameters to decibels.
Conversions convert(const Measurement& measurement);

/// Prints what an engineer wants to see of a measurement at a glance.
void printReport(std::ostream& out, const std::string& file, const Measurement& measurement,
                 const Conversions& conversions);

/// Prints the size of the document and the time of each step.
void printDocument(std::ostream& out, const std::string& document, std::uintmax_t bytes,
                   const std::vector<StepTime>& times);

} // namespace measurement
