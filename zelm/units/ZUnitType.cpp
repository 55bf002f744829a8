#include <zelm/units/ZUnitType.h>

#include <zelm/units/ZUnit.h>

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Zelm {

namespace {

struct SignatureHash {
    std::size_t operator()(const ZUnitDimensions& d) const noexcept {
        std::size_t hash = 0;
        for (const int exponent :
             {d.Length(), d.Mass(), d.Time(), d.ElectricalCurrent(), d.ThermodynamicTemperature(),
              d.QuantityOfSubstance(), d.LuminousIntensity(), d.Angle(), d.SolidAngle()}) {
            hash = hash * 31 + static_cast<unsigned>(exponent);
        }
        return hash;
    }
};

struct TextHash {
    std::size_t operator()(const ZString& text) const noexcept {
        return std::hash<std::string_view>()({text.data(), text.size()});
    }
};

// Texts with new signatures add entries to the registry, so a search through it would make each such text,
// and each unit that is rebuilt, dearer than the one before.

/// The places in the registry of the entries with a signature, earliest first.
std::unordered_map<ZUnitDimensions, std::vector<std::size_t>, SignatureHash> s_places;
/// The place of the earliest entry with a reference text.
std::unordered_map<ZString, std::size_t, TextHash> s_placeOfReference;

} // namespace

// The order of definitions is the order of initialisation: first the indices and the registry, then the
// built-in quantities, each of which appends its entry.
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
    const std::size_t place = sm_unitTypes.size();
    sm_unitTypes.push_back(ZUnitType(std::move(name), referenceSiString, dimensions));
    bool isEarliest = false;
    try {
        isEarliest = s_placeOfReference.try_emplace(referenceSiString, place).second;
        s_places[dimensions].push_back(place);
    } catch (...) {
        if (isEarliest) {
            s_placeOfReference.erase(referenceSiString);
        }
        sm_unitTypes.pop_back();
        throw;
    }
    return sm_unitTypes.back();
}

const ZUnitType& ZUnitType::FindByReferenceSiString(const ZString& reference) {
    const auto found = s_placeOfReference.find(reference);
    if (found == s_placeOfReference.end()) {
        throw std::runtime_error(
            ("Could not find a ZUnitType with reference SI string " + ZStringView(reference)).to_string());
    }
    return sm_unitTypes[found->second];
}

std::vector<ZUnitType> ZUnitType::FindCompatibleTypes(const ZUnitDimensions& dimensions) {
    std::vector<ZUnitType> compatible;
    const auto found = s_places.find(dimensions);
    if (found != s_places.end()) {
        for (const std::size_t place : found->second) {
            compatible.push_back(sm_unitTypes[place]);
        }
    }
    return compatible;
}

ZUnitType ZUnitType::FindUnitType(const ZUnitDimensions& dimensions, const ZString& siString) {
    const auto found = s_places.find(dimensions);
    if (found == s_places.end() || found->second.empty()) {
        return Create(siString, dimensions, ZString());
    }
    for (const std::size_t place : found->second) {
        if (siString.contains(sm_unitTypes[place].reference_)) {
            return sm_unitTypes[place];
        }
    }
    return sm_unitTypes[found->second.front()];
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
