#pragma once

#include <zelm/Export.h>
#include <zelm/entities/LinkPath.h>
#include <zelm/entities/ZEntity.h>
#include <zelm/entities/ZEntityInterface.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZGenericObject.h>
#include <zelm/tree/ZObserver.h>

#include <memory>

namespace Zelm {

/// A link: an entity that stands for another one, as a rule a `T`, somewhere else in the document. While it
/// is connected, each new state of the target becomes the child "Link" of the link's state, and so climbs to
/// the root by way of the link's parent too. A link does not keep its target alive.
///
/// Saving writes the way to a target in the same document into the metadata, and removes it for any other
/// target or none; onPostLoad() finds the target by it again. A link whose target cannot be found keeps the
/// copy of its state that it has.
///
/// A link is not connected to itself or to an entity above it. Where links form a longer circle, the one that
/// is connected last, or that a change comes back to, stops following its target: it keeps the copy that it
/// has, and still leads there when it is saved. Where the ways of a change multiply, so that it comes to one
/// link more than 1000 times, it ends in `std::length_error` "Links hand on a change too often.".
///
/// Setting another state on a connected link does not lead it to another target.
template <class T>
class ZObserverEntity : public ZEntity<ZObserverEntity<T>, ZObserver> {
    using Base = ZEntity<ZObserverEntity<T>, ZObserver>;

public:
    ZObserverEntity(ZString name, ZObserver state);
    ~ZObserverEntity() override;

    /// Connects the link to a target in place of a former one, and publishes the target's state as its own.
    /// Does nothing for a target that is gone, the link itself, or one above it.
    void setObserved(std::weak_ptr<ZEntityInterface> target);
    /// The target; empty while the link is not connected.
    std::weak_ptr<ZEntityInterface> observed() const;
    /// Follows a path of names and ".." from this link, or from the root if it begins with "/". Empty if a
    /// name on the way is missing. Only a name leads to an entity: a ".." at the end gives the last named one
    /// before it.
    std::weak_ptr<ZEntityInterface> findEntity(const ZString& path);

    using Base::removeExternalLinks;
    using Base::setState;

    void onPostLoad() override;
    /// Publishes, also if nothing has changed: whoever is told of it may not take it for a change.
    void onPreSave() override;
    /// Cuts the link if it leads to an entity outside of `root`; its state stays.
    void removeExternalLinks(ZEntityInterface* root) override;
    bool isObserver() const override;
    void setState(ZGenericObject object) override;

protected:
    /// Cleans the target, then the link itself.
    void makeClean() override;

private:
    struct Connection;

    /// Takes the new state of the target.
    void follow(ZGenericObject state);

    std::unique_ptr<Connection> connection_;
};

class ZVariableEntity;
extern template class ZELM_EXPORT ZEntity<ZObserverEntity<ZVariableEntity>, ZObserver>;
extern template class ZELM_EXPORT ZObserverEntity<ZVariableEntity>;

} // namespace Zelm
