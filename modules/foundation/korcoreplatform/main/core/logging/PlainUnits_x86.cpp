#include "korcoreplatform/main/core/logging/PlainUnits_p.h"

#include <cstdint>
#include <cstring>

#include <emmintrin.h>

namespace {

__m128i Load(char16_t const* units)
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(units));
}

/// Eight units: all bits set in those that are plain.
__m128i Plain(__m128i units)
{
    __m128i const aboveRange =
        _mm_subs_epu16(_mm_sub_epi16(units, _mm_set1_epi16(u' ')), _mm_set1_epi16(u'~' - u' '));
    __m128i const inRange = _mm_cmpeq_epi16(aboveRange, _mm_setzero_si128());
    __m128i const marks = _mm_or_si128(_mm_cmpeq_epi16(units, _mm_set1_epi16(u'"')),
                                       _mm_cmpeq_epi16(units, _mm_set1_epi16(u'\\')));
    return _mm_andnot_si128(marks, inRange);
}

/// One bit for each of eight units, set in those that are not plain.
unsigned SpecialMask(__m128i units)
{
    __m128i const plain = _mm_packs_epi16(Plain(units), _mm_setzero_si128());
    return static_cast<unsigned>(_mm_movemask_epi8(plain)) ^ 0xFF;
}

std::size_t FirstOf(unsigned mask)
{
    return static_cast<std::size_t>(__builtin_ctz(mask));
}

/// Eight units narrowed to bytes, the first in the lowest.
std::uint64_t Narrow(__m128i units)
{
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(units, units)));
}

/// One to seven units: the last ones of eight that end where they do.
std::size_t CopyTail(char16_t const* end, std::size_t n, char* to)
{
    __m128i const units = Load(end - 8);
    std::uint64_t const bytes = Narrow(units) >> 8 * (8 - n);
    std::memcpy(to, &bytes, sizeof(bytes));
    unsigned const special = SpecialMask(units) >> (8 - n);
    return special == 0 ? n : FirstOf(special);
}

/// Four to seven units: the first four and the last four, which may overlap.
std::size_t CopyFew(char16_t const* from, std::size_t n, char* to)
{
    __m128i const first = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(from));
    __m128i const last = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(from + n - 4));
    __m128i const units = _mm_unpacklo_epi64(first, last);
    std::uint64_t const bytes = Narrow(units);
    auto const firstBytes = static_cast<std::uint32_t>(bytes);
    auto const lastBytes = static_cast<std::uint32_t>(bytes >> 32);
    std::memcpy(to, &firstBytes, sizeof(firstBytes));
    std::memcpy(to + n - 4, &lastBytes, sizeof(lastBytes));
    unsigned const special = SpecialMask(units);
    if (special == 0) {
        return n;
    }
    std::size_t const at = FirstOf(special);
    return at < 4 ? at : n - 8 + at;
}

} // namespace

std::size_t TLog::CopyPlainUnits(char16_t const* from, std::size_t n, char* to) noexcept
{
    std::size_t done = 0;
    for (; n - done >= 16; done += 16) {
        __m128i const first = Load(from + done);
        __m128i const second = Load(from + done + 8);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), _mm_packus_epi16(first, second));
        int const plain = _mm_movemask_epi8(_mm_packs_epi16(Plain(first), Plain(second)));
        if (plain != 0xFFFF) {
            return done + FirstOf(~static_cast<unsigned>(plain));
        }
    }
    if (n - done >= 8) {
        __m128i const units = Load(from + done);
        std::uint64_t const bytes = Narrow(units);
        std::memcpy(to + done, &bytes, sizeof(bytes));
        unsigned const special = SpecialMask(units);
        if (special != 0) {
            return done + FirstOf(special);
        }
        done += 8;
    }
    if (done == n) {
        return n;
    }
    if (n >= 8) {
        return done + CopyTail(from + n, n - done, to + done);
    }
    if (n >= 4) {
        return CopyFew(from, n, to);
    }
    for (; done < n && IsPlainUnit(from[done]); ++done) {
        to[done] = static_cast<char>(from[done]);
    }
    return done;
}
