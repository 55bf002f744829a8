#include <rxcpp/rx.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

/// What one observer got; outlives its subscription, as an emission may be under way when that ends.
struct Received {
    std::atomic<int> last{0};
    std::atomic<bool> inOrder{true};
};

TEST(SubjectThreadTest, OnePublisherAndManyWhoComeAndGo) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    const rxcpp::subjects::subject<int> source;
    const rxcpp::subscriber<int> out = source.get_subscriber();
    int stayed = 0;
    source.get_observable().subscribe([&stayed](int) { ++stayed; });

    std::atomic<int> running{kThreads};
    std::atomic<int> outOfOrder{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                const auto received = std::make_shared<Received>();
                const auto lifetime = source.get_observable().subscribe([received](const int& value) {
                    if (received->last.exchange(value) >= value) {
                        received->inOrder = false;
                    }
                });
                while (received->last == 0) {
                    std::this_thread::yield();
                }
                lifetime.unsubscribe();
                outOfOrder += received->inOrder ? 0 : 1;
            }
            --running;
        });
    }
    int published = 0;
    while (running > 0) {
        out.on_next(++published);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(published, stayed);
    EXPECT_EQ(0, outOfOrder);
    EXPECT_TRUE(source.has_observers());
}

} // namespace
