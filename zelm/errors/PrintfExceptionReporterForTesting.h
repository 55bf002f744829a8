#pragma once

#include <zelm/Export.h>
#include <zelm/errors/ExceptionReporterBase.h>

#include <string>

namespace Zelm {

/// Prints reports to standard output, as "Error: " or "Warning: ", the message and an empty line. Is a global
/// reporter once it is constructed; copies are not.
class ZELM_EXPORT PrintfExceptionReporterForTesting : public ExceptionReporterBase {
public:
    PrintfExceptionReporterForTesting();

    void report_caught_exception(const std::string& first, const std::string& last) override;
    void report_caught_exception_as_warning(const std::string& first, const std::string& last) override;
};

} // namespace Zelm
