#include <zelm/variant/Arithmetic.h>
#include <zelm/variant/ElementArithmetic.h>
#include <zelm/variant/TransposedWalk.h>

#include <complex>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace Zelm {

namespace {

using details::claimElements;
using details::VariantAccess;
using details::VectorVariantStorage;

/// Combines two operands in the type `T`. The operands are those of the operator, to be used up.
using Combination = Variant(Variant&& a, Variant&& b);

/// `value`, which nobody shares, in the shape and ordering of `form`.
Variant inFormOf(const Variant& form, Variant&& value) {
    details::AbstractVariantStorage& storage = *VariantAccess::storage(value);
    if (!VariantAccess::shape(value).isIdenticalTo(VariantAccess::shape(form))) {
        storage.setDimensions(VariantAccess::shape(form));
    }
    storage.setDataOrdering(form.dataOrdering());
    return std::move(value);
}

/// Two scalars, which are read and combined without an array in between. The result has the form of `b`.
template <class T, class Operation>
Variant combineScalars(Variant&& a, Variant&& b) {
    const T first = a.value<T>();
    const T result = Operation()(first, b.value<T>());
    if (T* const element = claimElements<T>(b, 1)) {
        *element = result;
        return std::move(b);
    }
    if (T* const element = claimElements<T>(a, 1)) {
        *element = result;
        return inFormOf(b, std::move(a));
    }
    return VariantAccess::make<T>({result}, VariantAccess::shape(b), b.dataOrdering());
}

/// A scalar with each element of an array. Both operations commute, so it does not matter which one is left.
template <class T, class Operation>
Variant combineWithScalar(const T& scalar, Variant&& array) {
    return details::mapElementsInline<T>(std::move(array),
                                         [scalar](const T& element) { return Operation()(scalar, element); });
}

/// `into[i] = into[i] op other[i]` for arrays that do not overlap.
template <class Operation, class T>
void accumulate(T* into, const T* other, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        into[i] = Operation()(into[i], other[i]);
    }
}

/// Two arrays of the same flat order. The result has the form of `a`.
template <class T, class Operation>
Variant combineFlat(Variant&& a, Variant&& b, std::size_t count) {
    const VectorVariantStorage<T>& left = *VariantAccess::typed<T>(a);
    const T* const first = left.elements().data();
    const T* const second = VariantAccess::typed<T>(b)->elements().data();
    if (T* const into = claimElements<T>(a, count)) {
        accumulate<Operation>(into, second, count);
        return std::move(a);
    }
    if (T* const into = claimElements<T>(b, count)) {
        accumulate<Operation>(into, first, count);
        return inFormOf(a, std::move(b));
    }
    return VariantAccess::make<T>(
        details::generated(count, [=](std::size_t i) -> T { return Operation()(first[i], second[i]); }),
        left.shape(), left.dataOrdering());
}

/// Two arrays that are stored in different orderings. The result has the form of `a`.
template <class T, class Operation>
Variant combineByIndex(Variant&& a, const Variant& b, std::size_t count) {
    T* into = claimElements<T>(a, count);
    if (!into) {
        const VectorVariantStorage<T>& left = *VariantAccess::typed<T>(a);
        const T* const first = left.elements().data();
        a = VariantAccess::make<T>(std::vector<T>(first, first + count), left.shape(), left.dataOrdering());
        into = claimElements<T>(a, count);
    }
    const T* const other = VariantAccess::typed<T>(b)->elements().data();
    const details::TranspositionPlan plan(VariantAccess::shape(a), b.dataOrdering());
    details::forEachTransposed(plan, [=](std::size_t source, std::size_t target) {
        into[target] = Operation()(into[target], other[source]);
    });
    return std::move(a);
}

template <class T>
bool isStoredAlike(const VectorVariantStorage<T>& a, const VectorVariantStorage<T>& b) {
    return a.shape().isVector() || (a.dataOrdering() == ColumnMajor) == (b.dataOrdering() == ColumnMajor);
}

