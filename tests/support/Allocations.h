#pragma once

namespace Zelm::Testing {

/// How often this process has called the global `operator new`.
long allocationCount();

/// Lets `count` further allocations succeed, the next one throw `std::bad_alloc`, and all later ones succeed.
void failAllocationAfter(long count);

/// How many allocations `action` makes.
template <class Action>
long allocationsOf(Action&& action) {
    const long before = allocationCount();
    action();
    return allocationCount() - before;
}

} // namespace Zelm::Testing
