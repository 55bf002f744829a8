#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/text/ZStringView.h>
#include <zelm/tree/ZIncrementalGenerationFactory.h>
#include <zelm/tree/ZPropertyChildren.h>
#include <zelm/variant/Variant.h>

#include <cstdint>
#include <memory>

namespace Zelm::Private {

/// Throws `std::runtime_error` `Property "name" not found`.
[[noreturn]] ZELM_EXPORT void throwPropertyNotFound(ZStringView name);

/// The tree version that made a node, and thus alone may write it: the generation of the version and the
/// lineage that counted it. The generation by itself would not do, since a subtree may be grafted into a
/// tree of another lineage whose root has the same number.
struct ZPropertyVersion {
    std::uint64_t generation;
    std::uint64_t lineage;

    friend bool operator==(const ZPropertyVersion& a, const ZPropertyVersion& b) noexcept {
        return a.generation == b.generation && a.lineage == b.lineage;
    }
    friend bool operator!=(const ZPropertyVersion& a, const ZPropertyVersion& b) noexcept {
        return !(a == b);
    }
};

/// A node of a property tree: a value, an optional object type, and named children. It does not know its own
/// name, which is its key in the parent.
///
/// Nodes are shared between tree versions and are read-only there. Writing is for the version that made the
/// node, while nobody else has seen it: through a `ZMutablePropertyHandle` or, for code that builds a whole
/// tree, directly on the nodes below `ZMutablePropertyHandle::node`.
template <class Key, class Value, class GenerationFactory>
class ZPropertyTreeNode {
public:
    using Children = ZPropertyChildren<Key, ZPropertyTreeNode>;
    using NodePointer = std::shared_ptr<const ZPropertyTreeNode>;

    /// A node without children; an empty object type counts as none.
    explicit ZPropertyTreeNode(ZPropertyVersion version, Value value = Value(), Key objectType = Key());
    ZPropertyTreeNode(const ZPropertyTreeNode&) = delete;
    ZPropertyTreeNode& operator=(const ZPropertyTreeNode&) = delete;
    /// Lets go of the children without recursion, however deep the tree is.
    ~ZPropertyTreeNode();

    const Value& value() const noexcept { return value_; }
    /// The object type; empty if there is none.
    const Key& objectType() const noexcept;
    const Children& children() const noexcept { return children_; }
    /// The child of this name, or null.
    const ZPropertyTreeNode* findChild(ZStringView name) const {
        const NodePointer* child = children_.find(name);
        return child ? child->get() : nullptr;
    }
    ZPropertyVersion version() const noexcept { return version_; }
    std::uint64_t generation() const noexcept { return version_.generation; }

    /// Deep comparison: equivalent values, and children of the same names that are equivalent in turn. Object
    /// types and the name of the root do not count. A value with a NaN is not equivalent even to itself, so
    /// shared nodes are compared like any others. Linear in the size of the trees, without recursion.
    bool isEquivalentTo(const ZPropertyTreeNode& other) const;

    /// A copy of this node for another version. It shares the value's elements and the child nodes.
    std::shared_ptr<ZPropertyTreeNode> clone(ZPropertyVersion version) const;

    void setValue(Value value);
    void setObjectType(Key objectType);
    /// Stores a new node of this version in place of whatever was there, type and subtree included.
    std::shared_ptr<ZPropertyTreeNode> addChild(const Key& name, Value value = Value());
    /// Shares `node`, which may belong to any tree. It must not be null, nor this node or one above it: that
    /// cycle would never be freed.
    void attachChild(const Key& name, NodePointer node);
    void eraseChild(ZStringView name);
    /// The child of this name made writable for the version of this node: one of another version is replaced
    /// by a clone first. Null if there is no such child.
    std::shared_ptr<ZPropertyTreeNode> ownedChild(const Key& name);

private:
    Value value_;
    ZPropertyVersion version_;
    std::unique_ptr<Key> objectType_;
    Children children_;
};

extern template class ZELM_EXPORT ZPropertyTreeNode<ZString, Variant, Details::ZIncrementalGenerationFactory>;

} // namespace Zelm::Private
