#include <zelm/units/UnitParser.h>

#include <zelm/units/ZUnitType.h>

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <vector>

namespace Zelm::details {

namespace {

struct Prefix {
    std::string_view symbol;
    const char* longName;
    double factor;
};

// Tried from the first to the last. "da" is never taken for "d", since no symbol begins with "a".
constexpr Prefix kPrefixes[] = {
    {"Y", "yatto", 1e24},  {"Z", "zetta", 1e21}, {"E", "exa", 1e18},    {"P", "peta", 1e15},
    {"T", "tera", 1e12},   {"G", "giga", 1e9},   {"M", "mega", 1e6},    {"k", "kilo", 1e3},
    {"h", "hecto", 1e2},   {"da", "deca", 1e1},  {"d", "deci", 1e-1},   {"c", "centi", 1e-2},
    {"m", "milli", 1e-3},  {"µ", "micro", 1e-6}, {"n", "nano", 1e-9},   {"p", "pico", 1e-12},
    {"f", "femto", 1e-15}, {"a", "atto", 1e-18}, {"z", "zetto", 1e-21}, {"y", "yacto", 1e-24},
};

struct Symbol {
    std::string_view symbol;
    const char* longName;
    const ZUnitType* type;
    double factor; ///< into the base unit; that of mass is the kilogram
};

// Tried from the first to the last, which is what makes "mol", "sr", "Wb" and "Sv" unreachable behind "m",
// "s", "W" and "S".
constexpr Symbol kSymbols[] = {
    {"m", "meters", &ZUnitType::s_length, 1.0},
    {"g", "grams", &ZUnitType::s_mass, 0.001},
    {"s", "seconds", &ZUnitType::s_time, 1.0},
    {"A", "amperes", &ZUnitType::s_electricCurrent, 1.0},
    {"K", "kelvins", &ZUnitType::s_thermodynamicTemperature, 1.0},
    {"mol", "moles", &ZUnitType::s_amountOfSubstance, 1.0},
    {"cd", "candelas", &ZUnitType::s_luminousIntensity, 1.0},
    {"Hz", "hertz", &ZUnitType::s_frequency, 1.0},
    {"N", "newtons", &ZUnitType::s_force, 1.0},
    {"Pa", "pascals", &ZUnitType::s_pressure, 1.0},
    {"J", "joules", &ZUnitType::s_energy, 1.0},
    {"W", "watts", &ZUnitType::s_power, 1.0},
    {"C", "coulombs", &ZUnitType::s_electricCharge, 1.0},
    {"V", "volts", &ZUnitType::s_electricPotential, 1.0},
    {"F", "farads", &ZUnitType::s_electricCapacitance, 1.0},
    {"Ω", "ohms", &ZUnitType::s_electricResistance, 1.0},
    {"S", "siemens", &ZUnitType::s_conductance, 1.0},
    {"Wb", "webers", &ZUnitType::s_magneticFlux, 1.0},
    {"T", "teslas", &ZUnitType::s_magneticFluxDensity, 1.0},
    {"H", "henries", &ZUnitType::s_inductance, 1.0},
    {"lm", "lumens", &ZUnitType::s_luminousFlux, 1.0},
    {"lx", "lux", &ZUnitType::s_illuminance, 1.0},
    {"Bq", "becquerels", &ZUnitType::s_radioactivity, 1.0},
    {"Gy", "grays", &ZUnitType::s_absorbedDose, 1.0},
    {"Sv", "seiverts", &ZUnitType::s_equivalentDose, 1.0},
    {"kat", "katals", &ZUnitType::s_catalyticActivity, 1.0},
    {"l", "liters", &ZUnitType::s_volume, 0.001},
    {"L", "liters", &ZUnitType::s_volume, 0.001},
    {"rad", "radians", &ZUnitType::s_planeAngle, 1.0},
    {"sr", "steradians", &ZUnitType::s_solidAngle, 1.0},
    {"deg", "degrees", &ZUnitType::s_planeAngle, 0.017453292519943295},
};

/// A signature and the factor into its base unit.
struct Value {
    ZUnitDimensions dimensions;
    double scale = 1.0;
};

/// An operation that waits for its right operand, or a parenthesis that waits for its end.
struct Pending {
    enum Kind { Product, Quotient, Parenthesis };
    Kind kind;
    Value left;
};

/// Reads expressions from the front of a text. What would be recursion stands on a stack of its own, since
/// texts may open any number of parentheses and close none.
class UnitReader {
public:
    explicit UnitReader(std::string_view text) : rest_(text) {}

    /// Reads one expression; nothing if none stands here.
    std::optional<Value> expression();
    /// Passes over `text`, which is not empty, if it stands here.
    bool skip(std::string_view text);

