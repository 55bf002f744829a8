#include "Marker.h"

namespace measurement {
namespace {

constexpr const char* kPeak = "Peak";

} // namespace

Zelm::ZString Marker::objectType() {
    return "Marker";
}

Marker::Marker() : ZObject(objectType()) {
    Zelm::ZObserver link;
    link.setLinkType(Zelm::ZVariable::objectType());
    addChild(Target, link);
}

Marker::Marker(Zelm::ZGenericObject object) : ZObject(std::move(object), objectType()) {}

Zelm::ZVariable Marker::target() const {
    return Zelm::ZVariable(propertyHandle().child(Target).child(Zelm::ZObserver::Link));
}

Zelm::ZString Marker::targetPath() const {
    return Zelm::ZObserver(propertyHandle().child(Target)).linkedPath();
}

bool Marker::isChangedBy(const Zelm::ZGenericObject& link) const {
    const Zelm::ZPropertyHandle own = propertyHandle().child(Target);
    if (!own.hasChild(Zelm::ZObserver::Link) || !link.hasChild(Zelm::ZObserver::Link)) {
        return own.hasChild(Zelm::ZObserver::Link) != link.hasChild(Zelm::ZObserver::Link);
    }
    return !own.child(Zelm::ZObserver::Link).isEquivalentTo(link.child(Zelm::ZObserver::Link));
}

double Marker::peak() const {
    return getChildPropertyValueWithDefault(kPeak, 0.0).value<double>();
}

void Marker::setPeak(double decibel) {
    setProperty(kPeak, decibel);
}

} // namespace measurement
