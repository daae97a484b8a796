#include "korsys/main/text/TextConversionAvx2_p.h"
#include "korsys/main/text/TextConversionScalar_p.h"
#include "korsys/main/text/TextConversionX86_p.h"

#include <cstring>

// UTF-16 to UTF-8 without a loop over characters. Each unit of a block becomes as many bytes as
// the largest of the block needs, then the bytes that a smaller one does not need are squeezed out.
// Each half of a pair gives two of the four bytes of its character, with a look at the unit before
// or behind it, so a block may begin and end in the middle of a pair.

namespace TextConversion {
namespace {

constexpr std::size_t kLookBehind = 1; ///< Units that a block reads before and behind itself.
constexpr std::size_t kLookAhead = 1;
constexpr std::size_t kStep = 2 * kBlockUnits;
constexpr std::size_t kTouchedBytes = 128; ///< What a step may write, junk included.

/// For each set of units among eight, the shuffle that takes both bytes of these and the first
/// byte of the others.
constexpr std::array<Shuffle, 256> MakeTwoBytePacking()
{
    std::array<Shuffle, 256> packing{};
    for (unsigned set = 0; set < 256; ++set) {
        unsigned count = 0;
        for (unsigned unit = 0; unit < 8; ++unit) {
            packing[set].from[count++] = static_cast<std::uint8_t>(2 * unit);
            if ((set >> unit & 1) != 0) {
                packing[set].from[count++] = static_cast<std::uint8_t>(2 * unit + 1);
            }
        }
    }
    return packing;
}

/// For four units in four bytes each, the shuffle that takes the last byte of each, and one more
/// byte before it for each of two bits that the set has for the unit.
constexpr std::array<Shuffle, 256> MakeThreeBytePacking()
{
    std::array<Shuffle, 256> packing{};
    for (unsigned set = 0; set < 256; ++set) {
        unsigned count = 0;
        for (unsigned unit = 0; unit < 4; ++unit) {
            unsigned const bits = set >> (2 * unit) & 3;
            unsigned const more = (bits & 1) + (bits >> 1);
            for (unsigned byte = 3 - more; byte <= 3; ++byte) {
                packing[set].from[count++] = static_cast<std::uint8_t>(4 * unit + byte);
            }
        }
    }
    return packing;
}

alignas(16) constexpr std::array<Shuffle, 256> kTwoBytePacking = MakeTwoBytePacking();
alignas(16) constexpr std::array<Shuffle, 256> kThreeBytePacking = MakeThreeBytePacking();

/// Which units have none of `bits`.
KOR_AVX2_INLINE __m256i HaveNone(__m256i units, int bits)
{
    return _mm256_cmpeq_epi16(_mm256_and_si256(units, Units(bits)), _mm256_setzero_si256());
}

KOR_AVX2_INLINE __m256i Choose(__m256i mask, __m256i ifSet, __m256i otherwise)
{
    return _mm256_blendv_epi8(otherwise, ifSet, mask);
}

/// Units below 800: writes up to 32 bytes and returns their number.
KOR_AVX2_INLINE std::size_t StoreTwoByte(__m256i units, char* to)
{
    // 00000aaa aabbbbbb becomes 10bbbbbb 110aaaaa, the byte to be written first being the low one.
    __m256i const isAscii = HaveNone(units, 0xFF80);
    __m256i const last = _mm256_and_si256(_mm256_slli_epi16(units, 8), Units(0x3F00));
    __m256i const both =
        _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi16(units, 6), last), Units(0x80C0));
    __m256i const bytes = Choose(isAscii, units, both);
    __m256i const packed = _mm256_packs_epi16(isAscii, isAscii);
    unsigned const sets = ~static_cast<unsigned>(_mm256_movemask_epi8(packed));
    unsigned const low = sets & 0xFF;
    unsigned const high = sets >> 16 & 0xFF;
    __m256i const squeezed =
        _mm256_shuffle_epi8(bytes, LoadTwoHalves(&kTwoBytePacking[low], &kTwoBytePacking[high]));
    std::size_t const lowBytes = 8 + static_cast<std::size_t>(_mm_popcnt_u32(low));
    StoreHalf(to, _mm256_castsi256_si128(squeezed));
    StoreHalf(to + lowBytes, _mm256_extracti128_si256(squeezed, 1));
    return lowBytes + 8 + static_cast<std::size_t>(_mm_popcnt_u32(high));
}

/// Units with their up to three bytes, and how many of these count.
struct EncodedBlock
{
    __m256i first;      ///< The first of three bytes, in the high byte of each unit.
    __m256i lastTwo;    ///< The others; of two bytes the last two, of one the last.
    __m256i needsTwo;   ///< Which units take more than one byte,
    __m256i needsThree; ///< and which take three.
};

