#include <zelm/variables/VariableStrategies.h>

#include <zelm/arrays/IndexSet.h>
#include <zelm/variables/StrategySupport.h>

#include <utility>

namespace Zelm {

ExplicitDataVariableStrategy ExplicitDataVariableStrategy::instance;

const Variant ExplicitDataVariableStrategy::Iterator::operator*() const {
    return ZVariableIterator::operator*();
}

namespace {

const Variant& dataOf(const ZVariable& variable) {
    return details::propertyOf(variable, ExplicitDataVariableStrategy::kData);
}

Variant rows(const Variant& data, IndexSet positions) {
    return data.slice(details::rowSlice(std::move(positions), data.dimensions().numberOfDimensions()));
}

} // namespace

Variant ExplicitDataVariableStrategy::dataInStoredUnit(const ZVariable& variable) const {
    return dataOf(variable);
}

Variant ExplicitDataVariableStrategy::elementAt(const ZVariable& variable, std::size_t index) const {
    return rows(dataOf(variable), IndexSet(IndexValue(index, false)));
}

Variant ExplicitDataVariableStrategy::valueAtInStoredUnit(const ZVariable& variable,
                                                          std::size_t index) const {
    return elementAt(variable, index);
}

Variant ExplicitDataVariableStrategy::valuesAtIndexInStoredUnit(const ZVariable& variable, std::size_t first,
                                                                std::size_t last) const {
    return rows(dataOf(variable), IndexSet(IndexValue(first, false), IndexValue(last, false)));
}

std::size_t ExplicitDataVariableStrategy::size(const ZVariable& variable) const {
    return dataOf(variable).dimensions().countAllElements();
}

ArrayDimensions ExplicitDataVariableStrategy::dimensions(const ZVariable& variable) const {
    return dataOf(variable).dimensions();
}

ZVariable ExplicitDataVariableStrategy::convertToUnit(const ZVariable& variable, ZUnit to) const {
    Variant converted = variable.unitOfData().ConvertTo(to, dataOf(variable));
    return ZVariable(std::move(converted), std::move(to));
}

ZVariableIterator ExplicitDataVariableStrategy::iteratorAt(ZVariable* variable, std::size_t position) const {
    return Iterator(variable, position);
}

ZPropertyHandle ExplicitDataVariableStrategy::write(const ZVariable& variable, Variant data,
                                                    const ZUnit& unit) const {
    return variable.propertyHandle().changed([&](ZMutablePropertyHandle& root) {
        root.setChildValue(details::childName(kData), std::move(data));
        root.attachChild(ZVariable::Unit, unit.propertyHandle());
    });
}

} // namespace Zelm
