#pragma once

#include <zelm/Export.h>
#include <zelm/entities/ZEntityInterface.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZGenericObject.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Zelm::Private {

using EntityList = std::vector<std::shared_ptr<ZEntityInterface>>;

/// Where the entities of a list stand, by name: a search in a long list asks one or two of them and not one
/// after the other.
class ZELM_EXPORT ChildNames {
public:
    /// The first entity of this name, or null.
    std::shared_ptr<ZEntityInterface> find(const EntityList& children, const ZString& name);
    /// The same where the list has only been appended to since check().
    std::shared_ptr<ZEntityInterface> findKnown(const EntityList& children, const ZString& name);
    void append(EntityList& children, const std::shared_ptr<ZEntityInterface>& child);
    /// To be called when the list becomes another one.
    void forget() noexcept { places_.clear(); }
    /// From now on the list may be changed without a word: each search looks through it for changes, which is
    /// still far from asking all for their names.
    void share() noexcept { isShared_ = true; }
    void check(const EntityList& children) noexcept;

private:
    using Place = std::uint32_t;
    static constexpr Place kFree = static_cast<Place>(-1);

    bool knows(const EntityList& children) const noexcept {
        return !places_.empty() && list_ == children.data() && count_ == children.size();
    }
    void learn(const EntityList& children);
    void add(const EntityList& children, std::size_t place);
    Place& slotOf(const EntityList& children, const ZString& name);

    /// A table open to collisions, at most half full: places in the list, at the hash of the name or behind.
    /// Empty as long as there is no need for it.
    std::vector<Place> places_;
    /// The list as it was seen last, and a number that its entities and their order make.
    const std::shared_ptr<ZEntityInterface>* list_ = nullptr;
    std::size_t count_ = 0;
    std::size_t fingerprint_ = 0;
    bool isShared_ = false;
};

/// Throws `std::logic_error` `Child "name"  not found`.
[[noreturn]] ZELM_EXPORT void throwChildEntityNotFound(const ZString& name);
/// Throws `std::invalid_argument` "Unnamed ZEntity".
[[noreturn]] ZELM_EXPORT void throwUnnamedEntity();

/// Ends what ties entities to `parent`, which drops them: somebody else may still hold them.
ZELM_EXPORT void detachChildEntities(const EntityList& dropped, const ZEntityInterface* parent);
/// Makes `kept` the children of `parent` and detaches all others. Changes nothing if it throws.
ZELM_EXPORT void replaceChildEntities(EntityList& children, ChildNames& names, EntityList kept,
                                      const ZEntityInterface* parent);

/// Finds or makes the entities for the child objects of a state.
class ZELM_EXPORT ChildEntityPlacement {
public:
    /// New entities are appended to `children`, the present ones of `parent`.
    ChildEntityPlacement(ZEntityInterface& parent, EntityList& children, ChildNames& names)
        : parent_(parent), children_(children), names_(names) {
        names.check(children);
    }

    /// Places all children of a state, links as themselves.
    void placeChildrenOf(const ZPropertyHandle& object) { placeChildrenOf(object, Links::AsThemselves); }
    /// Places one child object: its entity, or those of what lies in it.
    void place(const ZString& name, ZPropertyHandle object);

    /// The entities of what was placed, in order.
    EntityList takeResult() { return std::move(result_); }

private:
    enum class Links { AsThemselves, SeenThrough };

    void placeChildrenOf(const ZPropertyHandle& object, Links links);

    ZEntityInterface& parent_;
    EntityList& children_;
    ChildNames& names_;
    EntityList result_;
};

} // namespace Zelm::Private
