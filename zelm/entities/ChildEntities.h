#pragma once

#include <zelm/Export.h>
#include <zelm/entities/ZEntityInterface.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZGenericObject.h>

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zelm::Private {

using EntityList = std::vector<std::shared_ptr<ZEntityInterface>>;

/// The first entity of this name, or null.
ZELM_EXPORT std::shared_ptr<ZEntityInterface> findChildEntity(const EntityList& children,
                                                              const ZString& name);
/// Throws `std::logic_error` `Child "name"  not found`.
[[noreturn]] ZELM_EXPORT void throwChildEntityNotFound(const ZString& name);
/// Throws `std::invalid_argument` "Unnamed ZEntity".
[[noreturn]] ZELM_EXPORT void throwUnnamedEntity();

/// Ends what ties entities to `parent`, which drops them: somebody else may still hold them.
ZELM_EXPORT void detachChildEntities(const EntityList& dropped, const ZEntityInterface* parent);
/// Makes `kept` the children of `parent` and detaches all others. Changes nothing if it throws.
ZELM_EXPORT void replaceChildEntities(EntityList& children, EntityList kept, const ZEntityInterface* parent);

/// Finds or makes the entities for the child objects of a state.
class ZELM_EXPORT ChildEntityPlacement {
public:
    /// New entities are appended to `children`, the present ones of `parent`.
    ChildEntityPlacement(ZEntityInterface& parent, EntityList& children)
        : parent_(parent), children_(children) {}

    /// Places all children of a state, links as themselves.
    void placeChildrenOf(const ZPropertyHandle& object) { placeChildrenOf(object, Links::AsThemselves); }
    /// Places one child object: its entity, or those of what lies in it.
    void place(const ZString& name, ZPropertyHandle object);

    /// The entities of what was placed, in order.
    EntityList takeResult() { return std::move(result_); }

private:
    enum class Links { AsThemselves, SeenThrough };

    void placeChildrenOf(const ZPropertyHandle& object, Links links);
    std::shared_ptr<ZEntityInterface> findByName(const ZString& name);
    void append(const std::shared_ptr<ZEntityInterface>& child);

    ZEntityInterface& parent_;
    EntityList& children_;
    EntityList result_;
    /// The first child of each name, once there are too many for a search one by one.
    std::unordered_map<ZString, std::shared_ptr<ZEntityInterface>> byName_;
};

} // namespace Zelm::Private
