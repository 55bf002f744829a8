#include <zelm/tree/ZPropertyTree.h>

#include <cassert>
#include <stdexcept>

namespace Zelm::Private {

namespace {

[[noreturn]] void throwEmptyBasis() {
    throw std::runtime_error("Unable to resolve path: empty basis");
}

[[noreturn]] void throwUnresolved(const ZString& name) {
    throw std::runtime_error(("Unable to resolve path: \"" + name + "\" not found").to_string());
}

[[noreturn]] void throwEmptyName() {
    throw std::invalid_argument("Name cannot be empty.");
}

[[noreturn]] void throwNoParent() {
    throw std::runtime_error("No path to parent");
}

/// The node at `path`; nothing is copied or touched.
template <class Basis, class Path>
const typename Basis::NodePointer& resolve(const Basis* basis, const Path& path) {
    if (!basis) {
        throwEmptyBasis();
    }
    const typename Basis::NodePointer* node = &basis->root();
    for (const auto& name : path) {
        node = (*node)->children().find(name);
        if (!node) {
            throwUnresolved(name);
        }
    }
    return *node;
}

/// The node at `path` by copy on write: every node on the way ends up as the version's own.
template <class Basis, class Path>
std::shared_ptr<typename Basis::Node> resolveForWriting(Basis* basis, const Path& path) {
    if (!basis) {
        throwEmptyBasis();
    }
    std::shared_ptr<typename Basis::Node> node = basis->writableRoot();
    for (const auto& name : path) {
        node = node->ownedChild(name);
        if (!node) {
            throwUnresolved(name);
        }
    }
    return node;
}

/// Whether `node` lies on the way from the root to the node at `path`, both included.
template <class Basis, class Path, class Node>
[[maybe_unused]] bool isOnPath(const Basis& basis, const Path& path, const Node* node) {
    const Node* step = basis.root().get();
    auto name = path.begin();
    while (step && step != node) {
        step = name == path.end() ? nullptr : step->findChild(*name++);
    }
    return step != nullptr;
}

} // namespace

template <class Key, class Value, class GenerationFactory>
ZPropertyTreeBasis<Key, Value, GenerationFactory>::ZPropertyTreeBasis(Key name)
    : name_(std::move(name)), generations_(std::make_shared<GenerationFactory>()) {
    root_ = std::make_shared<Node>(ZPropertyVersion{generations_->next(), generations_->lineage()});
}

template <class Key, class Value, class GenerationFactory>
ZPropertyTreeBasis<Key, Value, GenerationFactory>::ZPropertyTreeBasis(Key name, NodePointer root,
                                                                      FactoryPointer generations)
    : name_(std::move(name)), root_(std::move(root)), generations_(std::move(generations)) {
    assert(root_ && generations_);
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyTreeBasis<Key, Value, GenerationFactory>::beginGeneration() {
    root_ = root_->clone({generations_->next(), generations_->lineage()});
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeBasis<Key, Value, GenerationFactory>::writableRoot() -> std::shared_ptr<Node> {
    return std::const_pointer_cast<Node>(root_);
}

template <class Key, class Basis>
Key ZPropertyPosition<Key, Basis>::getName() const {
    if (!path_.empty()) {
        return path_.back();
    }
    if (!basis_) {
        throwEmptyBasis();
    }
    return basis_->name();
}

template <class Key, class Basis>
auto ZPropertyPosition<Key, Basis>::parentPath() const -> Path {
    if (path_.empty()) {
        throwNoParent();
    }
    return Path(path_.begin(), path_.end() - 1);
}

template <class Key, class Basis>
auto ZPropertyPosition<Key, Basis>::childPath(const Key& name) const -> Path {
    Path result;
    result.reserve(path_.size() + 1);
    result.assign(path_.begin(), path_.end());
    result.push_back(name);
    return result;
}

template <class Key, class Value, class GenerationFactory>
ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::ZPropertyHandleGeneric(BasisPointer basis)
    : ZPropertyHandleGeneric(std::move(basis), Path()) {}

template <class Key, class Value, class GenerationFactory>
ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::ZPropertyHandleGeneric(BasisPointer basis,
                                                                                 Path path, NodePointer node)
    : Position(std::move(basis), std::move(path)), node_(std::move(node)) {
    if (!node_ && this->basis_ && this->path_.empty()) {
        node_ = this->basis_->root();
    }
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::access() const& -> const
    ZPropertyHandleGeneric& {
    sharedNode();
    return *this;
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::sharedNode() const& -> const NodePointer& {
    if (!node_) {
        node_ = resolve(this->basis_.get(), this->path_);
    }
    return node_;
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::node() const& -> const Node& {
    return *sharedNode();
}

template <class Key, class Value, class GenerationFactory>
Value ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::getValue() const {
    return node().value();
}

template <class Key, class Value, class GenerationFactory>
Key ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::getObjectType() const {
    return node().objectType();
}

template <class Key, class Value, class GenerationFactory>
bool ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::hasChild(const Key& name) const {
    return node().children().find(name) != nullptr;
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::child(const Key& name) const
    -> ZPropertyHandleGeneric {
    const NodePointer* found = node().children().find(name);
    if (!found) {
        throwPropertyNotFound(name);
    }
    return ZPropertyHandleGeneric(this->basis_, this->childPath(name), *found);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::begin() const -> ChildIterator {
    return ChildIterator(*this, node().children().begin());
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::end() const -> ChildIterator {
    return ChildIterator(*this, node().children().end());
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::childrenCopy() const -> Children {
    return node().children();
}

template <class Key, class Value, class GenerationFactory>
bool ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::isEquivalentTo(
    const ZPropertyHandleGeneric& other) const {
    return node().isEquivalentTo(other.node());
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::withMutation(
    BasisPointer basis, const std::function<Mutable(Tree& version)>& change) -> ZPropertyHandleGeneric {
    Tree version = Tree::derive(basis);
    Path path = change(version).path();
    return version.immutableHandle(std::move(path));
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::insertChild(
    const Key& name, const ZPropertyHandleGeneric& other) const -> ZPropertyHandleGeneric {
    if (name.empty()) {
        throwEmptyName();
    }
    const NodePointer& grafted = other.sharedNode();
    return changed([&](Mutable& self) { self.attachChild(name, grafted); });
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::removeChild(const Key& name) const
    -> ZPropertyHandleGeneric {
    return changed([&](Mutable& self) { self.eraseChild(name); });
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::setChildValue(const Key& name,
                                                                             Value value) const
    -> ZPropertyHandleGeneric {
    return changed([&](Mutable& self) { self.setChildValue(name, std::move(value)); });
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 0>::rename(const Key& name) const
    -> ZPropertyHandleGeneric {
    Tree version = Tree::derive(this->basis_);
    if (this->path_.empty()) {
        version.setName(name);
        return version.immutableHandle();
    }
    Mutable parent = version.handle(this->parentPath());
    parent.attachChild(name, sharedNode());
    parent.eraseChild(this->path_.back());
    const NodePointer* renamed = parent.node().children().find(name);
    return ZPropertyHandleGeneric(parent.basis(), parent.childPath(name), renamed ? *renamed : nullptr);
}

template <class Key, class Value, class GenerationFactory>
ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::ZPropertyHandleGeneric(BasisPointer basis,
                                                                                 Path path,
                                                                                 std::shared_ptr<Node> node)
    : Position(std::move(basis), std::move(path)), node_(std::move(node)) {}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::access() & -> ZPropertyHandleGeneric& {
    node();
    return *this;
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::node() -> Node& {
    if (!node_) {
        node_ = resolveForWriting(this->basis_.get(), this->path_);
    }
    return *node_;
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::setValue(Value value) {
    node().setValue(std::move(value));
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::setObjectType(Key objectType) {
    node().setObjectType(std::move(objectType));
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::setChildValue(const Key& name, Value value) {
    node().addChild(name, std::move(value));
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::addChildValue(const Key& name, Value value)
    -> ZPropertyHandleGeneric {
    std::shared_ptr<Node> child = node().addChild(name, std::move(value));
    return ZPropertyHandleGeneric(this->basis_, this->childPath(name), std::move(child));
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::eraseChild(const Key& name) {
    node().eraseChild(name);
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::attachChild(const Key& name,
                                                                           NodePointer child) {
    Node& self = node();
    assert(!isOnPath(*this->basis_, this->path_, child.get()));
    self.attachChild(name, std::move(child));
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::attachedChild(const Key& name,
                                                                             const NodePointer& child)
    -> ZPropertyHandleGeneric {
    attachChild(name, child);
    const bool isOwn = child->version() == node().version();
    return ZPropertyHandleGeneric(this->basis_, this->childPath(name),
                                  isOwn ? node().ownedChild(name) : nullptr);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::attachChild(const Key& name,
                                                                           const Immutable& child)
    -> ZPropertyHandleGeneric {
    return attachedChild(name, child.sharedNode());
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::attachChild(const Key& name,
                                                                           ZPropertyHandleGeneric child)
    -> ZPropertyHandleGeneric {
    return attachedChild(name, child.access().node_);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::attachChild(const Immutable& child)
    -> ZPropertyHandleGeneric {
    return attachChild(child.getName(), child);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::attachChild(ZPropertyHandleGeneric child)
    -> ZPropertyHandleGeneric {
    return attachChild(child.getName(), child);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyHandleGeneric<Key, Value, GenerationFactory, 1>::getOrCreateChild(const Key& name)
    -> ZPropertyHandleGeneric {
    if (std::shared_ptr<Node> child = node().ownedChild(name)) {
        return ZPropertyHandleGeneric(this->basis_, this->childPath(name), std::move(child));
    }
    return addChildValue(name, Value());
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyChildIterator<Key, Value, GenerationFactory>::operator*() const -> Handle {
    const auto [name, node] = *position_;
    return Handle(parent_.basis(), parent_.childPath(name), node);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyChildIterator<Key, Value, GenerationFactory>::operator++() -> ZPropertyChildIterator& {
    ++position_;
    return *this;
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyChildIterator<Key, Value, GenerationFactory>::operator++(int) -> ZPropertyChildIterator {
    ZPropertyChildIterator before = *this;
    ++position_;
    return before;
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::adopt(std::shared_ptr<Basis> basis)
    -> ZPropertyTreeGenericMutable {
    return ZPropertyTreeGenericMutable(Adopted(), std::move(basis));
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::derive(
    const std::shared_ptr<const Basis>& basis) -> ZPropertyTreeGenericMutable {
    if (!basis) {
        throwEmptyBasis();
    }
    auto version = std::make_shared<Basis>(*basis);
    version->beginGeneration();
    return adopt(std::move(version));
}

template <class Key, class Value, class GenerationFactory>
ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::ZPropertyTreeGenericMutable(Key name)
    : basis_(std::make_shared<Basis>(std::move(name))) {}

template <class Key, class Value, class GenerationFactory>
ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::ZPropertyTreeGenericMutable(
    std::shared_ptr<Basis>&& basis)
    : ZPropertyTreeGenericMutable(adopt(std::move(basis))) {}

template <class Key, class Value, class GenerationFactory>
ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::ZPropertyTreeGenericMutable(
    const std::shared_ptr<const Basis>& basis)
    : ZPropertyTreeGenericMutable(derive(basis)) {}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::handle() const -> Mutable {
    return Mutable(basis_, Path(), basis_ ? basis_->writableRoot() : nullptr);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::handle(Path path) const -> Mutable {
    Mutable result(basis_, std::move(path));
    result.access();
    return result;
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::immutableHandle() const -> Handle {
    return Handle(basis_);
}

template <class Key, class Value, class GenerationFactory>
auto ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::immutableHandle(Path path) const -> Handle {
    return Handle(basis_, std::move(path));
}

template <class Key, class Value, class GenerationFactory>
void ZPropertyTreeGenericMutable<Key, Value, GenerationFactory>::setName(Key name) {
    if (!basis_) {
        throwEmptyBasis();
    }
    basis_->setName(std::move(name));
}

#define ZELM_TREE_TYPES ZString, Variant, Details::ZIncrementalGenerationFactory
template class ZPropertyTreeBasis<ZELM_TREE_TYPES>;
template class ZPropertyPosition<ZString, const ZPropertyTreeBasis<ZELM_TREE_TYPES>>;
template class ZPropertyPosition<ZString, ZPropertyTreeBasis<ZELM_TREE_TYPES>>;
template class ZPropertyHandleGeneric<ZELM_TREE_TYPES, 0>;
template class ZPropertyHandleGeneric<ZELM_TREE_TYPES, 1>;
template class ZPropertyChildIterator<ZELM_TREE_TYPES>;
template class ZPropertyTreeGenericMutable<ZELM_TREE_TYPES>;
#undef ZELM_TREE_TYPES

} // namespace Zelm::Private
