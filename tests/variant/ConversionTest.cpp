#include "NumberModel.h"

#include <support/ExpectThrow.h>

#include <zelm/variant/Struct.h>

#include <utf8.h>

#include <stdexcept>

namespace Zelm::Testing {
namespace {

using StoragePointer = std::unique_ptr<details::AbstractVariantStorage>;

constexpr ConversionPolicy kPolicies[] = {NoCheck, CheckAlways, CheckLossy};
const std::string kLost = "runtime_error Conversion check failed";
const std::string kNoConversion = "invalid_argument No conversion available";
const std::string kNoWayBack = "invalid_argument Unable to check conversion";
const std::string kUnknownPolicy = "invalid_argument Unknown conversion policy";
const std::string kUnknownType =
    "invalid_argument Cannot convert data into new storage, unknown destination type";

/// The text of what `action` throws behind its exact type; empty if it throws nothing.
template <class Action>
std::string failureOf(Action&& action) {
    try {
        action();
    } catch (const std::exception& error) {
        const std::string type = typeid(error) == typeid(std::runtime_error)      ? "runtime_error "
                                 : typeid(error) == typeid(std::invalid_argument) ? "invalid_argument "
                                                                                  : "? ";
        return type + error.what();
    }
    return {};
}

StoragePointer convert(const Variant& value, WellKnownType type, ConversionPolicy policy) {
    return details::VariantAccess::storage(value)->convertTo(type, policy);
}

template <class T>
const std::vector<T>& elementsOf(const StoragePointer& storage) {
    return dynamic_cast<const details::VectorVariantStorage<T>&>(*storage).elements();
}

template <class Body>
void forEachNumberPair(Body&& body) {
    for (const NumberType& from : kNumberTypes) {
        for (const NumberType& to : kNumberTypes) {
            SCOPED_TRACE(std::string(from.tag.ToString()) + " to " + to.tag.ToString());
            body(from, to, edgeNumbers(from));
            ASSERT_FALSE(::testing::Test::HasFailure());
        }
    }
}

TEST(NumberConversion, AgreesWithTheModelForEveryPairPolicyAndEdge) {
    forEachNumberPair([](const NumberType& from, const NumberType& to, const NumberList& numbers) {
        for (const Number& number : numbers) {
            const Number expected = converted(number, from, to);
            const Variant one = valueOf(from.tag, {number});
            const auto check = [&](bool isTested, auto&& read) {
                Number result;
                const std::string failure = failureOf([&] { result = read(); });
                ASSERT_EQ(failure, isTested && !areEqual(number, expected) ? kLost : "") << number.re;
                ASSERT_TRUE(!failure.empty() || isSame(result, expected)) << number.re;
            };
            for (const ConversionPolicy policy : kPolicies) {
                check(policy == CheckAlways || (policy == CheckLossy && mayLose(from, to)),
                      [&] { return numbersOf(*convert(one, to.tag, policy)).at(0); });
            }
            visitNumberType(to.tag, [&](auto tag) {
                using T = typename decltype(tag)::type;
                check(from.tag != to.tag, [&] { return numberOf(one.value<T>()); });
            });
        }
    });
}

TEST(NumberConversion, FindsALostElementWhereverItStands) {
    constexpr std::size_t kPlaces[] = {0, 1, 63, 64, 511, 512, 1023, 1024, 1099};
    std::size_t pairs = 0;
    forEachNumberPair([&](const NumberType& from, const NumberType& to, const NumberList& edges) {
        NumberList kept, lost, numbers;
        for (const Number& number : edges) {
            (areEqual(number, converted(number, from, to)) ? kept : lost).push_back(number);
        }
        for (std::size_t i = 0; i < 1100; ++i) {
            numbers.push_back(kept[i % kept.size()]);
        }
        const NumberList results = numbersOf(*convert(valueOf(from.tag, numbers), to.tag, CheckAlways));
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            ASSERT_TRUE(isSame(results.at(i), converted(numbers[i], from, to))) << i;
        }
        if (!lost.empty()) {
            ++pairs;
            numbers[kPlaces[pairs % 9]] = lost[pairs % lost.size()];
            const Variant spoilt = valueOf(from.tag, numbers);
            EXPECT_EQ(failureOf([&] { convert(spoilt, to.tag, CheckAlways); }), kLost) << pairs % 9;
        }
    });
}

TEST(NumberConversion, HasTheseValuesWhateverTheModelSays) {
    const auto only = [](Variant from, auto to) {
        return elementsOf<decltype(to)>(convert(from, details::wellKnownTypeOf<decltype(to)>, NoCheck))[0];
    };
    EXPECT_EQ(only(300.7, static_cast<signed char>(0)), 44);
    EXPECT_EQ(only(-1.5, static_cast<unsigned char>(0)), 255);
    EXPECT_EQ(only(9223372036854775808.0, std::uint64_t()), 9223372036854775808u);
    EXPECT_EQ(only(std::uint64_t{1152921573326323713}, 0.f), 1152921642045800448.0f);
}

TEST(ConversionOfAnyPair, HasItsFailuresInOrder) {
    const auto isText = [](WellKnownType type) {
        return type.isString() || type == WellKnownType::ZString();
    };
    const auto hasConversion = [&](WellKnownType from, WellKnownType to) {
        return from == to || to.isCellArray() || (from.isNumeric() && to.isNumeric()) ||
               (isText(from) && isText(to) &&
                (from == WellKnownType::String() || to == WellKnownType::String()));
    };
    const ConversionPolicy policy7 = ConversionPolicy(7);
    std::vector<std::pair<Variant, Variant>> sources;
#define ZELM_SOURCE(type, Name, value, keyword)                                                              \
    sources.emplace_back(std::vector<type>(1), std::vector<type>());
    ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_SOURCE)
#undef ZELM_SOURCE
    for (const auto& [one, empty] : sources) {
        EXPECT_EQ(failureOf([&, &one = one] { convert(one, WellKnownType(), policy7); }), kUnknownType);
        for (const auto& target : sources) {
            const WellKnownType from = one.wellKnownType(), to = target.first.wellKnownType();
            SCOPED_TRACE(std::string(from.ToString()) + " to " + to.ToString());
            const bool has = hasConversion(from, to);
            const auto expect = [&, to = to](const Variant& source, ConversionPolicy policy,
                                             const std::string& failure) {
                EXPECT_EQ(failureOf([&] { EXPECT_EQ(convert(source, to, policy)->wellKnownType(), to); }),
                          failure)
                    << policy;
            };
            expect(one, policy7, kUnknownPolicy);
            expect(one, ConversionPolicy(-1), kUnknownPolicy);
            expect(empty, policy7, has ? "" : kNoConversion);
            for (const ConversionPolicy policy : kPolicies) {
                const bool isBlocked = policy == CheckAlways && !hasConversion(to, from);
                expect(one, policy, !has ? kNoConversion : isBlocked ? kNoWayBack : "");
                expect(empty, policy, has ? "" : kNoConversion);
            }
        }
    }
}

