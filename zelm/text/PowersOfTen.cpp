#include <zelm/text/PowersOfTen.h>

namespace Zelm::details {

namespace {

/// An integer of 896 bits, enough for 5^340 and for 2^895 / 5^330 with its 128 leading bits.
class LongInteger {
public:
    static constexpr std::size_t kWords = 28;

    constexpr LongInteger(std::size_t word, std::uint32_t value) { words_[word] = value; }

    constexpr void multiplyByFive() {
        std::uint64_t carry = 0;
        for (std::uint32_t& word : words_) {
            carry += std::uint64_t{5} * word;
            word = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }
    constexpr void divideByFive() {
        std::uint64_t rest = 0;
        for (std::size_t i = kWords; i-- > 0;) {
            rest = rest << 32 | words_[i];
            words_[i] = static_cast<std::uint32_t>(rest / 5);
            rest %= 5;
        }
    }
    constexpr WideNumber leadingBits() const {
        std::size_t first = kWords - 1;
        while (words_[first] == 0) {
            --first;
        }
        int shift = 0;
        while ((words_[first] << shift & 0x80000000) == 0) {
            ++shift;
        }
        // Each word below the first fills the place that the shift leaves.
        std::uint32_t leading[4] = {};
        for (std::size_t i = 0; i < 4; ++i) {
            const std::uint64_t both = word(first, i) << 32 | word(first, i + 1);
            leading[i] = static_cast<std::uint32_t>(both << shift >> 32);
        }
        return {std::uint64_t{leading[0]} << 32 | leading[1], std::uint64_t{leading[2]} << 32 | leading[3]};
    }

private:
    constexpr std::uint64_t word(std::size_t first, std::size_t below) const {
        return below <= first ? words_[first - below] : 0;
    }

    std::uint32_t words_[kWords] = {};
};

/// The leading bits of 10^n are those of 5^n. Dividing 2^895 by five over and over cuts off no more than
/// dividing once does.
constexpr auto powersOfTen() {
    std::array<WideNumber, kHighestPowerOfTen - kLowestPowerOfTen + 1> table{};
    LongInteger power(0, 1);
    for (int n = 0; n <= kHighestPowerOfTen; ++n) {
        table[static_cast<std::size_t>(n - kLowestPowerOfTen)] = power.leadingBits();
        power.multiplyByFive();
    }
    LongInteger reciprocal(LongInteger::kWords - 1, 0x80000000);
    for (int n = -1; n >= kLowestPowerOfTen; --n) {
        reciprocal.divideByFive();
        table[static_cast<std::size_t>(n - kLowestPowerOfTen)] = reciprocal.leadingBits();
    }
    return table;
}

} // namespace

constexpr std::array<WideNumber, kHighestPowerOfTen - kLowestPowerOfTen + 1> kPowersOfTen = powersOfTen();

} // namespace Zelm::details
