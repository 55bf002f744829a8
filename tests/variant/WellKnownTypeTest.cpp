#include <variant/Samples.h>

#include <set>
#include <sstream>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

const WellKnownType kUnknown;

/// The complex type of a real one, by its keyword.
WellKnownType complexOf(WellKnownType real) {
    std::string keyword = real.ToString();
    keyword[0] = static_cast<char>(keyword[0] - 'a' + 'A');
    return WellKnownType("complex" + keyword);
}

} // namespace

static_assert(!std::is_convertible_v<WellKnownType, bool> && sizeof(WellKnownType) == 2);

TEST(WellKnownType, keywords_numbers_and_predicates) {
    std::istringstream rows("double 1 float 2 int8 4 int16 5 int32 6 int64 7 bool 4003 unsignedInt8 4004 "
                            "unsignedInt16 4005 unsignedInt32 4006 unsignedInt64 4007 string 10 string16 20 "
                            "cell 30 struct 40 zstring 50");
    std::set<WellKnownType> seen;
    unsigned number = 0;
    for (std::string keyword; rows >> keyword >> std::hex >> number;) {
        const WellKnownType real(keyword);
        const bool isNumeric = number % 16 != 0;
        for (const WellKnownType type : {real, isNumeric ? complexOf(real) : real}) {
            SCOPED_TRACE(type.ToString());
            EXPECT_EQ(static_cast<unsigned>(type.value()), number + (type == real ? 0 : 0x8000));
            EXPECT_EQ(WellKnownType(type.ToString()), type);
            EXPECT_EQ(type.baseType(), real);
            EXPECT_EQ(type.isComplex(), type != real);
            EXPECT_EQ(type.isUnsigned(), number >= 0x4000);
            EXPECT_EQ(type.isNumeric(), isNumeric);
            EXPECT_EQ(type.isString(), keyword == "string" || keyword == "string16");
            EXPECT_EQ(type.isCellArray(), keyword == "cell");
            EXPECT_TRUE(type && !type.isUnknown() && kUnknown < type);
            seen.insert(type);
        }
    }
    EXPECT_EQ(seen.size(), 27u);
    for (const char* word : {"unknown", "", "Int8", "double ", " double", "doubl", "complex"}) {
        EXPECT_EQ(WellKnownType(word), kUnknown) << word;
    }
    EXPECT_FALSE(kUnknown || kUnknown.isNumeric() || kUnknown.isComplex() || kUnknown.isUnsigned());
}

TEST(WellKnownType, common_type_of_all_pairs) {
    // A letter for each type: the columns are the second operand, the rows the first.
    const std::string letters = "bcCsSiIlLfd";
    std::istringstream rows("bcCsSiIlLfd ccssiilldfd CsCsSiIlLfd ssssiilldfd SiSiSiIlLfd iiiiiilldfd "
                            "IlIlIlIlLfd lllllllldfd LdLdLdLdLfd ffffffffffd ddddddddddd");
    std::vector<WellKnownType> types;
    for (const char* keyword : {"bool", "int8", "unsignedInt8", "int16", "unsignedInt16", "int32",
                                "unsignedInt32", "int64", "unsignedInt64", "float", "double"}) {
        types.emplace_back(keyword);
    }
    const auto common = &WellKnownType::GetCommonWellKnownType;
    for (const WellKnownType a : types) {
        std::string row;
        rows >> row;
        for (std::size_t i = 0; i < types.size(); ++i) {
            const WellKnownType b = types[i], expected = types[letters.find(row.at(i))];
            EXPECT_EQ(common(a, b), expected) << a.ToString() << ' ' << b.ToString();
            EXPECT_EQ(common(complexOf(a), b), complexOf(expected)) << a.ToString() << ' ' << b.ToString();
            EXPECT_EQ(common(complexOf(a), complexOf(b)), common(a, complexOf(b)));
        }
        EXPECT_TRUE(common(a, kUnknown) == a && common(kUnknown, a) == a);
    }
    EXPECT_EQ(common(WellKnownType::Cell(), WellKnownType::Cell()), WellKnownType::Cell());
    EXPECT_EQ(common(WellKnownType::String(), WellKnownType::ZString()), kUnknown);
}
