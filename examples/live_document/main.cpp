// A live document of one's own: a low-pass filter whose response follows its components.
//
// Filter.h defines two object types, Filter and Component, and an entity type for each. What it takes:
//
//   - A state class on ZObject with objectType(), a constructor from ZGenericObject, and accessors that read
//     and write children of its tree.
//   - An entity class on ZEntity<itself, state>. Children of the state that are entities by their type become
//     child entities; registerEntityType() tells the factory of the type before a document is loaded.
//   - makeDirty() where something becomes out of date, recalculate() for what to do about it, makeClean() to
//     do it.
//
// This program builds such a document, listens to it, changes it, saves it in the middle of the work, loads
// it and goes on. Each line of the document is one notification of its root. The exit code is 1 if anything
// is not as it says.

#include "Filter.h"

#include <exception>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

namespace filter {
namespace {

using ResponseLink = Zelm::ZObserverEntity<Zelm::ZVariableEntity>;

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(std::string("not so: ") + what);
    }
}

/// The first frequency in MHz at which the response lies below -3 dB; 0 if there is none.
double edgeOf(const Zelm::ZVariable& response) {
    for (std::size_t i = 0; i < response.size(); ++i) {
        if (response[i].value<double>() < -3.0) {
            return response.indep(0)[i].value<double>();
        }
    }
    return 0.0;
}

void print(const Filter& filter) {
    std::cout << "    document:";
    for (const auto& [name, component] : filter.components()) {
        const bool isInductor = component.isInductor();
        std::cout << (isInductor ? " L" : " C") << name.to_string() << " "
                  << component.value() * (isInductor ? 1e9 : 1e12) << (isInductor ? " nH," : " pF,");
    }
    std::cout << " edge " << edgeOf(filter.response()) << " MHz, at the marker " << edgeOf(filter.marked())
              << " MHz\n";
}

/// Prints the document whenever it changes, and counts.
rxcpp::composite_subscription listen(FilterEntity& document, int& count) {
    return document.stream().subscribe([&count](const Zelm::ZGenericObject& state) {
        ++count;
        print(Filter(state));
    });
}

void setValue(FilterEntity& document, const Zelm::ZString& name, double value) {
    document.child<ComponentEntity>(name)->updateState(
        [value](Component* component) { component->setValue(value); });
}

/// A Butterworth filter of third order: its response is 3.01 dB down at the edge.
std::shared_ptr<FilterEntity> butterworth(double ohm, double hertz) {
    const double omega = 2.0 * std::acos(-1.0) * hertz;
    auto document = std::make_shared<FilterEntity>("filter", Filter(ohm));
    document->setComponent("1", Component::capacitor(1.0 / (omega * ohm)));
    document->setComponent("2", Component::inductor(2.0 * ohm / omega));
    document->setComponent("3", Component::capacitor(1.0 / (omega * ohm)));
    document->child<ResponseLink>("Marker")->setObserved(document->getChild("Response"));
    document->refresh();
    return document;
}

std::string save(FilterEntity& document) {
    std::ostringstream out;
    Zelm::JSONFormatter().serialize(out, "filter", document.state().propertyHandle());
    return out.str();
}

std::shared_ptr<FilterEntity> load(const std::string& text) {
    std::istringstream in(text);
    auto document = std::make_shared<FilterEntity>("filter", Filter(Zelm::JSONFormatter().deserialize(in)));
    document->onPostLoad();
    return document;
}

void run() {
    FilterEntity::registerEntityType();
    ComponentEntity::registerEntityType();
    std::cout.precision(4);

    std::cout << "A filter is designed for 50 ohms and 500 MHz\n";
    const auto document = butterworth(50.0, 500e6);
    const Filter designed = *document;
    print(designed);
    require(edgeOf(designed.response()) == 500.0, "the edge is where the design puts it");

    std::cout << "The inductor becomes 25 nH: the document knows, the response is out of date\n";
    int count = 0;
    const auto listening = listen(*document, count);
    setValue(*document, "2", 25e-9);
    require(document->isDirty() && count == 1, "a component makes the document dirty");

    std::cout << "Refreshing it computes the response, and the marker follows\n";
    document->refresh();
    const Filter refreshed = *document;
    require(!document->isDirty() && count == 3, "the response and the marker tell the document");
    require(edgeOf(refreshed.response()) > 500.0, "less inductance lifts the edge");
    require(refreshed.marked().isEquivalentTo(refreshed.response()), "the marker follows");
    require(edgeOf(designed.response()) == 500.0, "a state that was read before stays as it was");

    std::cout << "A capacitor becomes 8 pF, and the document is saved as it is\n";
    setValue(*document, "3", 8e-12);
    listening.unsubscribe();
    const std::string text = save(*document);
    document->refresh();

    std::cout << "Loaded from " << text.size() << " bytes, it is still out of date; refreshing goes on\n";
    const auto loaded = load(text);
    count = 0;
    const auto listeningAgain = listen(*loaded, count);
    require(loaded->isDirty(), "what was out of date still is");
    loaded->refresh();
    require(count == 2, "the marker is linked again");
    const Filter original = *document;
    const Filter continued = *loaded;
    require(continued.response().isEquivalentTo(original.response()) &&
                continued.marked().isEquivalentTo(original.response()),
            "both documents agree");
    listeningAgain.unsubscribe();
}

} // namespace
} // namespace filter

int main() {
    try {
        filter::run();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
