#include <zelm/variant/Comparison.h>

#include <zelm/variant/TransposedWalk.h>
#include <zelm/variant/VariantAccess.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm {

namespace details {

namespace {

/// Elements that hold Variants in turn.
template <class T>
inline constexpr bool isNestingElement = std::is_same_v<T, Variant> || std::is_same_v<T, Struct>;

/// By value, since a NaN differs from itself and -0.0 equals 0.0. There is no exit inside a chunk, and each
/// element selects a number instead of setting a flag: this is the form that compilers make masks of.
template <class Real>
bool equalReals(const Real* a, const Real* b, std::size_t count) {
    constexpr std::size_t kHalf = 32;
    for (; count >= 2 * kHalf; count -= 2 * kHalf, a += 2 * kHalf, b += 2 * kHalf) {
        Real low = 0;
        Real high = 0;
        for (std::size_t k = 0; k < kHalf; ++k) {
            low = a[k] == b[k] ? low : Real(1);
            high = a[k + kHalf] == b[k + kHalf] ? high : Real(1);
        }
        if (low != 0 || high != 0) {
            return false;
        }
    }
    return std::equal(a, a + count, b);
}

/// The first `count` elements of two arrays of numbers or text.
template <class T>
bool equalElements(const StoredElement<T>* a, const StoredElement<T>* b, std::size_t count) {
    using Real = RealPartOf<T>;
    if constexpr (!isNumericElement<T>) {
        return std::equal(a, a + count, b);
    } else if constexpr (std::is_floating_point_v<Real>) {
        // A std::complex is an array of its two parts.
        return equalReals(reinterpret_cast<const Real*>(a), reinterpret_cast<const Real*>(b),
                          count * (sizeof(T) / sizeof(Real)));
    } else {
        return count == 0 || std::memcmp(a, b, count * sizeof(T)) == 0;
    }
}

/// The elements of `a` in the order of `shape` and those of `b` in the other ordering.
template <class T>
bool equalTransposed(const StoredElement<T>* a, const StoredElement<T>* b, const TranspositionPlan& fromB) {
    bool equal = true;
    forEachTransposed(
        fromB, [&](std::size_t source, std::size_t target) { equal = equal && a[target] == b[source]; });
    return equal;
}

void requireValue(const Variant& value) {
    if (!VariantAccess::storage(value) || !VariantAccess::compare(value)) {
        throw std::bad_function_call();
    }
}

/// One comparison of two values with everything nested in them. Cells and structs that are still to be looked
/// into stand on a list and not on the stack, so that values may be nested to any depth.
class Comparer {
public:
    explicit Comparer(ComparisonLevel level) noexcept : level_(level) {}

    /// Whether two values are equal as far as the surface shows; what is nested in them is left open.
    bool equalSurface(const Variant& a, const Variant& b) {
        return level_ == Identical ? identicalSurface(a, b) : equivalentSurface(a, b);
    }

    /// The same for the elements of two storages that the shape tells. If `b` is stored in the other
    /// ordering, its elements are taken by their indices; cells and structs cannot be.
    template <class T>
    bool equalStorages(const AbstractVariantStorage& a, const AbstractVariantStorage& b,
                       const ArrayDimensions& shape, bool isTransposed = false);

    /// Whether both structs have the same keys; their fields are left open.
    bool openFields(const Struct& a, const Struct& b);

    /// Whether all that was left open is equal.
    bool finish();

private:
    /// Elements of two arrays, in order, that are still to be compared: either cells or structs.
    struct Open {
        const Variant* cellsA;
        const Variant* cellsB;
        const Struct* structsA;
        const Struct* structsB;
        std::size_t count;
    };

    void open(const Variant* a, const Variant* b, std::size_t count) {
        open_.push_back({a, b, nullptr, nullptr, count});
    }
    void open(const Struct* a, const Struct* b, std::size_t count) {
        open_.push_back({nullptr, nullptr, a, b, count});
    }

