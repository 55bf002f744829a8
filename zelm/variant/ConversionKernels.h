#pragma once

#include <zelm/variant/WellKnownType.h>

#include <cstddef>

namespace Zelm::details {

/// The conversion from one numeric type to another, real or complex: found once for an array, then called for
/// one run of its elements after the other. Complex elements are taken as pairs of their parts, so that all
/// 484 pairs of types share the loops of the 121 real ones.
class NumberConversion {
public:
    /// The most elements of a run: what it reads, writes and keeps in between stays in the first-level cache.
    static constexpr std::size_t kLongestRun = 512;

    NumberConversion(WellKnownType from, WellKnownType to, bool checked) noexcept;

    /// Converts `count` elements, at most kLongestRun. False if they are to be checked and one of them does
    /// not survive.
    bool operator()(const void* from, void* to, std::size_t count) const noexcept;

private:
    using Convert = bool(const void* from, void* to, std::size_t count) noexcept;
    using Rearrange = void(const void* from, void* to, std::size_t count) noexcept;
    using IsReal = bool(const void* complex, std::size_t count) noexcept;

    bool fromComplex_;
    bool toComplex_;
    Convert* convert_ = nullptr;
    Rearrange* takeRealParts_ = nullptr;
    Rearrange* addImaginaryParts_ = nullptr;
    IsReal* isReal_ = nullptr; ///< null if there is nothing to check
};

} // namespace Zelm::details
