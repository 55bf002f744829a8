#pragma once

#include <zelm/Export.h>
#include <zelm/entities/ZEntityInterface.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZGenericObject.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Zelm {

class ZEntityFactory;

template <class State>
struct ZEntityBody;

/// An entity with the state `State`, a class derived from `ZObject` with a static `objectType()` and a
/// constructor from `ZGenericObject` that refuses objects of another type. `Derived` is the most derived
/// class:
///
///     class FilterEntity : public ZEntity<FilterEntity, Filter> {
///     public:
///         FilterEntity(ZString name, Filter state) : ZEntity(std::move(name), std::move(state)) {}
///     };
///     FilterEntity::registerEntityType();
///
/// Each type of entity that a document may hold is registered before the document is loaded.
///
/// The program includes `<zelm/entities/ZEntityImpl.h>` where the class is defined, for the definitions of
/// what is declared here.
///
/// Each child of the state that is an entity by its type becomes a child entity; those that lie in folders or
/// in plain data become children of this entity too. An entity is kept, with its subscribers, as long as the
/// state has a child of its name and type. A child that came from a folder stores its changes directly in
/// this state, under its own name, and the copy in the folder stays as it was: when a later state is applied,
/// the one whose name comes last in byte order wins.
///
/// Storing a child's new state costs the logarithm of the number of children at each level up to the root.
/// Objects in objects more than 1000 levels deep are refused with `std::length_error` "Entities are nested
/// too deeply.".
template <class Derived, class State>
class ZEntity : public ZEntityInterface {
public:
    using StateType = State;

    /// The object type of the state.
    static ZString objectType();
    /// Tells the factory how to make entities of this type and links to them, by `Derived(ZString, State)`.
    /// Every construction does the same, so that this is needed only to load a document before the first
    /// one. A maker of another kind in the factory is replaced.
    static void registerEntityType();
    static void registerEntityType(ZEntityFactory& factory);

    ZEntity(const ZEntity&) = delete;
    ZEntity& operator=(const ZEntity&) = delete;
    ~ZEntity() override;

    /// A copy of the state, fit to be saved: runs onPreSave() first. The entity must outlive the call.
    State state();
    /// A copy of the state as it is.
    operator State() const;
    /// Takes a state, runs onPostLoad() and publishes.
    void setState(State state);
    /// Lets `change` work on a copy of the state, takes that, and publishes; does nothing if `change` throws.
    /// A child that comes out changed takes its new state, but does not publish: links to it follow only what
    /// is changed at the child itself.
    void updateState(std::function<void(State*)> change);

    bool hasChild(std::weak_ptr<ZEntityInterface> child) const;
    /// The child `name`, null if it is no `Entity`. Throws as getChild() does.
    template <class Entity>
    std::shared_ptr<Entity> child(const ZString& name) const {
        return std::dynamic_pointer_cast<Entity>(getChild(name).lock());
    }
    /// Takes a child out of the document and publishes. Throws `std::logic_error` `Child "name"  not found`.
    std::shared_ptr<ZEntityInterface> removeChild(const ZString& name);
    /// Drops all children that are links. Publishes nothing.
    void deleteAllObservers();
    /// Cuts the links here and below that lead out of this entity.
    void removeExternalLinks();

    bool isDirty() const override;
    void onPostLoad() override;
    void onPreSave() override;
    void onNext(ZGenericObject state, const ZString& childName) override;
    bool isDescendentOf(ZEntityInterface* other) const override;
    void removeExternalLinks(ZEntityInterface* root) override;
    ZString name() const override;
    ZString getObjectType() const override;
    ZString getPath() const override;
    const ZEntityInterface* parent() const override;
    ZEntityInterface* parent() override;
    const ZEntityInterface* getRoot() const override;
    std::weak_ptr<ZEntityInterface> getChild(const ZString& name) const override;
    bool isObserver() const override;
    CompositeSubscriberStream<ZGenericObject>& stream() override;
    ZGenericObject genericState() override;
    /// Throws what the constructor of `State` throws, and then nothing has changed; or what the factory
    /// throws, and then the state is the new one, but the children are still the old ones and some of the
    /// new.
    void setState(ZGenericObject object) override;
    void setParent(ZEntityInterface* parent) override;

protected:
    /// Makes the children of `state`. Throws `std::invalid_argument` "Unnamed ZEntity" for an empty name, and
    /// what setState() throws.
    ZEntity(ZString name, State state);

    void makeDirty() override;
    /// If recalculate() throws, the entity is dirty again.
    void makeClean() override;
    /// Does nothing here. What an override changes by updateState(), of this entity or of children, reaches
    /// the root before makeClean() returns; marking the entity dirty has no effect meanwhile.
    void recalculate() override;

    /// Cleans the entity itself, without what it depends on.
    void recalculateIfDirty();
    /// Makes the children fit the state.
    void updateEntityTree();
    /// The entities for a list of child objects, those that exist already as well as new ones, in the order
    /// of the list. Folders and plain data stand for what lies in them.
    std::vector<std::shared_ptr<ZEntityInterface>>
    processChildObjects(std::vector<std::pair<ZString, ZGenericObject>> objects);
    /// Whether the factory makes entities of such objects; throws as ZEntityFactory::canMakeEntity does.
    bool isChildEntity(ZGenericObject object);

    /// Publishes the state as a change of its own.
    void publishState();

    /// Complete in `<zelm/entities/ZEntityImpl.h>`.
    ZEntityBody<State>& body() const noexcept {
        body_->childNames.share();
        return *body_;
    }

private:
    /// Whether the metadata say that the entity was dirty when it was saved.
    bool hasDirtyMark() const;

    std::unique_ptr<ZEntityBody<State>> body_;
};

} // namespace Zelm
