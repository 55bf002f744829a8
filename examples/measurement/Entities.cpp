#include "Entities.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace measurement {
namespace {

template <class Entity>
std::shared_ptr<Entity> childOf(const Zelm::ZEntityInterface& parent, const Zelm::ZString& name) {
    auto child = std::dynamic_pointer_cast<Entity>(parent.getChild(name).lock());
    if (!child) {
        throw std::logic_error(name.to_string() + " is an entity of another type");
    }
    return child;
}

} // namespace

MarkerEntity::MarkerEntity(Zelm::ZString name, Marker state) : ZEntity(std::move(name), std::move(state)) {}

void MarkerEntity::observe(std::weak_ptr<Zelm::ZEntityInterface> parameter) {
    link()->setObserved(std::move(parameter));
}

std::shared_ptr<LinkEntity> MarkerEntity::link() const {
    return childOf<LinkEntity>(*this, Marker::Target);
}

void MarkerEntity::onNext(Zelm::ZGenericObject state, const Zelm::ZString& childName) {
    // The link tells of each saving too. Its values may be the same then.
    const Marker present = *this;
    if (!isDirty() && present.isChangedBy(state)) {
        makeDirty();
    }
    ZEntity::onNext(std::move(state), childName);
}

void MarkerEntity::recalculate() {
    const Marker present = *this;
    const auto decibels = elementsOf<double>(magnitudeInDecibel(present.target()).dataInStoredUnit());
    const double peak = *std::max_element(decibels.begin(), decibels.end());
    updateState([peak](Marker* marker) { marker->setPeak(peak); });
}

MeasurementEntity::MeasurementEntity(Zelm::ZString name, Measurement state)
    : ZEntity(std::move(name), std::move(state)) {}

void MeasurementEntity::registerTypes() {
    MeasurementEntity::registerEntityType();
    MarkerEntity::registerEntityType();
}

void MeasurementEntity::mark(const std::string& parameter) {
    MarkerEntity::registerEntityType();
    const auto target = getChild(Zelm::ZString(parameter));
    updateState([](Measurement* measurement) { measurement->setMarker(Marker()); });
    marker()->observe(target);
}

std::shared_ptr<MarkerEntity> MeasurementEntity::marker() const {
    return childOf<MarkerEntity>(*this, names::kMarker);
}

std::shared_ptr<Zelm::ZVariableEntity> MeasurementEntity::variable(const std::string& name) const {
    return childOf<Zelm::ZVariableEntity>(*this, Zelm::ZString(name));
}

void MeasurementEntity::refresh() {
    makeClean();
}

} // namespace measurement
