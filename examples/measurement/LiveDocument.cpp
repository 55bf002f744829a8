#include "LiveDocument.h"

#include "Document.h"

#include <algorithm>
#include <chrono>
#include <complex>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace measurement {
namespace {

using Complex = std::complex<double>;
using Zelm::Variant;
using Zelm::ZVariable;

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error("live document: " + what);
}

void require(bool condition, const char* what) {
    if (!condition) {
        fail(what);
    }
}

/// Notes the path of each entity that tells of a change.
class Listener {
public:
    Listener(MeasurementEntity& document, const std::string& parameter) {
        listenTo(document);
        listenTo(*document.marker());
        listenTo(*document.marker()->link());
        listenTo(*document.variable(parameter));
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() {
        for (const auto& subscription : subscriptions_) {
            subscription.unsubscribe();
        }
    }

    const std::vector<std::string>& paths() const { return paths_; }

private:
    void listenTo(Zelm::ZEntityInterface& entity) {
        subscriptions_.push_back(
            entity.stream().subscribe([this, path = entity.getPath().to_string()](
                                          const Zelm::ZGenericObject&) { paths_.push_back(path); }));
    }

    std::vector<rxcpp::composite_subscription> subscriptions_;
    std::vector<std::string> paths_;
};

/// Another value for each element, so that no copy can hold it by chance: a half, or 1 in place of 0.
Variant halved(const Variant& values) {
    return Zelm::mapElements<Complex>(
        values, [](const Complex& value) { return value == 0.0 ? Complex(1.0) : value / 2.0; });
}

void assign(Zelm::ZVariableEntity& entity, const Variant& values) {
    entity.updateState([&](ZVariable* variable) { variable->setData(values, variable->unitOfData()); });
}

Variant valuesOf(const Zelm::ZVariableEntity& entity) {
    return static_cast<ZVariable>(entity).dataInStoredUnit();
}

bool hasSameBits(const std::vector<Complex>& a, const std::vector<Complex>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Complex)) == 0;
}

void testCopies(const MeasurementEntity& document, const std::string& parameter, const Variant& values) {
    const Measurement root = document;
    const Marker marker = *document.marker();
    const Zelm::ZObserver link = *document.marker()->link();
    const struct {
        const char* place;
        ZVariable copy;
    } copies[] = {{"the parameter", *document.variable(parameter)},
                  {"the link", ZVariable(link.propertyHandle().child(Zelm::ZObserver::Link))},
                  {"the marker", marker.target()},
                  {"the document", root.variable(parameter)},
                  {"the marker in the document", root.marker().target()}};
    const auto expected = elementsOf<Complex>(values);
    for (const auto& [place, copy] : copies) {
        if (!hasSameBits(elementsOf<Complex>(copy.dataInStoredUnit()), expected)) {
            fail(std::string(place) + " does not hold the new values of " + parameter);
        }
    }
}

/// The marker alone gets dirty.
void testMarks(const MeasurementEntity& document, const std::string& parameter, bool isMarkerDirty) {
    require(document.marker()->isDirty() == isMarkerDirty,
            isMarkerDirty ? "the marker is not dirty" : "the marker is dirty");
    require(!document.isDirty() && !document.variable(parameter)->isDirty() &&
                !document.marker()->link()->isDirty(),
            "more than the marker is dirty");
}

std::shared_ptr<MeasurementEntity> markedDocument(const Measurement& measurement,
                                                  const std::string& parameter) {
    auto document = std::make_shared<MeasurementEntity>("measurement", measurement);
    document->mark(parameter);
    document->refresh();
    return document;
}

std::string parameterToMark(const Measurement& measurement) {
    const std::size_t ports = measurement.ports();
    return parameterName(measurement.parameter(), ports, ports > 1 ? 1 : 0, 0);
}

