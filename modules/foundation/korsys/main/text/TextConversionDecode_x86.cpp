#include "korsys/main/text/TextConversionAvx2_p.h"
#include "korsys/main/text/TextConversionScalar_p.h"
#include "korsys/main/text/TextConversionX86_p.h"

#include <cstring>

// UTF-8 to UTF-16 without a loop over characters. Each byte of a block is looked at together with
// the three before it, as if it were the last of its character: that gives a unit at every byte.
// Then the units of bytes that do end a character are pushed together. For a character of four
// bytes, the third gives the first unit of the pair. A block may therefore begin and end anywhere
// in a character, and all blocks are as long.

namespace TextConversion {
namespace {

constexpr std::size_t kLookBehind = 3; ///< What a block reads before and behind itself.
constexpr std::size_t kLookAhead = 1;

// What is wrong with two neighbouring bytes, one bit for each kind. A pair of trailing bytes is not
// wrong in itself: it must stand where, and only where, a longer character asks for it.
constexpr unsigned kTooShort = 1U << 0;
constexpr unsigned kTooLong = 1U << 1;
constexpr unsigned kOverlong2 = 1U << 2;
constexpr unsigned kOverlong3 = 1U << 3;
constexpr unsigned kSurrogate = 1U << 4;
constexpr unsigned kAboveRange = 1U << 5;
constexpr unsigned kOverlong4OrFarAbove = 1U
                                          << 6; ///< Told apart by the low half of the first byte.
constexpr unsigned kTwoTrailing = 1U << 7;

struct PairRule
{
    unsigned kind;
    unsigned firstFrom, firstTo;
    unsigned secondFrom, secondTo;
};

constexpr PairRule kPairRules[] = {
    {kTooShort, 0xC0, 0xFF, 0x00, 0x7F},
    {kTooShort, 0xC0, 0xFF, 0xC0, 0xFF},
    {kTooLong, 0x00, 0x7F, 0x80, 0xBF},
    {kOverlong2, 0xC0, 0xC1, 0x80, 0xBF},
    {kOverlong3, 0xE0, 0xE0, 0x80, 0x9F},
    {kSurrogate, 0xED, 0xED, 0xA0, 0xBF},
    {kAboveRange, 0xF4, 0xFF, 0x90, 0xBF},
    {kOverlong4OrFarAbove, 0xF0, 0xF0, 0x80, 0x8F},
    {kOverlong4OrFarAbove, 0xF5, 0xFF, 0x80, 0x8F},
    {kTwoTrailing, 0x80, 0xBF, 0x80, 0xBF},
};

/// For each half of a byte, the kinds that a pair with it may be of. A pair is of the kinds that
/// all three tables name; that is exact as each kind is a product of sets of halves.
struct PairTables
{
    Shuffle firstHigh;
    Shuffle firstLow;
    Shuffle secondHigh;
};

constexpr PairTables MakePairTables()
{
    PairTables tables{};
    for (PairRule const& rule : kPairRules) {
        auto const kind = static_cast<std::uint8_t>(rule.kind);
        for (unsigned byte = rule.firstFrom; byte <= rule.firstTo; ++byte) {
            tables.firstHigh.from[byte >> 4] |= kind;
            tables.firstLow.from[byte & 15] |= kind;
        }
        for (unsigned byte = rule.secondFrom; byte <= rule.secondTo; ++byte) {
            tables.secondHigh.from[byte >> 4] |= kind;
        }
    }
    return tables;
}

/// For each set of units among eight, the shuffle that moves these to the front.
constexpr std::array<Shuffle, 256> MakeUnitPacking()
{
    std::array<Shuffle, 256> packing{};
    for (unsigned set = 0; set < 256; ++set) {
        unsigned count = 0;
        for (unsigned unit = 0; unit < 8; ++unit) {
            if ((set >> unit & 1) != 0) {
                packing[set].from[2 * count] = static_cast<std::uint8_t>(2 * unit);
                packing[set].from[2 * count + 1] = static_cast<std::uint8_t>(2 * unit + 1);
                ++count;
            }
        }
    }
    return packing;
}

alignas(16) constexpr PairTables kPairTables = MakePairTables();
alignas(16) constexpr std::array<Shuffle, 256> kUnitPacking = MakeUnitPacking();

/// A block of bytes, each with those before it.
struct ByteBlock
{
    __m256i byte;
    __m256i before1;
    __m256i before2;
    __m256i before3;
};

KOR_AVX2_INLINE ByteBlock LoadBytes(char const* from)
{
    return {Load(from), Load(from - 1), Load(from - 2), Load(from - 3)};
}

KOR_AVX2_INLINE __m256i Halves(__m256i bytes)
{
    return _mm256_and_si256(bytes, Bytes(0x0F));
}

KOR_AVX2_INLINE __m256i LookUp(Shuffle const& table, __m256i halves)
{
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(LoadHalf(table.from.data())), halves);
}

/// Sets the top bit of each byte that is at least `least`, which is above 80. The others are junk.
KOR_AVX2_INLINE __m256i AtLeast(__m256i bytes, int least)
{
    return _mm256_subs_epu8(bytes, Bytes(least - 0x80));
}

/// Whether no byte shows an error. One at the very end of the text shows only in the next block.
KOR_AVX2_INLINE bool IsWellFormed(ByteBlock const& block)
{
    __m256i const kinds = _mm256_and_si256(
        _mm256_and_si256(LookUp(kPairTables.firstHigh, Halves(_mm256_srli_epi16(block.before1, 4))),
                         LookUp(kPairTables.firstLow, Halves(block.before1))),
        LookUp(kPairTables.secondHigh, Halves(_mm256_srli_epi16(block.byte, 4))));
    __m256i const thirdOrFourth =
        _mm256_or_si256(AtLeast(block.before2, 0xE0), AtLeast(block.before3, 0xF0));
    __m256i const asked = _mm256_and_si256(thirdOrFourth, Bytes(kTwoTrailing));
    __m256i const errors = _mm256_xor_si256(kinds, asked);
    return _mm256_testz_si256(errors, errors) != 0;
}

/// The units that end at each byte, their halves apart, and which of them are to be kept.
struct UnitBlock
{
    __m256i low;
    __m256i high;
    __m256i keep; ///< Only the top bit of each byte counts.
};

KOR_AVX2_INLINE UnitBlock MakeUnits(ByteBlock const& block, __m256i after)
{
    __m256i const zero = _mm256_setzero_si256();
    __m256i const isAbove7F = _mm256_cmpgt_epi8(zero, block.byte);
    __m256i const isTrailingBefore = _mm256_cmpgt_epi8(Bytes(-64), block.before1);
    // byte: 10cccccc or 0ccccccc; before1: 10bbbbbb or 110bbbbb; before2: 1110aaaa.
    __m256i const top = _mm256_and_si256(isAbove7F, Bytes(0xC0));
    __m256i const low = _mm256_or_si256(_mm256_andnot_si256(top, block.byte),
                                        _mm256_and_si256(top, _mm256_slli_epi16(block.before1, 6)));
    __m256i const middle = Halves(_mm256_srli_epi16(block.before1, 2));
    __m256i const upper =
        _mm256_and_si256(isTrailingBefore, _mm256_slli_epi16(Halves(block.before2), 4));
    __m256i const high = _mm256_and_si256(isAbove7F, _mm256_or_si256(middle, upper));
    return {low, high, _mm256_cmpgt_epi8(after, Bytes(-65))};
}

/// Puts surrogate pairs where characters of four bytes are: `third` and `fourth` have the top bit
/// of each third and fourth byte.
KOR_AVX2_INLINE void PutPairs(ByteBlock const& block, __m256i third, __m256i fourth,
                              UnitBlock& units)
{
    // before2: 11110aaa; before1: 10bbbbbb; byte: 10ccdddd. The first unit is D800 + aaabbbbbbcc
    // less 40, so D7C0 + aaabbbbbbcc: a carry goes up when bbbbbb is 10 or more.
    __m256i const lowBits =
        _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(block.before1, 2), Bytes(0xFC)),
                        _mm256_and_si256(_mm256_srli_epi16(block.byte, 4), Bytes(0x03)));
    __m256i const carry = _mm256_cmpgt_epi8(block.before1, Bytes(0x8F));
    __m256i const highBits = _mm256_and_si256(block.before2, Bytes(0x07));
    __m256i const firstHigh = _mm256_sub_epi8(_mm256_add_epi8(highBits, Bytes(0xD7)), carry);
    units.low = _mm256_blendv_epi8(units.low, _mm256_add_epi8(lowBits, Bytes(0xC0)), third);
    units.high = _mm256_blendv_epi8(units.high, firstHigh, third);

    __m256i const secondHigh = _mm256_or_si256(
        _mm256_and_si256(_mm256_srli_epi16(block.before1, 2), Bytes(0x03)), Bytes(0xDC));
    units.high = _mm256_blendv_epi8(units.high, secondHigh, fourth);
    units.keep = _mm256_or_si256(units.keep, third);
}

