#include "korsys/main/text/SurrogatePairs_p.h"
#include "korsys/main/text/TextSearch_p.h"
#include "korsys/main/text/UnitScan_x86_p.h"
#include "korsys/main/text/UnitSearch_p.h"

#include <algorithm>

namespace UnitSearch {
namespace {

using UnitScan::kBlock;
using UnitScan::kWideBlock;
using UnitScan::Load;
using UnitScan::LoadWide;
using UnitScan::MaskOf;
using UnitScan::Repeat;
using UnitScan::RepeatWide;
using UnitScan::WideMaskOf;

constexpr auto kStop = [](int) { return true; };
constexpr int kSmallSet = 4;

struct ExactUnits
{
    static char16_t At(char16_t const* text, int index) { return text[index]; }

    static int Equal(char16_t const* text, int at, char16_t const* needle, int length)
    {
        return length <= 2 ? length : Mismatch(text + at, needle, length);
    }

    /// Candidates have the needle's first and last unit, so two units need no further look.
    template <class Ask>
    static int WithScanner(char16_t const* text, char16_t const* needle, int needleLength,
                           Ask const& ask)
    {
        using Filter = UnitScan::OneOf<1>;
        int const last = needleLength - 1;
        UnitScan::Both<Filter> const both(Filter(text, needle), Filter(text + last, needle + last));
        return ask(UnitScan::Scanner(both));
    }
};

/// The position of the unit in the block of four wide blocks, which has it.
__attribute__((target("avx2"))) int FindInWideBlocks(char16_t const* text, __m256i wanted)
{
    int at = 0;
    unsigned mask = 0;
    while (mask == 0) {
        mask = WideMaskOf(_mm256_cmpeq_epi16(LoadWide(text + at), wanted));
        at += kWideBlock;
    }
    return at - kWideBlock + UnitScan::FirstOf(mask);
}

/// Looks through four wide blocks at a time. Without a find, `at` is where the rest begins.
__attribute__((target("avx2"))) int FindUnitWide(char16_t const* text, int length, char16_t unit,
                                                 int& at)
{
    __m256i const wanted = RepeatWide(unit);
    for (; at + 4 * kWideBlock <= length; at += 4 * kWideBlock) {
        char16_t const* const block = text + at;
        __m256i const one = _mm256_cmpeq_epi16(LoadWide(block), wanted);
        __m256i const two = _mm256_cmpeq_epi16(LoadWide(block + kWideBlock), wanted);
        __m256i const three = _mm256_cmpeq_epi16(LoadWide(block + 2 * kWideBlock), wanted);
        __m256i const four = _mm256_cmpeq_epi16(LoadWide(block + 3 * kWideBlock), wanted);
        __m256i const any =
            _mm256_or_si256(_mm256_or_si256(one, two), _mm256_or_si256(three, four));
        if (WideMaskOf(any) != 0) {
            return at + FindInWideBlocks(block, wanted);
        }
    }
    return -1;
}

/// Calls `ask` with a filter for the set, whose places are filled by repeating a unit.
template <class Ask>
int WithSmallSet(char16_t const* text, char16_t const* set, int setLength, Ask const& ask)
{
    if (setLength == 1) {
        return ask(UnitScan::OneOf<1>(text, set));
    }
    char16_t units[kSmallSet];
    for (int i = 0; i < kSmallSet; ++i) {
        units[i] = set[std::min(i, setLength - 1)];
    }
    return ask(UnitScan::OneOf<kSmallSet>(text, units));
}

bool IsSmall(int setLength)
{
    return setLength > 0 && setLength <= kSmallSet;
}

void ReverseUnits(char16_t* text, int length)
{
    int left = 0;
    int right = length;
    for (; right - left >= 2 * kBlock; left += kBlock, right -= kBlock) {
        __m128i const front = Load(text + left);
        __m128i const back = Load(text + right - kBlock);
        auto const reversed = [](__m128i block) {
            constexpr int kBackwards = _MM_SHUFFLE(0, 1, 2, 3);
            block = _mm_shufflelo_epi16(block, kBackwards);
            block = _mm_shufflehi_epi16(block, kBackwards);
            return _mm_shuffle_epi32(block, _MM_SHUFFLE(1, 0, 3, 2));
        };
        UnitScan::Store(text + left, reversed(back));
        UnitScan::Store(text + right - kBlock, reversed(front));
    }
    std::reverse(text + left, text + right);
}

} // namespace

int FindUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    int at = 0;
    if (length >= 4 * kWideBlock && UnitScan::HasWideBlocks()) {
        int const found = FindUnitWide(text, length, unit, at);
        if (found >= 0) {
            return found;
        }
    }
    return UnitScan::VisitBlocks(UnitScan::OneOf<1>(text, &unit), length, at, kStop);
}

int FindLastUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    __m128i const wanted = Repeat(unit);
    for (; length >= 2 * kBlock; length -= 2 * kBlock) {
        char16_t const* const block = text + length - 2 * kBlock;
        __m128i const equal = _mm_packs_epi16(_mm_cmpeq_epi16(Load(block), wanted),
                                              _mm_cmpeq_epi16(Load(block + kBlock), wanted));
        if (unsigned const mask = UnitScan::MaskOf(equal)) { // a bit a unit
            return length - 2 * kBlock + (31 - __builtin_clz(mask));
        }
    }
    return UnitScan::Backwards(UnitScan::OneOf<1>(text, &unit), length, kStop);
}

int CountUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    // Each lane counts what it has seen, and is emptied before it could reach 2^15.
    constexpr int kBlocksToEmpty = 0x7FFF;
    __m128i const wanted = Repeat(unit);
    __m128i total = _mm_setzero_si128();
    int at = 0;
    while (length - at >= kBlock) {
        int const blocks = std::min((length - at) / kBlock, kBlocksToEmpty);
        __m128i lanes = _mm_setzero_si128();
        for (int const end = at + blocks * kBlock; at < end; at += kBlock) {
            lanes = _mm_sub_epi16(lanes, _mm_cmpeq_epi16(Load(text + at), wanted));
        }
        total = _mm_add_epi32(total, _mm_madd_epi16(lanes, Repeat(1)));
    }
    total = _mm_add_epi32(total, _mm_shuffle_epi32(total, _MM_SHUFFLE(1, 0, 3, 2)));
    total = _mm_add_epi32(total, _mm_shuffle_epi32(total, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(total) + Scalar::CountUnit(text + at, length - at, unit);
}

int FindText(char16_t const* text, int length, char16_t const* needle, int needleLength) noexcept
{
    if (needleLength == 1) {
        return FindUnit(text, length, needle[0]);
    }
    return TextSearch::FindFirst<ExactUnits>(text, length, needle, needleLength);
}

int FindLastText(char16_t const* text, int length, char16_t const* needle,
                 int needleLength) noexcept
{
    return TextSearch::FindLast<ExactUnits>(text, length, needle, needleLength);
}

int CountText(char16_t const* text, int length, char16_t const* needle, int needleLength) noexcept
{
    if (needleLength == 1) {
        return CountUnit(text, length, needle[0]);
    }
    return TextSearch::Count<ExactUnits>(text, length, needle, needleLength);
}

int FindAnyOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    if (!IsSmall(setLength)) {
        return Scalar::FindAnyOf(text, length, set, setLength);
    }
    return WithSmallSet(text, set, setLength, [length](auto const& filter) {
        return UnitScan::Forwards(filter, length, kStop);
    });
}

int FindLastAnyOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    if (!IsSmall(setLength)) {
        return Scalar::FindLastAnyOf(text, length, set, setLength);
    }
    return WithSmallSet(text, set, setLength, [length](auto const& filter) {
        return UnitScan::Backwards(filter, length, kStop);
    });
}

int FindNoneOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    if (!IsSmall(setLength)) {
        return Scalar::FindNoneOf(text, length, set, setLength);
    }
    return WithSmallSet(text, set, setLength, [length](auto const& filter) {
        return UnitScan::Forwards(UnitScan::Not(filter), length, kStop);
    });
}

int FindLastNoneOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    if (!IsSmall(setLength)) {
        return Scalar::FindLastNoneOf(text, length, set, setLength);
    }
    return WithSmallSet(text, set, setLength, [length](auto const& filter) {
        return UnitScan::Backwards(UnitScan::Not(filter), length, kStop);
    });
}

int Mismatch(char16_t const* left, char16_t const* right, int length) noexcept
{
    int at = 0;
    for (; at + kBlock <= length; at += kBlock) {
        unsigned const differing =
            MaskOf(_mm_cmpeq_epi16(Load(left + at), Load(right + at))) ^ 0xFFFF;
        if (differing != 0) {
            return at + UnitScan::FirstOf(differing);
        }
    }
    return at + Scalar::Mismatch(left + at, right + at, length - at);
}

int Compare(char16_t const* left, int leftLength, char16_t const* right, int rightLength) noexcept
{
    int const common = std::min(leftLength, rightLength);
    int const at = Mismatch(left, right, common);
    if (at < common) {
        return left[at] < right[at] ? -1 : 1;
    }
    return leftLength == rightLength ? 0 : leftLength < rightLength ? -1 : 1;
}

int ReplaceUnit(char16_t* text, int length, char16_t before, char16_t after) noexcept
{
    int const count = CountUnit(text, length, before);
    if (count == 0) {
        return 0;
    }
    __m128i const wanted = Repeat(before);
    __m128i const change = Repeat(static_cast<char16_t>(before ^ after));
    int at = 0;
    for (; at + kBlock <= length; at += kBlock) {
        __m128i const block = Load(text + at);
        __m128i const equal = _mm_cmpeq_epi16(block, wanted);
        UnitScan::Store(text + at, _mm_xor_si128(block, _mm_and_si128(equal, change)));
    }
    Scalar::ReplaceUnit(text + at, length - at, before, after);
    return count;
}

void Reverse(char16_t* text, int length) noexcept
{
    ReverseUnits(text, length);
    SurrogatePairs::Restore(text, length);
}

} // namespace UnitSearch
