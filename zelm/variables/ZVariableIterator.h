#pragma once

#include <zelm/Export.h>
#include <zelm/variant/Variant.h>

#include <cstddef>

namespace Zelm {

class ZVariable;

/// The position of an iteration over the rows of a variable, which must outlive it. Iterators compare by
/// position alone. They are made for range-for and are no iterators of the standard library: increments
/// return bases by value.
class ZELM_EXPORT ZVariableIteratorBase {
public:
    ZVariableIteratorBase(const ZVariableIteratorBase&) = default;
    ZVariableIteratorBase& operator=(const ZVariableIteratorBase&) = default;

    virtual ZVariableIteratorBase operator++(int);
    virtual ZVariableIteratorBase operator++();

    bool operator==(const ZVariableIteratorBase& other) const noexcept {
        return position_ == other.position_;
    }
    bool operator!=(const ZVariableIteratorBase& other) const noexcept { return !(*this == other); }

    // Not virtual: increments return this class by value, and no owner deletes an iterator through it.
    ~ZVariableIteratorBase() = default;

protected:
    ZVariableIteratorBase(ZVariable* variable, std::size_t position) noexcept
        : variable_(variable), position_(position) {}

    ZVariable* variable_;
    std::size_t position_;
};

/// Walks over the rows of a variable; each row is computed when it is asked for.
class ZELM_EXPORT ZVariableIterator : public ZVariableIteratorBase {
public:
    ZVariableIterator(ZVariable* variable, std::size_t position) noexcept
        : ZVariableIteratorBase(variable, position) {}

    /// The row at this position, as `variable[position]`.
    virtual const Variant operator*() const;
};

} // namespace Zelm
