#include <zelm/entities/ChildEntities.h>

#include <zelm/entities/ZEntityFactory.h>
#include <zelm/tree/ZObserver.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <unordered_set>

namespace Zelm::Private {

namespace {

/// Up to here, looking at one child after the other is as fast as a table.
constexpr std::size_t kLongestScan = 12;

/// Entities in entities, folders included, take the call stack: about 1.6 kB a level, several times that
/// under the sanitizers. No document that can be read back is half as deep.
constexpr int kDeepestLevel = 1000;
thread_local int t_level = 0;

/// One step down from an object to one inside of it.
class Descent {
public:
    Descent() {
        if (t_level == kDeepestLevel) {
            throw std::length_error("Entities are nested too deeply.");
        }
        ++t_level;
    }
    Descent(const Descent&) = delete;
    Descent& operator=(const Descent&) = delete;
    ~Descent() { --t_level; }
};

bool isPlainValue(const Zelm::ZPropertyTreeNode& node) {
    return node.objectType().empty() && node.children().empty();
}

bool isLink(const Zelm::ZPropertyTreeNode& node) {
    return node.objectType() == ZObserver::objectType();
}

} // namespace

std::shared_ptr<ZEntityInterface> findChildEntity(const EntityList& children, const ZString& name) {
    const auto child = std::find_if(children.begin(), children.end(),
                                    [&](const auto& candidate) { return candidate->name() == name; });
    return child == children.end() ? nullptr : *child;
}

void throwChildEntityNotFound(const ZString& name) {
    throw std::logic_error(("Child \"" + name + "\"  not found").to_string());
}

void throwUnnamedEntity() {
    throw std::invalid_argument("Unnamed ZEntity");
}

void detachChildEntities(const EntityList& dropped, const ZEntityInterface* parent) {
    for (const auto& child : dropped) {
        if (child->parent() == parent) {
            child->setParent(nullptr);
        }
    }
}

void replaceChildEntities(EntityList& children, EntityList kept, const ZEntityInterface* parent) {
    if (children == kept) {
        return;
    }
    std::unordered_set<const ZEntityInterface*> stay;
    for (const auto& child : kept) {
        stay.insert(child.get());
    }
    EntityList dropped;
    std::copy_if(children.begin(), children.end(), std::back_inserter(dropped),
                 [&](const auto& child) { return stay.count(child.get()) == 0; });
    children.swap(kept);
    detachChildEntities(dropped, parent);
}

void ChildEntityPlacement::placeChildrenOf(const ZPropertyHandle& object, Links links) {
    for (const auto& [name, node] : object.node().children()) {
        if (isPlainValue(*node)) {
            continue;
        }
        ZPropertyHandle child(object.basis(), object.childPath(name), node);
        place(name,
              links == Links::SeenThrough && isLink(*node) ? child.child(ZObserver::Link) : std::move(child));
    }
}

void ChildEntityPlacement::place(const ZString& name, ZPropertyHandle object) {
    const Descent descent;
    const ZString type = object.getObjectType();
    if (const auto present = findByName(name); present && present->getObjectType() == type) {
        present->setState(std::move(object));
        result_.push_back(present);
        return;
    }
    const ZEntityFactory& factory = ZEntityFactory::Instance();
    if (!factory.canMakeEntityOfType(type)) {
        placeChildrenOf(object, Links::SeenThrough);
        return;
    }
    const auto child = factory.createEntity(name, std::move(object));
    child->setParent(&parent_);
    append(child);
    result_.push_back(child);
}

std::shared_ptr<ZEntityInterface> ChildEntityPlacement::findByName(const ZString& name) {
    if (children_.size() <= kLongestScan) {
        return findChildEntity(children_, name);
    }
    if (byName_.empty()) {
        byName_.reserve(children_.size());
        for (const auto& child : children_) {
            byName_.emplace(child->name(), child);
        }
    }
    const auto child = byName_.find(name);
    return child == byName_.end() ? nullptr : child->second;
}

void ChildEntityPlacement::append(const std::shared_ptr<ZEntityInterface>& child) {
    children_.push_back(child);
    if (!byName_.empty()) {
        byName_.emplace(child->name(), child);
    }
}

} // namespace Zelm::Private
