#include "korsys/main/text/TextConversionX86_p.h"

#include "korsys/main/text/TextConversionAvx2_p.h"

// The loops that treat each character alike; those of UTF-8 are in files of their own. A text of at
// least one block ends with a block that may overlap the one before it.

namespace TextConversion {
namespace {

KOR_AVX2 void Latin1ToUtf16Avx2(char const* from, std::size_t n, char16_t* to)
{
    if (n < kBlock) {
        kSse2Kernels.latin1ToUtf16(from, n, to);
        return;
    }
    WidenBlock(from, to);
    for (std::size_t i = UnitsToAlignment(to); i + kBlock < n; i += kBlock) {
        WidenBlock(from + i, to + i);
    }
    WidenBlock(from + n - kBlock, to + n - kBlock);
}

/// Returns whether every unit fitted.
KOR_AVX2_INLINE bool NarrowBlock(char16_t const* from, char* to)
{
    __m256i first = Load(from);
    __m256i second = Load(from + kBlockUnits);
    __m256i const high = Units(0xFF00);
    bool const fits = _mm256_testz_si256(_mm256_or_si256(first, second), high) != 0;
    if (!fits) {
        __m256i const zero = _mm256_setzero_si256();
        __m256i const mark = Units('?');
        __m256i const fits1 = _mm256_cmpeq_epi16(_mm256_and_si256(first, high), zero);
        __m256i const fits2 = _mm256_cmpeq_epi16(_mm256_and_si256(second, high), zero);
        first = _mm256_blendv_epi8(mark, first, fits1);
        second = _mm256_blendv_epi8(mark, second, fits2);
    }
    Store(to, PackBytes(first, second));
    return fits;
}

KOR_AVX2 bool Utf16ToLatin1Avx2(char16_t const* from, std::size_t n, char* to)
{
    if (n < kBlock) {
        return kSse2Kernels.utf16ToLatin1(from, n, to);
    }
    bool fitted = true;
    for (std::size_t i = 0; i < n - kBlock; i += kBlock) {
        fitted &= NarrowBlock(from + i, to + i);
    }
    fitted &= NarrowBlock(from + n - kBlock, to + n - kBlock);
    return fitted;
}

KOR_AVX2 bool EncodeAsciiAvx2(char16_t const* from, std::size_t n, char* to)
{
    __m256i seen = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; n - i >= kBlock; i += kBlock) {
        __m256i const first = Load(from + i);
        __m256i const second = Load(from + i + kBlockUnits);
        seen = _mm256_or_si256(seen, _mm256_or_si256(first, second));
        Store(to + i, PackBytes(first, second));
    }
    return _mm256_testz_si256(seen, Units(0xFF80)) != 0 &&
           kSse2Kernels.encodeAscii(from + i, n - i, to + i);
}

KOR_AVX2 bool IsAsciiAvx2(char const* text, std::size_t n)
{
    if (n < kBlock) {
        return kSse2Kernels.isAsciiBytes(text, n);
    }
    for (std::size_t i = 0; i < n - kBlock; i += kBlock) {
        if (_mm256_movemask_epi8(Load(text + i)) != 0) {
            return false;
        }
    }
    return _mm256_movemask_epi8(Load(text + n - kBlock)) == 0;
}

KOR_AVX2 bool IsAsciiAvx2(char16_t const* text, std::size_t n)
{
    if (n < kBlockUnits) {
        return kSse2Kernels.isAsciiUnits(text, n);
    }
    __m256i const high = Units(0xFF80);
    for (std::size_t i = 0; i < n - kBlockUnits; i += kBlockUnits) {
        if (_mm256_testz_si256(Load(text + i), high) == 0) {
            return false;
        }
    }
    return _mm256_testz_si256(Load(text + n - kBlockUnits), high) != 0;
}

KOR_AVX2 std::size_t CountPairsAvx2(char16_t const* from, std::size_t n)
{
    std::size_t i = 0;
    std::size_t pairBytes = 0;
    for (; n - i > kBlockUnits; i += kBlockUnits) {
        __m256i const pairs = PairFirsts(Load(from + i), Load(from + i + 1));
        pairBytes += PopCount(_mm256_movemask_epi8(pairs));
    }
    return pairBytes / 2 + kScalarKernels.countPairs(from + i, n - i);
}

/// A bit for each byte of a block that belongs to a zero unit, the first byte's lowest.
KOR_READS_BLOCKS KOR_AVX2 inline std::uint32_t ZeroBytes(__m256i const* block)
{
    __m256i const zeros = _mm256_cmpeq_epi16(*block, _mm256_setzero_si256());
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(zeros));
}

KOR_READS_BLOCKS KOR_AVX2 std::size_t LengthAvx2(char16_t const* zeroTerminated)
{
    auto const address = reinterpret_cast<std::uintptr_t>(zeroTerminated);
    std::size_t const before = address % kBlock;
    auto const* block = reinterpret_cast<__m256i const*>(address - before);
    std::uint32_t zeros = ZeroBytes(block) >> before;
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

Kernels const kAvx2Kernels = {
    "AVX2",         CountUtf16Avx2,  DecodeUtf8Avx2, DecodeAsciiAvx2,   CountUtf8Avx2,
    EncodeUtf8Avx2, EncodeAsciiAvx2, CountPairsAvx2, Latin1ToUtf16Avx2, Utf16ToLatin1Avx2,
    IsAsciiAvx2,    IsAsciiAvx2,     LengthAvx2,
};

} // namespace TextConversion
