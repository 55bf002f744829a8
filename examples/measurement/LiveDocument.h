#pragma once

#include "Entities.h"

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace measurement {

/// What was seen on the road of a live document.
struct LiveRoad {
    std::string parameter;           ///< the one with the marker
    std::string path;                ///< the way from the marker's link to it, as saved
    std::vector<std::string> change; ///< paths of the entities that told of one change, in order
    double peak;                     ///< the marker's last reading, in dB
    std::size_t bytes;               ///< length of the document with the marker
};

/// Makes entities of a measurement, puts a marker on one parameter and changes it; saves the document to
/// memory, loads it into new entities and changes the parameter again. On the way it tests that after each
/// change link, marker and document hold the new values to the last bit, that all are told in the same order,
/// that what is loaded is what was saved, and that the link and the mark of what is dirty come back. Throws
/// `std::runtime_error` that says where something differs. The measurement itself stays as it is.
LiveRoad walkLiveRoad(const Measurement& measurement);

/// The time in microseconds from the change of a marked parameter until all up to the root have been told:
/// median of 11 to 201 changes.
double timeOfChange(const Measurement& measurement);

/// The document with its live state, as text.
std::string textOf(MeasurementEntity& document);
/// The entities of such a text, with links connected and dirty marks restored.
std::shared_ptr<MeasurementEntity> entitiesOf(const std::string& text);

/// Gives a parameter other values, half of what they were. Throws `std::runtime_error` if the link, the
/// marker or the document holds anything else when the change returns. The result is who told of it, in
/// order.
std::vector<std::string> changeAndTest(MeasurementEntity& document, const std::string& parameter);

void printLiveRoad(std::ostream& out, const LiveRoad& road, double microseconds);

} // namespace measurement
