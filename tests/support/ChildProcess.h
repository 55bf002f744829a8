#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Zelm::Testing {

/// Runs what changes a process in one of its own. Its failures are failures of the test, and so are
/// exceptions, which end it, and more than a minute.
template <class Action>
void inChild(Action&& action) noexcept {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(60);
        action();
        std::fflush(nullptr);
        ::_exit(::testing::Test::HasFailure());
    }
    int status = 1;
    EXPECT_TRUE(::waitpid(child, &status, 0) == child && status == 0);
}

constexpr unsigned kNobody = 65534;

/// What root gives up to be an ordinary user; false for one who is one already.
inline bool becomeNobody() {
    return ::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0;
}

} // namespace Zelm::Testing
