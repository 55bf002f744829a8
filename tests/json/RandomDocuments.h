#pragma once

#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/ElementTypes.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VariantAccess.h>

#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::Testing {

/// Random trees with values of all 27 element types.
class RandomDocuments {
public:
    enum Kind {
        Writable, ///< everything that can be written, with text that is valid UTF-8
        Readable  ///< what comes back as it was, with text of any bytes
    };

    RandomDocuments(Kind kind, unsigned seed) : readable_(kind == Readable), random_(seed) {}

    ZPropertyHandle tree() {
        ZMutablePropertyTree result(text<std::string>());
        ZMutablePropertyHandle root = result.handle();
        fill(root.node(), 0);
        return result.immutableHandle();
    }

    Variant value(int depth = 0) {
        static constexpr WellKnownType kTypes[] = {
#define ZELM_TYPE(type, Name, value, keyword) WellKnownType::Name(),
            ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_TYPE)
#undef ZELM_TYPE
        };
        Variant result;
        details::visitElementType(kTypes[pick(std::size(kTypes))], [&](auto tag) {
            using T = typename decltype(tag)::type;
            std::vector<std::uint64_t> extents(1 + pick(3));
            for (std::uint64_t& extent : extents) {
                extent = pick(3) + readable_;
            }
            const ArrayDimensions shape(std::move(extents));
            std::vector<details::StoredElement<T>> elements;
            for (std::uint64_t i = 0; i < shape.countAllElements(); ++i) {
                elements.push_back(element<T>(depth));
            }
            const bool keepsOrder = !readable_ || shape.isVector();
            result = details::VariantAccess::make<T>(std::move(elements), shape,
                                                     keepsOrder && pick(2) ? ColumnMajor : RowMajor);
        });
        return result;
    }

    std::uint64_t pick(std::uint64_t count) {
        return random_() % count;
    }

private:
    void fill(ZPropertyTreeNode& node, int depth) {
        if (pick(2)) {
            node.setObjectType(ZString(text<std::string>()));
        }
        if (pick(3)) {
            node.setValue(value());
        }
        for (std::uint64_t children = depth < 4 ? pick(4) : 0; children > 0; --children) {
            fill(*node.addChild(ZString(text<std::string>())), depth + 1);
        }
    }

    template <class T>
    T element([[maybe_unused]] int depth) {
        if constexpr (std::is_same_v<T, Variant>) {
            return depth < 3 ? value(depth + 1) : Variant(1);
        } else if constexpr (std::is_same_v<T, Struct>) {
            Struct record;
            for (std::uint64_t fields = pick(3); fields > 0; --fields) {
                record.set(ZString(text<std::string>()), element<Variant>(depth));
            }
            return record;
        } else if constexpr (std::is_same_v<T, std::u16string>) {
            return text<std::u16string>();
        } else if constexpr (details::isTextElement<T>) {
            return text<std::string>();
        } else if constexpr (details::isComplexElement<T>) {
            const auto real = element<details::RealPartOf<T>>(depth);
            return T(real, element<details::RealPartOf<T>>(depth));
        } else if constexpr (std::is_floating_point_v<T>) {
            return number<T>();
        } else {
            const T extreme = pick(2) ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
            return pick(4) ? static_cast<T>(random_() >> pick(64)) : extreme;
        }
    }

    template <class T>
    T number() {
        static constexpr double kSpecial[] = {0.0,  -0.0, HUGE_VAL, -HUGE_VAL, NAN,   1e15,
                                              1e16, 1e17, 0.1,      1e-5,      0.0001};
        T result;
        do {
            const std::uint64_t bits = random_();
            std::memcpy(&result, &bits, sizeof result);
            if (const std::uint64_t kind = pick(3); kind == 0) {
                result = static_cast<T>(kSpecial[pick(std::size(kSpecial))]);
            } else if (kind == 1) {
                result = static_cast<T>(static_cast<std::int64_t>(bits) >> pick(64));
            }
        } while (readable_ && (!std::isfinite(result) || (result == 0 && std::signbit(result))));
        return result;
    }

    template <class Text>
    Text text() {
        using namespace std::string_view_literals;
        Text result;
        for (std::uint64_t pieces = pick(5); pieces > 0; --pieces) {
            if constexpr (std::is_same_v<Text, std::string>) {
                // The last two are no valid UTF-8.
                static constexpr std::string_view kPieces[] = {"a"sv,
                                                               "1.0,[1.0]\\u00b5"sv,
                                                               "\"\\/\b\f\n\r\t\0\x01\x1f\x7f"sv,
                                                               "\u00b5\u03a9"sv,
                                                               "\uffff\U0001f600"sv,
                                                               "\xff"sv,
                                                               "\xed\xa0\x80"sv};
                result += kPieces[pick(std::size(kPieces) - (readable_ ? 0 : 2))];
            } else {
                result += static_cast<char16_t>(random_() >> pick(64));
            }
        }
        return result;
    }

    bool readable_;
    std::mt19937_64 random_;
};

} // namespace Zelm::Testing
