#pragma once

#include <zelm/text/TextConversions.h>
#include <zelm/variant/ElementConversion.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/Variant.h>

#include <string>
#include <type_traits>

namespace Zelm::details {

/// Any element as a cell, a text as one of another kind, an element as one of its own type. Between UTF-8 and
/// UTF-16 the exceptions of the text conversions pass through; `String()` and `ZString()` trade bytes.
template <class To, class From>
To convertObject(const From& from) {
    if constexpr (std::is_same_v<From, To> || std::is_same_v<To, Variant>) {
        return To(from);
    } else if constexpr (std::is_same_v<To, std::u16string>) {
        return convertZStringToUtf16(ZString(from));
    } else if constexpr (std::is_same_v<From, std::u16string>) {
        const ZString utf8 = convertUtf16ToZString(from);
        return std::string(utf8.data(), utf8.size());
    } else {
        return To(from.data(), from.size());
    }
}

/// Whether an element comes back from what it became. Text always does: the text that would not is refused by
/// its conversion. Cells and structs differ from themselves if there is a NaN in them.
template <class From, class To>
bool survivesObject([[maybe_unused]] const From& from, [[maybe_unused]] const To& to) {
    if constexpr (std::is_same_v<From, Variant>) {
        return to.isEquivalentTo(from);
    } else if constexpr (std::is_same_v<From, Struct>) {
        return to.isEqual(from, Equivalent);
    } else {
        return true;
    }
}

} // namespace Zelm::details