    bool identicalSurface(const Variant& a, const Variant& b);
    bool equivalentSurface(const Variant& a, const Variant& b);
    bool equalAfterConversion(Variant x, Variant y, const ArrayDimensions& shape, DataOrdering ordering);
    bool compareBy(const Variant& owner, const AbstractVariantStorage& a, const AbstractVariantStorage& b,
                   const ArrayDimensions& shape, bool isTransposed = false);

    ComparisonLevel level_;
    std::vector<Open> open_;
    std::vector<Variant> kept_; ///< rearranged cells that `open_` points into
};

template <class T>
bool Comparer::equalStorages(const AbstractVariantStorage& a, const AbstractVariantStorage& b,
                             const ArrayDimensions& shape, bool isTransposed) {
    const VectorVariantStorage<T>* const x = storageOf<T>(&a);
    const VectorVariantStorage<T>* const y = storageOf<T>(&b);
    if (!x || !y) {
        return false;
    }
    const std::uint64_t count = shape.countAllElements();
    if (count > x->elements().size() || count > y->elements().size()) {
        return false;
    }
    if constexpr (isNestingElement<T>) {
        open(x->elements().data(), y->elements().data(), static_cast<std::size_t>(count));
        return true;
    } else if (isTransposed) {
        return equalTransposed<T>(x->elements().data(), y->elements().data(),
                                  TranspositionPlan(shape, y->dataOrdering()));
    } else {
        return equalElements<T>(x->elements().data(), y->elements().data(), static_cast<std::size_t>(count));
    }
}

/// What `compare` of `owner` answers. The comparison that fits the storages, which is nearly always the one,
/// is not called but entered here: without a copy of the shape, and leaving open what is nested.
bool Comparer::compareBy(const Variant& owner, const AbstractVariantStorage& a,
                         const AbstractVariantStorage& b, const ArrayDimensions& shape, bool isTransposed) {
    const auto& compare = VariantAccess::compare(owner);
    StorageComparison* const* const target = compare.template target<StorageComparison*>();
    bool fits = false;
    bool equal = false;
    visitElementType(a.wellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        fits = target && *target == &compareStorages<T>;
        equal = fits && equalStorages<T>(a, b, shape, isTransposed);
    });
    return fits ? equal : compare(a, b, shape, level_);
}

bool Comparer::identicalSurface(const Variant& a, const Variant& b) {
    const AbstractVariantStorage& left = *VariantAccess::storage(a);
    const AbstractVariantStorage& right = *VariantAccess::storage(b);
    const ArrayDimensions& shape = VariantAccess::shape(a);
    return left.wellKnownType() == right.wellKnownType() && shape.isIdenticalTo(VariantAccess::shape(b)) &&
           left.dataOrdering() == right.dataOrdering() && compareBy(a, left, right, shape);
}

bool Comparer::equivalentSurface(const Variant& a, const Variant& b) {
    const AbstractVariantStorage& left = *VariantAccess::storage(a);
    const AbstractVariantStorage& right = *VariantAccess::storage(b);
    const ArrayDimensions& shape = VariantAccess::shape(a);
    if (!shape.isEquivalentTo(VariantAccess::shape(b))) {
        return false;
    }
    if (shape.isEmpty()) {
        return true;
    }
    const bool sameOrder = left.dataOrdering() == right.dataOrdering() || shape.isVector();
    return sameOrder && left.wellKnownType() == right.wellKnownType()
               ? compareBy(a, left, right, shape)
               : equalAfterConversion(a, b, shape, left.dataOrdering());
}

/// Brings both to one type and, where it has to be, `y` to the ordering of `x` before they are compared.
bool Comparer::equalAfterConversion(Variant x, Variant y, const ArrayDimensions& shape,
                                    DataOrdering ordering) {
    const WellKnownType common = WellKnownType::GetCommonWellKnownType(y.wellKnownType(), x.wellKnownType());
    if (common.isUnknown()) {
        return false;
    }
    x = x.convertedTo(common);
    y = y.convertedTo(common);
    bool isTransposed = !shape.isVector() && y.dataOrdering() != ordering;
    const bool canNest = common == WellKnownType::Cell() || common == WellKnownType::Struct();
    if (isTransposed && canNest) {
        std::shared_ptr<AbstractVariantStorage>& storage = VariantAccess::storage(y);
        storage = VariantAccess::writable(storage);
        storage->convertDataOrdering(ordering);
        isTransposed = false;
    }
    const bool equal =
        compareBy(x, *VariantAccess::storage(x), *VariantAccess::storage(y), shape, isTransposed);
    if (canNest) {
        kept_.push_back(std::move(y));
    }
    return equal;
}

bool Comparer::openFields(const Struct& a, const Struct& b) {
    const auto& left = VariantAccess::fields(a);
    const auto& right = VariantAccess::fields(b);
    if (left.size() != right.size() ||
        !std::equal(left.begin(), left.end(), right.begin(),
                    [](const auto& x, const auto& y) { return x.first == y.first; })) {
        return false;
    }
    // The last one opened is the first to be looked into.
    auto y = right.rbegin();
    for (auto x = left.rbegin(); x != left.rend(); ++x, ++y) {
        open(x->second.get(), y->second.get(), 1);
    }
    return true;
}

bool Comparer::finish() {
    while (!open_.empty()) {
        Open& next = open_.back();
        if (next.count == 0) {
            open_.pop_back();
            continue;
        }
        --next.count;
        if (next.cellsA) {
            const Variant& a = *next.cellsA++;
            const Variant& b = *next.cellsB++;
            requireValue(a);
            requireValue(b);
            if (!equalSurface(a, b)) {
                return false;
            }
        } else if (!openFields(*next.structsA++, *next.structsB++)) {
            return false;
        }
    }
    return true;
}

/// `compare(comparer)`, then all that it leaves open. Values that do not survive the step to a common type
/// and elements that are not there make equivalent values different.
template <class Compare>
bool runComparison(ComparisonLevel level, Compare&& compare) {
    Comparer comparer(level);
    if (level == Identical) {
        return compare(comparer) && comparer.finish();
    }
    try {
        return compare(comparer) && comparer.finish();
    } catch (const std::exception&) {
        return false;
    }
}

bool areEqual(const Variant& a, const Variant& b, ComparisonLevel level) {
    requireValue(a);
    requireValue(b);
    return runComparison(level, [&](Comparer& comparer) { return comparer.equalSurface(a, b); });
}

} // namespace

