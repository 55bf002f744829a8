#include <variant/Samples.h>

#include <zelm/variant/WellKnownType.h>

#include <cstring>
#include <map>
#include <set>
#include <sstream>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

const WellKnownType kUnknown;

std::vector<WellKnownType> allTypes() {
    std::vector<WellKnownType> types;
    forEachElementType(
        [&](auto tag) { types.push_back(details::wellKnownTypeOf<typename decltype(tag)::type>); });
    return types;
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

/// The complex type of a real one, by its keyword.
WellKnownType complexOf(WellKnownType real) {
    std::string keyword = real.ToString();
    keyword[0] = static_cast<char>(keyword[0] - 'a' + 'A');
    return WellKnownType("complex" + keyword);
}

} // namespace

static_assert(!std::is_constructible_v<WellKnownType, int> &&
              !std::is_constructible_v<WellKnownType, std::nullptr_t>);
static_assert(!std::is_convertible_v<WellKnownType, bool> && std::is_constructible_v<bool, WellKnownType>);
static_assert(sizeof(WellKnownType) == 2 && std::is_trivially_copyable_v<WellKnownType>);

TEST(WellKnownType, keywords_and_numbers_of_files_stay_as_they_are) {
    const std::map<std::string, unsigned> numbers{{"double", 1},
                                                  {"float", 2},
                                                  {"int8", 4},
                                                  {"int16", 5},
                                                  {"int32", 6},
                                                  {"int64", 7},
                                                  {"bool", 0x4003},
                                                  {"unsignedInt8", 0x4004},
                                                  {"unsignedInt16", 0x4005},
                                                  {"unsignedInt32", 0x4006},
                                                  {"unsignedInt64", 0x4007},
                                                  {"string", 0x10},
                                                  {"string16", 0x20},
                                                  {"cell", 0x30},
                                                  {"struct", 0x40},
                                                  {"zstring", 0x50}};
    std::set<WellKnownType> seen;
    for (const WellKnownType type : allTypes()) {
        const std::string keyword = type.ToString();
        EXPECT_EQ(WellKnownType(keyword), type) << keyword;
        EXPECT_EQ(unsigned(type.baseType().value()), numbers.at(type.baseType().ToString())) << keyword;
        EXPECT_EQ(unsigned(type.value()) - unsigned(type.baseType().value()),
                  type.isComplex() ? 0x8000u : 0u);
        EXPECT_TRUE(type && seen.insert(type).second) << keyword;
    }
    EXPECT_EQ(seen.size(), 27u);
    for (const char* word : {"unknown", "", "Int8", "Double", "double ", " double", "doubl", "complex"}) {
        EXPECT_FALSE(WellKnownType(word)) << word;
    }
    EXPECT_FALSE(WellKnownType(std::string("int8\0", 5)));
    EXPECT_STREQ(kUnknown.ToString(), "unknown");
    const std::uint16_t stranger = 0x0F0F;
    WellKnownType outside;
    std::memcpy(static_cast<void*>(&outside), &stranger, sizeof outside);
    EXPECT_STREQ(outside.ToString(), "unknown");
}

TEST(WellKnownType, predicates_agree_with_the_keywords) {
    for (const WellKnownType type : allTypes()) {
        const std::string keyword = type.ToString();
        const bool text = keyword == "string" || keyword == "string16";
        const bool object = text || keyword == "cell" || keyword == "struct" || keyword == "zstring";
        EXPECT_EQ(type.isComplex(), contains(keyword, "complex")) << keyword;
        EXPECT_EQ(type.isUnsigned(), contains(keyword, "nsigned") || contains(keyword, "ool")) << keyword;
        EXPECT_EQ(type.isNumeric(), !object) << keyword;
        EXPECT_EQ(type.isString(), text) << keyword;
        EXPECT_EQ(type.isCellArray(), keyword == "cell") << keyword;
        EXPECT_EQ(type.isComplex() ? complexOf(type.baseType()) : type.baseType(), type) << keyword;
        EXPECT_FALSE(type.isUnknown());
    }
    EXPECT_TRUE(kUnknown.isUnknown());
    EXPECT_FALSE(kUnknown.isNumeric() || kUnknown.isComplex() || kUnknown.isUnsigned() ||
                 kUnknown.isString());
}

