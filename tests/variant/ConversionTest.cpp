#include "NumberModel.h"

#include <support/ExpectThrow.h>

#include <zelm/variant/Conversion.h>
#include <zelm/variant/ElementConversion.h>
#include <zelm/variant/NullVariantStorage.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/Variant.h>

#include <gtest/gtest.h>
#include <utf8.h>

#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

namespace Zelm {

using namespace Testing;
using details::AbstractVariantStorage;

namespace {

constexpr ConversionPolicy kPolicies[] = {NoCheck, CheckAlways, CheckLossy};
constexpr const char* kLost = "Conversion check failed";
constexpr const char* kNoConversion = "No conversion available";
constexpr const char* kNoWayBack = "Unable to check conversion";
constexpr const char* kUnknownPolicy = "Unknown conversion policy";
constexpr const char* kUnknownType = "Cannot convert data into new storage, unknown destination type";

std::vector<WellKnownType> allTypes() {
    return {
#define ZELM_TAG(type, Name, value, keyword) WellKnownType(keyword),
        ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_TAG)
#undef ZELM_TAG
    };
}

/// The text of what `action` throws, behind a letter for its exact type; empty if it throws nothing.
template <class Action>
std::string failureOf(Action&& action) {
    try {
        action();
    } catch (const std::exception& error) {
        const bool isRuntime = typeid(error) == typeid(std::runtime_error);
        const bool isInvalid = typeid(error) == typeid(std::invalid_argument);
        return (isRuntime ? "R " : isInvalid ? "I " : "? ") + std::string(error.what());
    }
    return {};
}

Number scalarOf(const AbstractVariantStorage& source, WellKnownType type) {
    std::vector<Number> numbers;
    details::visitElementType(type, [&](auto tag) {
        using T = typename decltype(tag)::type;
        if constexpr (details::isNumericElement<T>) {
            const T scalar = details::convertedScalar<T>(source);
            if constexpr (details::isComplexElement<T>) {
                numbers.push_back({static_cast<Real>(scalar.real()), static_cast<Real>(scalar.imag())});
            } else {
                numbers.push_back({static_cast<Real>(scalar), 0});
            }
        }
    });
    return numbers.at(0);
}

template <class Body>
void forEachNumberPair(Body&& body) {
    for (const NumberType& from : allNumberTypes()) {
        for (const NumberType& to : allNumberTypes()) {
            SCOPED_TRACE(std::string(from.tag().ToString()) + " to " + to.tag().ToString());
            body(from, to, edgeNumbers(from));
            if (::testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

TEST(NumberConversion, AgreesWithTheModelForEveryPairPolicyAndEdge) {
    std::size_t failures = 0;
    forEachNumberPair([&](const NumberType& from, const NumberType& to, const std::vector<Number>& numbers) {
        ASSERT_EQ(details::isLossyConversion(from.tag(), to.tag()), mayLose(from, to));
        const auto all = storageOfNumbers(from.tag(), numbers, {numbers.size()});
        const std::vector<Number> results = numbersOf(*all->convertTo(to.tag(), NoCheck));
        ASSERT_EQ(results.size(), numbers.size());
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            const Number expected = converted(numbers[i], from, to);
            const bool kept = isKept(numbers[i], expected);
            ASSERT_TRUE(isSame(results[i], expected)) << numbers[i].re << ", " << numbers[i].im;

            const auto one = storageOfNumbers(from.tag(), {numbers[i]}, {1});
            for (const ConversionPolicy policy : {CheckAlways, CheckLossy}) {
                const bool isTested = policy == CheckAlways || mayLose(from, to);
                Number result;
                const std::string failure =
                    failureOf([&] { result = numbersOf(*one->convertTo(to.tag(), policy)).at(0); });
                ASSERT_EQ(failure, isTested && !kept ? std::string("R ") + kLost : "")
                    << numbers[i].re << ", " << numbers[i].im;
                ASSERT_TRUE(!failure.empty() || isSame(result, expected));
                failures += !failure.empty();
            }
            Number scalar;
            const std::string failure = failureOf([&] { scalar = scalarOf(*one, to.tag()); });
            ASSERT_EQ(failure, kept || from.tag() == to.tag() ? "" : std::string("R ") + kLost);
            ASSERT_TRUE(!failure.empty() || isSame(scalar, expected));
        }
        ASSERT_TRUE(std::equal(numbers.begin(), numbers.end(), numbersOf(*all).begin(), isSame));
    });
    EXPECT_GT(failures, 10000u);
}

TEST(NumberConversion, FindsALostElementWhereverItStands) {
    constexpr std::size_t kCount = 1100;
    constexpr std::size_t kPlaces[] = {0, 1, 2, 3, 63, 64, 65, 511, 512, 513, 1023, 1024, 1098, 1099};
    forEachNumberPair([&](const NumberType& from, const NumberType& to, const std::vector<Number>& numbers) {
        std::vector<Number> kept;
        std::vector<Number> lost;
        for (const Number& number : numbers) {
            (isKept(number, converted(number, from, to)) ? kept : lost).push_back(number);
        }
        std::vector<Number> array;
        while (array.size() < kCount) {
            array.push_back(kept[array.size() % kept.size()]);
        }
        const auto storage = storageOfNumbers(from.tag(), array, {2, kCount / 2}, ColumnMajor);
        const auto result = storage->convertTo(to.tag(), CheckAlways);
        const std::vector<Number> results = numbersOf(*result);
        for (std::size_t i = 0; i < kCount; ++i) {
            ASSERT_TRUE(isSame(results[i], converted(array[i], from, to))) << i;
        }
        EXPECT_TRUE(result->dimensions().isIdenticalTo({2, kCount / 2}));
        EXPECT_EQ(result->dataOrdering(), ColumnMajor);
        if (lost.empty()) {
            return;
        }
        for (const std::size_t place : kPlaces) {
            array.assign(kCount, kept.front());
            array[place] = lost[place % lost.size()];
            const auto spoilt = storageOfNumbers(from.tag(), array, {kCount});
            ASSERT_EQ(failureOf([&] { spoilt->convertTo(to.tag(), CheckAlways); }), std::string("R ") + kLost)
                << place;
        }
    });
}

template <class To, class From>
To only(From value, ConversionPolicy policy = NoCheck) {
    const details::VectorVariantStorage<From> source({value}, {1}, RowMajor);
    const auto result = source.convertTo(details::wellKnownTypeOf<To>, policy);
    return *static_cast<const To*>(static_cast<const AbstractVariantStorage&>(*result).data());
}

TEST(NumberConversion, HasTheseValuesWhateverTheModelSays) {
    using Byte = unsigned char;
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(only<signed char>(300.7), 44);
    EXPECT_EQ(only<signed char>(-1.5), -1);
    EXPECT_EQ(only<Byte>(-1.5), 255);
    EXPECT_EQ(only<signed char>(1e20), 0);
    EXPECT_EQ(only<int>(kNaN), std::numeric_limits<int>::min());
    EXPECT_EQ(only<int>(2147483647.5), 2147483647);
    EXPECT_EQ(only<int>(-2147483648.5), std::numeric_limits<int>::min());
    EXPECT_EQ(only<std::int64_t>(9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(only<std::uint64_t>(9223372036854775808.0), 9223372036854775808u);
    EXPECT_EQ(only<unsigned>(-1.0), 0u);
    EXPECT_EQ(only<float>(std::uint64_t{1152921573326323713}), 1152921642045800448.0f);
    EXPECT_EQ(only<float>(1e300), std::numeric_limits<float>::infinity());
    EXPECT_TRUE(only<bool>(kNaN));
    EXPECT_EQ(only<signed char>(Byte{200}), -56);
    EXPECT_EQ(only<double>(std::complex<double>(1, 2)), 1.0);
    EXPECT_EQ(only<std::complex<double>>(1.5, CheckAlways), std::complex<double>(1.5, 0));
    EXPECT_EQ(only<short>(Byte{200}, CheckLossy), 200);
    EXPECT_EQ(only<double>(std::int64_t{9007199254740993}, CheckLossy), 9007199254740992.0);
    EXPECT_THROW_MSG(only<double>(std::int64_t{9007199254740993}, CheckAlways), std::runtime_error, kLost);
    EXPECT_THROW_MSG(only<signed char>(Byte{200}, CheckLossy), std::runtime_error, kLost);
    EXPECT_THROW_MSG(only<std::uint64_t>((signed char)-1, CheckLossy), std::runtime_error, kLost);
    EXPECT_THROW_MSG(only<std::int64_t>(9223372036854775808.0, CheckLossy), std::runtime_error, kLost);
    EXPECT_THROW_MSG(only<double>(std::complex<double>(1, 2), CheckLossy), std::runtime_error, kLost);

    const std::uint64_t bits = 0xFFF8000000012345;
    double payload;
    std::memcpy(&payload, &bits, sizeof payload);
    const double copy = only<double>(payload);
    EXPECT_EQ(std::memcmp(&copy, &payload, sizeof copy), 0);
}

/// Goes through all values of `From`: none may be lost that stays the same number, and the other way round.
template <class From, class To>
void expectLossOfEachValue() {
    bool isAnyLost = false;
    for (int value = std::numeric_limits<From>::min(); value <= std::numeric_limits<From>::max(); ++value) {
        const auto from = static_cast<From>(value);
        const To to = details::convertNumber<To>(from);
        const bool isLost = details::lossOf(from, to) != 0;
        ASSERT_EQ(isLost, static_cast<Real>(from) != static_cast<Real>(to)) << value;
        isAnyLost |= isLost;
    }
    EXPECT_EQ((details::alwaysSurvives<From, To>()), !isAnyLost);
}

TEST(NumberConversion, LosesExactlyTheNarrowValuesThatBecomeOthers) {
#define ZELM_EXPECT_LOSS(To, Name, value, keyword)                                                           \
    expectLossOfEachValue<bool, To>();                                                                       \
    expectLossOfEachValue<signed char, To>();                                                                \
    expectLossOfEachValue<unsigned char, To>();                                                              \
    expectLossOfEachValue<short, To>();                                                                      \
    expectLossOfEachValue<unsigned short, To>();
    ZELM_FOR_EACH_REAL_TYPE(ZELM_EXPECT_LOSS)
#undef ZELM_EXPECT_LOSS
}

TEST(ConversionOfAnyPair, HasItsFailuresInOrder) {
    const auto isNumber = [](const std::string& type) {
        return type.find("string") == std::string::npos && type != "cell" && type != "struct";
    };
    const auto hasConversion = [&](const std::string& from, const std::string& to) {
        return from == to || to == "cell" || (isNumber(from) && isNumber(to)) ||
               (from == "string" && (to == "string16" || to == "zstring")) ||
               (to == "string" && (from == "string16" || from == "zstring"));
    };
    const auto invalid = [](const char* text) { return std::string("I ") + text; };
    const auto policy7 = static_cast<ConversionPolicy>(7);
    std::size_t conversions = 0;
    for (const WellKnownType from : allTypes()) {
        const std::unique_ptr<AbstractVariantStorage> empty =
            details::NullVariantStorage().convertTo(from, policy7);
        std::shared_ptr<AbstractVariantStorage> one;
        details::visitElementType(from, [&](auto tag) {
            using T = typename decltype(tag)::type;
            one = std::make_shared<details::VectorVariantStorage<T>>(
                std::vector<details::StoredElement<T>>(1), ArrayDimensions{1}, RowMajor);
        });
        EXPECT_EQ(failureOf([&] { one->convertTo(WellKnownType(), policy7); }), invalid(kUnknownType));
        EXPECT_EQ(failureOf([&] { empty->convertTo(WellKnownType(), NoCheck); }), invalid(kUnknownType));
        for (const WellKnownType to : allTypes()) {
            SCOPED_TRACE(std::string(from.ToString()) + " to " + to.ToString());
            const bool has = hasConversion(from.ToString(), to.ToString());
            const bool hasWayBack = hasConversion(to.ToString(), from.ToString());
            conversions += has;
            EXPECT_EQ(details::hasConversion(from, to), has);
            EXPECT_EQ(failureOf([&] { one->convertTo(to, policy7); }), invalid(kUnknownPolicy));
            EXPECT_EQ(failureOf([&] { one->convertTo(to, static_cast<ConversionPolicy>(-1)); }),
                      invalid(kUnknownPolicy));
            for (const ConversionPolicy policy : {NoCheck, CheckAlways, CheckLossy, policy7}) {
                EXPECT_EQ(failureOf([&] {
                              const auto result = empty->convertTo(to, policy);
                              EXPECT_EQ(result->wellKnownType(), to);
                              EXPECT_TRUE(result->dimensions().isIdenticalTo({0}));
                          }),
                          has ? "" : invalid(kNoConversion));
            }
            for (const ConversionPolicy policy : kPolicies) {
                const bool blocked = policy == CheckAlways && !hasWayBack;
                EXPECT_EQ(failureOf([&] { EXPECT_EQ(one->convertTo(to, policy)->wellKnownType(), to); }),
                          !has      ? invalid(kNoConversion)
                          : blocked ? invalid(kNoWayBack)
                                    : "");
            }
        }
    }
    EXPECT_EQ(conversions, 22u * 22 + 27 + 7 + 1);
}

TEST(ConversionOfAnyPair, FailsAlikeForAScalarRead) {
    const auto textOf = [](auto element) {
        return details::VectorVariantStorage<decltype(element)>({element}, {1}, RowMajor);
    };
    const auto number = textOf(1.0);
    const auto utf8 = textOf(std::string("12\0\xC2\xB5", 5));
    EXPECT_EQ(details::convertedScalar<std::string>(utf8), std::string("12\0\xC2\xB5", 5));
    EXPECT_EQ(details::convertedScalar<std::u16string>(utf8), std::u16string(u"12\0\u00B5", 4));
    EXPECT_EQ(details::convertedScalar<ZString>(utf8), ZString("12\0\xC2\xB5", 5));
    EXPECT_EQ(details::convertedScalar<std::string>(textOf(std::u16string(u"\u00B5"))), "\xC2\xB5");
    EXPECT_TRUE(details::convertedScalar<Variant>(textOf(Variant(2.5))).isIdenticalTo(Variant(2.5)));
    EXPECT_THROW_MSG(details::convertedScalar<double>(utf8), std::invalid_argument, kNoConversion);
    EXPECT_THROW_MSG(details::convertedScalar<ZString>(number), std::invalid_argument, kNoConversion);
    EXPECT_THROW_MSG(details::convertedScalar<Struct>(number), std::invalid_argument, kNoConversion);
    EXPECT_THROW_MSG(details::convertedScalar<Variant>(number), std::invalid_argument, kNoWayBack);
    EXPECT_THROW_MSG(details::convertedScalar<std::u16string>(textOf(std::string("\xFF"))),
                     utf8::invalid_utf8, "Invalid UTF-8");
}

/// The elements of a storage that has just been converted.
template <class T>
const std::vector<T>& elementsOf(const std::unique_ptr<AbstractVariantStorage>& storage) {
    return dynamic_cast<const details::VectorVariantStorage<T>&>(*storage).elements();
}

TEST(TextConversion, KeepsEveryByteUnderEveryPolicy) {
    const std::vector<std::string> texts = {
        "", "plain", std::string("a\0b", 3), "\xC2\xB5 \xE2\x82\xAC", "\xF0\x9D\x84\x9E", "\xEF\xBB\xBFmark"};
    const std::vector<std::u16string> wide = {
        u"", u"plain", std::u16string(u"a\0b", 3), u"\u00B5 \u20AC", u"\U0001D11E", u"\uFEFFmark"};
    const details::VectorVariantStorage<std::string> source(texts, {3, 2}, ColumnMajor);
    for (const ConversionPolicy policy : kPolicies) {
        const auto utf16 = source.convertTo(WellKnownType::String16(), policy);
        EXPECT_EQ(elementsOf<std::u16string>(utf16), wide);
        EXPECT_EQ(elementsOf<std::string>(utf16->convertTo(WellKnownType::String(), policy)), texts);
        EXPECT_EQ(elementsOf<std::u16string>(utf16->convertTo(WellKnownType::String16(), policy)), wide);
        EXPECT_EQ(elementsOf<std::string>(source.convertTo(WellKnownType::String(), policy)), texts);
        const auto shared = source.convertTo(WellKnownType::ZString(), policy);
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(elementsOf<ZString>(shared)[i], ZString(texts[i]));
        }
        EXPECT_EQ(elementsOf<std::string>(shared->convertTo(WellKnownType::String(), policy)), texts);
        EXPECT_TRUE(shared->dimensions().isIdenticalTo({3, 2}));
        EXPECT_EQ(utf16->dataOrdering(), ColumnMajor);
    }
    EXPECT_EQ(source.elements(), texts);
}

TEST(TextConversion, PassesTheFailuresOfUtfOn) {
    const auto utf16Of = [](const std::string& text, ConversionPolicy policy) {
        const details::VectorVariantStorage<std::string> source({"fine", text}, {2}, RowMajor);
        return source.convertTo(WellKnownType::String16(), policy);
    };
    const details::VectorVariantStorage<std::u16string> unpaired({u"\xD800!"}, {1}, RowMajor);
    for (const ConversionPolicy policy : kPolicies) {
        EXPECT_THROW_MSG(utf16Of("\xC2 ", policy), utf8::invalid_utf8, "Invalid UTF-8");
        EXPECT_THROW_MSG(utf16Of("\xE2\x82", policy), utf8::not_enough_room, "Not enough space");
        EXPECT_THROW_MSG(utf16Of("\xED\xA0\x80", policy), utf8::invalid_code_point, "Invalid code point");
        EXPECT_THROW_MSG(unpaired.convertTo(WellKnownType::String(), policy), utf8::invalid_utf16,
                         "Invalid UTF-16");
    }
    const details::VectorVariantStorage<std::string> bytes({"\xFF\xC2"}, {1}, RowMajor);
    EXPECT_EQ(elementsOf<ZString>(bytes.convertTo(WellKnownType::ZString(), CheckAlways))[0],
              ZString("\xFF\xC2"));
}

TEST(CellConversion, MakesAScalarOfEachElement) {
    for (const WellKnownType from : allTypes()) {
        SCOPED_TRACE(from.ToString());
        details::visitElementType(from, [&](auto tag) {
            using T = typename decltype(tag)::type;
            std::vector<details::StoredElement<T>> elements(2);
            if constexpr (details::isNumericElement<T>) {
                elements[1] = T(1);
            }
            const details::VectorVariantStorage<T> source(elements, {1, 2}, ColumnMajor);
            const auto result = source.convertTo(WellKnownType::Cell(), CheckLossy);
            const auto& cells = elementsOf<Variant>(result);
            ASSERT_EQ(cells.size(), 2u);
            for (std::size_t i = 0; i < 2; ++i) {
                const T& element = elements[i];
                EXPECT_TRUE(cells[i].isIdenticalTo(Variant(element)));
                EXPECT_EQ(cells[i].wellKnownType(), from.isCellArray() ? WellKnownType() : from);
            }
            EXPECT_TRUE(result->dimensions().isIdenticalTo({1, 2}));
            EXPECT_EQ(result->dataOrdering(), ColumnMajor);
        });
    }
}

TEST(CellConversion, ChecksCellsAndStructsByEquivalence) {
    const auto copied = [](const auto& element, ConversionPolicy policy) {
        using T = std::decay_t<decltype(element)>;
        const details::VectorVariantStorage<T> source({T(), element}, {2}, RowMajor);
        return source.convertTo(details::wellKnownTypeOf<T>, policy);
    };
    Struct record;
    record.set("x", Variant(std::vector<double>{1, 2}));
    EXPECT_TRUE(elementsOf<Variant>(copied(Variant("text"), CheckAlways))[1].isIdenticalTo(Variant("text")));
    EXPECT_TRUE(elementsOf<Struct>(copied(record, CheckAlways))[1].isEqual(record, Identical));
    EXPECT_THROW_MSG(copied(Variant(NAN), CheckAlways), std::runtime_error, kLost);
    record.set("y", Variant(NAN));
    EXPECT_THROW_MSG(copied(record, CheckAlways), std::runtime_error, kLost);
    for (const ConversionPolicy policy : {NoCheck, CheckLossy}) {
        EXPECT_TRUE(std::isnan(elementsOf<Variant>(copied(Variant(NAN), policy))[1].value<float>()));
        EXPECT_EQ(elementsOf<Struct>(copied(record, policy))[1].keys().size(), 2u);
    }
}

TEST(ConversionOfAnyPair, RefusesAShapeThatDoesNotFit) {
    details::VectorVariantStorage<double> source({1, 2, 3}, {3}, RowMajor);
    source.setDimensions({2, 3});
    for (const WellKnownType to : {WellKnownType::Double(), WellKnownType::Int8(), WellKnownType::Cell()}) {
        EXPECT_THROW_MSG(source.convertTo(to, NoCheck), std::length_error, "Dimensions don't match size");
    }
}

} // namespace
} // namespace Zelm
