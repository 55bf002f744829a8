#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace measurement {

/// The whole of `text` as a finite decimal number, whatever the locale: "2", "-.5", "+1.0E-003". What is too
/// small for a double reads as 0; no value for "nan", "inf", "1e999" and everything that is no number.
std::optional<double> parseNumber(std::string_view text);

/// The shortest text that reads back to the same double.
std::string shortestText(double value);

} // namespace measurement
