#include <variant/Samples.h>

#include <zelm/variant/VariantAccess.h>

#include <utf8.h>

#include <cfloat>
#include <cmath>
#include <cstring>

namespace Zelm::Testing {
namespace {

/// All numbers of all types are exact in it: 64-bit integers as well as doubles.
using Real = long double;
static_assert(LDBL_MANT_DIG >= 64, "the model of the number types wants an exact 64-bit integer");

using Number = std::complex<Real>;

const std::string kLost = "Conversion check failed";

/// What becomes of a real number, or of one part of a complex one, in type `To`.
template <class To>
To convertedReal(Real value, bool isInteger) {
    if constexpr (std::is_same_v<To, bool>) {
        return value != 0;
    } else if constexpr (std::is_floating_point_v<To>) {
        return static_cast<To>(value);
    } else {
        // What does not fit a whole number of at least 32 bits becomes the lowest one; integers wrap around.
        using Wide = std::numeric_limits<std::conditional_t<sizeof(To) < 4, std::int32_t, To>>;
        value = std::trunc(value);
        if (!isInteger && !(value >= Wide::min() && value <= Wide::max())) {
            value = Wide::min();
        }
        return static_cast<To>(value < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value))
                                         : static_cast<std::uint64_t>(value));
    }
}

template <class T>
Number numberOf(const T& element) {
    if constexpr (details::isComplexElement<T>) {
        return {static_cast<Real>(element.real()), static_cast<Real>(element.imag())};
    } else {
        return static_cast<Real>(element);
    }
}

/// A scalar, and what the model has to know of its type.
struct Source {
    Variant value;
    Number number;
    bool isInteger;
    bool isSigned;
    bool isComplex;
    int digits;
};

/// Numbers at the edges of all types, rounded to the type `T`, or left out if they are no such integers.
template <class T>
void addEdgeNumbers(std::vector<Source>& sources) {
    using Part = details::RealPartOf<T>;
    using Limits = std::numeric_limits<Part>;
    const auto two = [](int power) { return std::ldexp(Real(1), power); };
    std::vector<Real> edges = {NAN, INFINITY, -INFINITY, -0.0L, FLT_MAX, DBL_MAX, two(60) + two(36) + 1};
    for (const int power : {-1074, -149, -1, 0, 7, 8, 15, 16, 24, 31, 32, 53, 63, 64, 1000}) {
        for (const Real offset : {-two(40), -2048.0L, -1.0L, -0.5L, 0.0L, 0.5L, 1.0L}) {
            edges.insert(edges.end(), {two(power) + offset, -two(power) - offset});
        }
    }
    const auto add = [&](const T& element) {
        sources.push_back({element, numberOf(element), Limits::is_integer, Limits::is_signed,
                           details::isComplexElement<T>, Limits::digits});
    };
    Part before = 1;
    for (const Real edge : edges) {
        const Part part = convertedReal<Part>(edge, false);
        if (Limits::is_integer && part != edge) {
            continue;
        }
        add(T(part));
        if constexpr (details::isComplexElement<T>) {
            add(T(part, before));
        }
        before = part;
    }
}

/// The text of what `action` throws, which is a `std::runtime_error` for a lost value and else a
/// `std::invalid_argument`; empty if it throws nothing.
template <class Action>
std::string failureOf(Action&& action) {
    try {
        action();
    } catch (const std::exception& error) {
        const bool isLost = error.what() == kLost;
        EXPECT_TRUE(typeid(error) == (isLost ? typeid(std::runtime_error) : typeid(std::invalid_argument)));
        return error.what();
    }
    return {};
}

Storage convert(const Variant& value, WellKnownType type, ConversionPolicy policy) {
    return details::VariantAccess::storage(value)->convertTo(type, policy);
}

/// To the last bit: tells two zeros apart, but no NaNs of one origin.
template <class To>
void expectConversions(const Source& from) {
    using Part = details::RealPartOf<To>;
    using Limits = std::numeric_limits<Part>;
    constexpr WellKnownType type = details::wellKnownTypeOf<To>;
    const auto part = [&](Real real) { return convertedReal<Part>(real, from.isInteger); };
    To expected(part(from.number.real()));
    if constexpr (details::isComplexElement<To>) {
        expected = {expected.real(), part(from.number.imag())};
    }
    const bool isLost = from.number != numberOf(expected);
    const auto check = [&](bool isTested, auto&& read) {
        To result = expected;
        EXPECT_EQ(failureOf([&] { result = read(); }), isTested && isLost ? kLost : "");
        EXPECT_EQ(std::memcmp(&result, &expected, sizeof result), 0);
    };
    const auto convertBy = [&](ConversionPolicy policy) {
        return [&, policy] { return *static_cast<const To*>(convert(from.value, type, policy)->data()); };
    };
    // Nothing is tested for a type that can hold every number, nor from an integer to a floating number.
    const bool fits = from.digits <= Limits::digits && from.isSigned <= Limits::is_signed;
    const bool isFine = from.isInteger ? fits || !Limits::is_integer : fits && !Limits::is_integer;
    check(false, convertBy(NoCheck));
    check(true, convertBy(CheckAlways));
    check((from.isComplex && !details::isComplexElement<To>) || !isFine, convertBy(CheckLossy));
    check(from.value.wellKnownType() != type, [&] { return from.value.value<To>(); });
}

