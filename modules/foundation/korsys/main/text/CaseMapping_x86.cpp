#include "korsys/main/text/CaseMapping_p.h"
#include "korsys/main/text/CaseTables_p.h"
#include "korsys/main/text/SurrogatePairs_p.h"
#include "korsys/main/text/TextSearch_p.h"
#include "korsys/main/text/UnitScan_x86_p.h"

#include <algorithm>
#include <type_traits>

namespace CaseMapping {
namespace {

using CaseTables::FoldAt;
using CaseTables::kKnown;
using CaseTables::Variants;
using UnitScan::kBlock;
using UnitScan::kWideBlock;
using UnitScan::Load;
using UnitScan::LoadWide;
using UnitScan::MaskOf;
using UnitScan::Repeat;
using UnitScan::RepeatWide;
using UnitScan::Store;

constexpr auto kStop = [](int) { return true; };
constexpr unsigned kAllOfBlock = 0xFFFF;
constexpr char16_t kCaseBit = 0x20;

/// The letters that the mapping changes in ASCII: 26 from here on.
template <LetterCase To>
constexpr char16_t kFirstLetter = To == LetterCase::Lower ? u'A' : u'a';

bool IsAscii(__m128i block)
{
    __m128i const high = _mm_and_si128(block, Repeat(0xFF80));
    return MaskOf(_mm_cmpeq_epi16(high, _mm_setzero_si128())) == kAllOfBlock;
}

/// All bits where a unit is one of the 26 letters. One signed comparison serves, for the addition
/// takes the first letter to the least number.
template <LetterCase To>
__m128i IsChanging(__m128i block)
{
    __m128i const fromLeast = _mm_add_epi16(block, Repeat(0x8000 - kFirstLetter<To>));
    return _mm_cmplt_epi16(fromLeast, Repeat(0x8000 + 26));
}

template <LetterCase To>
__attribute__((target("avx2"))) __m256i IsChangingWide(__m256i block)
{
    __m256i const fromLeast = _mm256_add_epi16(block, RepeatWide(0x8000 - kFirstLetter<To>));
    return _mm256_cmpgt_epi16(RepeatWide(0x8000 + 26), fromLeast);
}

/// The mapping in ASCII; a unit outside is kept.
template <LetterCase To>
__m128i MapAscii(__m128i block)
{
    return _mm_xor_si128(block, _mm_and_si128(IsChanging<To>(block), Repeat(kCaseBit)));
}

template <LetterCase To>
__attribute__((target("avx2"))) __m256i MapAsciiWide(__m256i block)
{
    __m256i const change = _mm256_and_si256(IsChangingWide<To>(block), RepeatWide(kCaseBit));
    return _mm256_xor_si256(block, change);
}

/// Writes the block in either case; what is not ASCII is kept and gets its mapping later.
template <LetterCase To>
__attribute__((target("avx2"), always_inline)) inline bool MapWideBlock(char16_t const* text,
                                                                        char16_t* out)
{
    __m256i const block = LoadWide(text);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), MapAsciiWide<To>(block));
    return _mm256_testz_si256(block, RepeatWide(0xFF80)) != 0;
}

/// Calls `step` for the indices of a block, written out one after the other.
template <class Step>
void ForBlock(Step const& step)
{
    step(0), step(1), step(2), step(3), step(4), step(5), step(6), step(7);
}

/// Maps a block by the table. False, with anything in `out`, if an entry is missing.
template <LetterCase To>
bool MapBlock(char16_t const* text, char16_t* out)
{
    std::uint32_t known = kKnown;
    ForBlock([&](int i) {
        std::uint32_t const entry = CaseTables::TableFor<To>()[text[i]];
        out[i] = static_cast<char16_t>(entry);
        known &= entry;
    });
    return known != 0;
}

/// Whether the table has entries for the whole block and they change nothing.
template <LetterCase To>
bool IsBlockUnchanged(char16_t const* text)
{
    std::uint32_t differing = 0;
    ForBlock([&](int i) { differing |= CaseTables::TableFor<To>()[text[i]] ^ (kKnown | text[i]); });
    return differing == 0;
}

/// Whether the table has entries for the whole of both blocks and they are the same.
bool AreBlocksEqual(char16_t const* left, char16_t const* right)
{
    std::uint32_t known = kKnown;
    std::uint32_t differing = 0;
    ForBlock([&](int i) {
        std::uint32_t const one = CaseTables::s_fold[left[i]];
        std::uint32_t const other = CaseTables::s_fold[right[i]];
        known &= one;
        differing |= one ^ other;
    });
    return known != 0 && differing == 0;
}

