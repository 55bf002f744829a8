#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/tree/ZPropertyTree.h>
#include <zelm/units/ZUnit.h>
#include <zelm/variables/ZVariable.h>
#include <zelm/variables/ZVariableIterator.h>
#include <zelm/variant/Variant.h>

#include <cstddef>
#include <string>

namespace Zelm {

/// How a variable keeps its values. A strategy holds nothing: it reads the tree of the variable that it is
/// handed, so one object of each kind serves the whole process. The order of the operations is part of the
/// binary interface.
class ZELM_EXPORT IVariableStrategy {
public:
    virtual std::string variableType() const = 0;
    virtual Variant dataInStoredUnit(const ZVariable& variable) const = 0;
    virtual Variant elementAt(const ZVariable& variable, std::size_t index) const = 0;
    virtual Variant valueAtInStoredUnit(const ZVariable& variable, std::size_t index) const = 0;
    virtual Variant valuesAtIndexInStoredUnit(const ZVariable& variable, std::size_t first,
                                              std::size_t last) const = 0;
    virtual std::size_t size(const ZVariable& variable) const = 0;
    virtual ArrayDimensions dimensions(const ZVariable& variable) const = 0;
    virtual ZVariable convertToUnit(const ZVariable& variable, ZUnit to) const = 0;
    virtual ZVariableIterator iteratorAt(ZVariable* variable, std::size_t position) const = 0;

protected:
    ~IVariableStrategy() = default;
};

/// Values in an array under "Data".
class ZELM_EXPORT ExplicitDataVariableStrategy final : public IVariableStrategy {
public:
    class Iterator : public ZVariableIterator {
    public:
        using ZVariableIterator::ZVariableIterator;
        const Variant operator*() const override;
    };

    static constexpr const char* kType = "ExplVar";
    static constexpr const char* kData = "Data";

    static ExplicitDataVariableStrategy instance;

    std::string variableType() const override { return kType; }
    Variant dataInStoredUnit(const ZVariable& variable) const override;
    Variant elementAt(const ZVariable& variable, std::size_t index) const override;
    Variant valueAtInStoredUnit(const ZVariable& variable, std::size_t index) const override;
    Variant valuesAtIndexInStoredUnit(const ZVariable& variable, std::size_t first,
                                      std::size_t last) const override;
    std::size_t size(const ZVariable& variable) const override;
    ArrayDimensions dimensions(const ZVariable& variable) const override;
    ZVariable convertToUnit(const ZVariable& variable, ZUnit to) const override;
    ZVariableIterator iteratorAt(ZVariable* variable, std::size_t position) const override;

    /// The next version of the variable's tree, with these values and this unit. What else is in it stays.
    ZPropertyHandle write(const ZVariable& variable, Variant data, const ZUnit& unit) const;
};

/// Values computed from "Start", "Count" and "Step".
class ZELM_EXPORT RangeVariableStrategy final : public IVariableStrategy {
public:
    class Iterator : public ZVariableIterator {
    public:
        using ZVariableIterator::ZVariableIterator;
        const Variant operator*() const override;
    };

    static constexpr const char* kType = "RangeVar";
    static constexpr const char* kStart = "Start";
    static constexpr const char* kCount = "Count";
    static constexpr const char* kStep = "Step";

    static RangeVariableStrategy instance;

    std::string variableType() const override { return kType; }
    Variant dataInStoredUnit(const ZVariable& variable) const override;
    Variant elementAt(const ZVariable& variable, std::size_t index) const override;
    Variant valueAtInStoredUnit(const ZVariable& variable, std::size_t index) const override;
    Variant valuesAtIndexInStoredUnit(const ZVariable& variable, std::size_t first,
                                      std::size_t last) const override;
    std::size_t size(const ZVariable& variable) const override;
    ArrayDimensions dimensions(const ZVariable& variable) const override;
    ZVariable convertToUnit(const ZVariable& variable, ZUnit to) const override;
    ZVariableIterator iteratorAt(ZVariable* variable, std::size_t position) const override;

    /// The next version of the variable's tree. A step equivalent to 1 is left out unless there is one to
    /// replace; it is read as the `Double()` 1 then, whatever its type was.
    ZPropertyHandle write(const ZVariable& variable, Variant start, std::size_t count, Variant step,
                          const ZUnit& unit) const;
};

} // namespace Zelm
