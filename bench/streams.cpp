// The stand-in for RxCpp beside RxCpp.

#include "Compare.h"

#define rxcpp stand_in
#include "../compat/rxcpp/rx.hpp"
#undef rxcpp

#include <rxcpp/rx.hpp>

#include <memory>
#include <string>

namespace Zelm::Bench {
namespace {

struct StandIn {
    using Lifetime = stand_in::composite_subscription;
    using Subject = stand_in::subjects::subject<int>;
};

struct RxCpp {
    using Lifetime = rxcpp::composite_subscription;
    using Subject = rxcpp::subjects::subject<int>;
};

template <class Library, int Observers>
auto publish() {
    const typename Library::Subject subject;
    const auto sum = std::make_shared<int>(0);
    for (int i = 0; i < Observers; ++i) {
        subject.get_observable().subscribe([sum](const int& value) { *sum += value; });
    }
    return [subject, subscriber = subject.get_subscriber(), sum] {
        subscriber.on_next(1);
        return *sum;
    };
}

template <class Library, int Others>
auto comeAndGo() {
    const typename Library::Subject subject;
    const auto observable = subject.get_observable();
    const auto observer = [](const int& value) { benchmark::DoNotOptimize(value); };
    for (int i = 0; i < Others; ++i) {
        observable.subscribe(observer);
    }
    return [subject, observable, observer] {
        const typename Library::Lifetime lifetime;
        observable.subscribe(lifetime, observer);
        lifetime.unsubscribe();
        return lifetime.is_subscribed();
    };
}

template <int Observers>
Comparison comparePublish() {
    return {"publish to " + std::to_string(Observers) + " / RxCpp", 1.0, publish<StandIn, Observers>,
            publish<RxCpp, Observers>};
}

template <int Others>
Comparison compareComeAndGo() {
    return {"subscribe, unsubscribe beside " + std::to_string(Others) + " / RxCpp", 0.5,
            comeAndGo<StandIn, Others>, comeAndGo<RxCpp, Others>};
}

const Comparison rows[] = {comparePublish<0>(),   comparePublish<1>(),   comparePublish<10>(),
                           comparePublish<100>(), compareComeAndGo<0>(), compareComeAndGo<10>()};

} // namespace
} // namespace Zelm::Bench
