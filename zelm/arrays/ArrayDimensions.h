#pragma once

#include <zelm/Export.h>

#include <cassert>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace Zelm {

/// The shape of an array: one 64-bit extent a dimension, in order.
///
/// No invariant is kept: extents of 0 and 1 may stand anywhere, and no dimensions at all is a shape too. A
/// scalar has the shape `{1}`. `==` compares shapes by equivalence: trailing extents of 1 do not count, and
/// all shapes without elements are equal.
class ZELM_EXPORT ArrayDimensions {
public:
    using const_iterator = std::vector<std::uint64_t>::const_iterator;

    /// The shape `{}`, of no dimensions and no elements.
    ArrayDimensions() noexcept = default;
    ArrayDimensions(std::initializer_list<std::uint64_t> extents) : extents_(extents) {}
    ArrayDimensions(std::vector<std::uint64_t> extents) noexcept : extents_(std::move(extents)) {}

    /// Equivalence, as `isEquivalentTo`: `{3}` equals `{3,1,1}`.
    friend bool operator==(const ArrayDimensions& a, const ArrayDimensions& b) noexcept {
        return a.isEquivalentTo(b);
    }
    friend bool operator!=(const ArrayDimensions& a, const ArrayDimensions& b) noexcept {
        return !a.isEquivalentTo(b);
    }

    /// The extent of a dimension; the index is not checked.
    std::uint64_t operator[](std::uint64_t dimension) const noexcept {
        assert(dimension < extents_.size());
        return extents_[dimension];
    }
    /// The extent of a dimension, writable; the index is not checked.
    std::uint64_t& operator[](std::uint64_t dimension) noexcept {
        assert(dimension < extents_.size());
        return extents_[dimension];
    }

    const_iterator begin() const noexcept { return extents_.begin(); }
    const_iterator end() const noexcept { return extents_.end(); }

    /// A copy of the extents.
    std::vector<std::uint64_t> asVector() const { return extents_; }
    /// The extents themselves, valid while the shape lives unchanged.
    const std::vector<std::uint64_t>& extents() const noexcept { return extents_; }

    /// The number of extents as stored, trailing 1s included.
    std::uint64_t numberOfDimensions() const noexcept { return extents_.size(); }

    /// The product of all extents; 0 for no dimensions. A product of 2^64 or more gives 2^64-1, which no
    /// storage can hold, so that a shape never passes for a smaller one.
    std::uint64_t countAllElements() const noexcept;

    /// Whether the shape has no elements: no dimensions, or an extent of 0.
    bool isEmpty() const noexcept;

    /// Whether there is at least one dimension and every extent is 1.
    bool isScalar() const noexcept;

    /// Whether there are elements and fewer than two extents exceed 1: `{1,5}`, `{1,5,1}` and the scalar
    /// `{1}` are vectors, `{2,3}` is not.
    bool isVector() const noexcept;

    /// The shape without its trailing 1s (one entry stays), or `{}` if it has no elements.
    ArrayDimensions canonicalForm() const;
    /// The number of extents of `canonicalForm()`, which is always a leading part of the stored ones.
    std::uint64_t canonicalSize() const noexcept;

    /// Whether the canonical forms agree.
    bool isEquivalentTo(const ArrayDimensions& other) const noexcept;
    /// Whether the extents agree entry by entry: `{3}` and `{3,1}` are equivalent, but not identical.
    bool isIdenticalTo(const ArrayDimensions& other) const noexcept { return extents_ == other.extents_; }

private:
    std::vector<std::uint64_t> extents_;
};

} // namespace Zelm
