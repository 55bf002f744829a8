#pragma once

#include <complex>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace measurement {

/// A file that cannot be used. The text reads `FILE:LINE: what is wrong`, on one line.
class ReadError : public std::runtime_error {
public:
    ReadError(const std::string& file, std::size_t line, const std::string& what);

    /// The line, counted from 1; 0 where the file as a whole is meant (missing, no Touchstone file by its
    /// name).
    std::size_t line() const noexcept { return line_; }

private:
    std::size_t line_;
};

/// The noise block behind the data of a 2-port: one entry a row in each column, numbers as they stand in the
/// file.
struct NoiseColumns {
    std::vector<double> frequency;     ///< in the file's unit
    std::vector<double> minimumFigure; ///< minimum noise figure in dB
    std::vector<double> magnitude;     ///< magnitude of the source reflection that gives the minimum
    std::vector<double> angle;         ///< its angle in degrees
    std::vector<double> resistance;    ///< effective noise resistance over the reference resistance

    bool empty() const noexcept { return frequency.empty(); }
};

/// The content of a Touchstone 1.x file.
struct Touchstone {
    std::size_t ports = 0;
    std::string unit = "GHz"; ///< unit of all frequencies: "Hz", "kHz", "MHz" or "GHz"
    char parameter =
        'S'; ///< 'S', 'Y', 'Z', 'G' or 'H'; all but S are normalised to the reference, as in the file
    double reference = 50.0;       ///< reference resistance in ohms
    std::vector<double> frequency; ///< strictly increasing
    /// Row by row: entry `row * ports + column` holds the parameter at all frequencies.
    std::vector<std::vector<std::complex<double>>> parameters;
    NoiseColumns noise;
};

/// The number of ports that a file name tells by its extension, `.s1p` to `.s99p` in any case. Throws
/// ReadError.
std::size_t portsOf(const std::string& file);

/// Reads the text of a file of `ports` ports; `file` only names it in errors. Every number of the result is
/// finite, and so are the frequencies in Hz and the magnitudes. Throws ReadError.
Touchstone parseTouchstone(std::string_view text, std::size_t ports, const std::string& file);

/// Reads a file; the number of ports comes from its name. Throws ReadError.
Touchstone readTouchstone(const std::string& file);

} // namespace measurement
