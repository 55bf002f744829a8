#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZIncrementalGenerationFactory.h>
#include <zelm/tree/ZPropertyTreeNode.h>
#include <zelm/variant/Variant.h>

#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace Zelm {

namespace Private {

/// One version of a tree: the root node, the root's name, and the factory that numbers the versions of its
/// lineage. A version that handles refer to is not changed any more; the next one starts as a copy of it.
template <class Key, class Value, class GenerationFactory>
class ZPropertyTreeBasis {
public:
    using Node = ZPropertyTreeNode<Key, Value, GenerationFactory>;
    using NodePointer = std::shared_ptr<const Node>;
    using FactoryPointer = std::shared_ptr<GenerationFactory>;

    /// An empty tree of a new lineage: generation 1.
    explicit ZPropertyTreeBasis(Key name = Key());
    /// Makes any node the root of a tree of its own. Neither pointer may be null.
    ZPropertyTreeBasis(Key name, NodePointer root, FactoryPointer generations);

    const Key& name() const noexcept { return name_; }
    const NodePointer& root() const noexcept { return root_; }
    const FactoryPointer& generations() const noexcept { return generations_; }

    /// Turns a copy of a version into the next one: takes a new generation and clones the root for it.
    void beginGeneration();
    void setName(Key name) { name_ = std::move(name); }
    /// The root, to be written by the one change that has begun this version.
    std::shared_ptr<Node> writableRoot();

private:
    Key name_;
    NodePointer root_;
    FactoryPointer generations_;
};

template <class Key, class Value, class GenerationFactory>
class ZPropertyTreeGenericMutable;

template <class Key, class Value, class GenerationFactory>
class ZPropertyChildIterator;

/// A tree version and the path of names from its root down to a node: what handles of both kinds consist of.
template <class Key, class Basis>
class ZPropertyPosition {
public:
    using Path = std::vector<Key>;
    using BasisPointer = std::shared_ptr<Basis>;

    /// Whether there is no tree behind this, as after default construction. Whatever needs one throws
    /// `std::runtime_error` "Unable to resolve path: empty basis".
    bool isEmpty() const noexcept { return !basis_; }
    const BasisPointer& basis() const noexcept { return basis_; }
    /// Empty for the root.
    const Path& path() const noexcept { return path_; }

    /// The last name of the path, or the tree's name for the root.
    Key getName() const;
    /// Throws `std::runtime_error` "No path to parent" for the root.
    Path parentPath() const;
    Path childPath(const Key& name) const;

protected:
    ZPropertyPosition() = default;
    ZPropertyPosition(BasisPointer basis, Path path) : basis_(std::move(basis)), path_(std::move(path)) {}

