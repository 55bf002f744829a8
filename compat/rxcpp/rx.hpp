#pragma once

#include <algorithm>
#include <atomic>
#include <exception>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// Stand-in for RxCpp where none is installed: its names and behaviour for lifetimes and subjects, that is
/// `composite_subscription`, `subscriber`, `observable` with `subscribe`, and `subjects::subject`. There are
/// no operators, no schedulers and no other sources. A program that keeps to this subset means the same with
/// RxCpp itself; what RxCpp refuses to compile is refused here too.
///
/// Everything is synchronous: `on_next` calls the observers one after another, in order of subscription, on
/// the thread that publishes. An emission reaches those who had subscribed before it began and have not ended
/// meanwhile. One that an observer publishes meanwhile runs at once, for the same observers as the outer one:
/// those further back see the newer value first. Nothing is replayed for those who come late.
///
/// Threads: one publisher at a time for each subject, and any number of threads that subscribe and
/// unsubscribe.
namespace rxcpp {

/// Makes the names differ from RxCpp's for the linker: a program and a library that were compiled with
/// different ones do not link, where they would otherwise disagree silently about the objects.
inline namespace zelm_stand_in {

/// A lifetime: live until `unsubscribe`, which ends all subscriptions made with it. Copies share it and
/// compare equal. Destroying or overwriting the object ends nothing. One that was moved from may only be
/// assigned to or destroyed.
class composite_subscription {
public:
    /// A new, live one.
    composite_subscription() : composite_subscription(true) {}

    /// One that has ended already.
    static composite_subscription empty() {
        static const composite_subscription ended(false);
        return ended;
    }

    bool is_subscribed() const noexcept { return state_->live; }

    /// Ends the lifetime and runs what was added to it, first come first; does nothing the second time. The
    /// observers that end here, and what they captured, are destroyed before it returns or, if an emission is
    /// under way, when that ends.
    void unsubscribe() const {
        if (!state_->live.exchange(false)) {
            return;
        }
        std::vector<std::function<void()>> teardowns;
        {
            const std::lock_guard<std::mutex> lock(state_->mutex);
            teardowns.swap(state_->teardowns);
        }
        for (const auto& teardown : teardowns) {
            teardown();
        }
    }

    /// Lets `teardown` run when the lifetime ends: at once if it has.
    template <class Teardown>
    void add(Teardown teardown) const {
        {
            const std::lock_guard<std::mutex> lock(state_->mutex);
            if (is_subscribed()) {
                state_->teardowns.emplace_back(std::move(teardown));
                return;
            }
        }
        teardown();
    }

    friend bool operator==(const composite_subscription& a, const composite_subscription& b) noexcept {
        return a.state_ == b.state_;
    }
    friend bool operator!=(const composite_subscription& a, const composite_subscription& b) noexcept {
        return !(a == b);
    }

private:
    struct State {
        explicit State(bool isLive) : live(isLive) {}

        std::atomic<bool> live;
        std::mutex mutex;
        std::vector<std::function<void()>> teardowns;
    };

    explicit composite_subscription(bool isLive) : state_(std::make_shared<State>(isLive)) {}

    std::shared_ptr<State> state_;
};

namespace details {

/// What one subscription calls, until its lifetime ends.
template <class T>
struct Observer {
    explicit Observer(composite_subscription boundTo) : lifetime(std::move(boundTo)) {}
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;

    virtual void next(const T& value) const = 0;
    virtual void fail(std::exception_ptr error) const noexcept = 0;
    virtual void complete() const noexcept = 0;

    const composite_subscription lifetime;
};

/// Stands for an `on_error` that was not given.
struct Terminate {
    void operator()(const std::exception_ptr&) const noexcept { std::terminate(); }
};

/// Stands for an `on_completed` that was not given.
struct Ignore {
    void operator()() const noexcept {}
};

template <class T, class OnNext, class OnError, class OnCompleted>
struct CallbackObserver final : Observer<T> {
    static_assert(std::is_copy_constructible_v<OnNext>, "an observer is copyable");
    static_assert(std::is_invocable_v<const OnNext&, const T&>,
                  "an observer is const and takes T or const T&");
    static_assert(std::is_void_v<std::invoke_result_t<const OnNext&, const T&>>,
                  "an observer returns nothing");
    static_assert(std::is_invocable_v<const OnError&, std::exception_ptr>,
                  "on_error takes std::exception_ptr");
    static_assert(std::is_invocable_v<const OnCompleted&>, "on_completed takes nothing");

    CallbackObserver(composite_subscription boundTo, OnNext next, OnError error, OnCompleted completed)
        : Observer<T>(std::move(boundTo)), onNext(std::move(next)), onError(std::move(error)),
          onCompleted(std::move(completed)) {}

    void next(const T& value) const override {
        if constexpr (std::is_same_v<OnError, Terminate>) {
            nextOrTerminate(value);
        } else {
            try {
                onNext(value);
            } catch (...) {
                fail(std::current_exception());
            }
        }
    }

    /// Terminates where the exception is thrown, with the stack still there to be looked at.
    void nextOrTerminate(const T& value) const noexcept { onNext(value); }

    void fail(std::exception_ptr error) const noexcept override {
        onError(std::move(error));
        this->lifetime.unsubscribe();
    }

    void complete() const noexcept override {
        onCompleted();
        this->lifetime.unsubscribe();
    }

    OnNext onNext;
    OnError onError;
    OnCompleted onCompleted;
};

/// What a subject, its subscribers and its observables share: the list of observers. A list is never changed
/// but replaced, so that an emission walks its own one without a lock. Replaced lists are dropped outside the
/// lock: with them may go what observers captured, whose destructors may come back here.
template <class T>
class Hub {
public:
    using ObserverPtr = std::shared_ptr<const Observer<T>>;

    explicit Hub(composite_subscription boundTo) : lifetime(std::move(boundTo)) {}

    static std::shared_ptr<Hub> make(composite_subscription boundTo) {
        const auto hub = std::make_shared<Hub>(std::move(boundTo));
        hub->lifetime.add(whileItLives(hub, [](Hub& self) { self.close(Stage::ended); }));
        return hub;
    }

    static void subscribe(const std::shared_ptr<Hub>& hub, const ObserverPtr& observer) {
        if (!observer->lifetime.is_subscribed()) {
            return;
        }
        observer->lifetime.add(whileItLives(hub, [](Hub& self) { self.dropEnded(); }));
        switch (hub->renewList(observer)) {
        case Stage::open:
            break;
        case Stage::completed:
            observer->complete();
            break;
        case Stage::failed:
            observer->fail(hub->error_);
            break;
        case Stage::ended:
            observer->lifetime.unsubscribe();
            break;
        }
    }

    bool hasObservers() const noexcept { return hasObservers_; }

    /// An observer may destroy the last owner of this hub: nothing of it is touched after they are called.
    void next(const T& value) {
        if (hasObservers_) {
            callEach(snapshot(), [&value](const Observer<T>& observer) { observer.next(value); });
        }
    }

    void fail(const std::exception_ptr& error) {
        const composite_subscription ending = lifetime;
        callEach(close(Stage::failed, error),
                 [&error](const Observer<T>& observer) { observer.fail(error); });
        ending.unsubscribe();
    }

    void complete() {
        const composite_subscription ending = lifetime;
        callEach(close(Stage::completed), [](const Observer<T>& observer) { observer.complete(); });
        ending.unsubscribe();
    }

    const composite_subscription lifetime;

private:
    using List = std::vector<ObserverPtr>;
    enum class Stage { open, completed, failed, ended };

    template <class Action>
    static auto whileItLives(const std::weak_ptr<Hub>& hub, Action action) {
        return [hub, action] {
            if (const auto self = hub.lock()) {
                action(*self);
            }
        };
    }

    template <class Action>
    static void callEach(const std::shared_ptr<const List>& list, Action action) {
        if (list) {
            for (const ObserverPtr& observer : *list) {
                if (observer->lifetime.is_subscribed()) {
                    action(*observer);
                }
            }
        }
    }

    /// The list that an emission under way walks, or else the present one. For the publisher alone.
    std::shared_ptr<const List> snapshot() {
        std::shared_ptr<const List> list = snapshot_.lock();
        if (!list) {
            const std::lock_guard<std::mutex> lock(mutex_);
            list = list_;
            snapshot_ = list;
        }
        return list;
    }

    /// Replaces the list by one of the observers that have not ended, `joining` the last of them unless it is
    /// null.
    Stage renewList(const ObserverPtr& joining) {
        const auto hasNotEnded = [](const ObserverPtr& observer) {
            return observer->lifetime.is_subscribed();
        };
        auto list = std::make_shared<List>();
        const std::lock_guard<std::mutex> lock(mutex_);
        if (stage_ == Stage::open) {
            if (list_) {
                list->reserve(list_->size() + 1);
                std::copy_if(list_->begin(), list_->end(), std::back_inserter(*list), hasNotEnded);
            }
            if (joining && hasNotEnded(joining)) {
                list->push_back(joining);
            }
            hasObservers_ = !list->empty();
            list_.swap(list);
        }
        return stage_;
    }

    /// Where memory is short they stay in the list, silent, until it is next renewed.
    void dropEnded() noexcept {
        try {
            renewList(nullptr);
        } catch (const std::bad_alloc&) {}
    }

    /// Takes no observer from now on, and returns those that there were.
    std::shared_ptr<const List> close(Stage stage, const std::exception_ptr& error = nullptr) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (stage_ == Stage::open) {
            stage_ = stage;
            error_ = error;
            hasObservers_ = false;
        }
        return std::move(list_);
    }

    std::atomic<bool> hasObservers_{false};
    std::weak_ptr<const List> snapshot_;
    std::mutex mutex_;
    std::shared_ptr<List> list_;
    Stage stage_ = Stage::open;
    std::exception_ptr error_;
};

} // namespace details

/// The publishing end of a subject. It and the subject have one lifetime; each keeps the list of observers
/// alive.
template <class T>
class subscriber {
public:
    /// Made by `subjects::subject`.
    explicit subscriber(std::shared_ptr<details::Hub<T>> hub) : hub_(std::move(hub)) {}

