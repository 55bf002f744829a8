#pragma once

#include <zelm/entities/ChildEntities.h>
#include <zelm/entities/CompositeSubscriberStream.h>
#include <zelm/entities/EntityActivity.h>
#include <zelm/entities/ZEntityInterface.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZDirty.h>
#include <zelm/tree/ZGenericObject.h>

#include <rxcpp/rx.hpp>

#include <memory>
#include <utility>
#include <vector>

namespace Zelm {

/// All that an entity holds.
template <class State>
struct ZEntityBody {
    ZEntityBody(ZEntityInterface* entity, ZString entityName, State entityState)
        : state(std::move(entityState)), name(std::move(entityName)), owner(entity) {}
    ZEntityBody(const ZEntityBody&) = delete;
    ZEntityBody& operator=(const ZEntityBody&) = delete;
    ~ZEntityBody() {
        Private::endLifetime(parentSubscription);
        Private::detachChildEntities(children, owner);
    }

    State state;
    CompositeSubscriberStream<ZGenericObject> stream;
    Private::ZDirty dirty;
    std::vector<std::shared_ptr<ZEntityInterface>> children;
    /// Null for a root.
    ZEntityInterface* parent = nullptr;
    /// Hands new states on to the parent.
    rxcpp::composite_subscription parentSubscription = rxcpp::composite_subscription::empty();
    /// Not empty. Never another one: parents keep note of where a name stands in their list.
    const ZString name;

    ZEntityInterface* owner;
    /// Whether all of `state` was made from its tree, so that making it again would change nothing.
    bool stateIsMadeFromTree = false;
    Private::EntityActivities activities;
    Private::ChildNames childNames;
};

} // namespace Zelm
