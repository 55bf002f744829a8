#include "Csv.h"

#include "Number.h"

#include <ostream>

namespace measurement {

void writeCsv(std::ostream& out, const Measurement& measurement) {
    const Zelm::ZVariable frequency = measurement.variable(names::kFrequency);
    const std::size_t ports = measurement.ports();
    std::string line = "frequency [" + frequency.unitOfData().GetUnitsLabel().to_string() + "]";
    std::vector<std::vector<std::complex<double>>> columns;
    for (std::size_t row = 0; row < ports; ++row) {
        for (std::size_t column = 0; column < ports; ++column) {
            const std::string name = parameterName(measurement.parameter(), ports, row, column);
            line += "," + name + " re," + name + " im";
            columns.push_back(
                elementsOf<std::complex<double>>(measurement.variable(name).dataInStoredUnit()));
        }
    }
    out << line << '\n';
    const std::vector<double> axis = elementsOf<double>(frequency.dataInStoredUnit());
    for (std::size_t point = 0; point < axis.size(); ++point) {
        line = shortestText(axis[point]);
        for (const auto& column : columns) {
            line += "," + shortestText(column[point].real()) + "," + shortestText(column[point].imag());
        }
        out << line << '\n';
    }
}

} // namespace measurement
