#pragma once

/// The one list of the element types that a Variant can hold. Everything that exists once per element type is
/// generated from it. `apply(type, Name, value, keyword)` is expanded for each row:
///
/// - `type`: the C++ type of an element,
/// - `Name`: the enumerator of WellKnownType::Value and the static factory of WellKnownType,
/// - `value`: the 16-bit tag. Bit 15 marks a complex type, bit 14 an unsigned or boolean one, the low four
///   bits are the numeric kind (1 double, 2 float, 3 boolean, 4 to 7 integers of 8 to 64 bits), zero for all
///   others,
/// - `keyword`: the word for the type in documents and messages.
///
/// The list comes in three parts, so that sources can share out the work of compiling it.

// clang-format off
#define ZELM_FOR_EACH_REAL_TYPE(apply)                                               \
    apply(double,                  Double,                0x0001, "double")          \
    apply(float,                   Float,                 0x0002, "float")           \
    apply(bool,                    Bool,                  0x4003, "bool")            \
    apply(signed char,             Int8,                  0x0004, "int8")            \
    apply(short,                   Int16,                 0x0005, "int16")           \
    apply(int,                     Int32,                 0x0006, "int32")           \
    apply(std::int64_t,            Int64,                 0x0007, "int64")           \
    apply(unsigned char,           UnsignedInt8,          0x4004, "unsignedInt8")    \
    apply(unsigned short,          UnsignedInt16,         0x4005, "unsignedInt16")   \
    apply(unsigned int,            UnsignedInt32,         0x4006, "unsignedInt32")   \
    apply(std::uint64_t,           UnsignedInt64,         0x4007, "unsignedInt64")

#define ZELM_FOR_EACH_COMPLEX_TYPE(apply)                                                               \
    apply(std::complex<double>,            ComplexDouble,         0x8001, "complexDouble")              \
    apply(std::complex<float>,             ComplexFloat,          0x8002, "complexFloat")               \
    apply(::Zelm::Complex<bool>,           ComplexBool,           0xC003, "complexBool")                \
    apply(::Zelm::Complex<signed char>,    ComplexInt8,           0x8004, "complexInt8")                \
    apply(::Zelm::Complex<short>,          ComplexInt16,          0x8005, "complexInt16")               \
    apply(::Zelm::Complex<int>,            ComplexInt32,          0x8006, "complexInt32")               \
    apply(::Zelm::Complex<std::int64_t>,   ComplexInt64,          0x8007, "complexInt64")               \
    apply(::Zelm::Complex<unsigned char>,  ComplexUnsignedInt8,   0xC004, "complexUnsignedInt8")        \
    apply(::Zelm::Complex<unsigned short>, ComplexUnsignedInt16,  0xC005, "complexUnsignedInt16")       \
    apply(::Zelm::Complex<unsigned int>,   ComplexUnsignedInt32,  0xC006, "complexUnsignedInt32")       \
    apply(::Zelm::Complex<std::uint64_t>,  ComplexUnsignedInt64,  0xC007, "complexUnsignedInt64")

#define ZELM_FOR_EACH_OBJECT_TYPE(apply)                       \
    apply(std::string,     String,   0x0010, "string")         \
    apply(std::u16string,  String16, 0x0020, "string16")       \
    apply(::Zelm::Variant, Cell,     0x0030, "cell")           \
    apply(::Zelm::Struct,  Struct,   0x0040, "struct")         \
    apply(::Zelm::ZString, ZString,  0x0050, "zstring")
// clang-format on

#define ZELM_FOR_EACH_ELEMENT_TYPE(apply)                                                                    \
    ZELM_FOR_EACH_REAL_TYPE(apply)                                                                           \
    ZELM_FOR_EACH_COMPLEX_TYPE(apply)                                                                        \
    ZELM_FOR_EACH_OBJECT_TYPE(apply)
