#include "korsys/main/text/PowersOfTen_p.h"

namespace NumberText {
namespace {

/// An unsigned number of many words, lowest word first; wide enough for 5^324 and for 2^959.
class LongNumber
{
public:
    constexpr explicit LongNumber(int topBit) { m_words[topBit / 32] = 1u << topBit % 32; }

    constexpr void MultiplyByFive()
    {
        std::uint64_t carry = 0;
        for (int i = 0; i < kWords; ++i) {
            carry += std::uint64_t(m_words[i]) * 5;
            m_words[i] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }

    constexpr void DivideByFive()
    {
        std::uint64_t rest = 0;
        for (int i = kWords - 1; i >= 0; --i) {
            rest = rest << 32 | m_words[i];
            m_words[i] = static_cast<std::uint32_t>(rest / 5);
            rest %= 5;
        }
    }

    /// The highest 128 bits, beginning with the highest one that is set.
    constexpr PowerOfTen Top() const
    {
        int topWord = kWords - 1;
        while (m_words[topWord] == 0) {
            --topWord;
        }
        int const shift = __builtin_clz(m_words[topWord]);
        return {std::uint64_t(Word(topWord, shift)) << 32 | Word(topWord - 1, shift),
                std::uint64_t(Word(topWord - 2, shift)) << 32 | Word(topWord - 3, shift)};
    }

private:
    static constexpr int kWords = 30;

    /// Word `i` of the number shifted left by 0 to 31 bits.
    constexpr std::uint32_t Word(int i, int shift) const
    {
        std::uint64_t const high = i >= 0 ? m_words[i] : 0;
        std::uint64_t const low = i >= 1 ? m_words[i - 1] : 0;
        return static_cast<std::uint32_t>((high << 32 | low) << shift >> 32);
    }

    std::uint32_t m_words[kWords] = {};
};

/// 10^k and 5^k differ in their exponents only, so it is powers of five that are collected. The
/// negative ones come from 2^959 divided again and again: dividing a cut-off quotient cuts off at
/// the same place as dividing once, and the smallest quotient still has 165 bits.
constexpr PowerTable MakePowers()
{
    PowerTable powers{};
    LongNumber power(0);
    for (int k = 0; k <= kMaxPower; ++k) {
        powers[PowerIndex(k)] = power.Top();
        power.MultiplyByFive();
    }
    LongNumber reciprocal(959);
    for (int k = -1; k >= kMinPower; --k) {
        reciprocal.DivideByFive();
        powers[PowerIndex(k)] = reciprocal.Top();
    }
    return powers;
}

} // namespace

constexpr PowerTable kPowersOfTen = MakePowers();

static_assert(kPowersOfTen[PowerIndex(0)].high == std::uint64_t(1) << 63);
static_assert(kPowersOfTen[PowerIndex(1)].high == std::uint64_t(10) << 60);

} // namespace NumberText