    std::string_view rest() const { return rest_; }

private:
    bool operatorFollows(Value& value, bool isTerm);
    bool isTop(Pending::Kind kind) const { return !pending_.empty() && pending_.back().kind == kind; }
    Value popLeft();

    std::optional<Value> unit();
    const Symbol* symbol();
    bool power(Value& value);

    std::string_view rest_;
    std::vector<Pending> pending_;
};

bool UnitReader::skip(std::string_view text) {
    // Most candidates differ in the first byte, which costs no call.
    if (rest_.empty() || rest_.front() != text.front() || rest_.substr(0, text.size()) != text) {
        return false;
    }
    rest_.remove_prefix(text.size());
    return true;
}

std::optional<Value> UnitReader::expression() {
    bool begins = true; // a bare "1" is read at the beginning of an expression alone
    for (;;) {
        while (skip("(")) {
            pending_.push_back({Pending::Parenthesis, {}});
            begins = true;
        }
        const bool isOne = begins && skip("1");
        std::optional<Value> value = isOne ? Value{} : unit();
        if (!value) {
            return std::nullopt;
        }
        for (bool isTerm = !isOne; !operatorFollows(*value, isTerm); isTerm = true) {
            if (pending_.empty()) {
                return value;
            }
            pending_.pop_back();
            skip(")");
        }
        begins = false;
    }
}

/// Takes in an operand that has been read. True if an operator stands behind it, so that another operand has
/// to follow; otherwise the expression is complete and `value` is its value. A product ends in its last
/// factor, and is multiplied from there to the front.
bool UnitReader::operatorFollows(Value& value, bool isTerm) {
    if (isTop(Pending::Quotient)) {
        const Value left = popLeft();
        value = {left.dimensions / value.dimensions, left.scale / value.scale};
        return false;
    }
    if (isTerm && skip("*")) {
        pending_.push_back({Pending::Product, value});
        return true;
    }
    while (isTop(Pending::Product)) {
        const Value left = popLeft();
        value = {left.dimensions * value.dimensions, value.scale * left.scale};
    }
    if (skip("/")) {
        pending_.push_back({Pending::Quotient, value});
        return true;
    }
    return false;
}

Value UnitReader::popLeft() {
    const Value left = pending_.back().left;
    pending_.pop_back();
    return left;
}

std::optional<Value> UnitReader::unit() {
    const std::string_view text = rest_;
    double factor = 1.0;
    const Symbol* found = nullptr;
    for (const Prefix& prefix : kPrefixes) {
        if (skip(prefix.symbol)) {
            found = symbol();
            if (found) {
                factor = prefix.factor;
                break;
            }
            rest_ = text;
        }
    }
    if (!found) {
        found = symbol();
    }
    if (!found) {
        return std::nullopt;
    }
    Value value{found->type->GetDimensions(), factor * found->factor};
    return power(value) ? std::optional(value) : std::nullopt;
}

const Symbol* UnitReader::symbol() {
    for (const Symbol& candidate : kSymbols) {
        if (skip(candidate.symbol)) {
            return &candidate;
        }
    }
    return nullptr;
}

/// Raises `value` to the power that stands behind its symbol; false if the number does not fit an int. What
/// is no power, such as "^0" and "^02", is left standing.
bool UnitReader::power(Value& value) {
    const char* const end = rest_.data() + rest_.size();
    const char* digits = rest_.data();
    if (digits == end || *digits++ != '^') {
        return true;
    }
    const char* number = digits;
    if (digits != end && (*digits == '+' || *digits == '-')) {
        number += *digits == '+';
        ++digits;
    }
    if (digits == end || *digits < '1' || *digits > '9') {
        return true;
    }
    int exponent = 0;
    const std::from_chars_result read = std::from_chars(number, end, exponent);
    if (read.ec != std::errc()) {
        return false;
    }
    rest_.remove_prefix(static_cast<std::size_t>(read.ptr - rest_.data()));
    if (value.scale != 1.0) {
        value.scale = exponent == 2 ? value.scale * value.scale : std::pow(value.scale, exponent);
    }
    value.dimensions = value.dimensions ^ exponent;
    return true;
}

} // namespace

std::optional<ParsedUnit> parseUnitText(ZStringView text) {
    ParsedUnit parsed;
    if (text.empty()) {
        return parsed;
    }
    UnitReader reader(std::string_view(text.data(), text.size()));
    if (reader.skip("dB(")) {
        parsed.form = UnitForm::Decibel;
    } else if (reader.rest().substr(0, 4) == "log(") {
        reader.skip("log");
        parsed.form = UnitForm::Log10;
    }
    const std::optional<Value> value = reader.expression();
    const bool closed = parsed.form == UnitForm::Linear || reader.skip(")");
    if (!value || !closed || !reader.rest().empty()) {
        return std::nullopt;
    }
    parsed.dimensions = value->dimensions;
    parsed.scale = value->scale;
    return parsed;
}

} // namespace Zelm::details