/// As `FindChange`, for what follows the first `at` units. Kept out of line: ASCII does not come
/// here.
template <LetterCase To>
__attribute__((noinline)) int FindChangeFrom(char16_t const* text, int at, int length)
{
    while (at + kBlock <= length) {
        int const end = at + kBlock;
        at = IsBlockUnchanged<To>(text + at)
                 ? end
                 : CaseTables::UnchangedUntil<To>(text, at, end, length);
        if (at < end) {
            return at;
        }
    }
    return CaseTables::UnchangedUntil<To>(text, at, length, length);
}

template <LetterCase To>
int FindChangeTo(char16_t const* text, int length)
{
    int at = 0;
    for (; at + kBlock <= length; at += kBlock) {
        __m128i const block = Load(text + at);
        if (!IsAscii(block)) {
            break;
        }
        unsigned const mask = MaskOf(IsChanging<To>(block));
        if (mask != 0) {
            return at + UnitScan::FirstOf(mask);
        }
    }
    return FindChangeFrom<To>(text, at, length);
}

/// Maps what follows the first `at` units. Kept out of line: ASCII seldom comes here.
template <LetterCase To>
__attribute__((noinline)) int MapFrom(char16_t const* text, int at, int length, char16_t* out)
{
    while (at + kBlock <= length) {
        __m128i const block = Load(text + at);
        int const end = at + kBlock;
        if (IsAscii(block)) {
            Store(out + at, MapAscii<To>(block));
            at = end;
        } else if (MapBlock<To>(text + at, out + at)) {
            at = end;
        } else {
            at = CaseTables::MapUntil<To>(text, at, end, length, out);
            if (at < end) {
                return at;
            }
        }
    }
    return CaseTables::MapUntil<To>(text, at, length, length, out);
}

/// Maps wide blocks as long as they are ASCII, the last one overlapping the one before, and the
/// rest in the other way. Requires: `length` >= kWideBlock.
template <LetterCase To>
__attribute__((target("avx2"))) int MapWide(char16_t const* text, int length, char16_t* out)
{
    int at = 0;
    while (at + kWideBlock <= length) {
        if (!MapWideBlock<To>(text + at, out + at)) {
            return MapFrom<To>(text, at, length, out);
        }
        at += kWideBlock;
    }
    int const last = length - kWideBlock;
    return MapWideBlock<To>(text + last, out + last) ? length : MapFrom<To>(text, at, length, out);
}

template <LetterCase To>
int MapTo(char16_t const* text, int length, char16_t* out)
{
    bool const isWide = length >= kWideBlock && UnitScan::HasWideBlocks();
    return isWide ? MapWide<To>(text, length, out) : MapFrom<To>(text, 0, length, out);
}

/// The positions of a block whose units are equal, or equal ASCII letters but for their case.
unsigned EqualInAscii(__m128i left, __m128i right)
{
    return MaskOf(
        _mm_cmpeq_epi16(MapAscii<LetterCase::Lower>(left), MapAscii<LetterCase::Lower>(right)));
}

__attribute__((target("avx2"), always_inline)) inline bool IsWideBlockEqual(char16_t const* left,
                                                                            char16_t const* right)
{
    __m256i const one = MapAsciiWide<LetterCase::Lower>(LoadWide(left));
    __m256i const other = MapAsciiWide<LetterCase::Lower>(LoadWide(right));
    return UnitScan::WideMaskOf(_mm256_cmpeq_epi16(one, other)) == ~0U;
}

/// Compares wide blocks as long as they are equal in ASCII, the last one overlapping the one
/// before; returns where the rest begins. Requires: `length` >= kWideBlock.
__attribute__((target("avx2"))) int EqualWideBlocks(char16_t const* left, char16_t const* right,
                                                    int length)
{
    int at = 0;
    while (at + kWideBlock <= length) {
        if (!IsWideBlockEqual(left + at, right + at)) {
            return at;
        }
        at += kWideBlock;
    }
    int const last = length - kWideBlock;
    return IsWideBlockEqual(left + last, right + last) ? length : at;
}

int MismatchFoldedUntil(char16_t const* left, char16_t const* right, int at, int end)
{
    while (at < end && FoldAt(left, at) == FoldAt(right, at)) {
        ++at;
    }
    return at;
}

