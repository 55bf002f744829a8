#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/text/ZStringView.h>
#include <zelm/tree/ZGenericObject.h>
#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Variant.h>

#include <utility>
#include <vector>

namespace Zelm {

class ZEntityFactory;
class ZObjectMetadata;
class ZObserver;
template <class Derived, class State>
class ZEntity;
template <class T>
class ZObserverEntity;

/// The base of everything that persists: a typed value that keeps all its state in a property tree of its
/// own. So any object can be stored as a child of another one, compared, written and rebuilt without code for
/// its class.
///
/// The type of an object stands at the root of its tree. A member is a child: a property is a child with a
/// value, a member object a child with a type, a link a child of type "_Observer" whose child "Link" is the
/// linked object, and "__Metadata" holds what others attach to the object (see `ZObjectMetadata`).
///
/// A copy shares the tree, and changing it never changes its source: each change makes a new tree version,
/// which the object takes only when all has gone well. An object belongs to one thread at a time; copies on
/// different threads are independent.
///
/// A default-made object has no tree: every access throws `std::runtime_error` "Unable to resolve path: empty
/// basis", copy construction included; it may be assigned to, moved and destroyed.
class ZELM_EXPORT ZObject {
public:
    ZObject() = default;
    /// An object of this type with a new, empty tree.
    explicit ZObject(ZString objectType);
    /// Makes the subtree at `object` the tree of this object, under the name that it has there. Throws
    /// `std::logic_error` `expectedType` + " expected but not found" if the type at its root is another one.
    ZObject(ZGenericObject object, const ZString& expectedType);

    ZObject(const ZObject& other);
    /// Moving shares the tree, so that the source keeps its state and can still be read.
    ZObject(ZObject&& other) noexcept : property_(other.property_) {}
    ZObject& operator=(const ZObject& other) = default;
    ZObject& operator=(ZObject&& other) noexcept {
        property_ = other.property_;
        return *this;
    }
    virtual ~ZObject();

    operator ZGenericObject() const { return property_; }
    ZPropertyHandle propertyHandle() { return property_; }
    const ZPropertyHandle& propertyHandle() const { return property_; }
    /// Empty for an object without a type.
    ZString getObjectType() const { return property_.getObjectType(); }

    /// A copy of the metadata; an empty one if there is none. Never fails, not even without a tree. Changes
    /// to it reach this object through setMetadata().
    ZObjectMetadata getMetadata() const;
    void setMetadata(ZObjectMetadata metadata);

protected:
    using ChildList = std::vector<std::pair<ZString, ZGenericObject>>;

    bool hasChild(const ZString& name) const { return property_.hasChild(name); }
    /// Stores `child` under `name`, in place of what was there. Throws `std::invalid_argument` "Name cannot
    /// be empty.".
    void addChild(const ZString& name, ZGenericObject child);
    /// The same, but for an empty name the text is "Name can't be empty for " + type of `child` + " --
    /// ZObject::insertOrReplaceChild()".
    void insertOrReplaceChild(const ZString& name, ZGenericObject child);
    /// An absent name is no error.
    void deleteChild(const ZString& name);
    /// Stores a property; a member object of that name is replaced with all that is in it. To set several
    /// properties, use one mutate().
    void setProperty(const ZString& name, Variant value);
    void setChildPropertyValue(ZString name, Variant value);
    /// The value of the child, also if it is a member object, whose value is null as a rule. Allocates
    /// nothing.
    Variant getChildPropertyValueWithDefault(const ZString& name, Variant defaultValue) const;
    /// The value of the child in place, or null if there is no such child; valid until the next change.
    const Variant* findChildValue(const ZString& name) const;
    /// The first element of a `bool` child; the default if there is no such child or if it is anything else.
    /// Never throws.
    bool getChildBoolWithDefault(const ZString& name, bool defaultValue) const noexcept;
    /// The child's value converted to text, which may throw; the default if there is no such child.
    ZString getChildStringWithDefault(const ZString& name, ZString defaultValue) const;

    /// All children by name, in byte order. A link is seen through, one level: its pair holds the link's name
    /// and the linked object. A link without "Link" throws `std::runtime_error` `Property "Link" not found`.
    ChildList getChildren() const { return getChildren(property_); }
    /// The same with links as themselves.
    ChildList getChildrenIncludingLinks() const { return getChildrenIncludingLinks(property_); }
    /// The children whose names consist of `prefix` and a number (see isEnumeratedName()), links seen
    /// through, in byte order of the names: "10" before "2".
    ChildList getEnumeratedChildren(const ZString& prefix) const {
        return getEnumeratedChildren(property_, prefix);
    }
    static ChildList getChildren(const ZPropertyHandle& parent);
    static ChildList getChildrenIncludingLinks(const ZPropertyHandle& parent);
    static ChildList getEnumeratedChildren(const ZPropertyHandle& parent, const ZString& prefix);
    /// Whether `name` is `prefix` and then a decimal number below 2^64. Blanks and a sign may stand before
    /// the number and anything after it.
    static bool isEnumeratedName(ZStringView name, ZStringView prefix) noexcept;

    /// The link `name` in `folder`. Throws `std::runtime_error` "Link expected but not found" for a child of
    /// another type, and `Property "x" not found` if the folder or the name is absent. A link that is stored
    /// without a folder cannot be read by this.
    ZObserver getObserver(const ZString& name, const ZString& folder) const;
    /// Stores a link under `name` in `folder`, which is made if it is absent, or in this object itself if
    /// `folder` is empty.
    void insertOrReplaceObserver(const ZString& name, ZObserver observer, const ZString& folder = ZString());

    /// Calls `change` with a `ZMutablePropertyHandle&` on the root of a new version, which becomes the state
    /// of this object unless `change` throws. Any number of writes costs one version.
    template <class Change>
    void mutate(Change&& change) {
        property_ = property_.changed(std::forward<Change>(change));
    }
    /// Takes a tree as the state of this object; its type is not tested.
    void setPropertyHandle(const ZPropertyHandle& handle);

private:
    friend class ZEntityFactory;
    friend class ZObserver;
    template <class Derived, class State>
    friend class ZEntity;
    template <class T>
    friend class ZObserverEntity;

    /// A root handle, always: its path is empty, so that copying it allocates nothing.
    ZPropertyHandle property_;
};

} // namespace Zelm

#include <zelm/tree/ZObjectMetadata.h>
#include <zelm/tree/ZObserver.h>