TEST(WellKnownType, ordered_by_number) {
    EXPECT_LT(WellKnownType::UnsignedInt64(), WellKnownType::ComplexDouble());
    EXPECT_LT(WellKnownType::ZString(), WellKnownType::Bool());
    EXPECT_LT(kUnknown, WellKnownType::Double());
    WellKnownType writable = WellKnownType::Int8();
    EXPECT_TRUE(writable < WellKnownType::Int16());
    EXPECT_FALSE(writable < writable);
}

TEST(WellKnownType, common_type_of_all_pairs) {
    const std::map<std::string, WellKnownType> codes{
        {"b", WellKnownType::Bool()},           {"i1", WellKnownType::Int8()},
        {"u1", WellKnownType::UnsignedInt8()},  {"i2", WellKnownType::Int16()},
        {"u2", WellKnownType::UnsignedInt16()}, {"i4", WellKnownType::Int32()},
        {"u4", WellKnownType::UnsignedInt32()}, {"i8", WellKnownType::Int64()},
        {"u8", WellKnownType::UnsignedInt64()}, {"f", WellKnownType::Float()},
        {"d", WellKnownType::Double()}};
    // The first line names the second operand, the first word of each other line the first operand.
    std::istringstream lines("   b  i1 u1 i2 u2 i4 u4 i8 u8 f d\n"
                             "b  b  i1 u1 i2 u2 i4 u4 i8 u8 f d\n"
                             "i1 i1 i1 i2 i2 i4 i4 i8 i8 d  f d\n"
                             "u1 u1 i2 u1 i2 u2 i4 u4 i8 u8 f d\n"
                             "i2 i2 i2 i2 i2 i4 i4 i8 i8 d  f d\n"
                             "u2 u2 i4 u2 i4 u2 i4 u4 i8 u8 f d\n"
                             "i4 i4 i4 i4 i4 i4 i4 i8 i8 d  f d\n"
                             "u4 u4 i8 u4 i8 u4 i8 u4 i8 u8 f d\n"
                             "i8 i8 i8 i8 i8 i8 i8 i8 i8 d  f d\n"
                             "u8 u8 d  u8 d  u8 d  u8 d  u8 f d\n"
                             "f  f  f  f  f  f  f  f  f  f  f d\n"
                             "d  d  d  d  d  d  d  d  d  d  d d\n");
    std::vector<std::string> columns(11);
    for (std::string& column : columns) {
        lines >> column;
    }
    const auto common = &WellKnownType::GetCommonWellKnownType;
    int rows = 0;
    for (std::string row, code; lines >> row; ++rows) {
        const WellKnownType a = codes.at(row);
        for (const std::string& column : columns) {
            const WellKnownType b = codes.at(column);
            lines >> code;
            const WellKnownType expected = codes.at(code);
            EXPECT_EQ(common(a, b), expected) << row << ' ' << column;
            for (const WellKnownType mixed :
                 {common(complexOf(a), b), common(a, complexOf(b)), common(complexOf(a), complexOf(b))}) {
                EXPECT_EQ(mixed, complexOf(expected)) << row << ' ' << column;
            }
        }
    }
    EXPECT_EQ(rows, 11);
    EXPECT_EQ(common(kUnknown, kUnknown), kUnknown);
    for (const WellKnownType a : allTypes()) {
        EXPECT_EQ(common(a, a), a);
        EXPECT_EQ(common(a, kUnknown), a);
        EXPECT_EQ(common(kUnknown, a), a);
        for (const WellKnownType b : allTypes()) {
            if (a != b && !(a.isNumeric() && b.isNumeric())) {
                EXPECT_EQ(common(a, b), kUnknown) << a.ToString() << ' ' << b.ToString();
            }
        }
    }
}
