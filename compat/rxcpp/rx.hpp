#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

/// Stand-in for RxCpp where none is installed: its names and behaviour for lifetimes and subjects, that is
/// for `composite_subscription`, `subscriber`, `observable` with `subscribe`, and `subjects::subject`. There
/// are no operators, no schedulers and no other sources. A program that keeps to this subset means the same
/// with RxCpp itself; what RxCpp refuses to compile is refused here too.
///
/// Everything is synchronous: `on_next` calls the observers one after another, in order of subscription, on
/// the thread that publishes. An emission reaches those who had subscribed before it began and have not ended
/// meanwhile. A nested emission, from within an observer, runs at once, for the same observers as the outer
/// one; those behind the publishing observer see the newer value first. Nothing is replayed for those who
/// come late.
///
/// Threads: one publisher at a time for each subject, and any number of threads that subscribe and
/// unsubscribe.
namespace rxcpp {

/// Makes the names differ from RxCpp's for the linker: a program and a library that were compiled with
/// different ones do not link, where they would otherwise disagree silently about the objects.
inline namespace zelm_stand_in {

/// A lifetime: live until `unsubscribe`, which ends all subscriptions made with it. Copies share it and
/// compare equal. Destroying or overwriting the object ends nothing. A moved-from object may only be assigned
/// to or destroyed.
class composite_subscription {
public:
    /// A new, live one.
    composite_subscription() : state_(std::make_shared<State>()) {}

    /// One that has ended already.
    static composite_subscription empty() {
        static const composite_subscription ended = [] {
            composite_subscription lifetime;
            lifetime.unsubscribe();
            return lifetime;
        }();
        return ended;
    }

    bool is_subscribed() const noexcept { return state_->live.load(std::memory_order_acquire); }

    /// Ends the lifetime and runs what was added to it; does nothing the second time. What the observers that
    /// end here had captured is destroyed before it returns, or at the end of an emission that is under way.
    void unsubscribe() const {
        if (state_->live.exchange(false)) {
            std::vector<std::function<void()>> teardowns;
            {
                const std::lock_guard<std::mutex> lock(state_->mutex);
                teardowns.swap(state_->teardowns);
            }
            for (const auto& teardown : teardowns) {
                teardown();
            }
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
        std::atomic<bool> live{true};
        std::mutex mutex;
        std::vector<std::function<void()>> teardowns;
    };

    std::shared_ptr<State> state_;
};

namespace details {

/// What one subscription calls, for as long as its lifetime has not ended.
template <class T>
struct Observer {
    explicit Observer(composite_subscription boundTo) : lifetime(std::move(boundTo)) {}
    virtual ~Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    virtual void next(const T& value) const = 0;
    virtual void error(std::exception_ptr error) const = 0;
    virtual void completed() const = 0;

    const composite_subscription lifetime;
};

/// Stands for an error handler that was not given: the program ends.
struct Terminate {
    [[noreturn]] void operator()(const std::exception_ptr&) const noexcept { std::terminate(); }
};

/// Stands for a handler of completion that was not given.
struct Ignore {
    void operator()() const noexcept {}
};

template <class T, class OnNext, class OnError, class OnCompleted>
class CallbackObserver final : public Observer<T> {
    static_assert(std::is_copy_constructible_v<OnNext>, "an observer has to be copyable");
    static_assert(std::is_invocable_v<const OnNext&, const T&>,
                  "an observer takes T or const T&, and is const");
    static_assert(std::is_void_v<std::invoke_result_t<const OnNext&, const T&>>,
                  "an observer returns nothing");
    static_assert(std::is_invocable_v<const OnError&, std::exception_ptr>,
                  "on_error takes a std::exception_ptr");
    static_assert(std::is_invocable_v<const OnCompleted&>, "on_completed takes nothing");

public:
    CallbackObserver(composite_subscription boundTo, OnNext onNext, OnError onError, OnCompleted onCompleted)
        : Observer<T>(std::move(boundTo)), onNext_(std::move(onNext)), onError_(std::move(onError)),
          onCompleted_(std::move(onCompleted)) {}

    void next(const T& value) const override {
        if constexpr (std::is_same_v<OnError, Terminate>) {
            nextOrTerminate(value);
        } else {
            try {
                onNext_(value);
            } catch (...) {
                error(std::current_exception());
            }
        }
    }

    void error(std::exception_ptr error) const override {
        onError_(std::move(error));
        this->lifetime.unsubscribe();
    }

    void completed() const override {
        onCompleted_();
        this->lifetime.unsubscribe();
    }

private:
    /// Ends the program where the exception is thrown, with the stack still there to be looked at.
    void nextOrTerminate(const T& value) const noexcept { onNext_(value); }

    OnNext onNext_;
    OnError onError_;
    OnCompleted onCompleted_;
};

/// What a subject, its subscribers and its observables share: the list of observers. Lists are never changed
/// but replaced, so that an emission walks its own without a lock. Replaced ones are dropped outside the
/// lock: that may destroy what observers have captured, which may come back here.
template <class T>
class Hub {
public:
    using ObserverPtr = std::shared_ptr<const Observer<T>>;

    static std::shared_ptr<Hub> make(composite_subscription lifetime) {
        const auto hub = std::make_shared<Hub>(std::move(lifetime));
        hub->lifetime_.add([weak = std::weak_ptr<Hub>(hub)] {
            if (const auto self = weak.lock()) {
                self->close(Stage::ended);
            }
        });
        return hub;
    }

    explicit Hub(composite_subscription lifetime) : lifetime_(std::move(lifetime)) {}

    const composite_subscription& lifetime() const noexcept { return lifetime_; }
    bool observed() const noexcept { return observed_.load(std::memory_order_acquire); }

    static void subscribe(const std::shared_ptr<Hub>& hub, const ObserverPtr& observer) {
        if (!observer->lifetime.is_subscribed()) {
            return;
        }
        switch (hub->append(observer)) {
        case Stage::open:
            observer->lifetime.add([weak = std::weak_ptr<Hub>(hub), key = observer.get()] {
                if (const auto self = weak.lock()) {
                    self->remove(key);
                }
            });
            break;
        case Stage::completed:
            observer->completed();
            break;
        case Stage::failed:
            observer->error(hub->error_);
            break;
        case Stage::ended:
            observer->lifetime.unsubscribe();
            break;
        }
    }

    /// The hub itself may be gone when the observers return.
    void next(const T& value) {
        if (observed()) {
            forEachLive(snapshot(), [&](const Observer<T>& observer) { observer.next(value); });
        }
    }

    void error(const std::exception_ptr& error) {
        const composite_subscription lifetime = lifetime_;
        forEachLive(close(Stage::failed, error), [&](const Observer<T>& observer) { observer.error(error); });
        lifetime.unsubscribe();
    }

    void completed() {
        const composite_subscription lifetime = lifetime_;
        forEachLive(close(Stage::completed), [](const Observer<T>& observer) { observer.completed(); });
        lifetime.unsubscribe();
    }

private:
    using List = std::vector<ObserverPtr>;
    using ListPtr = std::shared_ptr<const List>;
    enum class Stage { open, completed, failed, ended };

    template <class Action>
    static void forEachLive(const ListPtr& observers, Action action) {
        if (observers) {
            for (const ObserverPtr& observer : *observers) {
                if (observer->lifetime.is_subscribed()) {
                    action(*observer);
                }
            }
        }
    }

    /// The list of the outermost emission that is under way, or else the present one. Only the publisher
    /// comes here.
    ListPtr snapshot() {
        ListPtr list = snapshot_.lock();
        if (!list) {
            const std::lock_guard<std::mutex> lock(mutex_);
            list = list_;
            snapshot_ = list;
        }
        return list;
    }

    Stage append(const ObserverPtr& observer) {
        ListPtr replaced;
        const std::lock_guard<std::mutex> lock(mutex_);
        if (stage_ == Stage::open) {
            auto list = std::make_shared<List>();
            list->reserve((list_ ? list_->size() : 0) + 1);
            if (list_) {
                list->assign(list_->begin(), list_->end());
            }
            list->push_back(observer);
            replaced = replace(std::move(list));
        }
        return stage_;
    }

    void remove(const Observer<T>* observer) {
        ListPtr replaced;
        const std::lock_guard<std::mutex> lock(mutex_);
        if (list_) {
            std::shared_ptr<List> list;
            if (list_->size() > 1) {
                list = std::make_shared<List>();
                list->reserve(list_->size() - 1);
                for (const ObserverPtr& each : *list_) {
                    if (each.get() != observer) {
                        list->push_back(each);
                    }
                }
            }
            replaced = replace(std::move(list));
        }
    }

    /// Takes no observer from now on, and returns those that there were.
    ListPtr close(Stage stage, const std::exception_ptr& error = nullptr) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (stage_ != Stage::open) {
            return nullptr;
        }
        stage_ = stage;
        error_ = error;
        return replace(nullptr);
    }

    ListPtr replace(ListPtr list) {
        observed_.store(list != nullptr, std::memory_order_release);
        list_.swap(list);
        return list;
    }

    const composite_subscription lifetime_;
    std::atomic<bool> observed_{false};
    std::weak_ptr<const List> snapshot_;
    std::mutex mutex_;
    ListPtr list_;
    Stage stage_ = Stage::open;
    std::exception_ptr error_;
};

} // namespace details

namespace subjects {
template <class T>
class subject;
}

/// The publishing end of a subject. Copies and the subject share one lifetime; each keeps the list of
/// observers alive.
template <class T>
class subscriber {
public:
    /// Calls the observers. An exception of one goes to that one's `on_error` and ends it; without an
    /// `on_error` it ends the program. Silent once the lifetime has ended.
    void on_next(const T& value) const { hub_->next(value); }
    /// Hands the error to every observer, and ends them and the subject.
    void on_error(std::exception_ptr error) const { hub_->error(error); }
    /// Tells every observer, and ends them and the subject.
    void on_completed() const { hub_->completed(); }

    bool is_subscribed() const noexcept { return hub_->lifetime().is_subscribed(); }
    /// Ends the lifetime of the subject: the observers are let go, their own lifetimes stay live.
    void unsubscribe() const { hub_->lifetime().unsubscribe(); }
    const composite_subscription& get_subscription() const noexcept { return hub_->lifetime(); }

private:
    friend class subjects::subject<T>;
    explicit subscriber(std::shared_ptr<details::Hub<T>> hub) : hub_(std::move(hub)) {}

    std::shared_ptr<details::Hub<T>> hub_;
};

/// The end of a subject at which observers subscribe; keeps the list of observers alive.
template <class T>
class observable {
public:
    /// Calls `onNext` with every value until `lifetime` ends, and returns `lifetime`. The callable is
    /// copyable, callable as const, takes `T` or `const T&`, and returns nothing. An ended `lifetime`
    /// subscribes nothing; an ended subject ends `lifetime`. Copies the list of observers.
    template <class OnNext, class OnError = details::Terminate, class OnCompleted = details::Ignore>
    composite_subscription subscribe(composite_subscription lifetime, OnNext onNext, OnError onError = {},
                                     OnCompleted onCompleted = {}) const {
        using Callbacks = details::CallbackObserver<T, OnNext, OnError, OnCompleted>;
        details::Hub<T>::subscribe(hub_, std::make_shared<const Callbacks>(lifetime, std::move(onNext),
                                                                           std::move(onError),
                                                                           std::move(onCompleted)));
        return lifetime;
    }

    /// The same with a lifetime of its own, which it returns.
    template <class OnNext, class... Others,
              std::enable_if_t<!std::is_same_v<OnNext, composite_subscription>, int> = 0>
    composite_subscription subscribe(OnNext onNext, Others... others) const {
        return subscribe(composite_subscription(), std::move(onNext), std::move(others)...);
    }

private:
    friend class subjects::subject<T>;
    explicit observable(std::shared_ptr<details::Hub<T>> hub) : hub_(std::move(hub)) {}

    std::shared_ptr<details::Hub<T>> hub_;
};

namespace subjects {

/// A source of values that the program itself publishes: hands each value to all observers. Copies share.
template <class T>
class subject {
public:
    subject() : subject(composite_subscription()) {}
    /// Ends with `lifetime`, and ends it.
    explicit subject(composite_subscription lifetime) : hub_(details::Hub<T>::make(std::move(lifetime))) {}

    subscriber<T> get_subscriber() const { return subscriber<T>(hub_); }
    observable<T> get_observable() const { return observable<T>(hub_); }
    composite_subscription get_subscription() const { return hub_->lifetime(); }
    bool has_observers() const noexcept { return hub_->observed(); }

private:
    std::shared_ptr<details::Hub<T>> hub_;
};

} // namespace subjects
} // namespace zelm_stand_in
} // namespace rxcpp
