#pragma once

#include <zelm/variant/Struct.h>
#include <zelm/variant/Variant.h>

#include <vector>

namespace Zelm::details {

/// Destroys all cells and structs below these elements that nobody else holds, one after the other and not
/// one inside the other, so that the depth of nesting costs no stack. The elements are left as after a move
/// and are to be destroyed. Falls back to nested destruction where memory runs out.
void releaseNested(std::vector<Variant>& elements) noexcept;
void releaseNested(std::vector<Struct>& elements) noexcept;

} // namespace Zelm::details