/// Calls `ask` with the width of the narrowest filter for so many units, as a constant.
template <class Ask>
int WithWidth(int count, Ask const& ask)
{
    switch (count) {
    case 1:
        return ask(std::integral_constant<int, 1>());
    case 2:
        return ask(std::integral_constant<int, 2>());
    case 3:
    case 4:
        return ask(std::integral_constant<int, 4>());
    default:
        return ask(std::integral_constant<int, Variants::kMost>());
    }
}

/// Calls `ask` with a filter for the units that fold as `unit` does.
template <class Ask>
int WithVariants(char16_t const* text, char16_t unit, Ask const& ask)
{
    Variants const variants = CaseTables::VariantsOf(unit);
    return WithWidth(variants.count, [&](auto width) {
        return ask(UnitScan::OneOf<decltype(width)::value>(text, variants.units));
    });
}

/// Candidates have units that fold like the needle's first unit and like its last one; of a pair at
/// the end only the first unit is looked at, for what the second one folds from depends on it.
struct FoldedUnits
{
    static char32_t At(char16_t const* text, int index) { return FoldAt(text, index); }

    static int Equal(char16_t const* text, int at, char16_t const* needle, int length)
    {
        return SurrogatePairs::IsInside(text, at) ? 0 : MismatchFolded(text + at, needle, length);
    }

    template <class Ask>
    static int WithScanner(char16_t const* text, char16_t const* needle, int needleLength,
                           Ask const& ask)
    {
        bool const endsInPair = SurrogatePairs::IsInside(needle, needleLength - 1);
        int const last = needleLength - (endsInPair ? 2 : 1);
        Variants const atFirst = CaseTables::VariantsOf(needle[0]);
        Variants const atLast = CaseTables::VariantsOf(needle[last]);
        return WithWidth(std::max(atFirst.count, atLast.count), [&](auto width) {
            using Filter = UnitScan::OneOf<decltype(width)::value>;
            Filter const first(text, atFirst.units);
            return ask(UnitScan::Scanner(UnitScan::Both(first, Filter(text + last, atLast.units))));
        });
    }
};

} // namespace

int FindChange(LetterCase to, char16_t const* text, int length) noexcept
{
    return to == LetterCase::Lower ? FindChangeTo<LetterCase::Lower>(text, length)
                                   : FindChangeTo<LetterCase::Upper>(text, length);
}

int Map(LetterCase to, char16_t const* text, int length, char16_t* out) noexcept
{
    return to == LetterCase::Lower ? MapTo<LetterCase::Lower>(text, length, out)
                                   : MapTo<LetterCase::Upper>(text, length, out);
}

int MismatchFolded(char16_t const* left, char16_t const* right, int length) noexcept
{
    int at = length >= kWideBlock && UnitScan::HasWideBlocks()
                 ? EqualWideBlocks(left, right, length)
                 : 0;
    for (; at + kBlock <= length; at += kBlock) {
        unsigned const equal = EqualInAscii(Load(left + at), Load(right + at));
        if (equal != kAllOfBlock && !AreBlocksEqual(left + at, right + at)) {
            int const end = at + kBlock;
            int const found = MismatchFoldedUntil(left, right, at, end);
            if (found < end) {
                return found;
            }
        }
    }
    return MismatchFoldedUntil(left, right, at, length);
}

int FindUnitFolded(char16_t const* text, int length, char16_t unit)
{
    return WithVariants(text, unit, [length](auto const& filter) {
        return UnitScan::Forwards(filter, length, kStop);
    });
}

int FindLastUnitFolded(char16_t const* text, int length, char16_t unit)
{
    return WithVariants(text, unit, [length](auto const& filter) {
        return UnitScan::Backwards(filter, length, kStop);
    });
}

int CountUnitFolded(char16_t const* text, int length, char16_t unit)
{
    int count = 0;
    WithVariants(text, unit, [length, &count](auto const& filter) {
        return UnitScan::Forwards(filter, length, [&count](int) {
            ++count;
            return false;
        });
    });
    return count;
}

int FindTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 1) {
        return FindUnitFolded(text, length, needle[0]);
    }
    return TextSearch::FindFirst<FoldedUnits>(text, length, needle, needleLength);
}

int FindLastTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 1) {
        return FindLastUnitFolded(text, length, needle[0]);
    }
    return TextSearch::FindLast<FoldedUnits>(text, length, needle, needleLength);
}

int CountTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 1) {
        return CountUnitFolded(text, length, needle[0]);
    }
    return TextSearch::Count<FoldedUnits>(text, length, needle, needleLength);
}

} // namespace CaseMapping
