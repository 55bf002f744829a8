#include <zelm/errors/PrintfExceptionReporterForTesting.h>

#include <zelm/errors/MoreInfoForException.h>

#include <cstdio>

namespace Zelm {

PrintfExceptionReporterForTesting::PrintfExceptionReporterForTesting() {
    set_as_global_reporter(true);
}

void PrintfExceptionReporterForTesting::report_caught_exception(const std::string& first,
                                                                const std::string& last) {
    std::printf("Error: %s\n\n", get_message_from_caught_exception(first, last).c_str());
}

void PrintfExceptionReporterForTesting::report_caught_exception_as_warning(const std::string& first,
                                                                           const std::string& last) {
    std::printf("Warning: %s\n\n", get_message_from_caught_exception(first, last).c_str());
}

} // namespace Zelm
