#include <zelm/variables/ZVariable.h>

#include <zelm/variables/VariableStrategies.h>

#include <stdexcept>
#include <utility>

namespace Zelm {

namespace details {

const Variant& propertyOf(const ZVariable& variable, ZStringView name) {
    const ZPropertyTreeNode* child = variable.propertyHandle().node().findChild(name);
    if (!child) {
        // Throws in the words of the tree.
        variable.propertyHandle().child(ZString(name));
    }
    return child->value();
}

std::vector<IndexSet> rowSlice(IndexSet rows, std::uint64_t numberOfDimensions) {
    std::vector<IndexSet> sets(numberOfDimensions, IndexSet(IndexRange::all));
    if (!sets.empty()) {
        sets.front() = std::move(rows);
    }
    return sets;
}

} // namespace details

namespace {

/// The name of the independent number `index`.
ZString indepName(std::size_t index) {
    return ZString(std::to_string(index));
}

/// The saved independents in the order of their names.
template <class GetEnumerated>
std::vector<ZGenericObject> savedIndeps(const ZPropertyHandle& variable, GetEnumerated&& getEnumerated) {
    std::vector<ZGenericObject> found;
    const ZString folder(ZVariable::Indeps);
    if (variable.hasChild(folder)) {
        for (auto& [name, object] : getEnumerated(variable.child(folder))) {
            if (object.getObjectType() == ZVariable::objectType()) {
                found.push_back(std::move(object));
            }
        }
    }
    return found;
}

} // namespace

std::string ZVariable::objectType() {
    return "Variable";
}

ZVariable::ZVariable() : ZVariable(Variant(), ZUnit()) {}

ZVariable::ZVariable(Variant data, ZUnit unit) : ZObject(ZString(objectType())) {
    setData(std::move(data), std::move(unit));
}

ZVariable::ZVariable(MutableVariant&& data, ZUnit unit)
    : ZVariable(Variant(std::move(data)), std::move(unit)) {}

ZVariable::ZVariable(Variant start, std::size_t count, Variant step, ZUnit unit)
    : ZObject(ZString(objectType())) {
    setDataAsRange(std::move(start), count, std::move(step), std::move(unit));
}

ZVariable::ZVariable(ZGenericObject object) : ZObject(std::move(object), ZString(objectType())) {
    if (hasChild(ZString(ExplicitDataVariableStrategy::kData))) {
        setStrategy(ExplicitData);
    } else if (hasChild(ZString(RangeVariableStrategy::kStart))) {
        setStrategy(Range);
    } else {
        throw std::invalid_argument("Object does not represent a valid ZVariable");
    }
}

ZVariable::~ZVariable() = default;

void ZVariable::setStrategy(Strategy strategy) noexcept {
    switch (strategy) {
    case ExplicitData:
        strategy_ = &ExplicitDataVariableStrategy::instance;
        break;
    case Range:
        strategy_ = &RangeVariableStrategy::instance;
        break;
    }
}

void ZVariable::setData(Variant data, ZUnit unit) {
    setPropertyHandle(ExplicitDataVariableStrategy::instance.write(*this, std::move(data), unit));
    setStrategy(ExplicitData);
}

void ZVariable::setData(MutableVariant&& data, ZUnit unit) {
    setData(Variant(std::move(data)), std::move(unit));
}

void ZVariable::setDataAsRange(Variant start, std::size_t count, Variant step, ZUnit unit) {
    setPropertyHandle(
        RangeVariableStrategy::instance.write(*this, std::move(start), count, std::move(step), unit));
    setStrategy(Range);
}

Variant ZVariable::dataInStoredUnit() const {
    return strategy_->dataInStoredUnit(*this);
}

MutableVariant ZVariable::mutableDataInStoredUnit() const {
    return MutableVariant(dataInStoredUnit());
}

Variant ZVariable::operator[](std::size_t index) const {
    return strategy_->elementAt(*this, index);
}

Variant ZVariable::valueAtInStoredUnit(std::size_t index) const {
    return strategy_->valueAtInStoredUnit(*this, index);
}

Variant ZVariable::valuesAtIndexInStoredUnit(std::size_t first, std::size_t last) const {
    return strategy_->valuesAtIndexInStoredUnit(*this, first, last);
}

std::size_t ZVariable::size() const {
    return strategy_->size(*this);
}

ArrayDimensions ZVariable::dimensions() const {
    return strategy_ ? strategy_->dimensions(*this) : ArrayDimensions();
}

ZString ZVariable::strategyVariableType() const {
    return ZString(strategy_->variableType());
}

ZUnit ZVariable::unitOfData() const {
    const ZPropertyHandle child = propertyHandle().child(Unit);
    return ZUnit(child.getObjectType() == ZObserver::objectType() ? child.child("Link") : child);
}

ZVariable ZVariable::convertToUnit(ZUnit unit) const {
    return strategy_->convertToUnit(*this, std::move(unit));
}

void ZVariable::setIndep(const ZVariable& indep, std::size_t index) {
    const ZPropertyHandle tree = indep.propertyHandle();
    mutate([&](ZMutablePropertyHandle& root) {
        root.getOrCreateChild(ZString(Indeps)).attachChild(indepName(index), tree);
    });
}

void ZVariable::setIndeps(const ZVariable* indeps, std::size_t count) {
    if (count == 0) {
        return;
    }
    mutate([&](ZMutablePropertyHandle& root) {
        ZMutablePropertyHandle folder = root.getOrCreateChild(ZString(Indeps));
        for (std::size_t i = 0; i < count; ++i) {
            folder.attachChild(indepName(i), indeps[i].propertyHandle());
        }
    });
}

void ZVariable::setIndeps(std::vector<ZVariable> indeps) {
    setIndeps(indeps.data(), indeps.size());
}

void ZVariable::setIndeps(std::initializer_list<ZVariable> indeps) {
    setIndeps(indeps.begin(), indeps.size());
}

std::size_t ZVariable::indepCount() const noexcept {
    try {
        return savedIndeps(
                   propertyHandle(),
                   [](const ZPropertyHandle& folder) { return getEnumeratedChildren(folder, ZString()); })
            .size();
    } catch (...) {
        return 0;
    }
}

std::vector<ZVariable> ZVariable::indeps() const {
    const auto saved = savedIndeps(propertyHandle(), [](const ZPropertyHandle& folder) {
        return getEnumeratedChildren(folder, ZString());
    });
    return std::vector<ZVariable>(saved.begin(), saved.end());
}

ZVariable ZVariable::indep(std::size_t index) const {
    const auto saved = savedIndeps(propertyHandle(), [](const ZPropertyHandle& folder) {
        return getEnumeratedChildren(folder, ZString());
    });
    if (index >= saved.size()) {
        throw std::out_of_range("Index of independent out of bounds");
    }
    return ZVariable(saved[index]);
}

bool ZVariable::hasEquivalentData(const ZVariable& other) const {
    const Variant own = dataInStoredUnit();
    try {
        return own.isEquivalentTo(other.convertToUnit(unitOfData()).dataInStoredUnit());
    } catch (const std::exception&) {
        return false;
    }
}

bool ZVariable::isEquivalentTo(const ZVariable& other) const {
    // Independents may be nested to any depth: pairs that wait for their independents stand on a stack of
    // their own.
    struct OpenPair {
        ZVariable a;
        ZVariable b;
        std::vector<ZVariable> indepsOfA;
        std::vector<ZVariable> indepsOfB;
        std::size_t next = 0;
    };
    std::vector<OpenPair> open;
    const auto enter = [&open](const ZVariable& a, const ZVariable& b) {
        if (!a.hasEquivalentData(b)) {
            return false;
        }
        open.push_back({a, b, a.indeps(), b.indeps()});
        return open.back().indepsOfA.size() == open.back().indepsOfB.size();
    };
    if (!enter(*this, other)) {
        return false;
    }
    while (!open.empty()) {
        OpenPair& pair = open.back();
        if (pair.next < pair.indepsOfA.size()) {
            const std::size_t i = pair.next++;
            const ZVariable a = pair.indepsOfA[i];
            const ZVariable b = pair.indepsOfB[i];
            if (!enter(a, b)) {
                return false;
            }
            continue;
        }
        if (!pair.a.getMetadata().propertyHandle().isEquivalentTo(pair.b.getMetadata().propertyHandle())) {
            return false;
        }
        open.pop_back();
    }
    return true;
}

ZVariableIterator ZVariable::begin() {
    return strategy_->iteratorAt(this, 0);
}

ZVariableIterator ZVariable::end() {
    return strategy_->iteratorAt(this, size());
}

} // namespace Zelm
