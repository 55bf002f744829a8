#pragma once

#include <zelm/Export.h>

#include <cstdint>
#include <vector>

namespace Zelm {

/// A statement about which indices of one dimension are meant. It gets its meaning with the extent of the
/// dimension, so one item fits arrays of any size.
class ZELM_EXPORT IndexItem {
public:
    constexpr IndexItem() noexcept = default;
    IndexItem(const IndexItem&) = default;
    IndexItem& operator=(const IndexItem&) = default;
    virtual ~IndexItem();

    /// The indices meant, in ascending order, for a dimension of that extent.
    virtual std::vector<std::uint64_t> values(std::uint64_t extent) const = 0;
    /// Whether the item fits a dimension of that extent.
    virtual bool isValid(std::uint64_t extent) const = 0;
    /// A new copy, owned by the caller; never null.
    virtual IndexItem* clone() const = 0;
};

/// A single index, counted from the start of its dimension or back from the last index.
class ZELM_EXPORT IndexValue : public IndexItem {
public:
    /// Index 0, counted from the start.
    constexpr IndexValue() noexcept = default;
    constexpr IndexValue(std::uint64_t index, bool countedFromEnd) noexcept
        : value(index), fromEnd(countedFromEnd) {}
    IndexValue(const IndexValue&) = default;
    IndexValue& operator=(const IndexValue&) = default;
    ~IndexValue() override;

    /// The index that many places before the last one; `end(0)` is the last index.
    static IndexValue end(std::uint64_t placesBeforeLast) noexcept { return {placesBeforeLast, true}; }

    /// Moves this index `n` places toward the start and returns it: the left operand changes, as with `-=`.
    /// `IndexValue::end(0) - 1` thus reads as the last index but one. An index that would fall below 0 wraps
    /// around and fits no dimension.
    IndexValue& operator-(unsigned int n) noexcept {
        value = fromEnd ? value + n : value - n;
        return *this;
    }

    friend bool operator==(const IndexValue& a, const IndexValue& b) noexcept {
        return a.value == b.value && a.fromEnd == b.fromEnd;
    }
    friend bool operator!=(const IndexValue& a, const IndexValue& b) noexcept { return !(a == b); }

    /// The index, counted from the start of a dimension of that extent. An extent of 0 is not tested.
    /// @throws std::out_of_range "Index value out-of-range"
    std::uint64_t offset(std::uint64_t extent) const;

    /// The one element `offset(extent)`.
    std::vector<std::uint64_t> values(std::uint64_t extent) const override;
    bool isValid(std::uint64_t extent) const override { return value < extent; }
    IndexValue* clone() const override;

    std::uint64_t value = 0; ///< the index, or its distance from the last one
    bool fromEnd = false;    ///< whether `value` counts back from the last index
};

/// Every `step`-th index from `start` to `end`, both included.
class ZELM_EXPORT IndexRange : public IndexItem {
public:
    IndexRange(IndexValue firstIndex, IndexValue lastIndex, std::uint64_t stepWidth) noexcept
        : start(firstIndex), end(lastIndex), step(stepWidth) {}
    IndexRange(const IndexRange&) = default;
    IndexRange(IndexRange&&) = default;
    IndexRange& operator=(const IndexRange&) = default;
    IndexRange& operator=(IndexRange&&) = default;
    ~IndexRange() override;

    /// A whole dimension, whatever its extent. Initialised as a constant, so other statics may use it.
    static const IndexRange all;

    /// The indices of the range; none for `all` over an extent of 0, or where `start` is one past `end` and
    /// `step` is 1.
    /// @throws std::out_of_range "Index value out-of-range" if `start` or `end` does not fit.
    /// @throws std::length_error "vector<T> too long" if `start` is past `end` otherwise, `step` is 0, or no
    ///         vector can hold so many. Such a range may be valid: the caller is to test the order.
    std::vector<std::uint64_t> values(std::uint64_t extent) const override;
    /// Whether `start` and `end` fit and `step` is not 0. Their order is not looked at.
    bool isValid(std::uint64_t extent) const override;
    IndexRange* clone() const override;

    IndexValue start;
    IndexValue end; ///< inclusive
    std::uint64_t step;

private:
    constexpr IndexRange() noexcept : start(0, false), end(0, true), step(1) {}
};

} // namespace Zelm
