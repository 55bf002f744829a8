#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZObject.h>

namespace Zelm {

/// The value form of a link to another object of a document. Its child "Link" is a copy of the linked object
/// as it last was; its metadata say where that object is ("_path") and of what type ("_type").
class ZELM_EXPORT ZObserver : public ZObject {
public:
    /// "Link", the child that is the copy of the linked object.
    static constexpr ZStringLiteral Link{"Link", 4};

    /// "_Observer".
    static ZString objectType();

    ZObserver();
    /// Throws `std::logic_error` "_Observer expected but not found" for an object of another type.
    ZObserver(ZGenericObject object);

    ZObserver(const ZObserver&) = default;
    ZObserver(ZObserver&&) noexcept = default;
    ZObserver& operator=(const ZObserver&) = default;
    ZObserver& operator=(ZObserver&&) noexcept = default;
    ~ZObserver() override;

    /// The path of the linked object relative to the link; empty if it is unknown.
    ZString linkedPath() const;
    /// An empty path removes the entry.
    void setLinkedPath(ZString path);
    /// The object type of the linked object; "_UNKNOWN_" if it is unknown.
    ZString linkType() const;
    /// Records the object type of the linked object.
    void setLinkType(ZString type);

private:
    /// Stores a text in the metadata, unless it is there already: whoever saves a document again and again
    /// then makes no new versions of it.
    void setEntry(const ZString& key, const ZString& text);
};

} // namespace Zelm
