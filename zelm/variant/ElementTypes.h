#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/variant/Complex.h>
#include <zelm/variant/WellKnownType.h>

#include <complex>
#include <cstdint>
#include <string>
#include <type_traits>

namespace Zelm {

class Variant;
class Struct;

namespace details {

/// Names an element type in a call, without an object of it.
template <class T>
struct ElementTag {
    using type = T;
};

/// The tag of an element type; unknown for every type that is none.
template <class T>
inline constexpr WellKnownType wellKnownTypeOf{};
#define ZELM_TYPE_TAG(type, Name, value, keyword)                                                            \
    template <>                                                                                              \
    inline constexpr WellKnownType wellKnownTypeOf<type> = WellKnownType::Name();
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_TYPE_TAG)
#undef ZELM_TYPE_TAG

template <class T>
inline constexpr bool isElementType = !wellKnownTypeOf<T>.isUnknown();

template <class T>
using RequireElementType = std::enable_if_t<isElementType<T>>;

/// Real or complex numbers, `bool` among them.
template <class T>
inline constexpr bool isNumericElement = wellKnownTypeOf<T>.isNumeric();
template <class T>
inline constexpr bool isComplexElement = wellKnownTypeOf<T>.isComplex();
template <class T>
inline constexpr bool isTextElement = wellKnownTypeOf<T>.isString() || std::is_same_v<T, ZString>;

/// The type of the parts of a complex type; a real type itself.
template <class T, bool = isComplexElement<T>>
struct RealPart {
    using type = T;
};
template <class T>
struct RealPart<T, true> {
    using type = typename T::value_type;
};
template <class T>
using RealPartOf = typename RealPart<T>::type;

/// The types in which elements are added, multiplied and mapped: real numbers but for `bool`, and the complex
/// numbers of the standard library.
template <class T>
inline constexpr bool isArithmeticElement = isNumericElement<T> && !std::is_same_v<T, bool> &&
                                            (!isComplexElement<T> || std::is_floating_point_v<RealPartOf<T>>);
template <class T>
using RequireArithmeticElement = std::enable_if_t<isArithmeticElement<T>>;

/// A `bool` in a vector of its own byte, so that elements can be pointed at.
struct ZELM_EXPORT Boolean {
    bool value = false;

    constexpr Boolean() noexcept = default;
    constexpr Boolean(bool b) noexcept : value(b) {}
    constexpr operator bool() const noexcept { return value; }
};
static_assert(sizeof(Boolean) == sizeof(bool), "a pointer to a Boolean is handed out as a pointer to bool");

/// The type in which an element stands in the vector of a storage. A class of its own, since compilers
/// disagree on the symbol names of functions that take a `std::conditional_t` of their template parameter.
template <class T>
struct StoredElementOf {
    using type = T;
};
template <>
struct StoredElementOf<bool> {
    using type = Boolean;
};
template <class T>
using StoredElement = typename StoredElementOf<T>::type;

/// Calls `visit(ElementTag<T>())` for the element type that `type` names and returns true; false for unknown
/// types. This is the one place where a run-time tag becomes a type: ask it once for an array, never for each
/// element.
template <class Visitor>
bool visitElementType(WellKnownType type, Visitor&& visit) {
    switch (type.value()) {
#define ZELM_VISIT(Type, Name, value, keyword)                                                               \
    case WellKnownType::Value::Name:                                                                         \
        visit(ElementTag<Type>());                                                                           \
        return true;
        ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_VISIT)
#undef ZELM_VISIT
    case WellKnownType::Value::Unknown:
        break;
    }
    return false;
}

} // namespace details
} // namespace Zelm