template <class T, class Operation>
Variant combineArrays(Variant&& a, Variant&& b) {
    if (!VariantAccess::shape(a).isEquivalentTo(VariantAccess::shape(b))) {
        throw std::invalid_argument("Binary operation dimensions mismatched");
    }
    VariantAccess::convert<T>(a);
    VariantAccess::convert<T>(b);
    const VectorVariantStorage<T>& left = *VariantAccess::typed<T>(a);
    const VectorVariantStorage<T>& right = *VariantAccess::typed<T>(b);
    const std::size_t count = details::countOfShape(left);
    details::countOfShape(right);
    if (count == 0) {
        return details::emptyArray<T>(left.dataOrdering());
    }
    return isStoredAlike(left, right) ? combineFlat<T, Operation>(std::move(a), std::move(b), count)
                                      : combineByIndex<T, Operation>(std::move(a), b, count);
}

template <class T, class Operation>
Variant combineAs(Variant&& a, Variant&& b) {
    const bool scalarLeft = VariantAccess::shape(a).isScalar();
    const bool scalarRight = VariantAccess::shape(b).isScalar();
    if (scalarLeft && scalarRight) {
        return combineScalars<T, Operation>(std::move(a), std::move(b));
    }
    if (scalarLeft) {
        return combineWithScalar<T, Operation>(a.value<T>(), std::move(b));
    }
    if (scalarRight) {
        return combineWithScalar<T, Operation>(b.value<T>(), std::move(a));
    }
    return combineArrays<T, Operation>(std::move(a), std::move(b));
}

/// The combination of operands whose common type is `common`. Throws `std::invalid_argument` if there is
/// none.
template <class Operation>
Combination* combinationFor(WellKnownType common) {
    Combination* combination = nullptr;
    details::visitElementType(common, [&](auto tag) {
        using T = details::ArithmeticTypeOf<typename decltype(tag)::type>;
        if constexpr (!std::is_void_v<T>) {
            combination = &combineAs<T, Operation>;
        }
    });
    if (!combination) {
        throw std::invalid_argument(std::string("Binary operations not yet supported for type: ") +
                                    common.ToString());
    }
    return combination;
}

template <class Operation>
Variant combine(Variant&& a, Variant&& b) {
    if (!VariantAccess::storage(a) || !VariantAccess::storage(b)) {
        details::throwWrongDataType();
    }
    const WellKnownType typeOfA = a.wellKnownType();
    const WellKnownType typeOfB = b.wellKnownType();
    if (typeOfA.isUnknown() && typeOfB.isUnknown()) {
        return Variant();
    }
    const WellKnownType common = WellKnownType::GetCommonWellKnownType(typeOfA, typeOfB);
    return combinationFor<Operation>(common)(std::move(a), std::move(b));
}

} // namespace

Variant operator+(Variant a, Variant b) {
    return combine<details::ElementSum>(std::move(a), std::move(b));
}

Variant operator*(Variant a, Variant b) {
    return combine<details::ElementProduct>(std::move(a), std::move(b));
}

template <class T, class>
Variant mapElements(Variant value, std::function<T(const T&)> function) {
    return details::mapElementsInline<T>(std::move(value),
                                         [&](const T& element) { return function(element); });
}

#define ZELM_INSTANTIATE(T) template ZELM_EXPORT Variant mapElements<T>(Variant, std::function<T(const T&)>);
ZELM_INSTANTIATE(double)
ZELM_INSTANTIATE(float)
ZELM_INSTANTIATE(signed char)
ZELM_INSTANTIATE(short)
ZELM_INSTANTIATE(int)
ZELM_INSTANTIATE(std::int64_t)
ZELM_INSTANTIATE(unsigned char)
ZELM_INSTANTIATE(unsigned short)
ZELM_INSTANTIATE(unsigned int)
ZELM_INSTANTIATE(std::uint64_t)
ZELM_INSTANTIATE(std::complex<float>)
ZELM_INSTANTIATE(std::complex<double>)
#undef ZELM_INSTANTIATE

} // namespace Zelm