/// Writes the units that are kept and returns their number; touches 32 units of `to`.
KOR_AVX2_INLINE std::size_t StoreKept(UnitBlock const& units, char16_t* to)
{
    auto const keep = static_cast<unsigned>(_mm256_movemask_epi8(units.keep));
    Shuffle const* const packing = kUnitPacking.data();
    // Unpacking works within each half of a register: bytes 0..7 and 16..23, 8..15 and 24..31.
    __m256i const even =
        _mm256_shuffle_epi8(_mm256_unpacklo_epi8(units.low, units.high),
                            LoadTwoHalves(&packing[keep & 0xFF], &packing[keep >> 16 & 0xFF]));
    __m256i const odd =
        _mm256_shuffle_epi8(_mm256_unpackhi_epi8(units.low, units.high),
                            LoadTwoHalves(&packing[keep >> 8 & 0xFF], &packing[keep >> 24]));
    StoreHalf(to, _mm256_castsi256_si128(even));
    StoreHalf(to + _mm_popcnt_u32(keep & 0xFF), _mm256_castsi256_si128(odd));
    StoreHalf(to + _mm_popcnt_u32(keep & 0xFFFF), _mm256_extracti128_si256(even, 1));
    StoreHalf(to + _mm_popcnt_u32(keep & 0xFFFFFF), _mm256_extracti128_si256(odd, 1));
    return static_cast<std::size_t>(_mm_popcnt_u32(keep));
}

