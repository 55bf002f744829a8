#include <zelm/variables/VariableStrategies.h>

#include <zelm/variables/RangeFormula.h>
#include <zelm/variables/StrategySupport.h>

#include <stdexcept>
#include <utility>

namespace Zelm {

RangeVariableStrategy RangeVariableStrategy::instance;

const Variant RangeVariableStrategy::Iterator::operator*() const {
    return ZVariableIterator::operator*();
}

namespace {

std::uint64_t countOf(const ZVariable& variable) {
    return details::propertyOf(variable, RangeVariableStrategy::kCount).value<std::uint64_t>();
}

/// The step that is stored, if there is one.
const Variant* findStep(const ZVariable& variable) {
    const ZPropertyTreeNode* step = variable.propertyHandle().node().findChild(RangeVariableStrategy::kStep);
    return step ? &step->value() : nullptr;
}

/// The step of a range that stores none.
const Variant& defaultStep() {
    static const Variant one(1.0);
    return one;
}

const Variant& stepOf(const ZVariable& variable) {
    const Variant* step = findStep(variable);
    return step ? *step : defaultStep();
}

details::RangeFormula formulaOf(const ZVariable& variable) {
    return details::RangeFormula(details::propertyOf(variable, RangeVariableStrategy::kStart),
                                 stepOf(variable));
}

} // namespace

Variant RangeVariableStrategy::dataInStoredUnit(const ZVariable& variable) const {
    return formulaOf(variable).array(countOf(variable));
}

Variant RangeVariableStrategy::elementAt(const ZVariable& variable, std::size_t index) const {
    return formulaOf(variable).element(index);
}

Variant RangeVariableStrategy::valueAtInStoredUnit(const ZVariable& variable, std::size_t index) const {
    if (index >= countOf(variable)) {
        throw std::runtime_error("offset is out of bounds");
    }
    return formulaOf(variable).element(index);
}

Variant RangeVariableStrategy::valuesAtIndexInStoredUnit(const ZVariable& variable, std::size_t first,
                                                         std::size_t last) const {
    const std::uint64_t count = countOf(variable);
    if (first >= count) {
        throw std::invalid_argument("start Index is out of bounds");
    }
    if (last >= count) {
        throw std::invalid_argument("end Index is out of bounds");
    }
    if (last < first) {
        throw std::invalid_argument("end index can not be less than start");
    }
    return formulaOf(variable).elements(first, last);
}

std::size_t RangeVariableStrategy::size(const ZVariable& variable) const {
    return countOf(variable);
}

ArrayDimensions RangeVariableStrategy::dimensions(const ZVariable& variable) const {
    return ArrayDimensions{countOf(variable)};
}

ZVariable RangeVariableStrategy::convertToUnit(const ZVariable& variable, ZUnit to) const {
    const ZUnit from = variable.unitOfData();
    Variant start = from.ConvertTo(to, details::propertyOf(variable, kStart));
    Variant step = from.ConvertTo(to, stepOf(variable));
    return ZVariable(std::move(start), countOf(variable), std::move(step), std::move(to));
}

ZVariableIterator RangeVariableStrategy::iteratorAt(ZVariable* variable, std::size_t position) const {
    return Iterator(variable, position);
}

ZPropertyHandle RangeVariableStrategy::write(const ZVariable& variable, Variant start, std::size_t count,
                                             Variant step, const ZUnit& unit) const {
    const bool writesStep = findStep(variable) || !step.isEquivalentTo(defaultStep());
    return variable.propertyHandle().changed([&](ZMutablePropertyHandle& root) {
        root.setChildValue(details::childName(kStart), std::move(start));
        root.setChildValue(details::childName(kCount), Variant(std::uint64_t{count}));
        if (writesStep) {
            root.setChildValue(details::childName(kStep), std::move(step));
        }
        root.attachChild(ZVariable::Unit, unit.propertyHandle());
    });
}

} // namespace Zelm
