#include <zelm/variables/RangeFormula.h>

#include <zelm/variables/StrategySupport.h>
#include <zelm/variant/Arithmetic.h>
#include <zelm/variant/ElementArithmetic.h>
#include <zelm/variant/ElementConversion.h>
#include <zelm/variant/VariantAccess.h>

#include <complex>
#include <limits>
#include <type_traits>

namespace Zelm::details {

namespace {

/// The types in which `index * step` and the sum with the start are calculated: whatever meets the index, an
/// unsigned integer of 64 bits, ends in one of these.
template <class T>
inline constexpr bool isRangeType =
    std::is_same_v<T, std::uint64_t> || std::is_floating_point_v<T> || isComplexElement<T>;

template <class Visitor>
bool visitRangeType(WellKnownType type, Visitor&& visit) {
    bool supported = false;
    visitElementType(type, [&](auto tag) {
        using T = ArithmeticTypeOf<typename decltype(tag)::type>;
        if constexpr (isRangeType<T>) {
            supported = true;
            visit(ElementTag<T>());
        }
    });
    return supported;
}

/// Calls `visit` with the types of product and element, if the operands have any.
template <class Visitor>
void visitRangeTypes(WellKnownType start, WellKnownType step, Visitor&& visit) {
    const auto common = WellKnownType::GetCommonWellKnownType(WellKnownType::UnsignedInt64(), step);
    visitRangeType(common, [&](auto product) {
        const WellKnownType type = wellKnownTypeOf<typename decltype(product)::type>;
        visitRangeType(WellKnownType::GetCommonWellKnownType(start, type),
                       [&](auto element) { visit(product, element); });
    });
}

/// Indices up to this one are exact in `T`.
template <class T>
constexpr std::uint64_t largestExactIndex() {
    constexpr int digits = std::numeric_limits<RealPartOf<T>>::digits;
    if constexpr (digits >= 64) {
        return std::numeric_limits<std::uint64_t>::max();
    } else {
        return std::uint64_t{1} << digits;
    }
}

/// Positions below this one fit into the integers that vector registers convert.
constexpr std::uint64_t kLongestVectorised = std::uint64_t{1} << 31;

/// `value` as a `To`; clears `exact` if it does not survive.
template <class To, class From>
To converted(From value, bool& exact) {
    if constexpr (std::is_same_v<From, To>) {
        return value;
    } else if constexpr (isComplexElement<From>) {
        using Part = RealPartOf<To>;
        const Part real = converted<Part>(value.real(), exact);
        return To(real, converted<Part>(value.imag(), exact));
    } else if constexpr (isComplexElement<To>) {
        // A NaN that becomes complex counts as lost, even where its own type stays.
        exact &= value == value;
        return To(converted<RealPartOf<To>>(value, exact));
    } else {
        const To result = convertNumber<To>(value);
        exact &= !isLost<From, To>(lossOf(value, result));
        return result;
    }
}

template <class Product, class Element>
struct ScalarFormula {
    Element start;
    Product step;

    Element operator()(Product index, bool& exact) const {
        return ElementSum()(start, converted<Element>(ElementProduct()(index, step), exact));
    }

    /// The elements from `first` on; none if one of the conversions on the way is not exact.
    std::optional<std::vector<Element>> elements(std::uint64_t first, std::uint64_t count) const {
        bool exact = true;
        std::vector<Element> result;
        if (first + count - 1 > largestExactIndex<Product>() || count > kLongestVectorised) {
            result = generated(count, [&](std::size_t i) {
                return (*this)(converted<Product>(std::uint64_t{first + i}, exact), exact);
            });
        } else {
            // Within this range sums of indices are exact as well, and SSE2 converts integers of 32 bits.
            using Part = RealPartOf<Product>;
            result = generated(count, [this, &exact, begin = static_cast<Part>(first)](std::size_t i) {
                return (*this)(Product(begin + static_cast<Part>(static_cast<std::int32_t>(i))), exact);
            });
        }
        if (!exact) {
            return std::nullopt;
        }
        return result;
    }
};

} // namespace

Variant RangeFormula::element(std::uint64_t index) const {
    if (std::optional<Variant> scalar = scalarElements(index, 1, step_.dataOrdering())) {
        return *std::move(scalar);
    }
    return start_ + Variant(index) * step_;
}

Variant RangeFormula::elements(std::uint64_t first, std::uint64_t last) const {
    if (std::optional<Variant> scalars = scalarElements(first, last - first + 1, step_.dataOrdering())) {
        return *std::move(scalars);
    }
    Variant result = element(first);
    // All rows have one shape: where one is empty, so is the result.
    if (result.dimensions().isEmpty()) {
        return result;
    }
    for (std::uint64_t i = first; i != last;) {
        result.append(element(++i));
    }
    return result;
}

Variant RangeFormula::array(std::uint64_t count) const {
    Variant first = firstElement();
    // The formula proper counts from row 1 on: its wider types may refuse a start that row 0 takes.
    std::optional<Variant> scalars = count < 2 ? std::nullopt : scalarElements(0, count, RowMajor);
    if (!scalars) {
        return arrayOfRows(std::move(first), count);
    }
    Variant result = scalars->convertedTo(first.wellKnownType());
    scalars.reset();
    result.assignSlice(rowSlice(IndexSet(IndexValue(0, false)), first.dimensions().numberOfDimensions()),
                       first);
    return result;
}

Variant RangeFormula::firstElement() const {
    return start_ + Variant(std::int32_t{0}) * step_;
}

Variant RangeFormula::arrayOfRows(Variant first, std::uint64_t count) const {
    ArrayDimensions shape = first.dimensions();
    shape[0] = count;
    MutableVariant array =
        MutableVariant::createWithAllocatedArrayOfWellKnownType(first.wellKnownType(), shape, RowMajor);
    const auto assignRow = [&](std::uint64_t row, Variant value) {
        array.assignSlice(rowSlice(IndexSet(IndexValue(row, false)), shape.numberOfDimensions()),
                          std::move(value));
    };
    assignRow(0, std::move(first));
    for (std::uint64_t i = 1; i < count; ++i) {
        assignRow(i, element(i));
    }
    return Variant(std::move(array));
}

std::optional<Variant> RangeFormula::scalarElements(std::uint64_t first, std::uint64_t count,
                                                    DataOrdering ordering) const {
    std::optional<Variant> result;
    const ArrayDimensions& rowShape = VariantAccess::shape(step_);
    if (!VariantAccess::shape(start_).isScalar() || !rowShape.isScalar()) {
        return result;
    }
    visitRangeTypes(start_.wellKnownType(), step_.wellKnownType(), [&](auto product, auto element) {
        using Product = typename decltype(product)::type;
        using Element = typename decltype(element)::type;
        // The common type of a complex product is complex.
        if constexpr (isComplexElement<Element> || !isComplexElement<Product>) {
            const ScalarFormula<Product, Element> formula{start_.value<Element>(), step_.value<Product>()};
            if (auto elements = formula.elements(first, count)) {
                ArrayDimensions shape = rowShape;
                shape[0] = count;
                result = VariantAccess::make<Element>(*std::move(elements), std::move(shape), ordering);
            }
        }
    });
    return result;
}

} // namespace Zelm::details
