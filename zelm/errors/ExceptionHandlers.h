#pragma once

#include <string>

namespace Zelm::details {

/// Gives every handler, newest first, the chance to throw its own in place of the exception in flight.
void offerToHandlers(const std::string& info);

/// The first non-empty message that a handler, newest first, has for the exception in flight; else
/// `fallback`.
std::string messageFromHandlersOr(std::string fallback);

} // namespace Zelm::details
