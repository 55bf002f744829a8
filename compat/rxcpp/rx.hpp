#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
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
/// no operators, no schedulers, no other sources, and no errors but those of the observers. A program that
/// keeps to this subset means the same with RxCpp itself; observers that RxCpp refuses are refused here too.
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

/// Stands for a callback that was not given.
struct NotGiven {};

/// What one subscription calls, until its lifetime ends.
template <class T>
struct Observer {
    explicit Observer(composite_subscription boundTo) : lifetime(std::move(boundTo)) {}
    virtual ~Observer() = default;

    virtual void next(const T& value) const noexcept = 0;
    virtual void complete() const noexcept = 0;

    const composite_subscription lifetime;
    /// Counts those of a subject, in order of subscription. For the subject alone, under its lock.
    mutable std::uint64_t number = 0;
};

template <class T, class OnNext, class OnError, class OnCompleted>
struct CallbackObserver final : Observer<T> {
    static_assert(std::is_copy_constructible_v<OnNext>, "an observer is copyable");
    static_assert(std::is_invocable_v<const OnNext&, const T&>,
                  "an observer is const and takes T or const T&");
    static_assert(std::is_void_v<std::invoke_result_t<const OnNext&, const T&>>,
                  "an observer returns nothing");

    CallbackObserver(composite_subscription boundTo, OnNext next, OnError error, OnCompleted completed)
        : Observer<T>(std::move(boundTo)), onNext(std::move(next)), onError(std::move(error)),
          onCompleted(std::move(completed)) {}

    /// Without an `on_error` the program ends where the exception is thrown, with the stack still there to be
    /// looked at.
    void next(const T& value) const noexcept override {
        if constexpr (std::is_same_v<OnError, NotGiven>) {
            onNext(value);
        } else {
            try {
                onNext(value);
            } catch (...) {
                onError(std::current_exception());
                this->lifetime.unsubscribe();
            }
        }
    }

    void complete() const noexcept override {
        if constexpr (!std::is_same_v<OnCompleted, NotGiven>) {
            onCompleted();
        }
        this->lifetime.unsubscribe();
    }

    OnNext onNext;
    OnError onError;
    OnCompleted onCompleted;
};

/// What a subject, its subscribers and its observables share: the list of observers. A list that an emission
/// has seen is never changed but replaced, so that emissions walk it without a lock; until the next emission
/// the new one is changed in place. What is dropped is dropped outside the lock: with it may go what
/// observers captured, whose destructors may come back here.
template <class T>
class Hub : public std::enable_shared_from_this<Hub<T>> {
public:
    using ObserverPtr = std::shared_ptr<const Observer<T>>;

    explicit Hub(composite_subscription boundTo) : lifetime(std::move(boundTo)) {}

    static std::shared_ptr<Hub> make(composite_subscription boundTo) {
        auto hub = std::make_shared<Hub>(std::move(boundTo));
        hub->lifetime.add([weak = std::weak_ptr<Hub>(hub)] {
            if (const auto self = weak.lock()) {
                self->dropAll();
            }
        });
        return hub;
    }

    void subscribe(const ObserverPtr& observer) {
        const auto self = this->shared_from_this();
        if (!observer->lifetime.is_subscribed()) {
            return;
        }
        observer->lifetime.add([hub = this->weak_from_this(), weak = std::weak_ptr(observer)] {
            const auto owner = hub.lock();
            if (const ObserverPtr ended = weak.lock(); owner && ended) {
                owner->drop(*ended);
            }
        });
        if (!join(observer)) {
            completed_ ? observer->complete() : observer->lifetime.unsubscribe();
        }
    }

    bool hasObservers() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return list_->size() > gaps_;
    }

    /// An observer may destroy the last owner of this hub: nothing of it is touched after they are called.
    void next(const T& value) {
        if (!lifetime.is_subscribed()) {
            return;
        }
        const auto list = snapshot();
        const Walk walk(*list);
        for (const Entry& entry : *list) {
            if (entry.isLive()) {
                entry.observer->next(value);
            }
        }
    }

    void complete() {
        const composite_subscription ending = lifetime;
        if (!ending.is_subscribed()) {
            return;
        }
        // First, as it may fail: then nothing has been completed.
        auto list = std::make_shared<List>();
        completed_ = true;
        exchangeAll(list);
        snapshot_.reset();
        for (const Entry& entry : *list) {
            if (entry.isLive()) {
                entry.observer->complete();
            }
        }
        ending.unsubscribe();
    }

    const composite_subscription lifetime;

