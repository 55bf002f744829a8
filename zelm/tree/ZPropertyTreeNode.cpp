#include <zelm/tree/ZPropertyTreeNode.h>

#include <cassert>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Zelm::Private {

namespace {

template <class Node>
bool alikeButForChildren(const Node& a, const Node& b) {
    return a.children().size() == b.children().size() && a.value().isEquivalentTo(b.value());
}

} // namespace

void throwPropertyNotFound(ZStringView name) {
    throw std::runtime_error(("Property \"" + ZString(name) + "\" not found").to_string());
}

template <class Key, class Value, class GenerationFactory>
ZPropertyTreeNode<Key, Value, GenerationFactory>::ZPropertyTreeNode(ZPropertyVersion version, Value value,
                                                                    Key objectType)
    : value_(std::move(value)), version_(version) {
    setObjectType(std::move(objectType));
}

template <class Key, class Value, class GenerationFactory>
ZPropertyTreeNode<Key, Value, GenerationFactory>::~ZPropertyTreeNode() = default;

template <class Key, class Value, class GenerationFactory>
const Key& ZPropertyTreeNode<Key, Value, GenerationFactory>::objectType() const noexcept {
    // Never destroyed: objects of static lifetime may ask for it at the very end.
    static const Key& s_none = *new Key();
    return objectType_ ? *objectType_ : s_none;
}

template <class Key, class Value, class GenerationFactory>
bool ZPropertyTreeNode<Key, Value, GenerationFactory>::isEquivalentTo(const ZPropertyTreeNode& other) const {
    if (!alikeButForChildren(*this, other)) {
        return false;
    }
    std::vector<std::pair<const ZPropertyTreeNode*, const ZPropertyTreeNode*>> pending{{this, &other}};
    while (!pending.empty()) {
        const auto [a, b] = pending.back();
        pending.pop_back();
        auto inB = b->children_.begin();
        for (const auto& [name, child] : a->children_) {
            const auto counterpart = *inB;
            ++inB;
            if (name != counterpart.name || !alikeButForChildren(*child, *counterpart.node)) {
                return false;
            }
            if (!child->children_.empty()) {
                pending.emplace_back(child.get(), counterpart.node.get());
            }
        }
    }
    return true;
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeNode<Key, Value, GenerationFactory>::clone(ZPropertyVersion version) const
    -> std::shared_ptr<ZPropertyTreeNode> {
    auto copy = std::make_shared<ZPropertyTreeNode>(version, value_, objectType());
    copy->children_ = children_;
    return copy;
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyTreeNode<Key, Value, GenerationFactory>::setValue(Value value) {
    value_ = std::move(value);
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyTreeNode<Key, Value, GenerationFactory>::setObjectType(Key objectType) {
    if (objectType_) {
        *objectType_ = std::move(objectType);
    } else if (!objectType.empty()) {
        objectType_ = std::make_unique<Key>(std::move(objectType));
    }
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeNode<Key, Value, GenerationFactory>::addChild(const Key& name, Value value)
    -> std::shared_ptr<ZPropertyTreeNode> {
    auto child = std::make_shared<ZPropertyTreeNode>(version_, std::move(value));
    children_.insert(name, child);
    return child;
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyTreeNode<Key, Value, GenerationFactory>::attachChild(const Key& name, NodePointer node) {
    assert(node);
    children_.insert(name, std::move(node));
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyTreeNode<Key, Value, GenerationFactory>::eraseChild(ZStringView name) {
    children_.erase(name);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeNode<Key, Value, GenerationFactory>::ownedChild(const Key& name)
    -> std::shared_ptr<ZPropertyTreeNode> {
    const NodePointer* child = children_.find(name);
    if (!child) {
        return nullptr;
    }
    if ((*child)->version_ == version_) {
        // Made by the version that is writing now, so nobody else has seen it yet.
        return std::const_pointer_cast<ZPropertyTreeNode>(*child);
    }
    auto copy = (*child)->clone(version_);
    children_.insert(name, copy);
    return copy;
}

template class ZPropertyTreeNode<ZString, Variant, Details::ZIncrementalGenerationFactory>;

} // namespace Zelm::Private
