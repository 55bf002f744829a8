#include <zelm/units/ZUnitType.h>

#include <zelm/units/ZUnit.h>

#include <stdexcept>
#include <utility>

namespace Zelm {

// The order of these definitions is the order of initialisation: first the registry, then the built-in
// quantities, each of which appends its entry.
std::vector<ZUnitType> ZUnitType::sm_unitTypes;

#define ZELM_QUANTITY(Accessor, s_static, name, reference, ...)                                              \
    const ZUnitType ZUnitType::s_static = ZUnitType::Create(name, ZUnitDimensions(__VA_ARGS__), reference);  \
    const ZUnitType& ZUnitType::Accessor() noexcept {                                                        \
        return s_static;                                                                                     \
    }
ZELM_FOR_EACH_QUANTITY(ZELM_QUANTITY)
#undef ZELM_QUANTITY

ZUnitType::ZUnitType() : name_("none") {}

ZUnitType::ZUnitType(ZString name, ZString reference, ZUnitDimensions dimensions)
    : name_(std::move(name)), reference_(std::move(reference)), dimensions_(dimensions) {}

const ZUnitType& ZUnitType::Create(ZString name, ZUnitDimensions dimensions, ZString referenceSiString) {
    if (referenceSiString.empty()) {
        referenceSiString = dimensions.SIUnitsString();
    }
    sm_unitTypes.push_back(ZUnitType(std::move(name), std::move(referenceSiString), dimensions));
    return sm_unitTypes.back();
}

const ZUnitType& ZUnitType::FindByReferenceSiString(const ZString& reference) {
    for (const ZUnitType& type : sm_unitTypes) {
        if (type.reference_ == reference) {
            return type;
        }
    }
    throw std::runtime_error(
        ("Could not find a ZUnitType with reference SI string " + ZStringView(reference)).to_string());
}

std::vector<ZUnitType> ZUnitType::FindCompatibleTypes(const ZUnitDimensions& dimensions) {
    std::vector<ZUnitType> compatible;
    for (const ZUnitType& type : sm_unitTypes) {
        if (type.dimensions_ == dimensions) {
            compatible.push_back(type);
        }
    }
    return compatible;
}

ZUnitType ZUnitType::FindUnitType(const ZUnitDimensions& dimensions, const ZString& siString) {
    const ZUnitType* earliest = nullptr;
    for (const ZUnitType& type : sm_unitTypes) {
        if (type.dimensions_ != dimensions) {
            continue;
        }
        if (siString.contains(type.reference_)) {
            return type;
        }
        if (!earliest) {
            earliest = &type;
        }
    }
    return earliest ? *earliest : Create(siString, dimensions, ZString());
}

ZUnitType::DecibelType ZUnitType::GetDBType(const ZUnitType& type) noexcept {
    const bool amplitude = type.dimensions_ == s_electricPotential.dimensions_ ||
                           type.dimensions_ == s_electricCurrent.dimensions_;
    return amplitude ? AmplitudeRatio : PowerRatio;
}

ZUnit ZUnitType::GetBaseMKSUnits() const {
    return ZUnit::FromSiString(reference_);
}

bool ZUnitType::operator==(const ZUnitType& other) const noexcept {
    return name_ == other.name_ && dimensions_ == other.dimensions_;
}

} // namespace Zelm
