#include <zelm/units/ZSystemOfUnits.h>

#include <set>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <utility>

namespace Zelm {

namespace {

/// A unit of the default catalogue. With a type it is made of numbers, without one its SI text is read.
struct Entry {
    std::string_view name;
    std::string_view siText;
    std::string_view label;
    const ZUnitType* type;
    double scale;
    double offset;
    double logMultiplier;
};

constexpr Entry read(std::string_view siText, std::string_view label = {}) {
    return {label.empty() ? siText : label, siText, label, nullptr, 0.0, 0.0, 0.0};
}

constexpr Entry make(std::string_view label, const ZUnitType& type, double scale, double offset = 0.0,
                     double logMultiplier = 0.0) {
    return {label, {}, label, &type, scale, offset, logMultiplier};
}

constexpr Entry named(std::string_view name, Entry entry) {
    entry.name = name;
    return entry;
}

constexpr Entry kDegree = make("°", ZUnitType::s_planeAngle, 0.017453292519943295);
constexpr Entry kCelsius = make("°C", ZUnitType::s_thermodynamicTemperature, 1.0, 273.15);
// The zero of the scale is 459.67 * 5/9 kelvins, rounded once.
constexpr Entry kFahrenheit =
    make("°F", ZUnitType::s_thermodynamicTemperature, 0.5555555555555556, 255.37222222222223);
constexpr Entry kDecibel = make("dB10", ZUnitType::s_dimensionless, 1.0, 0.0, 10.0);

// In the order of insertion. Numbers are the shortest that read back as the double that is meant: a product
// or quotient in their place would differ in the last bit.
// clang-format off
constexpr Entry kCatalogue[] = {
    read("m"), read("nm"), read("µm"), read("mm"), read("cm"), read("km"),
    make("mil", ZUnitType::s_length, 2.54e-05),
    make("in", ZUnitType::s_length, 0.0254),
    read("m^2"), read("mm^2"), read("cm^2"), read("km^2"),
    make("in^2", ZUnitType::s_area, 0.00064516),
    read("m^3"), read("mm^3"), read("cm^3"), read("L"), read("mL"),
    make("in^3", ZUnitType::s_volume, 1.6387064e-05),
    read("kg"), read("g"), read("mg"), read("µg"),
    read("s"), read("ms"), read("µs"), read("ns"), read("ps"),
    make("min", ZUnitType::s_time, 60.0),
    make("h", ZUnitType::s_time, 3600.0),
    read("rad"), named("radians", read("rad")),
    kDegree, named("degrees", kDegree),
    read("m/s"), read("km/s"),
    make("km/h", ZUnitType::s_velocity, 0.2777777777777778),
    make("miles/h", ZUnitType::s_velocity, 0.44704),
    read("m/s^2"),
    read("N"),
    read("J"), read("kJ"), read("mJ"), read("µJ"),
    make("kWh", ZUnitType::s_energy, 3600000.0),
    read("W"), read("kW"), read("MW"), read("mW"), read("µW"),
    read("dB(W)", "dBW"), read("dB(mW)", "dBm"), read("dB(µW)", "dBµ"),
    read("Hz"), read("kHz"), read("MHz"), read("GHz"), read("THz"),
    read("A"), read("kA"), read("mA"), read("µA"), read("nA"), read("pA"),
    read("C"), read("kC"), read("mC"), read("µC"), read("nC"), read("pC"),
    read("V"), read("kV"), read("mV"), read("µV"), read("nV"), read("pV"),
    read("dB(V)", "dBV"), read("dB(mV)", "dBmV"), read("dB(µV)", "dBµV"),
    read("Ω"), read("kΩ"), read("MΩ"), read("GΩ"), read("mΩ"),
    read("F"), read("mF"), read("µF"), read("nF"), read("pF"), read("fF"),
    read("S"), read("mS"), read("µS"), read("nS"), read("pS"),
    named("mho", make("1/Ω", ZUnitType::s_conductance, 1.0)),
    read("H"), read("mH"), read("µH"), read("nH"), read("pH"), read("fH"),
    make("Mx", ZUnitType::s_magneticFlux, 1e-08),
    read("T"),
    make("Gs", ZUnitType::s_magneticFluxDensity, 0.0001),
    read("K"), kCelsius, named("Celsius", kCelsius), kFahrenheit, named("Fahrenheit", kFahrenheit),
    make("log", ZUnitType::s_dimensionless, 1.0, 0.0, 1.0),
    kDecibel, named("dB", kDecibel),
    make("dB20", ZUnitType::s_dimensionless, 1.0, 0.0, 20.0),
    make("hundreds", ZUnitType::s_dimensionless, 100.0),
    make("thousands", ZUnitType::s_dimensionless, 1000.0),
    make("millions", ZUnitType::s_dimensionless, 1000000.0),
    make("%", ZUnitType::s_dimensionless, 0.01),
    make("Abs", ZUnitType::s_dimensionless, 1.0),
};
// clang-format on

/// The text of the table, shared.
ZString shared(std::string_view literal) {
    return ZStringLiteral(literal.data(), literal.size());
}

ZUnit unitOf(const Entry& entry) {
    if (entry.type) {
        return ZUnit(*entry.type, shared(entry.label), entry.scale, entry.offset, entry.logMultiplier);
    }
    ZUnit unit = ZUnit::FromSiString(shared(entry.siText));
    if (!entry.label.empty()) {
        unit.SetUnitsLabel(shared(entry.label));
    }
    return unit;
}

[[noreturn]] void fail(const ZString& text) {
    throw std::logic_error(text.to_string());
}

/// `text` with the first `from` replaced by `to`, no other.
ZString withFirstReplaced(const ZString& text, ZStringView from, ZStringView to) {
    const auto at = text.find(from);
    return at == ZString::npos ? text : text.left(at) + to + text.mid(at + from.size());
}

} // namespace

ZSystemOfUnits::ZSystemOfUnits() {
    for (const Entry& entry : kCatalogue) {
        InsertUnits(shared(entry.name), unitOf(entry));
    }
}

ZSystemOfUnits::~ZSystemOfUnits() = default;

ZSystemOfUnits& ZSystemOfUnits::instance() {
    static ZSystemOfUnits s_instance;
    return s_instance;
}

std::vector<ZUnit> ZSystemOfUnits::GetAllUnits() const {
    std::vector<ZUnit> result;
    result.reserve(units_.size());
    for (const auto& [name, unit] : units_) {
        result.push_back(unit);
    }
    return result;
}

std::vector<ZUnit> ZSystemOfUnits::GetUnits(const ZUnitType& type) const {
    std::vector<ZUnit> result;
    // By what makes units of a quantity equal: comparing each with all others would be quadratic.
    std::set<std::tuple<ZString, double, double, double>> seen;
    for (const auto& [name, unit] : units_) {
        if (unit.GetUnitType() != type) {
            continue;
        }
        const std::tuple key(unit.GetUnitsLabel(), unit.GetScale(), unit.GetOffset(),
                             unit.GetLogMultiplier());
        // A unit with a NaN equals none, and a NaN has no place in an order.
        if (key != key || seen.insert(key).second) {
            result.push_back(unit);
        }
    }
    return result;
}

std::vector<ZUnit> ZSystemOfUnits::GetCompatibleUnits(const ZUnit& unit) const {
    std::vector<ZUnit> result = {unit};
    for (ZUnit& other : GetUnits(unit.GetUnitType())) {
        if (other != unit) {
            result.push_back(std::move(other));
        }
    }
    return result;
}

std::vector<ZString> ZSystemOfUnits::GetUnitNames(const ZUnitType& type) const {
    std::vector<ZString> result;
    for (const auto& [name, unit] : units_) {
        if (unit.GetUnitType() == type) {
            result.push_back(name);
        }
    }
    return result;
}

ZUnit ZSystemOfUnits::GetUnitsByName(const ZString& name) const {
    const auto found = units_.find(name);
    if (found == units_.end()) {
        fail("Error: in GetUnitsBayName: unit-name '" + name + "' not found.");
    }
    return found->second;
}

ZUnit ZSystemOfUnits::GetUnitsFromString(const ZString& text) const {
    ZString name = text;
    if (text != "Celsius" && text != "hundreds" && text != "thousands") {
        name = withFirstReplaced(withFirstReplaced(text, "Ohm", "Ω"), "u", "µ");
    }
    const auto found = units_.find(name);
    return found == units_.end() ? ZUnit::FromSiString(name) : found->second;
}

void ZSystemOfUnits::InsertUnits(const ZString& name, const ZUnit& unit) {
    if (!units_.try_emplace(name, unit).second) {
        fail("Error: InsertUnits: Cannot insert duplicate unit-name '" + name + "'.");
    }
}

void ZSystemOfUnits::InsertUnits(const ZUnit& unit) {
    InsertUnits(unit.GetUnitsLabel(), unit);
}

void ZSystemOfUnits::RemoveUnits(const ZString& name) {
    try {
        units_.erase(name);
    } catch (...) {
        fail("Error: RemoveUnits: Cannot find unit-name '" + name + "'.");
    }
}

} // namespace Zelm
