#include "korsys/main/text/TextConversionScalar_p.h"
#include "korsys/main/text/TextConversionX86_p.h"
#include "korsys/main/text/TextConversion_p.h"

#include <cstdint>
#include <cstring>

#include <emmintrin.h>

// ASCII goes in blocks, the rest one character at a time. Every block lies inside its text, except
// in `Length`.

namespace TextConversion {
namespace {

constexpr std::size_t kBlock = 16; ///< Bytes in a register.
constexpr std::size_t kBlockUnits = 8;

__m128i Load(void const* from)
{
    return _mm_loadu_si128(static_cast<__m128i const*>(from));
}

void Store(void* to, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

template <class Word>
Word LoadWord(void const* from)
{
    Word word;
    std::memcpy(&word, from, sizeof(word));
    return word;
}

template <class Word>
void StoreWord(void* to, Word word)
{
    std::memcpy(to, &word, sizeof(word));
}

/// Fewer than 16 bytes, zeros behind them.
__m128i LoadPart(char const* from, std::size_t n)
{
    if (n > 8) {
        auto const last = LoadWord<std::uint64_t>(from + n - 8) >> (8 * (16 - n));
        return _mm_set_epi64x(static_cast<long long>(last), LoadWord<long long>(from));
    }
    std::uint64_t word = 0;
    if (n >= 4) {
        auto const last = static_cast<std::uint64_t>(LoadWord<std::uint32_t>(from + n - 4));
        word = LoadWord<std::uint32_t>(from) | (last << (8 * (n - 4)));
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            word |= static_cast<std::uint64_t>(static_cast<unsigned char>(from[i])) << (8 * i);
        }
    }
    return _mm_set_epi64x(0, static_cast<long long>(word));
}

void StoreWidened(char16_t* to, __m128i bytes)
{
    Store(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    Store(to + kBlockUnits, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}

template <class Word>
void WidenWord(char const* from, char16_t* to)
{
    auto const bytes = _mm_set_epi64x(0, static_cast<long long>(LoadWord<Word>(from)));
    auto const units = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
    std::memcpy(to, &units, 2 * sizeof(Word));
}

/// Fewer than 16 bytes. The first and the last word may overlap.
void WidenPart(char const* from, std::size_t n, char16_t* to)
{
    if (n >= 8) {
        WidenWord<std::uint64_t>(from, to);
        WidenWord<std::uint64_t>(from + n - 8, to + n - 8);
    } else if (n >= 4) {
        WidenWord<std::uint32_t>(from, to);
        WidenWord<std::uint32_t>(from + n - 4, to + n - 4);
    } else {
        kScalarKernels.latin1ToUtf16(from, n, to);
    }
}

/// Eight units without a bit of FF00.
void StoreNarrowed(char* to, __m128i units)
{
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(units, units));
}

/// Whether no unit has a bit of `bits`.
bool HasNone(__m128i units, int bits)
{
    __m128i const seen = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(bits)));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(seen, _mm_setzero_si128())) == 0xFFFF;
}

/// The units that characters beginning at these bytes make, in two sums.
__m128i CountUnits(__m128i bytes)
{
    // A trailing byte is one of -128..-65; a byte of F0 and above is one that a saturated
    // subtraction of EF leaves something of.
    __m128i const begins = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(-65));
    __m128i const above = _mm_subs_epu8(bytes, _mm_set1_epi8(static_cast<char>(0xEF)));
    __m128i const units = _mm_sub_epi8(_mm_min_epu8(above, _mm_set1_epi8(1)), begins);
    return _mm_sad_epu8(units, _mm_setzero_si128());
}

std::size_t CountUtf16Sse2(char const* from, std::size_t n)
{
    __m128i sum = _mm_setzero_si128();
    std::size_t i = 0;
    for (; n - i >= kBlock; i += kBlock) {
        sum = _mm_add_epi64(sum, CountUnits(Load(from + i)));
    }
    std::size_t const zeros = kBlock - (n - i); // each counts as a unit
    sum = _mm_add_epi64(sum, CountUnits(LoadPart(from + i, n - i)));
    sum = _mm_add_epi64(sum, _mm_srli_si128(sum, 8));
    return static_cast<std::size_t>(_mm_cvtsi128_si64(sum)) - zeros;
}

bool DecodeAsciiSse2(char const* from, std::size_t n, char16_t* to)
{
    __m128i seen = _mm_setzero_si128();
    std::size_t i = 0;
    for (; n - i >= kBlock; i += kBlock) {
        seen = _mm_or_si128(seen, Load(from + i));
        StoreWidened(to + i, Load(from + i));
    }
    seen = _mm_or_si128(seen, LoadPart(from + i, n - i));
    WidenPart(from + i, n - i, to + i);
    return _mm_movemask_epi8(seen) == 0;
}