private:
    /// Empty where an observer was dropped from a list that is changed in place.
    struct Entry {
        std::uint64_t number;
        ObserverPtr observer;

        bool isLive() const noexcept { return observer && observer->lifetime.is_subscribed(); }
    };
    struct List : std::vector<Entry> {
        /// Emissions under way. For the publisher alone.
        mutable int walks = 0;
    };
    /// One emission, until it ends or an observer throws.
    class Walk {
    public:
        explicit Walk(const List& list) noexcept : list_(list) { ++list_.walks; }
        Walk(const Walk&) = delete;
        Walk& operator=(const Walk&) = delete;
        ~Walk() { --list_.walks; }

    private:
        const List& list_;
    };

    /// Makes the list one that no emission has seen. Returns the former one if that is another, to be dropped
    /// outside the lock.
    std::shared_ptr<List> makeOwn() {
        if (!isSeen_) {
            return nullptr;
        }
        auto list = std::make_shared<List>();
        list->reserve(list_->size() + 1);
        std::copy_if(list_->begin(), list_->end(), std::back_inserter(*list),
                     [](const Entry& entry) { return entry.isLive(); });
        isSeen_ = false;
        gaps_ = 0;
        list_.swap(list);
        return list;
    }

    /// Returns whether the subject still takes observers.
    bool join(const ObserverPtr& observer) {
        std::shared_ptr<List> replaced;
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!lifetime.is_subscribed() || completed_) {
            return false;
        }
        if (observer->lifetime.is_subscribed()) {
            replaced = makeOwn();
            list_->push_back({++lastNumber_, observer});
            observer->number = lastNumber_;
        }
        return true;
    }

    /// Where memory is short it stays in the list, silent, until that is next replaced.
    void drop(const Observer<T>& ended) noexcept {
        std::shared_ptr<List> replaced;
        const std::lock_guard<std::mutex> lock(mutex_);
        try {
            replaced = makeOwn();
        } catch (const std::bad_alloc&) {
            return;
        }
        const auto place =
            std::lower_bound(list_->begin(), list_->end(), ended.number,
                             [](const Entry& entry, std::uint64_t number) { return entry.number < number; });
        if (place == list_->end() || place->observer.get() != &ended) {
            return;
        }
        // The caller holds it too.
        place->observer.reset();
        if (2 * ++gaps_ > list_->size()) {
            list_->erase(std::remove_if(list_->begin(), list_->end(),
                                        [](const Entry& entry) { return !entry.observer; }),
                         list_->end());
            gaps_ = 0;
        }
    }

    /// Leaves the empty `list` and gives back the present one in it.
    void exchangeAll(std::shared_ptr<List>& list) noexcept {
        const std::lock_guard<std::mutex> lock(mutex_);
        list_.swap(list);
        isSeen_ = false;
        gaps_ = 0;
    }

    /// Where memory is short they stay in the list, silent, as long as that lives.
    void dropAll() noexcept {
        try {
            auto list = std::make_shared<List>();
            exchangeAll(list);
        } catch (const std::bad_alloc&) {}
    }

    /// The list that an emission under way walks, or else the present one. For the publisher alone.
    std::shared_ptr<const List> snapshot() {
        std::shared_ptr<const List> list = snapshot_.lock();
        // One that was replaced may be held without an emission.
        if (!list || (list->walks == 0 && !isSeen_)) {
            const std::lock_guard<std::mutex> lock(mutex_);
            snapshot_ = list = list_;
            isSeen_ = true;
        }
        return list;
    }

    std::mutex mutex_;
    /// In order of their numbers.
    std::shared_ptr<List> list_ = std::make_shared<List>();
    /// Whether the present list is that of the last emission. Written under the lock.
    std::atomic<bool> isSeen_{false};
    std::size_t gaps_ = 0;
    std::uint64_t lastNumber_ = 0;
    std::weak_ptr<const List> snapshot_;
    std::atomic<bool> completed_{false};
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
    /// `on_error` the program is terminated. Does nothing once the lifetime has ended.
    void on_next(const T& value) const { hub_->next(value); }
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
    /// copyable and const, takes `T` or `const T&`, and returns nothing. `onError` takes a
    /// `std::exception_ptr` and `onCompleted` nothing; the two must not throw. If `lifetime` has ended
    /// nothing is subscribed; if the subject has, this ends `lifetime`, after a call of `onCompleted` if the
    /// subject was completed. Costs a copy of the list of observers, the first time after an emission.
    template <class OnNext, class OnError = details::NotGiven, class OnCompleted = details::NotGiven>
    composite_subscription subscribe(composite_subscription lifetime, OnNext onNext, OnError onError = {},
                                     OnCompleted onCompleted = {}) const {
        using Observer = details::CallbackObserver<T, OnNext, OnError, OnCompleted>;
        hub_->subscribe(std::make_shared<const Observer>(lifetime, std::move(onNext), std::move(onError),
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
    bool has_observers() const { return hub_->hasObservers(); }

private:
    std::shared_ptr<details::Hub<T>> hub_;
};

} // namespace subjects
} // namespace zelm_stand_in
} // namespace rxcpp
