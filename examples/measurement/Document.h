#pragma once

#include "Measurement.h"

#include <zelm/files/ZPath.h>

#include <iosfwd>
#include <string>
#include <vector>

namespace measurement {

/// The measurement as a JSON document.
void writeDocument(std::ostream& out, const Measurement& measurement);
/// Throws what parsing throws, and `std::logic_error` if the document is no measurement.
Measurement readDocument(std::istream& in);

/// Writes the measurement to a file: under another name in the same directory first, so that `file` appears
/// whole or stays as it was. Throws `std::runtime_error` naming the file and the system's reason.
void saveDocument(const Zelm::ZPath& file, const Measurement& measurement);

/// Throws `std::runtime_error` naming a file that cannot be opened, and what readDocument() throws.
Measurement loadDocument(const Zelm::ZPath& file);

/// What differs between a measurement that was read back and the one that was saved, whose variables these
/// are:
/// "" if nothing does, else "the tree" or the name of a variable.
std::string differenceBetween(const Measurement& saved, const std::vector<NamedVariable>& variables,
                              const Measurement& loaded);

} // namespace measurement
