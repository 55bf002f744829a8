#pragma once

#include <zelm/variant/RoomForElements.h>
#include <zelm/variant/VariantAccess.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

/// The element-wise loops of the library's own code. Functions go in as types of their own, so that loops
/// over raw pointers can be vectorised; operands that nobody else holds are overwritten in place, since the
/// page faults of a fresh result cost more than its arithmetic.
namespace Zelm::details {

/// Random access to `function(0)`, `function(1)`, ...: a std::vector that is given a range of these is
/// written once, without being zeroed before. `function` outlives the iterator.
template <class Function>
class GeneratingIterator {
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = std::decay_t<std::invoke_result_t<Function&, std::size_t>>;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = value_type;

    GeneratingIterator(Function& function, std::size_t index) noexcept
        : function_(&function), index_(index) {}

    reference operator*() const { return (*function_)(index_); }
    GeneratingIterator& operator++() noexcept {
        ++index_;
        return *this;
    }
    GeneratingIterator& operator--() noexcept {
        --index_;
        return *this;
    }
    GeneratingIterator operator++(int) noexcept {
        GeneratingIterator before = *this;
        ++index_;
        return before;
    }
    GeneratingIterator& operator+=(difference_type n) noexcept {
        index_ += static_cast<std::size_t>(n);
        return *this;
    }
    friend difference_type operator-(const GeneratingIterator& a, const GeneratingIterator& b) noexcept {
        return static_cast<difference_type>(a.index_ - b.index_);
    }
    friend bool operator==(const GeneratingIterator& a, const GeneratingIterator& b) noexcept {
        return a.index_ == b.index_;
    }
    friend bool operator!=(const GeneratingIterator& a, const GeneratingIterator& b) noexcept {
        return a.index_ != b.index_;
    }

private:
    Function* function_;
    std::size_t index_;
};

/// `function(0)` to `function(count - 1)`, called in this order.
template <class Function>
auto generated(std::size_t count, Function function) {
    using Iterator = GeneratingIterator<Function>;
    auto elements = roomForElements<typename Iterator::value_type>(count);
    elements.assign(Iterator(function, 0), Iterator(function, count));
    return elements;
}

/// The number of elements that the shape of a storage says. Throws `std::out_of_range` "Offset out of bounds"
/// if there are fewer.
template <class T>
std::size_t countOfShape(const VectorVariantStorage<T>& storage) {
    const std::uint64_t count = storage.shape().countAllElements();
    if (count > storage.elements().size()) {
        throwOffsetOutOfBounds();
    }
    return static_cast<std::size_t>(count);
}

/// A value without elements, as every shape of none gives it.
template <class T>
Variant emptyArray(DataOrdering ordering) {
    return VariantAccess::make<T>({}, ArrayDimensions{0}, ordering);
}

/// The elements of `value`, cut to the first `count`, to be overwritten with a result; null, and nothing
/// happens, if anybody shares them or they are of another type.
template <class T>
T* claimElements(Variant& value, std::size_t count) {
    VectorVariantStorage<T>* const storage = VariantAccess::soleTyped<T>(value);
    if (!storage) {
        return nullptr;
    }
    storage->elements().resize(count);
    VariantAccess::compare(value) = &compareStorages<T>;
    return storage->elements().data();
}

/// `function` of each element, in flat order, as mapElements() gives it. If `function` throws, no value that
/// anybody still holds has changed.
template <class T, class Function>
Variant mapElementsInline(Variant value, Function function) {
    VariantAccess::convert<T>(value);
    const VectorVariantStorage<T>& source = *VariantAccess::typed<T>(value);
    const std::size_t count = countOfShape(source);
    if (count == 0) {
        return emptyArray<T>(source.dataOrdering());
    }
    if (T* const elements = claimElements<T>(value, count)) {
        for (std::size_t i = 0; i < count; ++i) {
            elements[i] = function(std::as_const(elements[i]));
        }
        return value;
    }
    const T* const elements = source.elements().data();
    return VariantAccess::make<T>(generated(count, [&](std::size_t i) -> T { return function(elements[i]); }),
                                  source.shape(), source.dataOrdering());
}

} // namespace Zelm::details