/// Converts 32 bytes and returns the end of their units, null for ill-formed bytes; touches 32
/// units.
KOR_AVX2_INLINE char16_t* DecodeBlock(char const* from, char16_t* to)
{
    ByteBlock const block = LoadBytes(from);
    if (_mm256_movemask_epi8(_mm256_or_si256(block.byte, block.before1)) == 0) {
        WidenBlock(from, to);
        return to + kBlock;
    }
    if (!IsWellFormed(block)) {
        return nullptr;
    }
    UnitBlock units = MakeUnits(block, Load(from + kLookAhead));
    __m256i const third = AtLeast(block.before2, 0xF0);
    __m256i const fourth = AtLeast(block.before3, 0xF0);
    if (_mm256_movemask_epi8(_mm256_or_si256(third, fourth)) != 0) {
        PutPairs(block, third, fourth, units);
    }
    return to + StoreKept(units, to);
}

/// Converts the last bytes of a text, which make `units`, by way of a copy with zeros behind.
/// Requires: there are kLookBehind bytes before `from`, and units is at most kBlock.
KOR_AVX2 bool DecodeTail(char const* from, std::size_t n, char16_t* to, std::size_t units)
{
    constexpr std::size_t kMostBytes = 3 * kBlock + kLookBehind; // the first may end a character
    constexpr std::size_t kBlocks = kMostBytes / kBlock + 1;     // with a zero after the last byte
    if (n > kMostBytes) {
        return false; // only ill-formed text has so few units
    }
    char bytes[kLookBehind + kBlocks * kBlock + kLookAhead] = {};
    std::memcpy(bytes, from - kLookBehind, kLookBehind + n);
    char16_t buffer[(kBlocks + 1) * kBlock];
    char16_t* end = buffer;
    for (std::size_t i = 0; i <= n; i += kBlock) {
        end = DecodeBlock(bytes + kLookBehind + i, end);
        if (end == nullptr) {
            return false;
        }
    }
    std::memcpy(to, buffer, units * sizeof(char16_t));
    return true;
}

/// Converts what follows at least kLookBehind bytes of a text of at least kBlock.
KOR_AVX2 bool DecodeFrom(char const* from, std::size_t n, char16_t* to, std::size_t units)
{
    char const* const end = from + n;
    char16_t* const toEnd = to + units;
    while (end - from >= static_cast<std::ptrdiff_t>(kBlock + kLookAhead) &&
           toEnd - to >= static_cast<std::ptrdiff_t>(kBlock)) {
        to = DecodeBlock(from, to);
        if (to == nullptr) {
            return false;
        }
        from += kBlock;
    }
    auto const left = static_cast<std::size_t>(end - from);
    if (left < kBlock && _mm256_movemask_epi8(Load(end - kBlock)) == 0) {
        WidenBlock(end - kBlock, toEnd - kBlock); // what is written again is the same
        return true;
    }
    auto const room = static_cast<std::size_t>(toEnd - to);
    bool const startsCharacter = static_cast<unsigned char>(from[-1]) < 0x80;
    if (startsCharacter && left < kBlockUnits) {
        return kScalarKernels.decodeUtf8(from, left, to, room);
    }
    return DecodeTail(from, left, to, room);
}

