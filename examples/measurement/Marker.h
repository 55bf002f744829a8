#pragma once

#include <zelm/tree/ZObject.h>
#include <zelm/variables/ZVariable.h>

namespace measurement {

/// A marker on a parameter: a link to it, and the largest magnitude that it had when the marker was read
/// last.
class Marker : public Zelm::ZObject {
public:
    /// The name of the link in the marker.
    static constexpr Zelm::ZStringLiteral Target{"Target", 6};

    /// "Marker".
    static Zelm::ZString objectType();

    /// A marker that is to be put on a variable.
    Marker();
    /// Throws `std::logic_error` "Marker expected but not found" for an object of another type.
    explicit Marker(Zelm::ZGenericObject object);

    /// The copy of the parameter that came by the link. Throws `std::runtime_error` if none has come yet.
    Zelm::ZVariable target() const;
    /// The way to the parameter as it is saved: "../../S21". Empty before the first saving.
    Zelm::ZString targetPath() const;
    /// Whether a new state of the link brings other values than those that the marker holds.
    bool isChangedBy(const Zelm::ZGenericObject& link) const;

    /// In dB; 0 before the first reading.
    double peak() const;
    void setPeak(double decibel);
};

} // namespace measurement
