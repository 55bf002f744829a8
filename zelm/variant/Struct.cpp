#include <zelm/variant/Struct.h>

#include <utility>

namespace Zelm {

Struct::Struct() = default;
Struct::Struct(Struct&&) noexcept = default;
Struct& Struct::operator=(Struct&&) noexcept = default;
Struct::~Struct() = default;

Struct::Struct(const Struct& other) {
    for (const auto& field : other.fields_) {
        fields_.emplace_hint(fields_.end(), field.first, std::make_unique<Variant>(*field.second));
    }
}

Struct& Struct::operator=(const Struct& other) {
    Struct copy(other);
    fields_.swap(copy.fields_);
    return *this;
}

std::vector<ZString> Struct::keys() const {
    std::vector<ZString> keys;
    keys.reserve(fields_.size());
    for (const auto& field : fields_) {
        keys.push_back(field.first);
    }
    return keys;
}

Variant Struct::get(const ZString& key) const {
    const auto field = fields_.find(key);
    return field == fields_.end() ? Variant() : *field->second;
}

void Struct::set(ZString key, Variant value) {
    const auto field = fields_.lower_bound(key);
    if (field != fields_.end() && !(key < field->first)) {
        *field->second = std::move(value);
    } else {
        fields_.emplace_hint(field, std::move(key), std::make_unique<Variant>(std::move(value)));
    }
}

} // namespace Zelm
