#pragma once

#include <zelm/Export.h>

namespace Zelm {

/// A complex number with integer or boolean parts; the floating kinds are `std::complex`. The second
/// parameter is 0 for every type that the library holds. The two parts lie side by side, real part first, as
/// in `std::complex`.
template <class T, int = 0>
class ZELM_EXPORT Complex {
public:
    using value_type = T;

    constexpr Complex(T real = T(), T imag = T()) noexcept : real_(real), imag_(imag) {}

    constexpr T real() const noexcept { return real_; }
    constexpr T imag() const noexcept { return imag_; }

    friend constexpr bool operator==(const Complex& a, const Complex& b) noexcept {
        return a.real_ == b.real_ && a.imag_ == b.imag_;
    }
    friend constexpr bool operator!=(const Complex& a, const Complex& b) noexcept { return !(a == b); }

private:
    T real_;
    T imag_;
};

} // namespace Zelm
