#include <zelm/entities/ChildEntities.h>

#include <zelm/entities/ZEntityFactory.h>
#include <zelm/tree/ZObserver.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <unordered_set>

namespace Zelm::Private {

namespace {

/// Up to here, looking at one child after the other is as fast as a table.
constexpr std::size_t kLongestScan = 16;

std::size_t extended(std::size_t fingerprint, const std::shared_ptr<ZEntityInterface>& child) {
    return fingerprint * 31 + reinterpret_cast<std::uintptr_t>(child.get());
}

std::size_t fingerprintOf(const EntityList& children) {
    return std::accumulate(children.begin(), children.end(), std::size_t{0}, extended);
}

std::shared_ptr<ZEntityInterface> scan(const EntityList& children, const ZString& name) {
    const auto child = std::find_if(children.begin(), children.end(),
                                    [&](const auto& candidate) { return candidate->name() == name; });
    return child == children.end() ? nullptr : *child;
}

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

std::shared_ptr<ZEntityInterface> ChildNames::find(const EntityList& children, const ZString& name) {
    check(children);
    auto child = findKnown(children, name);
    // A new entity may lie where a former one lay.
    return !child && isShared_ ? scan(children, name) : child;
}

std::shared_ptr<ZEntityInterface> ChildNames::findKnown(const EntityList& children, const ZString& name) {
    if (children.size() <= kLongestScan) {
        return scan(children, name);
    }
    if (!knows(children)) {
        learn(children);
    }
    const Place place = slotOf(children, name);
    return place == kFree ? nullptr : children[place];
}

void ChildNames::append(EntityList& children, const std::shared_ptr<ZEntityInterface>& child) {
    const bool wasKnown = knows(children);
    children.push_back(child);
    if (!wasKnown || 2 * children.size() > places_.size()) {
        forget();
        return;
    }
    list_ = children.data();
    count_ = children.size();
    fingerprint_ = extended(fingerprint_, child);
    add(children, count_ - 1);
}

void ChildNames::check(const EntityList& children) noexcept {
    if (isShared_ && knows(children) && fingerprintOf(children) != fingerprint_) {
        forget();
    }
}

void ChildNames::learn(const EntityList& children) {
    std::size_t size = 4 * kLongestScan;
    while (size < 4 * children.size()) {
        size *= 2;
    }
    places_.assign(size, kFree);
    for (std::size_t place = 0; place < children.size(); ++place) {
        add(children, place);
    }
    list_ = children.data();
    count_ = children.size();
    fingerprint_ = fingerprintOf(children);
}

void ChildNames::add(const EntityList& children, std::size_t place) {
    if (Place& slot = slotOf(children, children[place]->name()); slot == kFree) {
        slot = static_cast<Place>(place);
    }
}

/// The slot of the first entity of this name, or the free one where it would be.
ChildNames::Place& ChildNames::slotOf(const EntityList& children, const ZString& name) {
    std::size_t slot = std::hash<ZString>()(name);
    while (true) {
        Place& place = places_[slot++ & (places_.size() - 1)];
        if (place == kFree || children[place]->name() == name) {
            return place;
        }
    }
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

void replaceChildEntities(EntityList& children, ChildNames& names, EntityList kept,
                          const ZEntityInterface* parent) {
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
    names.forget();
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
    if (const auto present = names_.findKnown(children_, name); present && present->getObjectType() == type) {
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
    names_.append(children_, child);
    result_.push_back(child);
}

} // namespace Zelm::Private