template <class T>
bool compareStorages(const AbstractVariantStorage& a, const AbstractVariantStorage& b, ArrayDimensions shape,
                     ComparisonLevel level) {
    return runComparison(level, [&](Comparer& comparer) { return comparer.equalStorages<T>(a, b, shape); });
}

bool compareNullStorages(const AbstractVariantStorage&, const AbstractVariantStorage&, ArrayDimensions shape,
                         ComparisonLevel) {
    return shape.isEmpty();
}

#define ZELM_INSTANTIATE(type, Name, value, keyword)                                                         \
    template ZELM_EXPORT bool compareStorages<type>(                                                         \
        const AbstractVariantStorage&, const AbstractVariantStorage&, ArrayDimensions, ComparisonLevel);
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_INSTANTIATE)
#undef ZELM_INSTANTIATE

} // namespace details

bool Variant::isEquivalentTo(const Variant& other) const {
    return details::areEqual(*this, other, Equivalent);
}

bool Variant::isIdenticalTo(const Variant& other) const {
    return details::areEqual(*this, other, Identical);
}

bool Struct::isEqual(const Struct& other, ComparisonLevel level) const {
    return details::runComparison(
        level, [&](details::Comparer& comparer) { return comparer.openFields(*this, other); });
}

} // namespace Zelm