KOR_AVX2_INLINE EncodedBlock EncodeUnits(__m256i units)
{
    __m256i const ones = Units(-1);
    __m256i const isAscii = HaveNone(units, 0xFF80);
    __m256i const isBelow800 = HaveNone(units, 0xF800);
    __m256i const moved = _mm256_slli_epi16(units, 8);
    __m256i const last = _mm256_and_si256(moved, Units(0x3F00));
    __m256i const middle = _mm256_and_si256(_mm256_srli_epi16(units, 6), Units(0x003F));
    __m256i const marks =
        _mm256_or_si256(Units(0x8080), _mm256_and_si256(isBelow800, Units(0x0040)));
    __m256i const lastTwo = _mm256_or_si256(_mm256_or_si256(last, middle), marks);
    __m256i const first = _mm256_or_si256(
        _mm256_and_si256(_mm256_srli_epi16(units, 4), Units(0x0F00)), Units(0xE000));
    return {first, Choose(isAscii, moved, lastTwo), _mm256_xor_si256(isAscii, ones),
            _mm256_xor_si256(isBelow800, ones)};
}

/// Writes up to 48 bytes and returns their number.
KOR_AVX2_INLINE std::size_t StoreThreeByte(EncodedBlock const& block, char* to)
{
    __m256i const lowBytes = Units(0x00FF);
    auto const sets = static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_blendv_epi8(block.needsThree, block.needsTwo, lowBytes)));
    Shuffle const* const packing = kThreeBytePacking.data();
    // Unpacking works within each half of a register: units 0..3 and 8..11, 4..7 and 12..15.
    __m256i const even =
        _mm256_shuffle_epi8(_mm256_unpacklo_epi16(block.first, block.lastTwo),
                            LoadTwoHalves(&packing[sets & 0xFF], &packing[sets >> 16 & 0xFF]));
    __m256i const odd =
        _mm256_shuffle_epi8(_mm256_unpackhi_epi16(block.first, block.lastTwo),
                            LoadTwoHalves(&packing[sets >> 8 & 0xFF], &packing[sets >> 24]));
    StoreHalf(to, _mm256_castsi256_si128(even));
    StoreHalf(to + 4 + _mm_popcnt_u32(sets & 0xFF), _mm256_castsi256_si128(odd));
    StoreHalf(to + 8 + _mm_popcnt_u32(sets & 0xFFFF), _mm256_extracti128_si256(even, 1));
    StoreHalf(to + 12 + _mm_popcnt_u32(sets & 0xFFFFFF), _mm256_extracti128_si256(odd, 1));
    return 16 + static_cast<std::size_t>(_mm_popcnt_u32(sets));
}

/// Replaces what surrogates became; `from` is where the units were loaded.
KOR_AVX2_INLINE EncodedBlock EncodeSurrogates(char16_t const* from, __m256i units)
{
    __m256i const before = Load(from - kLookBehind);
    __m256i const pairFirst = PairFirsts(units, Load(from + kLookAhead));
    __m256i const pairSecond = PairFirsts(before, units);
    __m256i const paired = _mm256_or_si256(pairFirst, pairSecond);
    __m256i const isSurrogate =
        _mm256_cmpeq_epi16(_mm256_and_si256(units, Units(0xF800)), Units(0xD800));
    __m256i const unpaired = _mm256_andnot_si256(paired, isSurrogate);
    EncodedBlock block = EncodeUnits(Choose(unpaired, Units(0xFFFD), units));

    // aaaaaaaaaa + 40 makes bbbbbbbbbcc: 11110bbb 10bbbbbb, and cc goes into the third byte.
    __m256i const top = _mm256_add_epi16(_mm256_and_si256(units, Units(0x03FF)), Units(0x0040));
    __m256i const firstTwo =
        _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi16(top, 8),
                                        _mm256_and_si256(_mm256_slli_epi16(top, 6), Units(0x3F00))),
                        Units(0x80F0));
    __m256i const passed = _mm256_slli_epi16(_mm256_and_si256(before, Units(0x0003)), 4);
    __m256i const secondTwo =
        _mm256_or_si256(_mm256_and_si256(block.lastTwo, Units(0xFFCF)), passed);
    block.lastTwo = Choose(pairFirst, firstTwo, Choose(pairSecond, secondTwo, block.lastTwo));
    block.needsThree = _mm256_andnot_si256(paired, block.needsThree);
    return block;
}

/// Converts 16 units and returns the number of bytes; touches 64.
KOR_AVX2_INLINE std::size_t EncodeBlock(char16_t const* from, char* to)
{
    __m256i const units = Load(from);
    if (_mm256_testz_si256(units, Units(0xF800)) != 0) {
        return StoreTwoByte(units, to);
    }
    __m256i const isSurrogate =
        _mm256_cmpeq_epi16(_mm256_and_si256(units, Units(0xF800)), Units(0xD800));
    if (_mm256_testz_si256(isSurrogate, isSurrogate) != 0) {
        return StoreThreeByte(EncodeUnits(units), to);
    }
    return StoreThreeByte(EncodeSurrogates(from, units), to);
}

