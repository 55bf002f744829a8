#pragma once

/// The definitions of `ZEntity` and `ZObserverEntity`, for programs with entity types of their own.

#include <zelm/entities/ChildEntities.h>
#include <zelm/entities/EntityActivity.h>
#include <zelm/entities/ZEntity.h>
#include <zelm/entities/ZEntityBody.h>
#include <zelm/entities/ZEntityFactory.h>
#include <zelm/entities/ZObserverEntity.h>
#include <zelm/entities/ZObserverEntityImpl.h>
#include <zelm/tree/ZObject.h>

#include <algorithm>
#include <cassert>
#include <type_traits>

namespace Zelm {

template <class Derived, class State>
ZString ZEntity<Derived, State>::objectType() {
    static const ZString type = State::objectType();
    return type;
}

template <class Derived, class State>
void ZEntity<Derived, State>::registerEntityType() {
    registerEntityType(ZEntityFactory::Instance());
}

template <class Derived, class State>
void ZEntity<Derived, State>::registerEntityType([[maybe_unused]] ZEntityFactory& factory) {
    // The factory makes links by the type of their target.
    if constexpr (!std::is_same_v<State, ZObserver>) {
        factory.registerMakers(
            objectType(),
            [](ZString name, ZGenericObject object) -> std::shared_ptr<ZEntityInterface> {
                return std::make_shared<Derived>(std::move(name), State(std::move(object)));
            },
            [](ZString name, ZGenericObject object) -> std::shared_ptr<ZEntityInterface> {
                return std::make_shared<ZObserverEntity<Derived>>(std::move(name),
                                                                  ZObserver(std::move(object)));
            });
    }
}

template <class Derived, class State>
ZEntity<Derived, State>::ZEntity(ZString name, State state) {
    registerEntityType();
    if (name.empty()) {
        Private::throwUnnamedEntity();
    }
    body_ = std::make_unique<ZEntityBody<State>>(this, std::move(name), std::move(state));
    ZEntity::setState(static_cast<ZGenericObject>(body_->state));
}

template <class Derived, class State>
ZEntity<Derived, State>::~ZEntity() = default;

template <class Derived, class State>
State ZEntity<Derived, State>::state() {
    onPreSave();
    return body_->state;
}

template <class Derived, class State>
ZEntity<Derived, State>::operator State() const {
    return body_->state;
}

template <class Derived, class State>
ZGenericObject ZEntity<Derived, State>::genericState() {
    onPreSave();
    return body_->state;
}

template <class Derived, class State>
void ZEntity<Derived, State>::setState(State state) {
    const Private::EntityActivities::Scope loading(body_->activities, Private::EntityActivity::Loading);
    setState(static_cast<ZGenericObject>(state));
    onPostLoad();
    if (!loading.entityIsGone()) {
        publishState();
    }
}

template <class Derived, class State>
void ZEntity<Derived, State>::updateState(std::function<void(State*)> change) {
    State changed = body_->state;
    change(&changed);
    setState(static_cast<ZGenericObject>(changed));
    publishState();
}

template <class Derived, class State>
void ZEntity<Derived, State>::setState(ZGenericObject object) {
    const ZPropertyHandle& present = static_cast<const State&>(body_->state).propertyHandle();
    const bool isPresent = body_->stateIsMadeFromTree && object.sharedNode() == present.sharedNode() &&
                           object.getName() == present.getName();
    const bool isLink = object.node().objectType() == ZObserver::objectType();
    if (!isPresent) {
        body_->state = State(std::move(object));
        body_->stateIsMadeFromTree = true;
        body_->stream.renew(present);
    }
    if (!isLink) {
        updateEntityTree();
    }
}

template <class Derived, class State>
void ZEntity<Derived, State>::updateEntityTree() {
    Private::ChildEntityPlacement placement(*this, body_->children, body_->childNames);
    // A child that publishes when it takes its state changes the state of this entity meanwhile.
    const ZPropertyHandle state = static_cast<const State&>(body_->state).propertyHandle();
    placement.placeChildrenOf(state);
    Private::replaceChildEntities(body_->children, body_->childNames, placement.takeResult(), this);
}

template <class Derived, class State>
std::vector<std::shared_ptr<ZEntityInterface>>
ZEntity<Derived, State>::processChildObjects(std::vector<std::pair<ZString, ZGenericObject>> objects) {
    Private::ChildEntityPlacement placement(*this, body_->children, body_->childNames);
    for (auto& [name, object] : objects) {
        placement.place(name, std::move(object));
    }
    return placement.takeResult();
}

template <class Derived, class State>
bool ZEntity<Derived, State>::isChildEntity(ZGenericObject object) {
    return ZEntityFactory::Instance().canMakeEntity(std::move(object));
}

template <class Derived, class State>
void ZEntity<Derived, State>::publishState() {
    const Private::NotificationWave apart(Private::NotificationWave::kNone);
    body_->stream.publish(body_->state);
}

template <class Derived, class State>
void ZEntity<Derived, State>::onNext(ZGenericObject state, const ZString& childName) {
    ZObject& own = body_->state;
    const auto* present = std::as_const(own).propertyHandle().node().children().find(childName);
    // A link tells of every saving.
    if (!present || *present != state.sharedNode()) {
        own.insertOrReplaceChild(childName, std::move(state));
        body_->stateIsMadeFromTree = false;
    }
    body_->stream.publish(own);
}

template <class Derived, class State>
void ZEntity<Derived, State>::setParent(ZEntityInterface* parent) {
    assert(!parent || !parent->isDescendentOf(this));
    auto subscription = rxcpp::composite_subscription::empty();
    if (parent) {
        subscription = body_->stream.connect(
            [this](ZGenericObject state) { body_->parent->onNext(std::move(state), name()); });
    }
    Private::endLifetime(body_->parentSubscription);
    body_->parentSubscription = std::move(subscription);
    body_->parent = parent;
}

template <class Derived, class State>
bool ZEntity<Derived, State>::hasChild(std::weak_ptr<ZEntityInterface> child) const {
    const auto sought = child.lock();
    const auto& children = body_->children;
    return sought && std::find(children.begin(), children.end(), sought) != children.end();
}

template <class Derived, class State>
std::weak_ptr<ZEntityInterface> ZEntity<Derived, State>::getChild(const ZString& name) const {
    const auto child = body_->childNames.find(body_->children, name);
    if (!child) {
        Private::throwChildEntityNotFound(name);
    }
    return child;
}

template <class Derived, class State>
std::shared_ptr<ZEntityInterface> ZEntity<Derived, State>::removeChild(const ZString& name) {
    const auto child = getChild(name).lock();
    static_cast<ZObject&>(body_->state).deleteChild(child->name());
    body_->stateIsMadeFromTree = false;
    child->setParent(nullptr);
    auto& children = body_->children;
    children.erase(std::find(children.begin(), children.end(), child));
    body_->childNames.forget();
    publishState();
    return child;
}

template <class Derived, class State>
void ZEntity<Derived, State>::deleteAllObservers() {
    Private::EntityList kept;
    std::vector<ZString> dropped;
    for (const auto& child : body_->children) {
        if (child->isObserver()) {
            dropped.push_back(child->name());
        } else {
            kept.push_back(child);
        }
    }
    if (dropped.empty()) {
        return;
    }
    static_cast<ZObject&>(body_->state).mutate([&](ZMutablePropertyHandle& own) {
        for (const ZString& name : dropped) {
            own.eraseChild(name);
        }
    });
    body_->stateIsMadeFromTree = false;
    body_->stream.renew(static_cast<const State&>(body_->state).propertyHandle());
    Private::replaceChildEntities(body_->children, body_->childNames, std::move(kept), this);
}

template <class Derived, class State>
void ZEntity<Derived, State>::removeExternalLinks() {
    removeExternalLinks(this);
}

template <class Derived, class State>
void ZEntity<Derived, State>::removeExternalLinks(ZEntityInterface* root) {
    const auto children = body_->children;
    for (const auto& child : children) {
        child->removeExternalLinks(root);
    }
}

template <class Derived, class State>
void ZEntity<Derived, State>::makeDirty() {
    body_->dirty.try_makeDirty();
}

template <class Derived, class State>
bool ZEntity<Derived, State>::isDirty() const {
    return body_->dirty.isDirty();
}

template <class Derived, class State>
void ZEntity<Derived, State>::makeClean() {
    if (body_->activities.isUnderWay(Private::EntityActivity::Cleaning)) {
        return;
    }
    const Private::EntityActivities::Scope cleaning(body_->activities, Private::EntityActivity::Cleaning);
    const auto children = body_->children;
    for (const auto& child : children) {
        if (child->isDirty()) {
            clean(*child);
        }
    }
    if (!cleaning.entityIsGone()) {
        recalculateIfDirty();
    }
}

template <class Derived, class State>
void ZEntity<Derived, State>::recalculateIfDirty() {
    if (!isDirty()) {
        return;
    }
    const Private::EntityActivities::Scope cleaning(body_->activities, Private::EntityActivity::Cleaning);
    body_->dirty.setUpdating();
    try {
        recalculate();
    } catch (...) {
        if (!cleaning.entityIsGone()) {
            body_->dirty.setDirty();
        }
        throw;
    }
    if (!cleaning.entityIsGone()) {
        body_->dirty.setClean();
    }
}

template <class Derived, class State>
void ZEntity<Derived, State>::recalculate() {}

template <class Derived, class State>
void ZEntity<Derived, State>::onPreSave() {
    if (body_->activities.isUnderWay(Private::EntityActivity::Saving)) {
        return;
    }
    const Private::EntityActivities::Scope saving(body_->activities, Private::EntityActivity::Saving);
    const auto children = body_->children;
    for (const auto& child : children) {
        child->onPreSave();
    }
    if (saving.entityIsGone() || !isDirty() || hasDirtyMark()) {
        return;
    }
    ZObjectMetadata metadata = body_->state.getMetadata();
    static_cast<ZObject&>(metadata).setProperty(Dirty, Variant(true));
    body_->state.setMetadata(std::move(metadata));
    body_->stateIsMadeFromTree = false;
    publishState();
}

template <class Derived, class State>
bool ZEntity<Derived, State>::hasDirtyMark() const {
    const ZObject& state = body_->state;
    if (!state.hasChild(ZObjectMetadata::MetadataFolder)) {
        return false;
    }
    const ZObjectMetadata metadata = state.getMetadata();
    return static_cast<const ZObject&>(metadata).getChildBoolWithDefault(Dirty, false);
}

template <class Derived, class State>
void ZEntity<Derived, State>::onPostLoad() {
    const Private::EntityActivities::Scope loading(body_->activities, Private::EntityActivity::Loading);
    const auto children = body_->children;
    for (const auto& child : children) {
        child->onPostLoad();
    }
    if (!loading.entityIsGone() && hasDirtyMark()) {
        body_->dirty.try_makeDirty();
    }
}

template <class Derived, class State>
bool ZEntity<Derived, State>::isDescendentOf(ZEntityInterface* other) const {
    return this == other || (body_->parent && body_->parent->isDescendentOf(other));
}

template <class Derived, class State>
ZString ZEntity<Derived, State>::name() const {
    return body_->name;
}

template <class Derived, class State>
ZString ZEntity<Derived, State>::getObjectType() const {
    return body_->state.getObjectType();
}

template <class Derived, class State>
ZString ZEntity<Derived, State>::getPath() const {
    if (!body_->parent) {
        return "/";
    }
    ZString path = body_->parent->getPath();
    if (!path.ends_with("/")) {
        path += "/";
    }
    return path + name();
}

template <class Derived, class State>
const ZEntityInterface* ZEntity<Derived, State>::parent() const {
    return body_->parent;
}

template <class Derived, class State>
ZEntityInterface* ZEntity<Derived, State>::parent() {
    return body_->parent;
}

template <class Derived, class State>
const ZEntityInterface* ZEntity<Derived, State>::getRoot() const {
    return body_->parent ? static_cast<const ZEntityInterface*>(body_->parent)->getRoot() : this;
}

template <class Derived, class State>
bool ZEntity<Derived, State>::isObserver() const {
    return false;
}

template <class Derived, class State>
CompositeSubscriberStream<ZGenericObject>& ZEntity<Derived, State>::stream() {
    return body_->stream;
}

} // namespace Zelm
