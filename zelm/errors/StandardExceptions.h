#pragma once

#include <exception>
#include <string>

namespace Zelm::details {

/// Throws the ExceptionWithMoreInfo of the first standard type that `caught` is.
[[noreturn]] void throwStandardWithMoreInfo(const std::exception& caught, const std::string& info);

} // namespace Zelm::details
