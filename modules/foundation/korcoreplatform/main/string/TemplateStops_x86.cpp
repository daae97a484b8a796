#include "korcoreplatform/main/string/TemplateStops_p.h"

#include <algorithm>

#include <emmintrin.h>

namespace {

constexpr int kVector = 8;

/// All bits are set in the lanes of those of eight units that are stops.
__m128i StopsOf(char16_t const* units, __m128i percent, __m128i other)
{
    __m128i const vector = _mm_loadu_si128(reinterpret_cast<__m128i const*>(units));
    return _mm_or_si128(_mm_cmpeq_epi16(vector, percent), _mm_cmpeq_epi16(vector, other));
}

/// One bit for each of sixteen lanes.
std::uint64_t BitsOf(__m128i first, __m128i second)
{
    return static_cast<std::uint64_t>(_mm_movemask_epi8(_mm_packs_epi16(first, second)));
}

} // namespace

std::uint64_t TemplateStops::Find(char16_t const* units, int n, char16_t other) noexcept
{
    __m128i const percents = _mm_set1_epi16(u'%');
    __m128i const others = _mm_set1_epi16(static_cast<short>(other));
    auto const stopsFrom = [=](int index) { return StopsOf(units + index, percents, others); };
    if (n < kVector) {
        char16_t padded[kVector] = {};
        std::copy_n(units, n, padded);
        std::uint64_t const bits = BitsOf(StopsOf(padded, percents, others), _mm_setzero_si128());
        return bits & ((1u << n) - 1);
    }
    std::uint64_t bits = 0;
    int i = 0;
    for (; i <= n - 2 * kVector; i += 2 * kVector) {
        bits |= BitsOf(stopsFrom(i), stopsFrom(i + kVector)) << i;
    }
    if (i < n) { // up to two vectors more, which may overlap
        int const last = n - kVector;
        i = std::min(i, last);
        bits |= BitsOf(stopsFrom(i), _mm_setzero_si128()) << i;
        bits |= BitsOf(stopsFrom(last), _mm_setzero_si128()) << last;
    }
    return bits;
}
