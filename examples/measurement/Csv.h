#pragma once

#include "Measurement.h"

#include <iosfwd>

namespace measurement {

/// Writes `frequency [unit],S11 re,S11 im,S12 re,...`, row by row of the matrix, and one line a point.
/// Numbers have the shortest form that reads back to the same double.
void writeCsv(std::ostream& out, const Measurement& measurement);

} // namespace measurement
