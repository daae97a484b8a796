#include "korcoreplatform/main/core/logging/PlainUnits_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

namespace {

__m128i Load(char16_t const* units)
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(units));
}

/// Sixteen units as bytes. Those that no byte can hold become 0 or 255, which are not plain either.
__m128i Narrowed(__m128i first, __m128i second)
{
    return _mm_packus_epi16(first, second);
}

/// One bit for each of sixteen bytes, set in those that are not plain.
unsigned SpecialMask(__m128i bytes)
{
    __m128i const aboveRange =
        _mm_subs_epu8(_mm_sub_epi8(bytes, _mm_set1_epi8(' ')), _mm_set1_epi8('~' - ' '));
    __m128i const inRange = _mm_cmpeq_epi8(aboveRange, _mm_setzero_si128());
    __m128i const marks = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')),
                                       _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\')));
    __m128i const plain = _mm_andnot_si128(marks, inRange);
    return static_cast<unsigned>(_mm_movemask_epi8(plain)) ^ 0xFFFF;
}

std::size_t FirstOf(unsigned mask)
{
    return static_cast<std::size_t>(__builtin_ctz(mask));
}

/// How many of the lowest eight bytes are plain, from the first on.
std::size_t PlainOfEight(__m128i bytes)
{
    constexpr unsigned kNinth = 0x100;
    return FirstOf((SpecialMask(bytes) & 0xFF) | kNinth);
}

/// The lowest eight bytes.
std::uint64_t LowHalf(__m128i bytes)
{
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes));
}

/// Eight units. Returns how many of them are plain from the first on.
std::size_t CopyEight(char16_t const* from, char* to)
{
    __m128i const units = Load(from);
    __m128i const bytes = Narrowed(units, units);
    std::uint64_t const half = LowHalf(bytes);
    std::memcpy(to, &half, sizeof(half));
    return PlainOfEight(bytes);
}

/// Four to seven units: the first four and the last four, which may overlap.
std::size_t CopyFew(char16_t const* from, std::size_t n, char* to)
{
    __m128i const first = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(from));
    __m128i const last = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(from + n - 4));
    __m128i const units = _mm_unpacklo_epi64(first, last);
    __m128i const bytes = Narrowed(units, units);
    std::uint64_t const half = LowHalf(bytes);
    auto const firstBytes = static_cast<std::uint32_t>(half);
    auto const lastBytes = static_cast<std::uint32_t>(half >> 32);
    std::memcpy(to, &firstBytes, sizeof(firstBytes));
    std::memcpy(to + n - 4, &lastBytes, sizeof(lastBytes));
    std::size_t const at = PlainOfEight(bytes);
    return at < 4 ? at : n - 8 + at;
}

/// Less than sixteen units.
std::size_t CopyLess(char16_t const* from, std::size_t n, char* to)
{
    if (n >= 8) { // the first eight and the last eight, which may overlap
        std::size_t const last = n - 8;
        std::size_t const plain = CopyEight(from, to);
        std::size_t const plainOfLast = CopyEight(from + last, to + last);
        return plain < 8 ? plain : last + plainOfLast;
    }
    if (n >= 4) {
        return CopyFew(from, n, to);
    }
    std::size_t done = 0;
    for (; done < n && TLog::IsPlainUnit(from[done]); ++done) {
        to[done] = static_cast<char>(from[done]);
    }
    return done;
}

} // namespace

std::size_t TLog::CopyPlainUnits(char16_t const* from, std::size_t n, char* to) noexcept
{
    if (n < 16) {
        return CopyLess(from, n, to);
    }
    std::size_t const last = n - 16; // the last sixteen may overlap with what is there already
    for (std::size_t at = 0;; at = std::min(at + 16, last)) {
        __m128i const bytes = Narrowed(Load(from + at), Load(from + at + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + at), bytes);
        unsigned const special = SpecialMask(bytes);
        if (special != 0) {
            return at + FirstOf(special);
        }
        if (at == last) {
            return n;
        }
    }
}
