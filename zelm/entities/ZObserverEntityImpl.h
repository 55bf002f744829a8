#pragma once

#include <zelm/entities/EntityActivity.h>
#include <zelm/entities/LinkPath.h>
#include <zelm/entities/ZEntityBody.h>
#include <zelm/entities/ZObserverEntity.h>

#include <rxcpp/rx.hpp>

#include <utility>

namespace Zelm {

namespace Private {

/// The path in the metadata of a link; empty if what stands there is no text.
ZELM_EXPORT ZString readableLinkedPath(const ZObserver& link);

/// Where objects hold several links to objects that hold several links, the ways of a change through a
/// document multiply. No link hands on one change more often than this.
constexpr int kMostTimesInWave = 1000;
/// Throws `std::length_error` "Links hand on a change too often.".
[[noreturn]] ZELM_EXPORT void throwTooManyWays();

/// Follows a path from `start`, see ZObserverEntity::findEntity().
ZELM_EXPORT std::weak_ptr<ZEntityInterface> findEntity(ZEntityInterface& start, const ZString& path);

} // namespace Private

template <class T>
struct ZObserverEntity<T>::Connection {
    std::weak_ptr<ZEntityInterface> observed;
    rxcpp::composite_subscription observedSubscription = rxcpp::composite_subscription::empty();
    /// The path that came with the last state, until the next onPostLoad() or connection: saving before the
    /// link was connected takes it out of the metadata.
    ZString loadedPath;
    /// The change by which it came out that the target depends on this link.
    std::uint64_t circularWave = Private::NotificationWave::kNone;
    /// The change that came last, and how often.
    std::uint64_t lastWave = Private::NotificationWave::kNone;
    int timesInWave = 0;
};

template <class T>
ZObserverEntity<T>::ZObserverEntity(ZString name, ZObserver state)
    : Base(std::move(name), std::move(state)), connection_(std::make_unique<Connection>()) {
    connection_->loadedPath = Private::readableLinkedPath(this->body().state);
}

template <class T>
ZObserverEntity<T>::~ZObserverEntity() {
    Private::endLifetime(connection_->observedSubscription);
}

template <class T>
void ZObserverEntity<T>::setState(ZGenericObject object) {
    const ZPropertyHandle& present = std::as_const(this->body().state).propertyHandle();
    const bool isPresent = object.sharedNode() == present.sharedNode();
    Base::setState(std::move(object));
    ZString path = Private::readableLinkedPath(this->body().state);
    if (!isPresent || !path.empty()) {
        connection_->loadedPath = std::move(path);
    }
}

template <class T>
void ZObserverEntity<T>::setObserved(std::weak_ptr<ZEntityInterface> target) {
    const auto observed = target.lock();
    if (!observed || this->isDescendentOf(observed.get())) {
        return;
    }
    auto& body = this->body();
    const Private::EntityActivities::Scope loading(body.activities, Private::EntityActivity::Loading);
    const ZGenericObject state = observed->genericState();
    if (loading.entityIsGone()) {
        return;
    }
    auto subscription =
        observed->stream().connect([this](ZGenericObject newState) { follow(std::move(newState)); });
    Private::endLifetime(connection_->observedSubscription);
    connection_->observedSubscription = std::move(subscription);
    connection_->observed = observed;

    // As by updateState(), but in a wave that follow() knows.
    const std::uint64_t wave = Private::NotificationWave::newNumber();
    const Private::NotificationWave connecting(wave);
    const Private::EntityActivities::Scope forwarding(body.activities, Private::EntityActivity::Forwarding,
                                                      wave);
    const ZObserver former = body.state;
    ZObserver connected = former;
    static_cast<ZObject&>(connected).insertOrReplaceChild(ZObserver::Link, state);
    setState(static_cast<ZGenericObject>(connected));
    connection_->loadedPath = ZString();
    body.stream.publish(body.state);
    if (!forwarding.entityIsGone() && connection_->circularWave == wave) {
        setState(static_cast<ZGenericObject>(former));
        connection_->loadedPath = ZString();
        body.stream.publish(body.state);
    }
}

template <class T>
std::weak_ptr<ZEntityInterface> ZObserverEntity<T>::observed() const {
    return connection_->observed;
}

template <class T>
void ZObserverEntity<T>::follow(ZGenericObject state) {
    const std::uint64_t wave = Private::NotificationWave::currentOrNew();
    auto& activities = this->body().activities;
    if (activities.isUnderWay(Private::EntityActivity::Forwarding, wave)) {
        connection_->circularWave = wave;
        Private::endLifetime(connection_->observedSubscription);
        return;
    }
    connection_->timesInWave = connection_->lastWave == wave ? connection_->timesInWave + 1 : 1;
    connection_->lastWave = wave;
    if (connection_->timesInWave > Private::kMostTimesInWave) {
        Private::throwTooManyWays();
    }
    const Private::EntityActivities::Scope forwarding(activities, Private::EntityActivity::Forwarding, wave);
    this->onNext(std::move(state), ZObserver::Link);
}

template <class T>
std::weak_ptr<ZEntityInterface> ZObserverEntity<T>::findEntity(const ZString& path) {
    return Private::findEntity(*this, path);
}

template <class T>
void ZObserverEntity<T>::onPostLoad() {
    const ZString loaded = std::exchange(connection_->loadedPath, ZString());
    if (!connection_->observed.expired()) {
        return;
    }
    const ZString stored = Private::readableLinkedPath(this->body().state);
    const ZString& path = stored.empty() ? loaded : stored;
    if (!path.empty()) {
        setObserved(findEntity(path));
    }
}

template <class T>
void ZObserverEntity<T>::onPreSave() {
    auto& activities = this->body().activities;
    if (activities.isUnderWay(Private::EntityActivity::Saving)) {
        return;
    }
    const Private::EntityActivities::Scope saving(activities, Private::EntityActivity::Saving);
    const auto target = connection_->observed.lock();
    const bool isInDocument = target && target->getRoot() == this->getRoot();
    ZObserver& state = this->body().state;
    state.setLinkedPath(isInDocument ? GetRelativePath(this->getPath(), target->getPath()) : ZString());
    state.setLinkType(T::objectType());
    this->publishState();
}

template <class T>
void ZObserverEntity<T>::removeExternalLinks(ZEntityInterface* root) {
    const auto target = connection_->observed.lock();
    if (target && target->isDescendentOf(root)) {
        return;
    }
    connection_->observed.reset();
    Private::endLifetime(connection_->observedSubscription);
}

template <class T>
bool ZObserverEntity<T>::isObserver() const {
    return true;
}

template <class T>
void ZObserverEntity<T>::makeClean() {
    auto& activities = this->body().activities;
    if (activities.isUnderWay(Private::EntityActivity::Cleaning)) {
        return;
    }
    const Private::EntityActivities::Scope cleaning(activities, Private::EntityActivity::Cleaning);
    const auto target = connection_->observed.lock();
    if (target && target->isDirty()) {
        this->clean(*target);
    }
    if (!cleaning.entityIsGone()) {
        this->recalculateIfDirty();
    }
}

} // namespace Zelm
