#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

namespace Zelm::Testing {

/// Runs `action` and reports unless it throws exactly an `Expected` (no class derived from it) whose text is
/// `text`.
template <class Expected, class Action>
::testing::AssertionResult throwsExactly(const std::string& text, Action&& action) {
    try {
        action();
    } catch (const std::exception& error) {
        if (typeid(error) != typeid(Expected)) {
            return ::testing::AssertionFailure() << "expected " << typeid(Expected).name() << ", got "
                                                 << typeid(error).name() << " with \"" << error.what() << '"';
        }
        if (text != error.what()) {
            return ::testing::AssertionFailure()
                   << "expected the text \"" << text << "\", got \"" << error.what() << '"';
        }
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "expected \"" << text << "\", nothing was thrown";
}

} // namespace Zelm::Testing

/// Exact type and full text of an exception in one assertion.
#define EXPECT_THROW_MSG(statement, type, text)                                                              \
    EXPECT_TRUE((::Zelm::Testing::throwsExactly<type>(text, [&] { static_cast<void>(statement); })))