bool DecodeUtf8Sse2(char const* from, std::size_t n, char16_t* to, std::size_t units)
{
    if (units == n) {
        return DecodeAsciiSse2(from, n, to); // only ASCII has so many units
    }
    for (char const* const end = from + n; from != end;) {
        auto const left = static_cast<std::size_t>(end - from);
        if (left >= kBlock && _mm_movemask_epi8(Load(from)) == 0) {
            StoreWidened(to, Load(from));
            from += kBlock;
            to += kBlock;
            continue;
        }
        char32_t const taken = TakeUtf8(from, end);
        if (taken == kIllFormed) {
            return false;
        }
        to = PutUtf16(taken, to);
    }
    return true;
}

std::size_t AsciiPrefix(char16_t const* from, std::size_t n)
{
    std::size_t i = 0;
    while (n - i >= kBlockUnits && HasNone(Load(from + i), 0xFF80)) {
        i += kBlockUnits;
    }
    return i;
}

std::size_t CountUtf8Sse2(char16_t const* from, std::size_t n)
{
    std::size_t const ascii = AsciiPrefix(from, n);
    return ascii + kScalarKernels.countUtf8(from + ascii, n - ascii);
}

std::size_t EncodeUtf8Sse2(char16_t const* from, std::size_t n, char* to, std::size_t /*room*/)
{
    char* const start = to;
    for (char16_t const* const end = from + n; from != end;) {
        auto const left = static_cast<std::size_t>(end - from);
        if (left >= kBlockUnits && HasNone(Load(from), 0xFF80)) {
            StoreNarrowed(to, Load(from));
            from += kBlockUnits;
            to += kBlockUnits;
            continue;
        }
        to = PutUtf8(Repaired(TakeUtf16(from, end)), to);
    }
    return static_cast<std::size_t>(to - start);
}

bool EncodeAsciiSse2(char16_t const* from, std::size_t n, char* to)
{
    std::size_t const ascii = AsciiPrefix(from, n);
    for (std::size_t i = 0; i < ascii; i += kBlockUnits) {
        StoreNarrowed(to + i, Load(from + i));
    }
    return kScalarKernels.encodeAscii(from + ascii, n - ascii, to + ascii);
}

std::size_t CountPairsSse2(char16_t const* from, std::size_t n)
{
    return kScalarKernels.countPairs(from, n);
}

void Latin1ToUtf16Sse2(char const* from, std::size_t n, char16_t* to)
{
    std::size_t i = 0;
    for (; n - i >= kBlock; i += kBlock) {
        StoreWidened(to + i, Load(from + i));
    }
    WidenPart(from + i, n - i, to + i);
}

bool Utf16ToLatin1Sse2(char16_t const* from, std::size_t n, char* to)
{
    std::size_t i = 0;
    while (n - i >= kBlockUnits && HasNone(Load(from + i), 0xFF00)) {
        StoreNarrowed(to + i, Load(from + i));
        i += kBlockUnits;
    }
    return kScalarKernels.utf16ToLatin1(from + i, n - i, to + i);
}

bool IsAsciiSse2(char const* text, std::size_t n)
{
    std::size_t i = 0;
    while (n - i >= kBlock && _mm_movemask_epi8(Load(text + i)) == 0) {
        i += kBlock;
    }
    return n - i < kBlock && _mm_movemask_epi8(LoadPart(text + i, n - i)) == 0;
}

bool IsAsciiSse2(char16_t const* text, std::size_t n)
{
    std::size_t const i = AsciiPrefix(text, n);
    return n - i < kBlockUnits && kScalarKernels.isAsciiUnits(text + i, n - i);
}

/// A bit for each byte of a block that belongs to a zero unit, the first byte's lowest.
KOR_READS_BLOCKS inline unsigned ZeroBytes(__m128i const* block)
{
    __m128i const zeros = _mm_cmpeq_epi16(*block, _mm_setzero_si128());
    return static_cast<unsigned>(_mm_movemask_epi8(zeros));
}

KOR_READS_BLOCKS std::size_t LengthSse2(char16_t const* zeroTerminated)
{
    auto const address = reinterpret_cast<std::uintptr_t>(zeroTerminated);
    std::size_t const before = address % kBlock;
    auto const* block = reinterpret_cast<__m128i const*>(address - before);
    unsigned zeros = ZeroBytes(block) >> before;
    if (zeros != 0) {
        return static_cast<std::size_t>(__builtin_ctz(zeros)) / sizeof(char16_t);
    }
    do {
        zeros = ZeroBytes(++block);
    } while (zeros == 0);
    auto const* const end = reinterpret_cast<char const*>(block) + __builtin_ctz(zeros);
    return static_cast<std::size_t>(end - reinterpret_cast<char const*>(zeroTerminated)) /
           sizeof(char16_t);
}

} // namespace

Kernels const kSse2Kernels = {
    "SSE2",         CountUtf16Sse2,  DecodeUtf8Sse2, DecodeAsciiSse2,   CountUtf8Sse2,
    EncodeUtf8Sse2, EncodeAsciiSse2, CountPairsSse2, Latin1ToUtf16Sse2, Utf16ToLatin1Sse2,
    IsAsciiSse2,    IsAsciiSse2,     LengthSse2,
};

} // namespace TextConversion
