#include <zelm/tree/ZObjectMetadata.h>

#include <utility>

namespace Zelm {

const ZStringLiteral ZObjectMetadata::MetadataFolder("__Metadata", 10);

ZString ZObjectMetadata::objectType() {
    return "_Metadata";
}

ZObjectMetadata::ZObjectMetadata() : ZObject(objectType()) {}

ZObjectMetadata::ZObjectMetadata(ZGenericObject object) : ZObject(std::move(object), objectType()) {}

ZObjectMetadata::~ZObjectMetadata() = default;

} // namespace Zelm
