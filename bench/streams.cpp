// The stand-in for RxCpp beside RxCpp.

#include "Compare.h"

#define rxcpp stand_in
#include "../compat/rxcpp/rx.hpp"
#undef rxcpp

#include <rxcpp/rx.hpp>

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
void publish(benchmark::State& state) {
    const typename Library::Subject subject;
    const auto subscriber = subject.get_subscriber();
    int sum = 0;
    for (int i = 0; i < Observers; ++i) {
        subject.get_observable().subscribe([&sum](const int& value) { sum += value; });
    }
    for (auto _ : state) {
        subscriber.on_next(1);
        benchmark::DoNotOptimize(sum);
    }
}

template <class Library, int Others>
void comeAndGo(benchmark::State& state) {
    const typename Library::Subject subject;
    const auto observable = subject.get_observable();
    int sum = 0;
    const auto observer = [&sum](const int& value) { sum += value; };
    for (int i = 0; i < Others; ++i) {
        observable.subscribe(observer);
    }
    for (auto _ : state) {
        const typename Library::Lifetime lifetime;
        observable.subscribe(lifetime, observer);
        lifetime.unsubscribe();
    }
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
