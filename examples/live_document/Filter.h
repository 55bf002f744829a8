#pragma once

#include <zelm/entities/ZEntityImpl.h>
#include <zelm/zelm.h>

#include <cmath>
#include <complex>
#include <cstddef>
#include <utility>
#include <vector>

namespace filter {

/// A lossless component of a ladder filter: an inductor in series or a capacitor to ground.
class Component : public Zelm::ZObject {
public:
    static Zelm::ZString objectType() { return "Component"; }

    static Component inductor(double henry) { return Component(true, henry); }
    static Component capacitor(double farad) { return Component(false, farad); }
    explicit Component(Zelm::ZGenericObject object) : ZObject(std::move(object), objectType()) {}

    bool isInductor() const { return getChildBoolWithDefault("Inductor", false); }
    /// In henry or farad.
    double value() const { return getChildPropertyValueWithDefault("Value", 0.0).value<double>(); }
    void setValue(double value) { setProperty("Value", value); }

private:
    Component(bool isInductor, double value) : ZObject(objectType()) {
        setProperty("Inductor", isInductor);
        setProperty("Value", value);
    }
};

struct NamedComponent {
    Zelm::ZString name;
    Component component;
};

/// A filter between two equal resistances: its components in the order of their names, its response, and a
/// marker, which is a link to the response.
class Filter : public Zelm::ZObject {
public:
    static Zelm::ZString objectType() { return "Filter"; }

    explicit Filter(double ohm) : ZObject(objectType()) {
        using namespace Zelm;
        const ZSystemOfUnits& units = ZSystemOfUnits::instance();
        constexpr std::size_t kPoints = 100;
        ZVariable response(std::vector<double>(kPoints), units.GetUnitsByName("dB20"));
        response.setIndep(ZVariable(10.0, kPoints, 10.0, units.GetUnitsByName("MHz")), 0);
        ZObserver marker;
        marker.setLinkType(ZVariable::objectType());
        setProperty("Resistance", ohm);
        addChild("Response", response);
        insertOrReplaceObserver("Marker", marker);
    }
    explicit Filter(Zelm::ZGenericObject object) : ZObject(std::move(object), objectType()) {}

    double resistance() const { return getChildPropertyValueWithDefault("Resistance", 50.0).value<double>(); }
    void setComponent(const Zelm::ZString& name, const Component& component) { addChild(name, component); }
    std::vector<NamedComponent> components() const {
        std::vector<NamedComponent> result;
        for (const auto& [name, child] : getChildrenIncludingLinks()) {
            if (child.getObjectType() == Component::objectType()) {
                result.push_back({name, Component(child)});
            }
        }
        return result;
    }
    Zelm::ZVariable response() const { return Zelm::ZVariable(propertyHandle().child("Response")); }
    /// The copy of the response that the marker holds.
    Zelm::ZVariable marked() const {
        return Zelm::ZVariable(propertyHandle().child("Marker").child(Zelm::ZObserver::Link));
    }
};

/// The transmission in dB, 20 log10 |S21|, from the product of the components' chain matrices.
inline double transmission(const std::vector<NamedComponent>& components, double ohm, double hertz) {
    using Complex = std::complex<double>;
    const Complex s(0.0, 2.0 * std::acos(-1.0) * hertz);
    Complex a = 1.0, b = 0.0, c = 0.0, d = 1.0;
    for (const auto& [name, component] : components) {
        if (component.isInductor()) {
            b += a * s * component.value();
            d += c * s * component.value();
        } else {
            a += b * s * component.value();
            c += d * s * component.value();
        }
    }
    return 20.0 * std::log10(std::abs(2.0 / (a + b / ohm + c * ohm + d)));
}

/// A component in a live document needs nothing beyond what every entity does.
class ComponentEntity : public Zelm::ZEntity<ComponentEntity, Component> {
public:
    ComponentEntity(Zelm::ZString name, Component state) : ZEntity(std::move(name), std::move(state)) {}
};

/// The document. A change of a component makes it dirty; refresh() then computes the response anew.
class FilterEntity : public Zelm::ZEntity<FilterEntity, Filter> {
public:
    FilterEntity(Zelm::ZString name, Filter state) : ZEntity(std::move(name), std::move(state)) {}

    void setComponent(const Zelm::ZString& name, const Component& component) {
        makeDirty();
        updateState([&](Filter* filter) { filter->setComponent(name, component); });
    }

    void refresh() { makeClean(); }

    /// Called with each new state of a child.
    void onNext(Zelm::ZGenericObject state, const Zelm::ZString& childName) override {
        if (state.getObjectType() == Component::objectType()) {
            makeDirty();
        }
        ZEntity::onNext(std::move(state), childName);
    }

protected:
    /// Changes the response at its own entity: that one tells the marker and this document.
    void recalculate() override {
        const Filter filter = *this;
        const auto hertz =
            filter.response().indep(0).convertToUnit(Zelm::ZSystemOfUnits::instance().GetUnitsByName("Hz"));
        const auto components = filter.components();
        std::vector<double> decibels;
        for (std::size_t i = 0; i < hertz.size(); ++i) {
            decibels.push_back(transmission(components, filter.resistance(), hertz[i].value<double>()));
        }
        child<Zelm::ZVariableEntity>("Response")->updateState([&](Zelm::ZVariable* response) {
            response->setData(std::move(decibels), response->unitOfData());
        });
    }
};

} // namespace filter
