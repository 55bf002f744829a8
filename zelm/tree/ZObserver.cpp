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
    ZObjectMetadata metadata = getMetadata();
    if (path.empty()) {
        metadata.deleteChild(kPathKey);
    } else {
        metadata.setProperty(kPathKey, std::move(path));
    }
    setMetadata(std::move(metadata));
}

ZString ZObserver::linkType() const {
    const ZObjectMetadata metadata = getMetadata();
    return static_cast<const ZObject&>(metadata).getChildStringWithDefault(kTypeKey, "_UNKNOWN_");
}

void ZObserver::setLinkType(ZString type) {
    ZObjectMetadata metadata = getMetadata();
    metadata.setProperty(kTypeKey, std::move(type));
    setMetadata(std::move(metadata));
}

} // namespace Zelm
