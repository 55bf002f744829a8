#include <variant/Samples.h>

#include <zelm/variant/VariantAccess.h>

#include <utf8.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace Zelm::Testing {
namespace {

/// All numbers of all types are exact in it: 64-bit integers as well as doubles.
using Real = long double;
static_assert(LDBL_MANT_DIG >= 64, "the model of the number types wants an exact 64-bit integer");

using Number = std::complex<Real>;

/// A type of the model: one part or two that are 'f' floating, 'i' signed, 'u' unsigned or 'b' boolean.
struct NumberType {
    WellKnownType tag;
    char kind;
    int bits;
    bool isComplex;
};

template <class T>
NumberType numberType() {
    using Part = details::RealPartOf<T>;
    const bool isBool = std::is_same_v<Part, bool>;
    const char kind = std::is_floating_point_v<Part> ? 'f' : std::is_signed_v<Part> ? 'i' : 'u';
    return {details::wellKnownTypeOf<T>, isBool ? 'b' : kind, isBool ? 1 : 8 * int(sizeof(Part)),
            details::isComplexElement<T>};
}
const std::vector<NumberType> kNumberTypes = {
#define ZELM_NUMBER_TYPE(type, Name, value, keyword) numberType<type>(),
    ZELM_FOR_EACH_REAL_TYPE(ZELM_NUMBER_TYPE) ZELM_FOR_EACH_COMPLEX_TYPE(ZELM_NUMBER_TYPE)
#undef ZELM_NUMBER_TYPE
};

/// What becomes of a number of type `from`, or of one part of it, in type `to`.
Real convertedReal(Real value, const NumberType& from, const NumberType& to) {
    // An integer counted round the circle of the target.
    const auto wrapped = [&to](Real integer) {
        const Real circle = std::ldexp(Real(1), to.bits);
        Real n = std::fmod(integer, circle);
        n = n < 0 ? n + circle : n;
        return (to.kind == 'i' && n >= circle / 2 ? n - circle : n) + 0.0L;
    };
    if (to.kind == 'b') {
        return value == 0 ? 0 : 1;
    }
    if (to.kind == 'f') {
        return to.bits == 64 ? static_cast<double>(value) : static_cast<float>(value);
    }
    if (from.kind != 'f') {
        return wrapped(value);
    }
    const int width = std::max(to.bits, 32);
    const Real lowest = to.kind == 'i' || to.bits < 32 ? -std::ldexp(Real(1), width - 1) : 0;
    const Real whole = std::trunc(value);
    return wrapped(whole >= lowest && whole < lowest + std::ldexp(Real(1), width) ? whole : lowest);
}

Number converted(const Number& value, const NumberType& from, const NumberType& to) {
    const bool bothParts = from.isComplex && to.isComplex;
    return {convertedReal(value.real(), from, to), bothParts ? convertedReal(value.imag(), from, to) : 0};
}

/// Whether the pair is one of those that are tested where a value may be lost.
bool mayLose(const NumberType& from, const NumberType& to) {
    const bool kept = (from.kind == to.kind && from.bits <= to.bits) || from.kind == 'b' ||
                      (to.kind == 'f' && from.kind != 'f') ||
                      (from.kind == 'u' && to.kind == 'i' && from.bits < to.bits);
    return (from.isComplex && !to.isComplex) || !kept;
}

/// Tells two zeros apart, but no NaNs.
bool isSame(const Number& a, const Number& b) {
    const auto same = [](Real x, Real y) {
        return (std::isnan(x) && std::isnan(y)) || (x == y && std::signbit(x) == std::signbit(y));
    };
    return same(a.real(), b.real()) && same(a.imag(), b.imag());
}

/// Every number of `type` that stands at an edge of any type.
std::vector<Number> edgeNumbers(const NumberType& type) {
    const auto two = [](int power) { return std::ldexp(Real(1), power); };
    std::vector<Real> edges = {0.0L, -0.0L, 0.5L, -0.5L, 1.5L, -1.5L, 200, 300.7L, -300.7L, 1e300L, -1e300L};
    edges.insert(edges.end(), {FLT_MAX, DBL_MAX, -DBL_MAX, FLT_MIN, DBL_MIN, 5e-324L, -1e-45L, INFINITY});
    edges.insert(edges.end(), {-INFINITY, NAN, two(60) + two(36) + 1, two(31) - 0.5L, -two(31) - 0.5L});
    edges.insert(edges.end(), {two(63) - 1024, two(64) - 2048, two(63) - two(39), two(64) - two(40)});
    for (const int power : {0, 7, 8, 15, 16, 24, 31, 32, 53, 63, 64}) {
        for (const int offset : {-1, 0, 1}) {
            edges.insert(edges.end(), {two(power) + offset, -two(power) + offset});
        }
    }
    std::vector<Real> reals;
    for (const Real edge : edges) {
        const Real value = convertedReal(edge, {{}, 'f', 0, false}, type);
        if (type.kind == 'f' || value == edge) {
            reals.push_back(value);
        }
    }
    std::vector<Number> numbers;
    for (std::size_t i = 0; i < reals.size(); ++i) {
        numbers.push_back({reals[i], 0});
        if (type.isComplex) {
            numbers.push_back({0, reals[i]});
            numbers.push_back({reals[i], reals[(i * 7 + 3) % reals.size()]});
        }
    }
    return numbers;
}

/// Calls `visit(ElementTag<T>())` if the type is numeric.
template <class Visit>
void visitNumberType(WellKnownType type, Visit&& visit) {
    details::visitElementType(type, [&](auto tag) {
        if constexpr (details::isNumericElement<typename decltype(tag)::type>) {
            visit(tag);
        }
    });
}

template <class T>
Number numberOf(const T& element) {
    if constexpr (details::isComplexElement<T>) {
        return {static_cast<Real>(element.real()), static_cast<Real>(element.imag())};
    } else {
        return static_cast<Real>(element);
    }
}
Variant valueOf(const Number& number, WellKnownType type) {
    Variant value;
    visitNumberType(type, [&](auto tag) {
        using T = typename decltype(tag)::type;
        using Part = details::RealPartOf<T>;
        const auto part = [](Real real) {
            return static_cast<Part>(std::is_same_v<Part, bool> ? real != 0 : real);
        };
        if constexpr (details::isComplexElement<T>) {
            value = T(part(number.real()), part(number.imag()));
        } else {
            value = part(number.real());
        }
    });
    return value;
}

using StoragePointer = std::unique_ptr<details::AbstractVariantStorage>;

const std::string kLost = "Conversion check failed";
const std::string kNoConversion = "No conversion available";

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

StoragePointer convert(const Variant& value, WellKnownType type, ConversionPolicy policy) {
    return details::VariantAccess::storage(value)->convertTo(type, policy);
}

template <class T>
const std::vector<T>& elementsOf(const StoragePointer& storage) {
    return dynamic_cast<const details::VectorVariantStorage<T>&>(*storage).elements();
}

TEST(NumberConversion, AgreesWithTheModelForEveryPairPolicyAndEdge) {
    for (const NumberType& from : kNumberTypes) {
        for (const Number& number : edgeNumbers(from)) {
            const Variant one = valueOf(number, from.tag);
            for (const NumberType& to : kNumberTypes) {
                const Number expected = converted(number, from, to);
                const auto check = [&](bool isTested, auto&& read) {
                    Number result;
                    const std::string failure = failureOf([&] { result = read(); });
                    EXPECT_EQ(failure, isTested && number != expected ? kLost : "");
                    EXPECT_TRUE(!failure.empty() || isSame(result, expected));
                };
                visitNumberType(to.tag, [&](auto tag) {
                    using T = typename decltype(tag)::type;
                    const auto convertedBy = [&](ConversionPolicy policy) {
                        return [&, policy] {
                            return numberOf(*static_cast<const T*>(convert(one, to.tag, policy)->data()));
                        };
                    };
                    check(false, convertedBy(NoCheck));
                    check(true, convertedBy(CheckAlways));
                    check(mayLose(from, to), convertedBy(CheckLossy));
                    check(from.tag != to.tag, [&] { return numberOf(one.value<T>()); });
                });
                ASSERT_FALSE(HasFailure())
                    << from.tag.ToString() << ' ' << to.tag.ToString() << ' ' << number;
            }
        }
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
    const std::vector<std::complex<float>> threes(1100, {3, 0});
    EXPECT_EQ(elementsOf<short>(convert(threes, WellKnownType::Int16(), CheckAlways)),
              std::vector<short>(1100, 3));
}

TEST(ConversionOfAnyPair, HasItsFailuresInOrder) {
    const auto isText = [](WellKnownType type) {
        return type.isString() || type == WellKnownType::ZString();
    };
    const auto hasConversion = [&](WellKnownType from, WellKnownType to) {
        const bool isUtf8 = from == WellKnownType::String() || to == WellKnownType::String();
        return from == to || to.isCellArray() || (from.isNumeric() && to.isNumeric()) ||
               (isText(from) && isText(to) && isUtf8);
    };
    const ConversionPolicy policy7 = ConversionPolicy(7);
    std::vector<std::pair<Variant, Variant>> sources;
    forEachElementType([&](auto tag) {
        using T = typename decltype(tag)::type;
        sources.emplace_back(std::vector<T>(1), std::vector<T>());
    });
    for (const auto& source : sources) {
        EXPECT_EQ(failureOf([&] { convert(source.first, WellKnownType(), policy7); }),
                  "Cannot convert data into new storage, unknown destination type");
        for (const auto& target : sources) {
            const WellKnownType from = source.first.wellKnownType(), to = target.first.wellKnownType();
            SCOPED_TRACE(std::string(from.ToString()) + " to " + to.ToString());
            const std::string failure = hasConversion(from, to) ? "" : kNoConversion;
            for (const ConversionPolicy policy : {NoCheck, CheckAlways, CheckLossy, policy7}) {
                const bool isBlocked = policy == CheckAlways && failure.empty() && !hasConversion(to, from);
                EXPECT_EQ(failureOf([&] { convert(source.first, to, policy); }),
                          policy == policy7 ? "Unknown conversion policy"
                          : isBlocked       ? "Unable to check conversion"
                                            : failure);
                EXPECT_EQ(failureOf([&] { convert(source.second, to, policy); }), failure);
            }
        }
    }
}

TEST(TextConversion, KeepsEveryByteUnderEveryPolicy) {
    const std::vector<std::string> texts = {std::string("a\0b", 3), "\xC2\xB5 \xE2\x82\xAC",
                                            "\xF0\x9D\x84\x9E", "\xEF\xBB\xBFmark"};
    const std::vector<std::u16string> wide = {std::u16string(u"a\0b", 3), u"\u00B5 \u20AC", u"\U0001D11E",
                                              u"\uFEFFmark"};
    const std::vector<ZString> shared(texts.begin(), texts.end());
    for (const ConversionPolicy policy : {NoCheck, CheckAlways, CheckLossy}) {
        EXPECT_EQ(elementsOf<std::u16string>(convert(texts, WellKnownType::String16(), policy)), wide);
        EXPECT_EQ(elementsOf<std::string>(convert(wide, WellKnownType::String(), policy)), texts);
        EXPECT_EQ(elementsOf<ZString>(convert(texts, WellKnownType::ZString(), policy)), shared);
        EXPECT_EQ(elementsOf<std::string>(convert(shared, WellKnownType::String(), policy)), texts);
        const auto toUtf16 = [policy](std::string text) {
            convert(std::vector<std::string>{"fine", text}, WellKnownType::String16(), policy);
        };
        EXPECT_THROW_MSG(toUtf16("\xC2 "), utf8::invalid_utf8, "Invalid UTF-8");
        EXPECT_THROW_MSG(toUtf16("\xE2\x82"), utf8::not_enough_room, "Not enough space");
        EXPECT_THROW_MSG(convert(std::u16string(u"\xD800!"), WellKnownType::String(), policy),
                         utf8::invalid_utf16, "Invalid UTF-16");
    }
    EXPECT_EQ(Variant(texts[1]).value<std::u16string>(), wide[1]);
    EXPECT_EQ(Variant(wide[0]).value<std::string>(), texts[0]);
    EXPECT_EQ(Variant(std::string("\xFF\xC2")).value<ZString>(), ZString("\xFF\xC2"));
}

TEST(CellConversion, MakesAScalarOfEachElementAndChecksByEquivalence) {
    const StoragePointer cells =
        convert(Variant({1, 2}, {1, 2}, ColumnMajor), WellKnownType::Cell(), CheckLossy);
    expectHolds<Variant>(*cells, {1, 2}, {1, 2}, ColumnMajor);
    for (const Variant& source : {cell({1, NAN}), Variant{Struct(), record({{"x", NAN}})}}) {
        EXPECT_EQ(failureOf([&] { convert(source, source.wellKnownType(), CheckAlways); }), kLost);
        EXPECT_EQ(failureOf([&] { convert(source, source.wellKnownType(), CheckLossy); }), "");
    }
}

} // namespace
} // namespace Zelm::Testing