    /// Calls the observers. An exception of one goes to its own `on_error` and ends it; without an
    /// `on_error`, or if that throws, the program is terminated. Does nothing once the lifetime has ended.
    void on_next(const T& value) const { hub_->next(value); }
    /// Hands the error to every observer, and ends them and the subject.
    void on_error(std::exception_ptr error) const { hub_->fail(error); }
    /// Tells every observer, and ends them and the subject.
    void on_completed() const { hub_->complete(); }

    bool is_subscribed() const noexcept { return hub_->lifetime.is_subscribed(); }
    /// Ends the lifetime of the subject: its observers are destroyed, their own lifetimes stay live.
    void unsubscribe() const { get_subscription().unsubscribe(); }
    composite_subscription get_subscription() const noexcept { return hub_->lifetime; }

private:
    std::shared_ptr<details::Hub<T>> hub_;
};

/// The end of a subject at which observers subscribe; keeps the list of observers alive.
template <class T>
class observable {
public:
    /// Made by `subjects::subject`.
    explicit observable(std::shared_ptr<details::Hub<T>> hub) : hub_(std::move(hub)) {}

    /// Calls `onNext` with every value until `lifetime` ends, and returns `lifetime`. The callable is
    /// copyable and const, takes `T` or `const T&`, and returns nothing. If `lifetime` has ended nothing is
    /// subscribed; if the subject has, it ends `lifetime`, after a last call of `onError` or `onCompleted` if
    /// it ended so. Costs a copy of the list of observers.
    template <class OnNext, class OnError = details::Terminate, class OnCompleted = details::Ignore>
    composite_subscription subscribe(composite_subscription lifetime, OnNext onNext, OnError onError = {},
                                     OnCompleted onCompleted = {}) const {
        using Observer = details::CallbackObserver<T, OnNext, OnError, OnCompleted>;
        details::Hub<T>::subscribe(hub_, std::make_shared<const Observer>(lifetime, std::move(onNext),
                                                                          std::move(onError),
                                                                          std::move(onCompleted)));
        return lifetime;
    }

    /// The same with a lifetime of its own.
    template <class OnNext, class... Others,
              std::enable_if_t<!std::is_same_v<OnNext, composite_subscription>, int> = 0>
    composite_subscription subscribe(OnNext onNext, Others... others) const {
        return subscribe(composite_subscription(), std::move(onNext), std::move(others)...);
    }

private:
    std::shared_ptr<details::Hub<T>> hub_;
};

namespace subjects {

/// Hands the values that are published through its subscribers to the observers of its observables. Copies
/// share.
template <class T>
class subject {
public:
    subject() : subject(composite_subscription()) {}
    /// Lives as long as `lifetime`.
    explicit subject(composite_subscription lifetime) : hub_(details::Hub<T>::make(std::move(lifetime))) {}

    subscriber<T> get_subscriber() const { return subscriber<T>(hub_); }
    observable<T> get_observable() const { return observable<T>(hub_); }
    composite_subscription get_subscription() const noexcept { return hub_->lifetime; }
    bool has_observers() const noexcept { return hub_->hasObservers(); }

private:
    std::shared_ptr<details::Hub<T>> hub_;
};

} // namespace subjects
} // namespace zelm_stand_in
} // namespace rxcpp
