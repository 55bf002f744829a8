#include "LiveDocument.h"
#include "support/ExpectThrow.h"

#include <gtest/gtest.h>

#include <cmath>

namespace measurement {
namespace {

using Paths = std::vector<std::string>;

Measurement measurementOf(const std::string& text, std::size_t ports) {
    const Touchstone file = parseTouchstone(text, ports, "f");
    return Measurement(file.parameter, file.ports, variablesOf(file));
}

TEST(LiveDocument, MarksOneParameterAndFollowsItThroughTwoChanges) {
    const LiveRoad two = walkLiveRoad(measurementOf("# MHz RI\n1 1 0 3 4 0 0 .1 0\n2 1 0 6 8 0 0 .1 0\n", 2));
    EXPECT_EQ(two.change, (Paths{"/", "/", "/Marker", "/Marker/Target", "/S21"}));
    EXPECT_EQ(two.path, "../../S21");
    EXPECT_DOUBLE_EQ(two.peak, 20 * std::log10(10.0 / 4));

    const LiveRoad one = walkLiveRoad(measurementOf("# GHz Z RI\n1 0 0\n", 1));
    EXPECT_EQ(one.parameter, "Z11");
    EXPECT_DOUBLE_EQ(one.peak, 20 * std::log10(0.5)) << "a zero becomes 1, and that a half";
}

TEST(LiveDocument, KeepsWhatIsDirtyAndNoticesACutLink) {
    MeasurementEntity document("m", measurementOf("# GHz RI\n1 1 0 3 4 0 0 .1 0\n", 2));
    document.mark("S21");
    document.refresh();
    EXPECT_FALSE(entitiesOf(textOf(document))->marker()->isDirty());
    EXPECT_EQ(changeAndTest(document, "S21").size(), 5U);
    const auto loaded = entitiesOf(textOf(document));
    EXPECT_TRUE(loaded->marker()->isDirty());

    loaded->marker()->removeExternalLinks();
    EXPECT_THROW_MSG(changeAndTest(*loaded, "S21"), std::runtime_error,
                     "live document: the link does not hold the new values of S21");
}

} // namespace
} // namespace measurement
