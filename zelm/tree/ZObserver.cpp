#include <zelm/tree/ZObserver.h>

#include <utility>

namespace Zelm {

namespace {

constexpr ZStringLiteral kPathKey("_path", 5);
constexpr ZStringLiteral kTypeKey("_type", 5);

} // namespace

ZString ZObserver::objectType() {
    return "_Observer";
}

ZObserver::ZObserver() : ZObject(objectType()) {}

ZObserver::ZObserver(ZGenericObject object) : ZObject(std::move(object), objectType()) {}

ZObserver::~ZObserver() = default;

ZString ZObserver::linkedPath() const {
    const ZObjectMetadata metadata = getMetadata();
    return metadata.getChildStringWithDefault(kPathKey, ZString());
}

void ZObserver::setLinkedPath(ZString path) {
    if (!path.empty()) {
        setEntry(kPathKey, path);
        return;
    }
    ZObjectMetadata metadata = getMetadata();
    metadata.deleteChild(kPathKey);
    setMetadata(std::move(metadata));
}

ZString ZObserver::linkType() const {
    const ZObjectMetadata metadata = getMetadata();
    return static_cast<const ZObject&>(metadata).getChildStringWithDefault(kTypeKey, "_UNKNOWN_");
}

void ZObserver::setLinkType(ZString type) {
    setEntry(kTypeKey, type);
}

void ZObserver::setEntry(const ZString& key, const ZString& text) {
    ZObjectMetadata metadata = getMetadata();
    const Variant* present = metadata.findChildValue(key);
    if (!present || present->wellKnownType() != WellKnownType::ZString() ||
        present->value<ZString>() != text) {
        metadata.setProperty(key, text);
        setMetadata(std::move(metadata));
    }
}

} // namespace Zelm
