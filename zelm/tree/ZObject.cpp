#include <zelm/tree/ZObject.h>

#include <zelm/text/Decimal.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>

namespace Zelm {

namespace {

[[noreturn]] void throwWrongType(const ZString& expectedType) {
    throw std::logic_error((expectedType + " expected but not found").to_string());
}

[[noreturn]] void throwNamelessChild(const ZString& childType) {
    throw std::invalid_argument(
        ("Name can't be empty for " + childType + " -- ZObject::insertOrReplaceChild()").to_string());
}

[[noreturn]] void throwNoLink() {
    throw std::runtime_error("Link expected but not found");
}

bool isLink(const ZPropertyTreeNode& node) {
    return node.objectType() == ZObserver::objectType();
}

/// The subtree at `object` as a tree of its own. The root of a version is that already.
ZPropertyHandle rebased(ZPropertyHandle object) {
    object.access();
    if (object.path().empty()) {
        return object;
    }
    return ZPropertyHandle(std::make_shared<const ZPropertyTreeBasis>(object.getName(), object.sharedNode(),
                                                                      object.basis()->generations()));
}

/// The children whose names `accept` takes; what stands for a link is for `represent` to say.
template <class Accept, class Represent>
auto listChildren(const ZPropertyHandle& parent, Accept accept, Represent represent) {
    std::vector<std::pair<ZString, ZGenericObject>> result;
    result.reserve(parent.node().children().size());
    for (const auto& [name, node] : parent.node().children()) {
        if (accept(name)) {
            result.emplace_back(name,
                                represent(ZPropertyHandle(parent.basis(), parent.childPath(name), node)));
        }
    }
    return result;
}

ZPropertyHandle seenThrough(ZPropertyHandle child) {
    return isLink(child.node()) ? child.child(ZObserver::Link) : child;
}

bool isAnyName(const ZString&) {
    return true;
}

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Whether a decimal number that an unsigned 64-bit word can hold stands at the start of `[at, end)`, blanks
/// and one sign allowed before it.
bool startsWithNumber(const char* at, const char* end) {
    while (at != end && isBlank(*at)) {
        ++at;
    }
    if (at != end && (*at == '+' || *at == '-')) {
        ++at;
    }
    if (at == end || !details::isDigit(*at)) {
        return false;
    }
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t number = 0;
    for (; at != end && details::isDigit(*at); ++at) {
        const auto digit = static_cast<std::uint64_t>(*at - '0');
        if (number > (largest - digit) / 10) {
            return false;
        }
        number = number * 10 + digit;
    }
    return true;
}

} // namespace

ZObject::ZObject(ZString objectType) {
    const ZMutablePropertyTree tree;
    tree.handle().setObjectType(std::move(objectType));
    property_ = tree.immutableHandle();
}

ZObject::ZObject(ZGenericObject object, const ZString& expectedType) : property_(rebased(std::move(object))) {
    if (property_.node().objectType() != expectedType) {
        throwWrongType(expectedType);
    }
}

ZObject::ZObject(const ZObject& other) : property_(rebased(other.property_)) {}

ZObject::~ZObject() = default;

void ZObject::setPropertyHandle(const ZPropertyHandle& handle) {
    property_ = rebased(handle);
}

void ZObject::addChild(const ZString& name, ZGenericObject child) {
    property_ = property_.insertChild(name, child);
}

void ZObject::insertOrReplaceChild(const ZString& name, ZGenericObject child) {
    if (name.empty()) {
        throwNamelessChild(child.getObjectType());
    }
    addChild(name, std::move(child));
}

void ZObject::deleteChild(const ZString& name) {
    property_ = property_.removeChild(name);
}

void ZObject::setProperty(const ZString& name, Variant value) {
    property_ = property_.setChildValue(name, std::move(value));
}

void ZObject::setChildPropertyValue(ZString name, Variant value) {
    setProperty(name, std::move(value));
}

const Variant* ZObject::findChildValue(const ZString& name) const {
    const ZPropertyTreeNode* child = property_.node().findChild(name);
    return child ? &child->value() : nullptr;
}

Variant ZObject::getChildPropertyValueWithDefault(const ZString& name, Variant defaultValue) const {
    const Variant* value = findChildValue(name);
    return value ? *value : std::move(defaultValue);
}

bool ZObject::getChildBoolWithDefault(const ZString& name, bool defaultValue) const noexcept {
    try {
        const Variant* value = findChildValue(name);
        return value && value->wellKnownType() == WellKnownType::Bool() ? value->value<bool>() : defaultValue;
    } catch (...) {
        return defaultValue;
    }
}

ZString ZObject::getChildStringWithDefault(const ZString& name, ZString defaultValue) const {
    const Variant* value = findChildValue(name);
    return value ? value->value<ZString>() : std::move(defaultValue);
}

ZObject::ChildList ZObject::getChildren(const ZPropertyHandle& parent) {
    return listChildren(parent, isAnyName, seenThrough);
}

ZObject::ChildList ZObject::getChildrenIncludingLinks(const ZPropertyHandle& parent) {
    return listChildren(parent, isAnyName, [](ZPropertyHandle child) { return child; });
}

ZObject::ChildList ZObject::getEnumeratedChildren(const ZPropertyHandle& parent, const ZString& prefix) {
    return listChildren(
        parent, [&](const ZString& name) { return isEnumeratedName(name, prefix); }, seenThrough);
}

bool ZObject::isEnumeratedName(ZStringView name, ZStringView prefix) noexcept {
    return name.starts_with(prefix) &&
           startsWithNumber(name.data() + prefix.size(), name.data() + name.size());
}

ZObserver ZObject::getObserver(const ZString& name, const ZString& folder) const {
    ZPropertyHandle link = property_.child(folder).child(name);
    if (!isLink(link.node())) {
        throwNoLink();
    }
    return ZObserver(std::move(link));
}

void ZObject::insertOrReplaceObserver(const ZString& name, ZObserver observer, const ZString& folder) {
    const ZPropertyHandle link = observer.propertyHandle();
    mutate([&](ZMutablePropertyHandle& self) {
        ZMutablePropertyHandle place = folder.empty() ? self : self.getOrCreateChild(folder);
        place.attachChild(name, link.sharedNode());
    });
}

ZObjectMetadata ZObject::getMetadata() const {
    if (!property_.isEmpty()) {
        const ZString folder = ZObjectMetadata::MetadataFolder;
        const ZPropertyTreeNode* metadata = property_.node().findChild(folder);
        if (metadata && metadata->objectType() == ZObjectMetadata::objectType()) {
            return ZObjectMetadata(property_.child(folder));
        }
    }
    return ZObjectMetadata();
}

void ZObject::setMetadata(ZObjectMetadata metadata) {
    addChild(ZObjectMetadata::MetadataFolder, std::move(metadata));
}

} // namespace Zelm
