#include <zelm/variables/ZVariable.h>

#include <zelm/variables/StrategySupport.h>
#include <zelm/variables/VariableStrategies.h>

#include <optional>
#include <stdexcept>
#include <utility>

namespace Zelm {

namespace {

constexpr ZStringLiteral kObjectType("Variable", 8);

/// The name of the independent number `index`.
ZString indepName(std::size_t index) {
    return ZString(std::to_string(index));
}

/// A child seen through, if it is a link. Throws `std::runtime_error` `Property "Link" not found`.
ZPropertyHandle linked(ZPropertyHandle child) {
    return child.getObjectType() == ZObserver::objectType() ? child.child(ZObserver::Link) : child;
}

} // namespace

std::string ZVariable::objectType() {
    return kObjectType;
}

ZVariable::ZVariable() : ZVariable(Variant(), ZUnit()) {}

ZVariable::ZVariable(Variant data, ZUnit unit) : ZObject(kObjectType) {
    setData(std::move(data), std::move(unit));
}

ZVariable::ZVariable(MutableVariant&& data, ZUnit unit)
    : ZVariable(Variant(std::move(data)), std::move(unit)) {}

ZVariable::ZVariable(Variant start, std::size_t count, Variant step, ZUnit unit) : ZObject(kObjectType) {
    setDataAsRange(std::move(start), count, std::move(step), std::move(unit));
}

ZVariable::ZVariable(ZGenericObject object) : ZObject(std::move(object), kObjectType) {
    if (hasChild(details::childName(ExplicitDataVariableStrategy::kData))) {
        setStrategy(ExplicitData);
    } else if (hasChild(details::childName(RangeVariableStrategy::kStart))) {
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
    return ZUnit(linked(propertyHandle().child(Unit)));
}

ZVariable ZVariable::convertToUnit(ZUnit unit) const {
    return strategy_->convertToUnit(*this, std::move(unit));
}

void ZVariable::setIndep(const ZVariable& indep, std::size_t index) {
    const ZPropertyHandle tree = indep.propertyHandle();
    mutate([&](ZMutablePropertyHandle& root) {
        root.getOrCreateChild(Indeps).attachChild(indepName(index), tree);
    });
}

void ZVariable::setIndeps(const ZVariable* indeps, std::size_t count) {
    if (count == 0) {
        return;
    }
    mutate([&](ZMutablePropertyHandle& root) {
        ZMutablePropertyHandle folder = root.getOrCreateChild(Indeps);
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

/// Calls `visit` for each independent in the order of the list, with a function that builds it.
template <class Visit>
void ZVariable::visitIndeps(Visit visit) const {
    const ZPropertyTreeNode* folder = propertyHandle().node().findChild(Indeps);
    if (!folder) {
        return;
    }
    for (const auto& [name, node] : folder->children()) {
        if (!isEnumeratedName(name, ZStringView())) {
            continue;
        }
        const auto handle = [&, &name = name] { return linked(propertyHandle().child(Indeps).child(name)); };
        const bool isLink = node->objectType() == ZObserver::objectType();
        if ((isLink ? handle().getObjectType() : node->objectType()) == kObjectType) {
            visit([&] { return ZVariable(handle()); });
        }
    }
}

std::size_t ZVariable::indepCount() const noexcept {
    std::size_t count = 0;
    try {
        visitIndeps([&](const auto&) { ++count; });
    } catch (...) {
        return 0;
    }
    return count;
}

std::vector<ZVariable> ZVariable::indeps() const {
    std::vector<ZVariable> all;
    visitIndeps([&](const auto& build) { all.push_back(build()); });
    return all;
}

ZVariable ZVariable::indep(std::size_t index) const {
    std::optional<ZVariable> found;
    std::size_t position = 0;
    visitIndeps([&](const auto& build) {
        if (position++ == index) {
            found = build();
        }
    });
    if (!found) {
        throw std::out_of_range("Index of independent out of bounds");
    }
    return *std::move(found);
}

bool ZVariable::hasEquivalentData(const ZVariable& other) const {
    const Variant own = dataInStoredUnit();
    try {
        return own.isEquivalentTo(other.convertToUnit(unitOfData()).dataInStoredUnit());
    } catch (...) {
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
            if (!enter(pair.indepsOfA[i], pair.indepsOfB[i])) {
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
