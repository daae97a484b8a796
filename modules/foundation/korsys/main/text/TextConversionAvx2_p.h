/// What the loops for AVX2 share. Only for the files of these loops: callers ask first whether the
/// processor has AVX2.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <immintrin.h>

/// Marks every function that uses these instructions, so that no other code is compiled with them.
#define KOR_AVX2 __attribute__((target("avx2,popcnt")))

/// The same for the parts of a loop, which must not become calls.
#define KOR_AVX2_INLINE KOR_AVX2 __attribute__((always_inline)) inline

namespace TextConversion {

KOR_AVX2 std::size_t CountUtf16Avx2(char const* from, std::size_t n);
KOR_AVX2 bool DecodeUtf8Avx2(char const* from, std::size_t n, char16_t* to, std::size_t units);
KOR_AVX2 bool DecodeAsciiAvx2(char const* from, std::size_t n, char16_t* to);
KOR_AVX2 std::size_t CountUtf8Avx2(char16_t const* from, std::size_t n);
KOR_AVX2 std::size_t EncodeUtf8Avx2(char16_t const* from, std::size_t n, char* to,
                                    std::size_t room);

constexpr std::size_t kBlock = 32; ///< Bytes in a register.
constexpr std::size_t kBlockUnits = 16;

KOR_AVX2_INLINE __m256i Load(void const* from)
{
    return _mm256_loadu_si256(static_cast<__m256i const*>(from));
}

KOR_AVX2_INLINE __m128i LoadHalf(void const* from)
{
    return _mm_loadu_si128(static_cast<__m128i const*>(from));
}

KOR_AVX2_INLINE void Store(void* to, __m256i value)
{
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

KOR_AVX2_INLINE void StoreHalf(void* to, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

KOR_AVX2_INLINE __m256i Bytes(int value)
{
    return _mm256_set1_epi8(static_cast<char>(value));
}

KOR_AVX2_INLINE __m256i Units(int value)
{
    return _mm256_set1_epi16(static_cast<short>(value));
}

/// A different table in each half, for `_mm256_shuffle_epi8`.
KOR_AVX2_INLINE __m256i LoadTwoHalves(void const* low, void const* high)
{
    return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalf(low)), LoadHalf(high), 1);
}

/// Each byte's place in the register.
KOR_AVX2_INLINE __m256i Places()
{
    return _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
                            20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
}

/// The low bytes of 32 units in their order. Requires: no unit is above FF.
KOR_AVX2_INLINE __m256i PackBytes(__m256i first, __m256i second)
{
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8);
}

KOR_AVX2_INLINE std::size_t PopCount(int bits)
{
    return static_cast<std::size_t>(_mm_popcnt_u32(static_cast<unsigned>(bits)));
}

/// 32 bytes become 32 units.
KOR_AVX2_INLINE void WidenBlock(char const* from, char16_t* to)
{
    Store(to, _mm256_cvtepu8_epi16(LoadHalf(from)));
    Store(to + kBlockUnits, _mm256_cvtepu8_epi16(LoadHalf(from + kBlockUnits)));
}

/// The units from `to` to the next place where a whole register lies in one line of the cache. A
/// loop may begin there after one block at `to`.
inline std::size_t UnitsToAlignment(char16_t const* to)
{
    return (kBlock - reinterpret_cast<std::uintptr_t>(to) % kBlock) / sizeof(char16_t);
}

/// The sum of four 64-bit numbers.
KOR_AVX2_INLINE std::size_t SumOf(__m256i numbers)
{
    __m128i const half =
        _mm_add_epi64(_mm256_castsi256_si128(numbers), _mm256_extracti128_si256(numbers, 1));
    return static_cast<std::size_t>(_mm_cvtsi128_si64(half) + _mm_extract_epi64(half, 1));
}

/// Which units are in D800..DBFF or in DC00..DFFF, as `first` tells.
KOR_AVX2_INLINE __m256i IsHalf(__m256i units, int first)
{
    return _mm256_cmpeq_epi16(_mm256_and_si256(units, Units(0xFC00)), Units(first));
}

/// Which units begin a pair; `next` holds the unit that follows each.
KOR_AVX2_INLINE __m256i PairFirsts(__m256i units, __m256i next)
{
    return _mm256_and_si256(IsHalf(units, 0xD800), IsHalf(next, 0xDC00));
}

/// A control for a shuffle of 16 bytes.
struct Shuffle
{
    std::array<std::uint8_t, 16> from;
};

} // namespace TextConversion
