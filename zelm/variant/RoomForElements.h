#pragma once

#include <cstddef>
#include <vector>

namespace Zelm::details {

/// Asks the system for large pages behind memory that is about to be filled, if there is enough of it to be
/// worth the call. A request and no more: where it is not heard, the memory is the same.
void requestLargePages(void* memory, std::size_t bytes) noexcept;

/// A vector without elements and with room for `count` of them, which are to be appended: the memory is
/// written once, without being zeroed before. Touching pages of 4 kB for the first time takes longer than
/// most of the arithmetic that fills them, so that large arrays ask for larger ones.
template <class Element>
std::vector<Element> roomForElements(std::size_t count) {
    std::vector<Element> elements;
    elements.reserve(count);
    requestLargePages(elements.data(), count * sizeof(Element));
    return elements;
}

} // namespace Zelm::details
