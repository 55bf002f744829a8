#pragma once

#include <zelm/Export.h>
#include <zelm/variant/ElementTypeList.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Zelm {

/// The run-time tag of an element type: one of the 27 types that a Variant can hold, or unknown.
///
/// The number is structured: bit 15 marks complex types, bit 14 unsigned and boolean ones, the low four bits
/// hold the numeric kind and are zero for text, cells and structs. No operation throws.
class ZELM_EXPORT WellKnownType {
public:
    enum class Value : std::uint16_t {
        Unknown = 0x0000,
#define ZELM_ENUMERATOR(type, Name, value, keyword) Name = value,
        ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_ENUMERATOR)
#undef ZELM_ENUMERATOR
    };

    /// The unknown type.
    constexpr WellKnownType() noexcept = default;
    /// The type with this keyword, compared whole and case-sensitive; unknown if there is none.
    WellKnownType(const std::string& keyword);
    WellKnownType(std::nullptr_t) = delete;
    WellKnownType(int) = delete;

    /// `Double()`, `Int8()`, ... `ComplexUnsignedInt64()`: one factory for each element type.
#define ZELM_FACTORY(type, Name, value, keyword)                                                             \
    static constexpr WellKnownType Name() noexcept {                                                         \
        return WellKnownType(Value::Name);                                                                   \
    }
    ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_FACTORY)
#undef ZELM_FACTORY

    constexpr Value value() const noexcept {
        return value_;
    }

    constexpr bool operator==(WellKnownType other) const noexcept {
        return value_ == other.value_;
    }
    constexpr bool operator!=(WellKnownType other) const noexcept {
        return value_ != other.value_;
    }
    /// The order of the numbers, for ordered containers; it has no other sense.
    constexpr bool operator<(WellKnownType other) const noexcept {
        return value_ < other.value_;
    }
    bool operator<(WellKnownType other) noexcept {
        return value_ < other.value_;
    }

    /// True for every type but the unknown one.
    constexpr explicit operator bool() const noexcept {
        return value_ != Value::Unknown;
    }
    constexpr bool isUnknown() const noexcept {
        return value_ == Value::Unknown;
    }
    /// True for all real and complex types, the boolean ones included.
    constexpr bool isNumeric() const noexcept {
        return (number() & kNumericMask) != 0;
    }
    constexpr bool isComplex() const noexcept {
        return (number() & kComplex) != 0;
    }
    /// True for unsigned integers, booleans and the complex types made of them.
    constexpr bool isUnsigned() const noexcept {
        return (number() & kUnsigned) != 0;
    }
    /// True for `String()` and `String16()` alone; a caller that wants all text tests `ZString()` as well.
    constexpr bool isString() const noexcept {
        return value_ == Value::String || value_ == Value::String16;
    }
    constexpr bool isCellArray() const noexcept {
        return value_ == Value::Cell;
    }
    /// The real type of a complex one; every other type as it is.
    constexpr WellKnownType baseType() const noexcept {
        return withoutFlag(kComplex);
    }

    /// The keyword, "unknown" for a number that is no type. Static text.
    const char* ToString() const noexcept;

    /// The type to which both operands of a binary operation are brought; unknown if there is none.
    /// Symmetric. A signed and an unsigned operand meet in the next wider signed type, 64-bit ones in double.
    static WellKnownType GetCommonWellKnownType(WellKnownType a, WellKnownType b) noexcept;

private:
    static constexpr unsigned short kComplex = 0x8000;
    static constexpr unsigned short kUnsigned = 0x4000;
    static constexpr unsigned short kFlagsMask = 0xF000;
    static constexpr unsigned short kNumericMask = 0x000F;

    explicit constexpr WellKnownType(Value value) noexcept : value_(value) {}

    static Value ParseValueString(const std::string& keyword) noexcept;

    constexpr unsigned short number() const noexcept {
        return static_cast<unsigned short>(value_);
    }
    constexpr WellKnownType withoutFlag(unsigned short flag) const noexcept {
        return WellKnownType(static_cast<Value>(number() & static_cast<unsigned short>(~flag)));
    }
    constexpr WellKnownType withFlag(unsigned short flag) const noexcept {
        return WellKnownType(static_cast<Value>(number() | flag));
    }
    int rank() const noexcept;
    WellKnownType widenedToSigned() const noexcept;

    Value value_ = Value::Unknown;
};

} // namespace Zelm