TEST(TextConversion, KeepsEveryByteUnderEveryPolicy) {
    const std::vector<std::string> texts = {"", std::string("a\0b", 3), "\xC2\xB5 \xE2\x82\xAC",
                                            "\xF0\x9D\x84\x9E", "\xEF\xBB\xBFmark"};
    const std::vector<std::u16string> wide = {u"", std::u16string(u"a\0b", 3), u"\u00B5 \u20AC",
                                              u"\U0001D11E", u"\uFEFFmark"};
    const std::vector<ZString> shared(texts.begin(), texts.end());
    const Variant utf8(texts), utf16(wide), zstrings(shared);
    for (const ConversionPolicy policy : kPolicies) {
        EXPECT_EQ(elementsOf<std::u16string>(convert(utf8, WellKnownType::String16(), policy)), wide);
        EXPECT_EQ(elementsOf<std::string>(convert(utf16, WellKnownType::String(), policy)), texts);
        EXPECT_EQ(elementsOf<ZString>(convert(utf8, WellKnownType::ZString(), policy)), shared);
        EXPECT_EQ(elementsOf<std::string>(convert(zstrings, WellKnownType::String(), policy)), texts);
        const auto toUtf16 = [&](const char* text) {
            convert(Variant{std::string("fine"), std::string(text)}, WellKnownType::String16(), policy);
        };
        EXPECT_THROW_MSG(toUtf16("\xC2 "), utf8::invalid_utf8, "Invalid UTF-8");
        EXPECT_THROW_MSG(toUtf16("\xE2\x82"), utf8::not_enough_room, "Not enough space");
        EXPECT_THROW_MSG(toUtf16("\xED\xA0\x80"), utf8::invalid_code_point, "Invalid code point");
        EXPECT_THROW_MSG(convert(std::u16string(u"\xD800!"), WellKnownType::String(), policy),
                         utf8::invalid_utf16, "Invalid UTF-16");
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(Variant(texts[i]).value<std::u16string>(), wide[i]);
        EXPECT_EQ(Variant(wide[i]).value<std::string>(), texts[i]);
        EXPECT_EQ(Variant(texts[i]).value<ZString>(), shared[i]);
    }
    EXPECT_EQ(Variant(std::string("\xFF\xC2")).value<ZString>(), ZString("\xFF\xC2"));
}

TEST(CellConversion, MakesAScalarOfEachElementAndChecksByEquivalence) {
    const Variant numbers({1.5, 2.5}, {1, 2}, ColumnMajor);
    const StoragePointer cells = convert(numbers, WellKnownType::Cell(), CheckLossy);
    EXPECT_TRUE(elementsOf<Variant>(cells)[1].isIdenticalTo(2.5));
    EXPECT_TRUE(cells->dimensions().isIdenticalTo({1, 2}));
    EXPECT_EQ(cells->dataOrdering(), ColumnMajor);
    Struct record;
    record.set("x", NAN);
    for (const Variant& source : {Variant(std::vector<Variant>{1, NAN}), Variant{Struct(), record}}) {
        const WellKnownType type = source.wellKnownType();
        EXPECT_EQ(failureOf([&] { convert(source, type, CheckAlways); }), kLost);
        EXPECT_EQ(failureOf([&] { convert(source, type, CheckLossy); }), "");
        EXPECT_EQ(elementsOf<Variant>(convert(source, WellKnownType::Cell(), NoCheck)).size(), 2u);
    }
}

} // namespace
} // namespace Zelm::Testing
