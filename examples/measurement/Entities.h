#pragma once

#include "Marker.h"
#include "Measurement.h"

#include <zelm/entities/ZEntityImpl.h>
#include <zelm/entities/ZVariableEntity.h>

#include <memory>
#include <string>

namespace measurement {

using LinkEntity = Zelm::ZObserverEntity<Zelm::ZVariableEntity>;

/// A marker that follows its parameter. Other values of the parameter make it dirty; it is read anew when the
/// document is refreshed.
class MarkerEntity : public Zelm::ZEntity<MarkerEntity, Marker> {
public:
    MarkerEntity(Zelm::ZString name, Marker state);

    /// Puts the marker on a parameter of the same document.
    void observe(std::weak_ptr<Zelm::ZEntityInterface> parameter);
    std::shared_ptr<LinkEntity> link() const;

    void onNext(Zelm::ZGenericObject state, const Zelm::ZString& childName) override;

protected:
    void recalculate() override;
};

/// A measurement as a live document: its variables and its marker are child entities.
class MeasurementEntity : public Zelm::ZEntity<MeasurementEntity, Measurement> {
public:
    MeasurementEntity(Zelm::ZString name, Measurement state);

    /// Tells the factory of both types. Needed before a document is loaded.
    static void registerTypes();

    /// Puts the marker, made if there is none, on the parameter of this name.
    void mark(const std::string& parameter);
    /// Throws `std::logic_error` if there is no marker.
    std::shared_ptr<MarkerEntity> marker() const;
    /// Throws `std::logic_error` if there is no such variable.
    std::shared_ptr<Zelm::ZVariableEntity> variable(const std::string& name) const;
    /// Reads the marker anew if it is dirty.
    void refresh();
};

} // namespace measurement
