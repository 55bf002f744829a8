#include "Measurement.h"

namespace measurement {
namespace {

constexpr const char* kPorts = "Ports";
constexpr const char* kParameter = "Parameter";

} // namespace

Zelm::ZString Measurement::objectType() {
    return "Measurement";
}

Measurement::Measurement(char parameter, std::size_t ports, const std::vector<NamedVariable>& variables)
    : ZObject(objectType()) {
    mutate([&](Zelm::ZMutablePropertyHandle& root) {
        root.setChildValue(kPorts, Zelm::Variant(std::uint64_t{ports}));
        root.setChildValue(kParameter, Zelm::Variant(Zelm::ZString(std::string(1, parameter))));
        for (const NamedVariable& member : variables) {
            root.attachChild(Zelm::ZString(member.name), member.variable.propertyHandle());
        }
    });
}

Measurement::Measurement(Zelm::ZGenericObject object) : ZObject(std::move(object), objectType()) {}

std::size_t Measurement::ports() const {
    return getChildPropertyValueWithDefault(kPorts, std::uint64_t{0}).value<std::uint64_t>();
}

char Measurement::parameter() const {
    const auto letters = getChildPropertyValueWithDefault(kParameter, "S").value<Zelm::ZString>();
    return letters.size() == 0 ? 'S' : letters.data()[0];
}

Zelm::ZVariable Measurement::variable(const std::string& name) const {
    return Zelm::ZVariable(propertyHandle().child(Zelm::ZString(name)));
}

Zelm::ZVariable Measurement::parameterAt(std::size_t row, std::size_t column) const {
    return variable(parameterName(parameter(), ports(), row, column));
}

bool Measurement::hasNoise() const {
    return hasChild(names::kNoiseFrequency);
}

void Measurement::setMarker(const Marker& marker) {
    addChild(names::kMarker, marker);
}

Marker Measurement::marker() const {
    return Marker(propertyHandle().child(names::kMarker));
}

} // namespace measurement
