// Concurrent use; meant for the thread sanitizer, yet each fault shows as a wrong text or count too, in time.

#include <zelm/text/TextConversions.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace Zelm;

namespace {

/// Runs all actions at the same time.
template <class... Actions>
void concurrently(Actions... actions) {
    std::atomic<unsigned> waiting{sizeof...(actions)};
    const auto together = [&](auto& action) {
        --waiting;
        while (waiting != 0) {
            std::this_thread::yield();
        }
        action();
    };
    std::thread threads[] = {std::thread([&] { together(actions); })...};
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace

TEST(Threads, OneTextIsReadAsStdStringWhileOthersCopyAndCutIt) {
    for (int round = 0; round < 300; ++round) {
        const std::vector<ZString> tokens = tokenize(ZString(std::string("one two three four")), " ", false);
        const std::string* addresses[2] = {};
        const auto read = [&](int reader) {
            for (const ZString& token : tokens) {
                EXPECT_EQ(token.to_string(), std::string(token.data(), token.size()));
            }
            addresses[reader] = &tokens[2].to_string();
        };
        concurrently([&] { read(0); }, [&] { read(1); },
                     [&] {
                         std::string joined;
                         for (const ZString& token : tokens) {
                             const ZString copy = token;
                             ZString cut = copy.mid(1);
                             cut += copy.left(1);
                             joined += cut;
                         }
                         EXPECT_EQ(joined, "neowothreetourf");
                     });
        EXPECT_EQ(addresses[0], addresses[1]);
        for (const ZString& token : tokens) {
            EXPECT_EQ(token.testing_get_ref_count(), 1);
        }
    }
}

TEST(Threads, AnAppendWaitsForWhatFormerOwnersRead) {
    for (int round = 0; round < 300; ++round) {
        ZString text(std::string("shared text that is long enough for a buffer"));
        const std::string before = text.to_string();
        text += before;
        ZString other = text;
        concurrently([&] { text += "!"; },
                     [other = std::move(other), &before]() mutable {
                         EXPECT_EQ(other, before + before);
                         other.clear();
                     });
        EXPECT_EQ(text, before + before + "!");
    }
}
