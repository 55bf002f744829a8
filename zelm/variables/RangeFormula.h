#pragma once

#include <zelm/variant/Variant.h>

#include <cstdint>
#include <optional>

namespace Zelm::details {

/// The elements of a range: `start + index * step` by the arithmetic of Variant, where the index counts as
/// `unsignedInt64`. A scalar start and step of numbers are computed by typed loops with the same outcome,
/// failures included; everything else goes through the operators.
class RangeFormula {
public:
    /// Refers to the two values, which have to outlive it.
    RangeFormula(const Variant& start, const Variant& step) noexcept : start_(start), step_(step) {}

    /// Element `index`.
    Variant element(std::uint64_t index) const;

    /// The elements from `first` to `last`, appended one to another.
    Variant elements(std::uint64_t first, std::uint64_t last) const;

    /// All elements from 0 to `count` - 1 as one array. Element 0 is calculated with an `int32` zero as
    /// index, and its type becomes that of the array; the others are converted to it with a check.
    Variant array(std::uint64_t count) const;

private:
    Variant firstElement() const;
    Variant arrayOfRows(Variant first, std::uint64_t count) const;
    /// Nothing if start or step is no scalar number, or if the operators would find a number that does not
    /// survive one of the conversions: they name the failure.
    std::optional<Variant> scalarElements(std::uint64_t first, std::uint64_t count,
                                          DataOrdering ordering) const;

    const Variant& start_;
    const Variant& step_;
};

} // namespace Zelm::details