TEST(NumberConversion, AgreesWithTheModelForEveryPairPolicyAndEdge) {
    std::vector<Source> sources;
    forEachNumberType([&](auto tag) { addEdgeNumbers<typename decltype(tag)::type>(sources); });
    for (const Source& source : sources) {
        forEachNumberType([&](auto tag) { expectConversions<typename decltype(tag)::type>(source); });
        ASSERT_FALSE(HasFailure()) << source.value.wellKnownType().ToString() << source.number;
    }
}

TEST(NumberConversion, FindsALostElementWhereverItStands) {
    for (const std::size_t place : {0u, 1u, 63u, 64u, 511u, 512u, 1023u, 1024u, 1099u}) {
        std::vector<std::complex<double>> parts(1100, 1);
        parts[place] = {1, 0.1};
        std::vector<double> reals(1100, 1);
        reals[place] = 0.1;
        for (const char* type : {"float", "int8", "bool", "unsignedInt64", "complexFloat", "complexInt32"}) {
            EXPECT_EQ(failureOf([&] { convert(reals, WellKnownType(type), CheckAlways); }), kLost) << place;
            EXPECT_EQ(failureOf([&] { convert(parts, WellKnownType(type), CheckAlways); }), kLost) << place;
        }
    }
}

TEST(ConversionOfAnyPair, HasItsFailuresInOrder) {
    const Variant sources[] = {1.0, std::string("a"), std::u16string(u"a"), cell({1}), Struct(), "a"};
    // A dot where a pair has a conversion, a minus where it has none, an x where it has no way back.
    const char* const pairs[] = {".--x--", "-..x-.", "-..x--", "---.--", "---x.-", "-.-x-."};
    for (std::size_t i = 0; i < std::size(sources); ++i) {
        for (std::size_t k = 0; k < std::size(sources); ++k) {
            const WellKnownType from = sources[i].wellKnownType(), to = sources[k].wellKnownType();
            SCOPED_TRACE(std::string(from.ToString()) + " to " + to.ToString());
            const Variant empty =
                MutableVariant::createWithAllocatedArrayOfWellKnownType(from, {0}, RowMajor);
            const std::string failure = pairs[i][k] == '-' ? "No conversion available" : "";
            const auto expect = [&](ConversionPolicy policy, const std::string& text) {
                EXPECT_EQ(failureOf([&] { convert(sources[i], to, policy); }), text);
                EXPECT_EQ(failureOf([&] { convert(empty, to, policy); }), failure);
            };
            expect(NoCheck, failure);
            expect(CheckLossy, failure);
            expect(CheckAlways, pairs[i][k] == 'x' ? "Unable to check conversion" : failure);
            expect(ConversionPolicy(7), "Unknown conversion policy");
        }
    }
    EXPECT_EQ(failureOf([&] { convert(1, WellKnownType(), ConversionPolicy(7)); }),
              "Cannot convert data into new storage, unknown destination type");
}

TEST(TextConversion, KeepsEveryByteUnderEveryPolicy) {
    const std::vector<std::string> texts = {std::string("a\0b", 3), "\xC2\xB5 \xE2\x82\xAC",
                                            "\xF0\x9D\x84\x9E", "\xEF\xBB\xBFmark"};
    const std::vector<std::u16string> wide = {std::u16string(u"a\0b", 3), u"\u00B5 \u20AC", u"\U0001D11E",
                                              u"\uFEFFmark"};
    const std::vector<ZString> shared(texts.begin(), texts.end());
    for (const ConversionPolicy policy : {NoCheck, CheckAlways, CheckLossy}) {
        expectHolds(*convert(texts, WellKnownType::String16(), policy), wide, {4});
        expectHolds(*convert(wide, WellKnownType::String(), policy), texts, {4});
        expectHolds(*convert(texts, WellKnownType::ZString(), policy), shared, {4});
        expectHolds(*convert(shared, WellKnownType::String(), policy), texts, {4});
    }
    const auto toUtf16 = [](const char* text) { return Variant(std::string(text)).value<std::u16string>(); };
    EXPECT_THROW_MSG(toUtf16("\xC2 "), utf8::invalid_utf8, "Invalid UTF-8");
    EXPECT_THROW_MSG(toUtf16("\xE2\x82"), utf8::not_enough_room, "Not enough space");
    EXPECT_THROW_MSG(Variant(std::u16string(u"\xD800!")).value<std::string>(), utf8::invalid_utf16,
                     "Invalid UTF-16");
    EXPECT_EQ(Variant(std::string("\xFF\xC2")).value<ZString>(), ZString("\xFF\xC2"));
}

TEST(CellConversion, MakesAScalarOfEachElementAndChecksByEquivalence) {
    const Storage cells = convert(Variant({1, 2}, {1, 2}, ColumnMajor), WellKnownType::Cell(), CheckLossy);
    expectHolds<Variant>(*cells, {1, 2}, {1, 2}, ColumnMajor);
    for (const Variant& source : {cell({1, NAN}), Variant{Struct(), record({{"x", NAN}})}}) {
        EXPECT_EQ(failureOf([&] { convert(source, source.wellKnownType(), CheckAlways); }), kLost);
        EXPECT_EQ(failureOf([&] { convert(source, source.wellKnownType(), CheckLossy); }), "");
    }
}

} // namespace
} // namespace Zelm::Testing