double refreshedPeak(MeasurementEntity& document, const std::string& parameter) {
    document.refresh();
    const double peak = static_cast<Measurement>(document).marker().peak();
    const auto decibels =
        elementsOf<double>(magnitudeInDecibel(*document.variable(parameter)).dataInStoredUnit());
    require(peak == *std::max_element(decibels.begin(), decibels.end()), "the marker was not read anew");
    return peak;
}

} // namespace

std::string textOf(MeasurementEntity& document) {
    std::ostringstream out;
    writeDocument(out, document.state());
    return out.str();
}

std::shared_ptr<MeasurementEntity> entitiesOf(const std::string& text) {
    MeasurementEntity::registerTypes();
    std::istringstream in(text);
    auto document = std::make_shared<MeasurementEntity>("measurement", readDocument(in));
    document->onPostLoad();
    return document;
}

std::vector<std::string> changeAndTest(MeasurementEntity& document, const std::string& parameter) {
    const Listener listener(document, parameter);
    const auto entity = document.variable(parameter);
    const Variant values = halved(valuesOf(*entity));
    assign(*entity, values);
    testCopies(document, parameter, values);
    return listener.paths();
}

LiveRoad walkLiveRoad(const Measurement& measurement) {
    LiveRoad road;
    road.parameter = parameterToMark(measurement);
    const auto document = markedDocument(measurement, road.parameter);
    testMarks(*document, road.parameter, false);
    road.change = changeAndTest(*document, road.parameter);
    // The parameter tells the document itself and, by its link, the marker, which tells the document again.
    require(road.change ==
                std::vector<std::string>{"/", "/", "/Marker", "/Marker/Target", "/" + road.parameter},
            "a change did not climb from the parameter and its link to the root");

    const std::string text = textOf(*document);
    road.bytes = text.size();
    const auto loaded = entitiesOf(text);
    const Measurement saved = *document;
    const Measurement restored = *loaded;
    require(saved.propertyHandle().isEquivalentTo(restored.propertyHandle()), "differs after loading it");
    road.path = restored.marker().targetPath().to_string();
    require(road.path == "../../" + road.parameter, "the saved link leads elsewhere");
    testMarks(*loaded, road.parameter, true);

    require(changeAndTest(*loaded, road.parameter) == road.change,
            "the loaded document tells of a change in another way");
    road.peak = refreshedPeak(*loaded, road.parameter);
    testMarks(*loaded, road.parameter, false);
    return road;
}

double timeOfChange(const Measurement& measurement) {
    using Clock = std::chrono::steady_clock;
    constexpr std::size_t kSmallestCount = 11;
    constexpr std::size_t kLargestCount = 201;
    constexpr std::chrono::milliseconds kLongestTime(20);
    const std::string parameter = parameterToMark(measurement);
    const auto document = markedDocument(measurement, parameter);
    const auto entity = document->variable(parameter);
    const Variant values = valuesOf(*entity);
    const Variant states[] = {halved(values), values};
    const auto start = Clock::now();
    std::vector<double> times;
    while (times.size() < kSmallestCount ||
           (times.size() < kLargestCount && Clock::now() - start < kLongestTime)) {
        const auto begin = Clock::now();
        assign(*entity, states[times.size() % 2]);
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
    }
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

void printLiveRoad(std::ostream& out, const LiveRoad& road, double microseconds) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << "marker     on " << road.parameter
         << ", linked and saved as " << road.path << "\nchange     of " << road.parameter << ": "
         << road.change.size() << " notifications, " << microseconds << " us (median)\nnotified  ";
    const char* separator = " ";
    for (const std::string& path : road.change) {
        text << separator << path;
        separator = ", ";
    }
    text << "\n           link, marker and document held the new values, all bits, when the change returned\n"
         << "reloaded   " << road.bytes << " bytes: link connected, marker dirty as it was saved\n"
         << "change     of the reloaded " << road.parameter << ": followed and notified in the same way\n"
         << std::setprecision(3) << "refreshed  marker clean, largest magnitude " << road.peak << " dB\n";
    out << text.str();
}

} // namespace measurement
