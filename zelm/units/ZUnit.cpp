#include <zelm/units/ZUnit.h>

#include <zelm/units/UnitConversion.h>
#include <zelm/units/UnitParser.h>

#include <cmath>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace Zelm {

constexpr ZStringLiteral ZUnit::ScalePropertyName("Scale", 5);
constexpr ZStringLiteral ZUnit::OffsetPropertyName("Offset", 6);
constexpr ZStringLiteral ZUnit::LogMultiplierPropertyName("LogMultiplier", 13);
constexpr ZStringLiteral ZUnit::SiUnitsPropertyName("SiUnits", 7);
constexpr ZStringLiteral ZUnit::DisplayUnitPropertyName("DisplayUnit", 11);
constexpr ZStringLiteral ZUnit::UnitTypeReferenceStringPropertyName("UnitTypeReferenceString", 23);

namespace {

[[noreturn]] void fail(const ZString& text) {
    throw std::runtime_error(text.to_string());
}

/// A number as the value of a property. The commonest ones are shared by all units, and are never destroyed,
/// since units may be built as long as the process lives.
Variant propertyOf(double number) {
    static const Variant* const zero = new Variant(0.0);
    static const Variant* const one = new Variant(1.0);
    if (number == 0.0 && !std::signbit(number)) {
        return *zero;
    }
    return number == 1.0 ? *one : Variant(number);
}

double logMultiplierOf(details::UnitForm form, const ZUnitType& type) {
    switch (form) {
    case details::UnitForm::Decibel:
        return ZUnitType::GetDBType(type) == ZUnitType::AmplitudeRatio ? 20.0 : 10.0;
    case details::UnitForm::Log10:
        return 1.0;
    case details::UnitForm::Linear:
        break;
    }
    return 0.0;
}

/// The base unit of the quantity that has this signature.
ZUnit baseUnit(const ZUnitDimensions& dimensions, const ZString& label) {
    const ZUnitType type = ZUnitType::FindUnitType(dimensions, label);
    return ZUnit(type, type.GetReferenceSIString(), 1.0, 0.0, 0.0);
}

} // namespace

/// What the constructors write into the tree, and the quantity beside it.
struct ZUnit::Definition {
    ZUnitType type;
    double scale;
    double offset;
    double logMultiplier;
    ZString siUnits;
    std::optional<ZString> displayUnit;
};

std::string ZUnit::objectType() {
    return "Unit";
}

ZUnit::ZUnit() : ZObject(ZString("Unit")) {}

ZUnit::ZUnit(const Definition& definition)
    : ZObject(newTree(definition), ZString("Unit")), unitType_(definition.type) {}

ZUnit::ZUnit(const ZUnitType& type, ZString displayUnit, double scale, double offset, double logMultiplier)
    : ZUnit(Definition{type, scale, offset, logMultiplier, type.GetReferenceSIString(),
                       std::move(displayUnit)}) {}

ZUnit::ZUnit(ZGenericObject object)
    : ZObject(std::move(object), ZString("Unit")),
      unitType_(ZUnitType::FindByReferenceSiString(GetUnitTypeReferenceString())) {}

ZUnit& ZUnit::operator=(ZUnit&& other) noexcept {
    ZObject::operator=(std::move(other));
    unitType_ = other.unitType_;
    return *this;
}

ZUnit::~ZUnit() = default;

ZUnit ZUnit::FromSiString(const ZString& siString) {
    try {
        return ZUnit(read(siString));
    } catch (...) {
        fail("Error constructing a unit from SI String " + siString);
    }
}

void ZUnit::ParseAndSetSiUnits(const ZString& siString) {
    try {
        const Definition definition = read(siString);
        mutate([&](ZMutablePropertyHandle& unit) { write(unit, definition); });
        unitType_ = definition.type;
    } catch (...) {
        fail("Invalid units string " + siString);
    }
}

/// The definition of the unit that a text stands for. Throws if it stands for none.
ZUnit::Definition ZUnit::read(const ZString& siString) {
    const std::optional<details::ParsedUnit> parsed = details::parseUnitText(siString);
    if (!parsed) {
        throw std::runtime_error("not a unit");
    }
    const ZUnitType type = ZUnitType::FindUnitType(parsed->dimensions, siString);
    return {type, parsed->scale, 0.0, logMultiplierOf(parsed->form, type), siString, std::nullopt};
}

void ZUnit::write(ZMutablePropertyHandle& unit, const Definition& definition) {
    unit.setChildValue(ScalePropertyName, propertyOf(definition.scale));
    unit.setChildValue(OffsetPropertyName, propertyOf(definition.offset));
    unit.setChildValue(LogMultiplierPropertyName, propertyOf(definition.logMultiplier));
    unit.setChildValue(SiUnitsPropertyName, definition.siUnits);
}

