#include <rxcpp/rx.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace {

TEST(StandInTest, CapturesMayReturnToTheirSubjectWhenTheyAreDestroyed) {
    const rxcpp::subjects::subject<int> source;
    rxcpp::composite_subscription other;
    int late = 0;
    source.get_observable().subscribe(other, [](int) {});
    std::shared_ptr<void> capture(nullptr, [&](void*) {
        other.unsubscribe();
        source.get_observable().subscribe([&late](int value) { late = value; });
    });
    const auto lifetime = source.get_observable().subscribe([held = std::move(capture)](int) {});
    lifetime.unsubscribe();
    source.get_subscriber().on_next(7);
    EXPECT_EQ(7, late);
}

} // namespace
