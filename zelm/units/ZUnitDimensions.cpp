#include <zelm/units/ZUnitDimensions.h>

#include <string>

namespace Zelm {

namespace {

struct BaseQuantity {
    int (ZUnitDimensions::*exponent)() const noexcept;
    const char* symbol;
};

constexpr BaseQuantity kSymbols[ZUnitDimensions::kBaseQuantities] = {
    {&ZUnitDimensions::Length, "m"},
    {&ZUnitDimensions::Mass, "kg"},
    {&ZUnitDimensions::Time, "s"},
    {&ZUnitDimensions::ElectricalCurrent, "A"},
    {&ZUnitDimensions::ThermodynamicTemperature, "K"},
    {&ZUnitDimensions::QuantityOfSubstance, "mol"},
    {&ZUnitDimensions::LuminousIntensity, "cd"},
    {&ZUnitDimensions::Angle, "rad"},
    {&ZUnitDimensions::SolidAngle, "sr"},
};

// Exponents wrap as unsigned numbers do: overflow of signed ones is undefined, and texts may ask for it.
unsigned bits(int exponent) {
    return static_cast<unsigned>(exponent);
}

void appendFactor(std::string& product, const char* symbol, unsigned power) {
    if (!product.empty()) {
        product += '*';
    }
    product += symbol;
    if (power > 1) {
        product += '^' + std::to_string(power);
    }
}

} // namespace

ZUnitDimensions operator*(const ZUnitDimensions& a, const ZUnitDimensions& b) noexcept {
    ZUnitDimensions product;
    for (std::size_t i = 0; i < ZUnitDimensions::kBaseQuantities; ++i) {
        product.exponents_[i] = static_cast<int>(bits(a.exponents_[i]) + bits(b.exponents_[i]));
    }
    return product;
}

ZUnitDimensions operator/(const ZUnitDimensions& a, const ZUnitDimensions& b) noexcept {
    return a * (b ^ -1);
}

ZUnitDimensions ZUnitDimensions::operator^(int power) const noexcept {
    ZUnitDimensions result;
    for (std::size_t i = 0; i < kBaseQuantities; ++i) {
        result.exponents_[i] = static_cast<int>(bits(exponents_[i]) * bits(power));
    }
    return result;
}

ZString ZUnitDimensions::SIUnitsString() const {
    std::string numerator;
    std::string denominator;
    int divisors = 0;
    for (const BaseQuantity& base : kSymbols) {
        const int exponent = (this->*base.exponent)();
        if (exponent > 0) {
            appendFactor(numerator, base.symbol, bits(exponent));
        } else if (exponent < 0) {
            appendFactor(denominator, base.symbol, 0U - bits(exponent));
            ++divisors;
        }
    }
    if (numerator.empty()) {
        numerator = "1";
    }
    if (divisors == 1) {
        numerator += '/' + denominator;
    } else if (divisors > 1) {
        numerator += "/(" + denominator + ')';
    }
    return ZString(std::move(numerator));
}

} // namespace Zelm