    BasisPointer basis_;
    Path path_;
};

/// A position in one version of a property tree. `Access` 0 is the immutable `ZPropertyHandle`, 1 the
/// `ZMutablePropertyHandle` that exists inside a change.
template <class Key, class Value, class GenerationFactory, int Access>
class ZPropertyHandleGeneric;

/// An immutable position: what it reads never changes, whatever is done to trees that grew out of its
/// version.
///
/// A change leaves the handle and its tree untouched and returns a handle at the same path of a new version.
/// It copies the nodes down the path and shares all others, at a cost of O(log n) for n children; many
/// changes at one place are cheaper still in one changed(). A failed change leaves no trace.
///
/// Every operation throws `std::runtime_error` "Unable to resolve path: empty basis" on an empty handle, and
/// `Unable to resolve path: "x" not found`, with the first missing name, if the path leads nowhere.
///
/// Handles of one version may be used from several threads, each thread with its own. Copying costs two
/// atomic increments and a copy of the path.
template <class Key, class Value, class GenerationFactory>
class ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>
    : public ZPropertyPosition<Key, const ZPropertyTreeBasis<Key, Value, GenerationFactory>> {
    using Position = ZPropertyPosition<Key, const ZPropertyTreeBasis<Key, Value, GenerationFactory>>;

public:
    using typename Position::BasisPointer;
    using typename Position::Path;
    using Node = ZPropertyTreeNode<Key, Value, GenerationFactory>;
    using NodePointer = std::shared_ptr<const Node>;
    using Children = typename Node::Children;
    using Basis = ZPropertyTreeBasis<Key, Value, GenerationFactory>;
    using Tree = ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>;
    using Mutable = ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>;
    using ChildIterator = ZPropertyChildIterator<Key, Value, GenerationFactory>;

    ZPropertyHandleGeneric() = default;
    /// The root of a version.
    explicit ZPropertyHandleGeneric(BasisPointer basis);
    /// Any position; the node is looked up on first use unless it is given.
    ZPropertyHandleGeneric(BasisPointer basis, Path path, NodePointer node = nullptr);

    /// Resolves the path, if that has not happened yet, and gives access to the operations on the node. Not
    /// for temporaries, which a loop over the result would outlive.
    const ZPropertyHandleGeneric& access() const&;
    const ZPropertyHandleGeneric& access() const&& = delete;

    /// The node, for walks over whole trees that need no handle for each node.
    const Node& node() const&;
    const Node& node() const&& = delete;
    const NodePointer& sharedNode() const&;
    NodePointer sharedNode() const&& {
        return static_cast<const ZPropertyHandleGeneric&>(*this).sharedNode();
    }

    Value getValue() const;
    /// Empty if the node has no type.
    Key getObjectType() const;
    bool hasChild(const Key& name) const;
    /// Throws `std::runtime_error` `Property "name" not found`.
    ZPropertyHandleGeneric child(const Key& name) const;
    /// Iterates over handles on the children, in byte order of their names.
    ChildIterator begin() const;
    ChildIterator end() const;
    Children childrenCopy() const;
    /// Deep comparison of values and names; object types and the names of the two positions do not count.
    bool isEquivalentTo(const ZPropertyHandleGeneric& other) const;

    /// Begins a version of `basis`, lets `change` write it, and returns an immutable handle at the path of
    /// the handle that `change` returns. Nothing may keep the tree or its mutable handles beyond the call: it
    /// would write into a version that others read.
    static ZPropertyHandleGeneric withMutation(BasisPointer basis,
                                               const std::function<Mutable(Tree& version)>& change);

    /// Begins a version of this tree, calls `change` with a mutable handle at this path, and returns the
    /// immutable handle there: any number of writes for the price of one version. The handle is for the call
    /// only.
    template <class Change>
    ZPropertyHandleGeneric changed(Change&& change) const;

    /// Stores `other`'s node, shared and not copied, as the child `name` in place of what was there. Throws
    /// `std::invalid_argument` "Name cannot be empty.".
    ZPropertyHandleGeneric insertChild(const Key& name, const ZPropertyHandleGeneric& other) const;
    /// An absent name still makes a new version.
    ZPropertyHandleGeneric removeChild(const Key& name) const;
    /// Stores a new node with `value` as the child `name`. What was there is replaced with its type and its
    /// whole subtree.
    ZPropertyHandleGeneric setChildValue(const Key& name, Value value) const;
    /// Gives this node another name and returns a handle on it there. A sibling of that name is replaced.
    /// Renaming a node other than the root to the name that it has removes it, and the handle that is
    /// returned then fails on use.
    ZPropertyHandleGeneric rename(const Key& name) const;

private:
    mutable NodePointer node_;
};

/// A writable position in a version that is being made. Nodes that belong to an older version or to another
/// lineage are copied before they are written, each at most once. It exists inside a change or during the
/// building of a new tree, on one thread, and is never kept.
template <class Key, class Value, class GenerationFactory>
class ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>
    : public ZPropertyPosition<Key, ZPropertyTreeBasis<Key, Value, GenerationFactory>> {
    using Position = ZPropertyPosition<Key, ZPropertyTreeBasis<Key, Value, GenerationFactory>>;

public:
    using typename Position::BasisPointer;
    using typename Position::Path;
    using Node = ZPropertyTreeNode<Key, Value, GenerationFactory>;
    using NodePointer = std::shared_ptr<const Node>;
    using Immutable = ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>;

    ZPropertyHandleGeneric() = default;

    /// Resolves the path by copy on write, if that has not happened yet.
    ZPropertyHandleGeneric& access() &;
    ZPropertyHandleGeneric& access() && = delete;
    /// The node, owned by this version; builders of whole trees may go on from it without handles.
    Node& node();

    void setValue(Value value);
    void setObjectType(Key objectType);
    /// Stores a new node with `value` as the child `name`, in place of what was there.
    void setChildValue(const Key& name, Value value);
    /// The same, with a handle on the new child.
    ZPropertyHandleGeneric addChildValue(const Key& name, Value value);
    void eraseChild(const Key& name);
    /// Shares `node` as the child `name`, in place of what was there. Unchecked but for an assertion: this
    /// node or one above it would close a cycle that is never freed.
    void attachChild(const Key& name, NodePointer node);
    /// The same with the node of `child`, which may belong to any tree. The result writes through a copy of
    /// that node unless it belongs to this very version; then it stays shared with the place that it came
    /// from.
    ZPropertyHandleGeneric attachChild(const Key& name, const Immutable& child);
    ZPropertyHandleGeneric attachChild(const Key& name, ZPropertyHandleGeneric child);
    /// The same under the name that `child` has.
    ZPropertyHandleGeneric attachChild(const Immutable& child);
    ZPropertyHandleGeneric attachChild(ZPropertyHandleGeneric child);
    /// The child `name`, made with a null value if it is absent.
    ZPropertyHandleGeneric getOrCreateChild(const Key& name);

private:
    friend class ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>;

    ZPropertyHandleGeneric(BasisPointer basis, Path path, std::shared_ptr<Node> node = nullptr);

    ZPropertyHandleGeneric attachedChild(const Key& name, const NodePointer& child);

    std::shared_ptr<Node> node_;
};

/// Input iterator over the children of a position; it keeps the version alive. Dereferencing makes a handle
/// that needs no lookup. Comparison is by place among the children alone.
template <class Key, class Value, class GenerationFactory>
class ZPropertyChildIterator {
public:
    using Handle = ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>;
    using iterator_category = std::input_iterator_tag;
    using value_type = Handle;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Handle;

