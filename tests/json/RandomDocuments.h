#pragma once

#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/VariantAccess.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace Zelm {

/// Random trees with values of all 27 element types that come back as they were.
class RandomDocuments {
public:
    explicit RandomDocuments(std::uint64_t seed) : random_(seed) {}

    ZPropertyHandle tree(int levels = 4) {
        const ZMutablePropertyTree result(text());
        fill(result.handle().node(), levels);
        return result.immutableHandle();
    }

    std::uint64_t pick(std::uint64_t count) { return random_() % count; }

private:
    Variant value(int depth) {
        static constexpr WellKnownType kTypes[] = {
#define ZELM_TYPE(type, Name, value, keyword) WellKnownType::Name(),
            ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_TYPE)
#undef ZELM_TYPE
        };
        Variant result;
        details::visitElementType(kTypes[pick(std::size(kTypes))], [&](auto tag) {
            using T = typename decltype(tag)::type;
            const ArrayDimensions shape(std::vector<std::uint64_t>{1 + pick(3), 1 + pick(2) * pick(2)});
            std::vector<details::StoredElement<T>> elements(shape.countAllElements());
            for (auto& place : elements) {
                place = element<T>(depth);
            }
            result = details::VariantAccess::make<T>(std::move(elements), shape,
                                                     shape.isVector() && pick(2) ? ColumnMajor : RowMajor);
        });
        return result;
    }

    /// Any cut, also through a character.
    std::string text() {
        static const std::string kAll("a1.0,[1.0]\\u00b5\"\\/\n\0\x01\x1f\x7f\u00b5\uffff\U0001f600\xff", 34);
        return kAll.substr(pick(kAll.size()), pick(2) * pick(9));
    }

    void fill(ZPropertyTreeNode& node, int levels) {
        node.setObjectType(text());
        node.setValue(pick(3) ? value(0) : Variant());
        for (std::uint64_t children = levels > 0 ? pick(4) : 0; children > 0; --children) {
            fill(*node.addChild(text()), levels - 1);
        }
    }

    template <class T>
    T element([[maybe_unused]] int depth) {
        if constexpr (std::is_same_v<T, Variant>) {
            return depth < 3 ? value(depth + 1) : Variant(1);
        } else if constexpr (std::is_same_v<T, Struct>) {
            Struct record;
            record.set(text(), element<Variant>(depth));
            return record;
        } else if constexpr (std::is_same_v<T, std::u16string>) {
            return std::u16string(pick(3), static_cast<char16_t>(random_()));
        } else if constexpr (details::isTextElement<T>) {
            return text();
        } else if constexpr (details::isComplexElement<T>) {
            return T(element<details::RealPartOf<T>>(depth), element<details::RealPartOf<T>>(depth));
        } else if constexpr (std::is_floating_point_v<T>) {
            // Of all sizes, from the subnormal ones up, but for the zero that loses its sign.
            constexpr int kLimit = std::numeric_limits<T>::max_exponent;
            const int exponent = pick(2) ? static_cast<int>(pick(2 * kLimit - 64)) - kLimit : 0;
            return std::ldexp(static_cast<T>(element<std::int64_t>(depth)), exponent) + T(0);
        } else {
            return static_cast<T>(static_cast<std::int64_t>(random_()) >> pick(64));
        }
    }

    std::mt19937_64 random_;
};

} // namespace Zelm