/// The bytes before the first four blocks that are not all ASCII.
KOR_AVX2 std::size_t AsciiPrefix(char const* from, std::size_t n)
{
    std::size_t i = 0;
    for (; n - i >= 4 * kBlock; i += 4 * kBlock) {
        __m256i const first = _mm256_or_si256(Load(from + i), Load(from + i + kBlock));
        __m256i const second =
            _mm256_or_si256(Load(from + i + 2 * kBlock), Load(from + i + 3 * kBlock));
        if (_mm256_movemask_epi8(_mm256_or_si256(first, second)) != 0) {
            break;
        }
    }
    return i;
}

/// The units that characters beginning at these bytes make, in four sums.
KOR_AVX2_INLINE __m256i CountUnits(__m256i bytes)
{
    // A trailing byte is one of -128..-65; a byte of F0 and above is one that a saturated
    // subtraction of EF leaves something of.
    __m256i const begins = _mm256_cmpgt_epi8(bytes, Bytes(-65));
    __m256i const above = _mm256_subs_epu8(bytes, Bytes(0xEF));
    __m256i const units = _mm256_sub_epi8(_mm256_min_epu8(above, Bytes(1)), begins);
    return _mm256_sad_epu8(units, _mm256_setzero_si256());
}

} // namespace

KOR_AVX2 std::size_t CountUtf16Avx2(char const* from, std::size_t n)
{
    if (n < kBlock) {
        return kSse2Kernels.countUtf16(from, n);
    }
    __m256i sum = _mm256_setzero_si256();
    __m256i secondSum = sum;
    std::size_t const ascii = AsciiPrefix(from, n);
    std::size_t i = ascii;
    for (; n - i >= 2 * kBlock; i += 2 * kBlock) {
        sum = _mm256_add_epi64(sum, CountUnits(Load(from + i)));
        secondSum = _mm256_add_epi64(secondSum, CountUnits(Load(from + i + kBlock)));
    }
    if (n - i >= kBlock) {
        sum = _mm256_add_epi64(sum, CountUnits(Load(from + i)));
        i += kBlock;
    }
    // What was counted of the last block becomes trailing bytes, which do not count.
    __m256i const counted = _mm256_cmpgt_epi8(Bytes(static_cast<int>(kBlock - (n - i))), Places());
    __m256i const last = _mm256_blendv_epi8(Load(from + n - kBlock), Bytes(0x80), counted);
    sum = _mm256_add_epi64(sum, CountUnits(last));
    return ascii + SumOf(_mm256_add_epi64(sum, secondSum));
}

KOR_AVX2 bool DecodeAsciiAvx2(char const* from, std::size_t n, char16_t* to)
{
    if (n < kBlock) {
        return kSse2Kernels.decodeAscii(from, n, to);
    }
    __m256i seen = _mm256_or_si256(Load(from), Load(from + n - kBlock));
    WidenBlock(from, to);
    WidenBlock(from + n - kBlock, to + n - kBlock);
    for (std::size_t i = UnitsToAlignment(to); i + kBlock < n; i += kBlock) {
        seen = _mm256_or_si256(seen, Load(from + i));
        WidenBlock(from + i, to + i);
    }
    return _mm256_movemask_epi8(seen) == 0;
}

KOR_AVX2 bool DecodeUtf8Avx2(char const* from, std::size_t n, char16_t* to, std::size_t units)
{
    if (units == n) {
        return DecodeAsciiAvx2(from, n, to); // only ASCII has so many units
    }
    if (n < kBlock) {
        return kScalarKernels.decodeUtf8(from, n, to, units);
    }
    char const* const end = from + n;
    char16_t* const toEnd = to + units;
    char const* next = from;
    while (next < from + kLookBehind) {
        char32_t const taken = TakeUtf8(next, end);
        if (taken == kIllFormed) {
            return false;
        }
        to = PutUtf16(taken, to);
    }
    return DecodeFrom(next, static_cast<std::size_t>(end - next), to,
                      static_cast<std::size_t>(toEnd - to));
}

} // namespace TextConversion
