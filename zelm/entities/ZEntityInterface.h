#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZGenericObject.h>

#include <memory>

namespace Zelm {

template <class T>
struct CompositeSubscriberStream;

/// A live node of a document: it owns a state, has a name, a parent and children, and tells its subscribers
/// of every new state. `ZEntity` implements all of it; this is what parents, links and the factory see.
///
/// The state of a child is kept as a child of its parent's state too, so that the state of the root is at all
/// times the whole document. Everything runs on the caller's thread, notifications included; an entity tree
/// belongs to one thread at a time. Operations that notify do so last, and a subscriber may change or destroy
/// entities, the notifying one included.
struct ZELM_EXPORT ZEntityInterface {
    /// "_dirt", the metadata key of a dirty mark.
    static constexpr ZStringLiteral Dirty{"_dirt", 5};

protected:
    /// Marks this entity for recalculation, unless that is going on. Tells nobody.
    virtual void makeDirty() = 0;
    /// Recalculates what this entity depends on, as far as it is dirty, and then this entity if it is dirty.
    virtual void makeClean() = 0;

public:
    virtual bool isDirty() const = 0;

protected:
    virtual void recalculate() = 0;

public:
    /// To be called on the root once a loaded state is in place: restores dirty marks and connects links.
    virtual void onPostLoad() = 0;
    /// Makes the state fit to be saved: dirty marks and link paths go into the metadata.
    virtual void onPreSave() = 0;
    /// Takes the new state of the child `childName` into the own state, and publishes that.
    virtual void onNext(ZGenericObject state, const ZString& childName) = 0;
    /// An entity counts as a descendant of itself.
    virtual bool isDescendentOf(ZEntityInterface* other) const = 0;
    /// Cuts the links here and below that lead to entities outside of `root`.
    virtual void removeExternalLinks(ZEntityInterface* root) = 0;
    /// The same for the whole life of the entity.
    virtual ZString name() const = 0;
    virtual ZString getObjectType() const = 0;
    /// "/" for a root, "/a/b" for the child "b" of its child "a"; the name of the root is no part of it.
    virtual ZString getPath() const = 0;
    /// Null for a root.
    virtual const ZEntityInterface* parent() const = 0;
    virtual ZEntityInterface* parent() = 0;
    virtual const ZEntityInterface* getRoot() const = 0;
    /// The first child of this name. Throws `std::logic_error` `Child "name"  not found`.
    virtual std::weak_ptr<ZEntityInterface> getChild(const ZString& name) const = 0;
    /// Whether this is a link.
    virtual bool isObserver() const = 0;
    /// Where new states are published. Complete in `<zelm/entities/CompositeSubscriberStream.h>`.
    virtual CompositeSubscriberStream<ZGenericObject>& stream() = 0;
    /// The state, fit to be saved: runs onPreSave() first.
    virtual ZGenericObject genericState() = 0;
    /// Takes a state and makes the entities below fit it. Tells nobody and resolves no links.
    virtual void setState(ZGenericObject state) = 0;
    /// Hands new states on to `parent` from now on, or to nobody if it is null; for the parent itself to
    /// call, which keeps the child. The parent must not be this entity or one below it. An implementation
    /// subscribes by `connect` of its stream.
    virtual void setParent(ZEntityInterface* parent) = 0;
    virtual ~ZEntityInterface();

protected:
    /// makeClean() of another entity.
    static void clean(ZEntityInterface& entity) { entity.makeClean(); }
};

} // namespace Zelm
