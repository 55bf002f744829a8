#pragma once

#include <zelm/Export.h>
#include <zelm/entities/EntityActivity.h>
#include <zelm/tree/ZGenericObject.h>

#include <rxcpp/rx.hpp>

#include <cstdint>
#include <exception>
#include <memory>
#include <utility>

namespace Zelm {

namespace Private {

/// Ties a program to a library that was compiled with the same RxCpp: with the other one it does not link.
/// The objects of a stream are made in one and used in the other.
ZELM_EXPORT void requireSameRxCpp(const rxcpp::composite_subscription& anyOne);
[[gnu::used]] static void (*const kRequireSameRxCpp)(const rxcpp::composite_subscription&) = requireSameRxCpp;

/// Ends a lifetime also where memory is short: its observers are silent then, although what they captured may
/// stay in a list until that is next renewed.
inline void endLifetime(const rxcpp::composite_subscription& lifetime) noexcept {
    try {
        lifetime.unsubscribe();
    } catch (...) {
        // RxCpp marks the lifetime first and makes a new list afterwards.
    }
}

} // namespace Private

/// The outlet of an entity. Values reach the subscribers on the calling thread, in order of subscription,
/// before publish() returns.
///
/// RxCpp ends the program when a subscriber throws or finds no memory to subscribe, and when a value is
/// published while another one is still going round, the later subscribers see the new value first and the
/// old one last. With publish() and subscribe() neither does a handler end it nor an old value come last; who
/// subscribes at the subject itself gets RxCpp's behaviour.
///
/// One thread at a time publishes; any thread may subscribe and unsubscribe. `T` is a cheap handle that has a
/// default value.
template <class T>
struct CompositeSubscriberStream {
    rxcpp::subjects::subject<T> subject;
    /// Kept so that publishing needs no lookup. Values go in by publish() alone.
    rxcpp::subscriber<T> subscriber;

    CompositeSubscriberStream();
    CompositeSubscriberStream(const CompositeSubscriberStream&) = delete;
    CompositeSubscriberStream& operator=(const CompositeSubscriberStream&) = delete;

    /// Does nothing once the subscriber's lifetime has ended. Rethrows the first exception that came out of a
    /// handler of subscribe(), after all subscribers have been served. The stream may be destroyed meanwhile.
    void publish(T value);

    /// Calls `handler(T)` with each value until the lifetime that is returned ends; destroying it does not
    /// end it. While values are published from within handlers, each call gets the newest one. An exception
    /// reaches the one who published. What is subscribed from within a handler begins with the first value
    /// after the outermost publication under way.
    template <class Handler>
    rxcpp::composite_subscription subscribe(Handler handler);

    /// subscribe() for what hands values on, as entities do to their parents and links to theirs: it belongs
    /// to the change that it hands on, so that a circle of links comes to its end. What other handlers
    /// publish is a change of its own.
    template <class Handler>
    rxcpp::composite_subscription connect(Handler handler);

private:
    template <class Derived, class State>
    friend class ZEntity;

    /// Lets the subscribers that are still to be called get `value`; nobody else is told.
    template <class Value>
    void renew(const Value& value) {
        if (publications_->failure) {
            publications_->newest = T(value);
        }
    }

    /// The publications that are under way; they may outlive the stream.
    struct Publications {
        /// The newest value while something is published.
        T newest;
        /// Where the innermost publication keeps its first failure; null while there is none.
        std::exception_ptr* failure = nullptr;
        /// To which the innermost publication belongs.
        std::uint64_t wave = Private::NotificationWave::kNone;
    };
    class Publication;

    std::shared_ptr<Publications> publications_ = std::make_shared<Publications>();
};

/// One call of publish().
template <class T>
class CompositeSubscriberStream<T>::Publication {
public:
    Publication(std::shared_ptr<Publications> all, const T& value)
        : all_(std::move(all)), outer_(all_->failure), outerWave_(all_->wave) {
        all_->newest = value;
        all_->failure = &failure_;
        all_->wave = Private::NotificationWave::currentOrNew();
    }
    Publication(const Publication&) = delete;
    Publication& operator=(const Publication&) = delete;
    ~Publication() {
        all_->failure = outer_;
        all_->wave = outerWave_;
        if (!outer_) {
            const T released = std::exchange(all_->newest, T());
        }
    }

    const std::exception_ptr& failure() const { return failure_; }

private:
    std::shared_ptr<Publications> all_;
    std::exception_ptr* outer_;
    std::uint64_t outerWave_;
    std::exception_ptr failure_;
};

template <class T>
CompositeSubscriberStream<T>::CompositeSubscriberStream()
    : subject(rxcpp::composite_subscription()), subscriber(subject.get_subscriber()) {}

template <class T>
void CompositeSubscriberStream<T>::publish(T value) {
    if (!subscriber.is_subscribed()) {
        return;
    }
    const Publication publication(publications_, value);
    const Private::NotificationWave apart(Private::NotificationWave::kNone);
    subscriber.on_next(std::move(value));
    if (publication.failure()) {
        std::rethrow_exception(publication.failure());
    }
}

template <class T>
template <class Handler>
rxcpp::composite_subscription CompositeSubscriberStream<T>::subscribe(Handler handler) {
    return subject.get_observable().subscribe(
        rxcpp::composite_subscription(),
        [publications = publications_, handler = std::move(handler)](const T& value) {
            if (!publications->failure) {
                handler(value);
                return;
            }
            try {
                handler(T(publications->newest));
            } catch (...) {
                if (!*publications->failure) {
                    *publications->failure = std::current_exception();
                }
            }
        });
}

template <class T>
template <class Handler>
rxcpp::composite_subscription CompositeSubscriberStream<T>::connect(Handler handler) {
    return subscribe([publications = publications_.get(), handler = std::move(handler)](T value) {
        const Private::NotificationWave wave(publications->wave);
        handler(std::move(value));
    });
}

extern template struct ZELM_EXPORT CompositeSubscriberStream<ZGenericObject>;

} // namespace Zelm
