// Writes data/lowpass.s2p to standard output: a fifth-order Chebyshev low-pass filter of 0.1 dB ripple and
// 1 GHz cutoff between 50 ohms, whose inductors and capacitors have a quality of 200 at the cutoff, at 290 K.

#include <array>
#include <cmath>
#include <complex>
#include <cstdio>

namespace {

using Complex = std::complex<double>;

constexpr double kPi = 3.14159265358979323846;
constexpr int kOrder = 5;
constexpr double kRipple = 0.1;     // dB
constexpr double kCutoff = 1000.0;  // MHz
constexpr double kQuality = 200.0;  // of every element at the cutoff
constexpr double kReference = 50.0; // ohm

/// Chain matrix (A, B; C, D), in units of the reference resistance.
struct Chain {
    Complex a{1.0}, b{0.0}, c{0.0}, d{1.0};
};

Chain operator*(const Chain& x, const Chain& y) {
    return {x.a * y.a + x.b * y.c, x.a * y.b + x.b * y.d, x.c * y.a + x.d * y.c, x.c * y.b + x.d * y.d};
}

/// Element values g1 to g5 of the ladder, from the formulas for equal ripple and equal terminations.
std::array<double, kOrder> ladder() {
    const double beta = std::log(1.0 / std::tanh(kRipple * std::log(10.0) / 40.0));
    const double gamma = std::sinh(beta / (2.0 * kOrder));
    const auto a = [](int k) { return std::sin((2 * k - 1) * kPi / (2.0 * kOrder)); };
    std::array<double, kOrder> g{};
    g[0] = 2.0 * a(1) / gamma;
    for (int k = 2; k <= kOrder; ++k) {
        const double s = std::sin((k - 1) * kPi / kOrder);
        const double b = gamma * gamma + s * s;
        g[static_cast<std::size_t>(k - 1)] = 4.0 * a(k - 1) * a(k) / (b * g[static_cast<std::size_t>(k - 2)]);
    }
    return g;
}

/// Shunt capacitors and series inductors in turn. A quality Q makes each element g (jw + 1/Q).
Chain filterAt(double frequency) {
    const Complex s(1.0 / kQuality, frequency / kCutoff);
    Chain chain;
    bool isShunt = true;
    for (const double g : ladder()) {
        chain = chain * (isShunt ? Chain{1.0, 0.0, g * s, 1.0} : Chain{1.0, g * s, 0.0, 1.0});
        isShunt = !isShunt;
    }
    return chain;
}

void writeNetworkRow(double frequency) {
    const auto [a, b, c, d] = filterAt(frequency);
    const Complex sum = a + b + c + d;
    const Complex s11 = (a + b - c - d) / sum;
    const Complex s21 = 2.0 / sum;
    const Complex s12 = 2.0 * (a * d - b * c) / sum;
    const Complex s22 = (-a + b - c + d) / sum;
    std::printf("%g", frequency);
    for (const Complex& s : {s11, s21, s12, s22}) {
        std::printf(" %.9f %.9f", s.real(), s.imag());
    }
    std::printf("\n");
}

/// Thermal noise of a passive 2-port at the reference temperature: the correlation matrix of its admittance
/// form is the Hermitian part of Y; brought to the chain form it gives the four noise parameters.
void writeNoiseRow(double frequency) {
    const auto [a, b, c, d] = filterAt(frequency);
    const double y11 = (d / b).real();
    const double y22 = (a / b).real();
    const Complex y12 = ((c * b - a * d) / b + std::conj(-1.0 / b)) / 2.0;
    // C_chain = T C_y T* with T = (0, b; 1, d)
    const double c11 = std::norm(b) * y22;
    const Complex c12 = b * std::conj(y12) + b * std::conj(d) * y22;
    const double c22 = y11 + 2.0 * (d * std::conj(y12)).real() + std::norm(d) * y22;
    const double susceptance = c12.imag() / c11;
    const double conductance = std::sqrt(c22 / c11 - susceptance * susceptance);
    const double figure = 1.0 + 2.0 * (c12.real() + c11 * conductance);
    const Complex admittance(conductance, susceptance);
    const Complex reflection = (1.0 - admittance) / (1.0 + admittance);
    std::printf("%g %.6f %.6f %.4f %.6f\n", frequency, 10.0 * std::log10(figure), std::abs(reflection),
                std::arg(reflection) * 180.0 / kPi, c11);
}

} // namespace

int main() {
    std::printf(
        "! Chebyshev low-pass filter, computed: order %d, ripple %g dB, cutoff %g MHz, Q %g, %g ohm.\n"
        "! Lossless, |S21|^2 = 1 / (1 + (10^(%g/10) - 1) T5(f/f0)^2) with T5(x) = cos(5 arccos x).\n"
        "! The ladder is C L C L C with g1 = 2 a1/y, gk = 4 a(k-1) ak / (b(k-1) g(k-1)), where\n"
        "! ak = sin((2k-1) pi/10), bk = y^2 + sin(k pi/5)^2, y = sinh(ln(coth(%g ln(10)/40))/10).\n"
        "! Losses put s = j f/f0 + 1/Q in the place of j f/f0; the chain matrices of the elements are\n"
        "! multiplied and turned into S. The noise is the thermal noise of the losses at 290 K.\n"
        "# MHz S RI R %g\n"
        "! f, then re and im of S11, S21, S12, S22\n",
        kOrder, kRipple, kCutoff, kQuality, kReference, kRipple, kRipple, kReference);
    for (int point = 1; point <= 201; ++point) {
        writeNetworkRow(10.0 * point);
    }
    std::printf("! f, minimum noise figure in dB, magnitude and angle of the best source reflection, Rn/R\n");
    for (int point = 1; point <= 10; ++point) {
        writeNoiseRow(100.0 * point);
    }
    return 0;
}