ZPropertyHandle ZUnit::newTree(const Definition& definition) {
    const ZMutablePropertyTree tree;
    ZMutablePropertyHandle unit = tree.handle();
    unit.setObjectType("Unit");
    write(unit, definition);
    unit.setChildValue(UnitTypeReferenceStringPropertyName, definition.type.GetReferenceSIString());
    if (definition.displayUnit) {
        unit.setChildValue(DisplayUnitPropertyName, *definition.displayUnit);
    }
    return tree.immutableHandle();
}

double ZUnit::number(const ZStringLiteral& name, double missing) const {
    const Variant* value = findChildValue(name);
    return value ? value->value<double>() : missing;
}

double ZUnit::GetScale() const {
    return number(ScalePropertyName, 1.0);
}

double ZUnit::GetOffset() const {
    return number(OffsetPropertyName, 0.0);
}

double ZUnit::GetLogMultiplier() const {
    return number(LogMultiplierPropertyName, 0.0);
}

ZString ZUnit::GetSiUnits() const {
    return getChildStringWithDefault(SiUnitsPropertyName, ZString());
}

ZString ZUnit::GetUnitTypeReferenceString() const {
    return getChildStringWithDefault(UnitTypeReferenceStringPropertyName,
                                     ZUnitType::Dimensionless().GetReferenceSIString());
}

ZString ZUnit::GetUnitsLabel() const {
    ZString label = getChildStringWithDefault(DisplayUnitPropertyName, ZString());
    return label.empty() && !IsDimensionless() ? GetSiUnits() : label;
}

bool ZUnit::IsCommensurable(const ZUnit& other) const noexcept {
    return unitType_.GetDimensions() == other.unitType_.GetDimensions();
}

bool ZUnit::IsDimensionless() const noexcept {
    return unitType_ == ZUnitType::Dimensionless();
}

void ZUnit::SetDisplayUnit(const ZString& displayUnit) {
    setProperty(DisplayUnitPropertyName, displayUnit);
}

ZUnit& ZUnit::SetUnitsLabel(const ZString& label) {
    SetDisplayUnit(label);
    return *this;
}

double ZUnit::ConvertValueToUnit(double value, const ZUnit& to) const {
    return details::convertNumber(details::mapOf(*this), details::mapOf(to), value);
}

double ZUnit::ConvertTo(const ZUnit& to, double value) const {
    if (!IsCommensurable(to)) {
        details::throwIncommensurable(GetSiUnits(), to.GetSiUnits());
    }
    return ConvertValueToUnit(value, to);
}

std::complex<double> ZUnit::ConvertTo(const ZUnit& to, std::complex<double> value) const {
    if (!IsCommensurable(to)) {
        fail("Units " + to.GetSiUnits() + " is not Commensurable to " + GetSiUnits());
    }
    const details::UnitMap from = details::mapOf(*this);
    const details::UnitMap into = details::mapOf(to);
    return {details::convertNumber(from, into, value.real()),
            details::convertNumber(from, into, value.imag())};
}

Variant ZUnit::ConvertTo(const ZUnit& to, Variant value) const {
    const ZString from = GetSiUnits();
    const ZString into = to.GetSiUnits();
    if (from == into) {
        return value;
    }
    if (!IsCommensurable(to)) {
        fail("To units are not commensurable - from: " + from + " to " + into);
    }
    try {
        return details::convertElements(details::mapOf(*this), details::mapOf(to), std::move(value));
    } catch (...) {
        details::throwFailedConversion(from, into);
    }
}

ZUnit operator*(const ZUnit& a, const ZUnit& b) {
    return baseUnit(a.GetUnitType().GetDimensions() * b.GetUnitType().GetDimensions(),
                    "(" + a.GetUnitsLabel() + ")*" + b.GetUnitsLabel());
}

ZUnit operator/(const ZUnit& a, const ZUnit& b) {
    return baseUnit(a.GetUnitType().GetDimensions() / b.GetUnitType().GetDimensions(),
                    a.GetUnitsLabel() + "/(" + b.GetUnitsLabel() + ")");
}

ZUnit operator^(const ZUnit& unit, int power) {
    return baseUnit(unit.GetUnitType().GetDimensions() ^ power,
                    "(" + unit.GetUnitsLabel() + ")^" + std::to_string(power));
}

bool operator==(const ZUnit& a, const ZUnit& b) {
    return a.IsCommensurable(b) && a.GetOffset() == b.GetOffset() && a.GetScale() == b.GetScale() &&
           a.GetLogMultiplier() == b.GetLogMultiplier() && a.GetUnitsLabel() == b.GetUnitsLabel();
}

bool operator!=(const ZUnit& a, const ZUnit& b) {
    return !(a == b);
}

std::ostream& operator<<(std::ostream& out, const ZUnit& unit) {
    return out << "SI units=" << unit.GetSiUnits() << ", display label=" << unit.GetUnitsLabel()
               << ", scale=" << unit.GetScale() << std::endl;
}

} // namespace Zelm
