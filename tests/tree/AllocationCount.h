#pragma once

namespace Zelm::Testing {

/// How often this process has called the global `operator new`.
int allocationCount();

} // namespace Zelm::Testing
