#include <zelm/variant/WellKnownType.h>

namespace Zelm {

namespace {

struct Keyword {
    WellKnownType type;
    const char* text;
};

constexpr Keyword kKeywords[] = {
#define ZELM_KEYWORD(type, Name, value, keyword) {WellKnownType::Name(), keyword},
    ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_KEYWORD)
#undef ZELM_KEYWORD
};

// From the weakest to the strongest: of two real operands the later one decides the type of the result. A
// type that is unsigned gives way to `widened` beside a signed one.
struct Rank {
    WellKnownType type;
    WellKnownType widened;
};

constexpr Rank kRanks[] = {
    {WellKnownType::Bool(), WellKnownType::Int8()},
    {WellKnownType::Int8(), WellKnownType::Int8()},
    {WellKnownType::UnsignedInt8(), WellKnownType::Int16()},
    {WellKnownType::Int16(), WellKnownType::Int16()},
    {WellKnownType::UnsignedInt16(), WellKnownType::Int32()},
    {WellKnownType::Int32(), WellKnownType::Int32()},
    {WellKnownType::UnsignedInt32(), WellKnownType::Int64()},
    {WellKnownType::Int64(), WellKnownType::Int64()},
    // No integer holds the ranges of both 64-bit types.
    {WellKnownType::UnsignedInt64(), WellKnownType::Double()},
    {WellKnownType::Float(), WellKnownType::Float()},
    {WellKnownType::Double(), WellKnownType::Double()},
};

} // namespace

WellKnownType::WellKnownType(const std::string& keyword) : value_(ParseValueString(keyword)) {}

const char* WellKnownType::ToString() const noexcept {
    for (const Keyword& row : kKeywords) {
        if (row.type == *this) {
            return row.text;
        }
    }
    return "unknown";
}

WellKnownType::Value WellKnownType::ParseValueString(const std::string& keyword) noexcept {
    for (const Keyword& row : kKeywords) {
        if (keyword == row.text) {
            return row.type.value();
        }
    }
    return Value::Unknown;
}

int WellKnownType::rank() const noexcept {
    for (const Rank& row : kRanks) {
        if (row.type == *this) {
            return static_cast<int>(&row - kRanks);
        }
    }
    return -1;
}

WellKnownType WellKnownType::widenedToSigned() const noexcept {
    return kRanks[rank()].widened;
}

WellKnownType WellKnownType::GetCommonWellKnownType(WellKnownType a, WellKnownType b) noexcept {
    if (a == b || b.isUnknown()) {
        return a;
    }
    if (a.isUnknown()) {
        return b;
    }
    if (!a.isNumeric() || !b.isNumeric()) {
        return WellKnownType();
    }
    const WellKnownType first = a.baseType();
    const WellKnownType second = b.baseType();
    WellKnownType common = first.rank() > second.rank() ? first : second;
    if (common.isUnsigned() && !(a.isUnsigned() && b.isUnsigned())) {
        common = common.widenedToSigned();
    }
    return a.isComplex() || b.isComplex() ? common.withFlag(kComplex) : common;
}

} // namespace Zelm
