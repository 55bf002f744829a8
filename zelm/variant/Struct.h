#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/variant/Variant.h>

#include <map>
#include <memory>
#include <vector>

namespace Zelm {

/// The record element type: Variants under unique keys, in byte order of the keys. A copy has fields of its
/// own, which share their elements as every copy of a Variant does.
class ZELM_EXPORT Struct {
public:
    Struct();
    Struct(const Struct& other);
    Struct(Struct&&) noexcept;
    Struct& operator=(const Struct& other);
    Struct& operator=(Struct&&) noexcept;
    ~Struct();

    /// All keys, in byte order.
    std::vector<ZString> keys() const;
    /// A copy of the field, a null Variant if there is none under that key.
    Variant get(const ZString& key) const;
    /// Stores `value` under `key` in place of any former field.
    void set(ZString key, Variant value);

    /// Whether both have the same keys and, under each of them, fields that are equal at this level.
    bool isEqual(const Struct& other, ComparisonLevel level) const;

private:
    friend struct details::VariantAccess;

    std::map<ZString, std::unique_ptr<Variant>> fields_;
};

} // namespace Zelm
