#pragma once

#include <zelm/arrays/IndexSet.h>
#include <zelm/text/ZStringLiteral.h>
#include <zelm/text/ZStringView.h>
#include <zelm/variant/Variant.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Zelm {

class ZVariable;

namespace details {

/// A name under which a child is stored: trees share its text instead of copying it.
constexpr ZStringLiteral childName(const char* text) noexcept {
    return {text, std::char_traits<char>::length(text)};
}

/// The value of a child in place, until the variable changes; throws `std::runtime_error` `Property "name"
/// not found`.
const Variant& propertyOf(const ZVariable& variable, ZStringView name);

/// One index set for each dimension: `rows` in the first one, everything in the others.
std::vector<IndexSet> rowSlice(IndexSet rows, std::uint64_t numberOfDimensions);

} // namespace details
} // namespace Zelm
