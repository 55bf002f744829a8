#pragma once

#include <iosfwd>
#include <string>

namespace Zelm::details {

/// The rest of a stream, ready for `Json::Reader`: numbers have no decimal point if the global locale, by
/// which that class reads them, has another one.
std::string readJsonDocument(std::istream& in);

} // namespace Zelm::details