/// Converts 32 units if all are ASCII; returns whether they are.
KOR_AVX2_INLINE bool EncodeAscii(char16_t const* from, char* to)
{
    __m256i const first = Load(from);
    __m256i const second = Load(from + kBlockUnits);
    if (_mm256_testz_si256(_mm256_or_si256(first, second), Units(0xFF80)) == 0) {
        return false;
    }
    Store(to, PackBytes(first, second));
    return true;
}

/// Converts the last units of a text by way of a copy with zeros behind. Requires: there is a unit
/// before `from`, and n is below kTouchedBytes.
KOR_AVX2 std::size_t EncodeTail(char16_t const* from, std::size_t n, char* to)
{
    constexpr std::size_t kMostUnits = kTouchedBytes;
    char16_t units[kLookBehind + kMostUnits + kLookAhead] = {};
    std::memcpy(units, from - kLookBehind, (kLookBehind + n) * sizeof(char16_t));
    char buffer[3 * kMostUnits + kTouchedBytes];
    std::size_t bytes = 0;
    std::size_t i = 0;
    for (; i < n; i += kBlockUnits) {
        bytes += EncodeBlock(units + kLookBehind + i, buffer + bytes);
    }
    bytes -= i - n; // the zeros became bytes too
    std::memcpy(to, buffer, bytes);
    return bytes;
}

/// Converts what follows at least one unit of a text of at least kStep.
KOR_AVX2 std::size_t EncodeFrom(char16_t const* from, std::size_t n, char* to, std::size_t room)
{
    char16_t const* const end = from + n;
    char* const start = to;
    char* const toEnd = to + room;
    while (end - from > static_cast<std::ptrdiff_t>(kStep)) {
        if (EncodeAscii(from, to)) {
            to += kStep;
        } else if (toEnd - to >= static_cast<std::ptrdiff_t>(kTouchedBytes)) {
            to += EncodeBlock(from, to);
            to += EncodeBlock(from + kBlockUnits, to);
        } else {
            break;
        }
        from += kStep;
    }
    auto const left = static_cast<std::size_t>(end - from);
    if (left <= kStep && EncodeAscii(end - kStep, to + left - kStep)) {
        to += left; // what was written again is the same
    } else if (left < kBlockUnits && !IsHighSurrogate(from[-1])) {
        to += kScalarKernels.encodeUtf8(from, left, to, left);
    } else {
        to += EncodeTail(from, left, to);
    }
    return static_cast<std::size_t>(to - start);
}

/// The bytes that units take beyond one each, in whole blocks. A pair counts as one byte and three:
/// so its second half may be counted without the first. Requires: a unit follows the last block.
KOR_AVX2 std::size_t CountMoreBytes(char16_t const* from, std::size_t n)
{
    __m256i const zero = _mm256_setzero_si256();
    __m256i sum = zero;
    for (std::size_t i = 0; i < n; i += kBlockUnits) {
        __m256i const units = Load(from + i);
        __m256i const pairs = PairFirsts(units, Load(from + i + kLookAhead));
        __m256i const spared =
            _mm256_add_epi16(_mm256_add_epi16(HaveNone(units, 0xFF80), HaveNone(units, 0xF800)),
                             _mm256_add_epi16(pairs, pairs));
        __m256i const more = _mm256_add_epi16(spared, Units(2));
        sum = _mm256_add_epi64(sum, _mm256_sad_epu8(more, zero));
    }
    return SumOf(sum);
}

} // namespace

KOR_AVX2 std::size_t CountUtf8Avx2(char16_t const* from, std::size_t n)
{
    std::size_t i = 0;
    while (n - i > kBlockUnits && _mm256_testz_si256(Load(from + i), Units(0xFF80)) != 0) {
        i += kBlockUnits;
    }
    std::size_t const wholeBlocks = n == i ? 0 : (n - i - 1) / kBlockUnits * kBlockUnits;
    std::size_t const more = CountMoreBytes(from + i, wholeBlocks);
    i += wholeBlocks;
    return i + more + kScalarKernels.countUtf8(from + i, n - i);
}

KOR_AVX2 std::size_t EncodeUtf8Avx2(char16_t const* from, std::size_t n, char* to, std::size_t room)
{
    if (n < kStep) {
        return kSse2Kernels.encodeUtf8(from, n, to, room);
    }
    char16_t const* next = from;
    char* const second = PutUtf8(Repaired(TakeUtf16(next, from + n)), to);
    auto const bytes = static_cast<std::size_t>(second - to);
    return bytes +
           EncodeFrom(next, static_cast<std::size_t>(from + n - next), second, room - bytes);
}

} // namespace TextConversion
