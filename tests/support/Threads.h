#pragma once

#include <atomic>
#include <future>
#include <vector>

namespace Zelm::Testing {

/// Calls `action` with 0 to 3 on four threads, none of which begins before all are there.
template <class Action>
void onFourThreads(Action&& action) {
    std::atomic<int> missing{4};
    std::vector<std::future<void>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(std::async(std::launch::async, [&, i] {
            --missing;
            while (missing > 0) {}
            action(i);
        }));
    }
}

} // namespace Zelm::Testing