    Handle operator*() const;
    ZPropertyChildIterator& operator++();
    ZPropertyChildIterator operator++(int);
    bool operator==(const ZPropertyChildIterator& other) const { return position_ == other.position_; }
    bool operator!=(const ZPropertyChildIterator& other) const { return !(*this == other); }

private:
    friend Handle;
    using Position = typename Handle::Children::const_iterator;

    ZPropertyChildIterator(Handle parent, Position position)
        : parent_(std::move(parent)), position_(position) {}

    Handle parent_;
    Position position_;
};

/// A tree version in the making. It belongs to one thread, and to one change or builder.
template <class Key, class Value, class GenerationFactory>
class ZPropertyTreeGenericMutable {
public:
    using Basis = ZPropertyTreeBasis<Key, Value, GenerationFactory>;
    using Handle = ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>;
    using Mutable = ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>;
    using Path = typename Handle::Path;

    /// Takes `basis` as it stands: what is written goes into that version itself. For versions that no handle
    /// reads yet.
    static ZPropertyTreeGenericMutable adopt(std::shared_ptr<Basis> basis);
    /// Begins a new version that starts out as `basis`, which is not touched.
    static ZPropertyTreeGenericMutable derive(const std::shared_ptr<const Basis>& basis);

    /// A new tree of a new lineage, with generation 1.
    explicit ZPropertyTreeGenericMutable(Key name = Key());
    /// As adopt().
    explicit ZPropertyTreeGenericMutable(std::shared_ptr<Basis>&& basis);
    /// As derive().
    explicit ZPropertyTreeGenericMutable(const std::shared_ptr<const Basis>& basis);

    /// The root.
    Mutable handle() const;
    /// The node at `path`; the nodes on the way are copied where they are not this version's own.
    Mutable handle(Path path) const;
    Handle immutableHandle() const;
    /// A path that leads nowhere fails on the first use of the handle.
    Handle immutableHandle(Path path) const;

    /// Gives the root another name.
    void setName(Key name);

private:
    struct Adopted {};
    ZPropertyTreeGenericMutable(Adopted, std::shared_ptr<Basis> basis) : basis_(std::move(basis)) {}

    std::shared_ptr<Basis> basis_;
};

template <class Key, class Value, class GenerationFactory>
template <class Change>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::changed(Change&& change) const
    -> ZPropertyHandleGeneric {
    const Tree version = Tree::derive(this->basis());
    Mutable self = version.handle(this->path());
    std::forward<Change>(change)(self);
    ZPropertyHandleGeneric result = version.immutableHandle(this->path());
    result.access();
    return result;
}

#define ZELM_TREE_TYPES ZString, Variant, Details::ZIncrementalGenerationFactory
extern template class ZELM_EXPORT ZPropertyTreeBasis<ZELM_TREE_TYPES>;
extern template class ZELM_EXPORT ZPropertyPosition<ZString, const ZPropertyTreeBasis<ZELM_TREE_TYPES>>;
extern template class ZELM_EXPORT ZPropertyPosition<ZString, ZPropertyTreeBasis<ZELM_TREE_TYPES>>;
extern template class ZELM_EXPORT ZPropertyHandleGeneric<ZELM_TREE_TYPES, 0>;
extern template class ZELM_EXPORT ZPropertyHandleGeneric<ZELM_TREE_TYPES, 1>;
extern template class ZELM_EXPORT ZPropertyChildIterator<ZELM_TREE_TYPES>;
extern template class ZELM_EXPORT ZPropertyTreeGenericMutable<ZELM_TREE_TYPES>;
#undef ZELM_TREE_TYPES

} // namespace Private

/// The property tree of the library: names are ZStrings, values are Variants.
using ZPropertyHandle =
    Private::ZPropertyHandleGeneric<ZString, Variant, Details::ZIncrementalGenerationFactory, 0>;
using ZMutablePropertyHandle =
    Private::ZPropertyHandleGeneric<ZString, Variant, Details::ZIncrementalGenerationFactory, 1>;
using ZMutablePropertyTree =
    Private::ZPropertyTreeGenericMutable<ZString, Variant, Details::ZIncrementalGenerationFactory>;
using ZPropertyTreeBasis =
    Private::ZPropertyTreeBasis<ZString, Variant, Details::ZIncrementalGenerationFactory>;
using ZPropertyTreeNode =
    Private::ZPropertyTreeNode<ZString, Variant, Details::ZIncrementalGenerationFactory>;

} // namespace Zelm
