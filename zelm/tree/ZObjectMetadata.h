#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZObject.h>

namespace Zelm {

/// What travels with an object without belonging to its class, as the child "__Metadata" of its tree.
class ZELM_EXPORT ZObjectMetadata : public ZObject {
public:
    /// "__Metadata", the name under which metadata lies in its owner.
    static const ZStringLiteral MetadataFolder;
    /// "_Metadata".
    static ZString objectType();

    ZObjectMetadata();
    /// Throws `std::logic_error` "_Metadata expected but not found" for an object of another type.
    ZObjectMetadata(ZGenericObject object);

    ZObjectMetadata(const ZObjectMetadata&) = default;
    ZObjectMetadata(ZObjectMetadata&&) noexcept = default;
    ZObjectMetadata& operator=(const ZObjectMetadata&) = default;
    ZObjectMetadata& operator=(ZObjectMetadata&&) noexcept = default;
    ~ZObjectMetadata() override;
};

} // namespace Zelm
