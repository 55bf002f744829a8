#pragma once

#include "Marker.h"
#include "Variables.h"

#include <zelm/tree/ZObject.h>

#include <string>
#include <vector>

namespace measurement {

/// A measured n-port as one object: its variables as children under their names, the number of ports and the
/// letter of the parameters as properties, and a marker if one was set.
class Measurement : public Zelm::ZObject {
public:
    /// "Measurement".
    static Zelm::ZString objectType();

    Measurement(char parameter, std::size_t ports, const std::vector<NamedVariable>& variables);
    /// Throws `std::logic_error` "Measurement expected but not found" for an object of another type.
    explicit Measurement(Zelm::ZGenericObject object);

    std::size_t ports() const;
    char parameter() const;
    /// Throws `std::runtime_error` if there is no such variable.
    Zelm::ZVariable variable(const std::string& name) const;
    /// Rows and columns count from 0.
    Zelm::ZVariable parameterAt(std::size_t row, std::size_t column) const;
    bool hasNoise() const;

    void setMarker(const Marker& marker);
    /// Throws `std::runtime_error` if there is none.
    Marker marker() const;
};

} // namespace measurement
