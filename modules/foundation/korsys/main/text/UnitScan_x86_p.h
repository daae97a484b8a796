/// Walking over UTF-16 text in blocks of 8 or 16 units, for the x86-64 files only.

#pragma once

#include <emmintrin.h>
#include <immintrin.h>

/// A filter answers for all positions of a block at once: `Mask(at)` for 8 positions from `at` on,
/// `WideMask(at)` for 16, `Test(at)` for one. A mask has two bits a position, the first position's
/// lowest. No block reaches beyond the last position.
namespace UnitScan {

constexpr int kBlock = 8;
constexpr int kWideBlock = 16;

inline bool HasWideBlocks()
{
    return __builtin_cpu_supports("avx2") != 0;
}

inline __m128i Load(char16_t const* units)
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(units));
}

inline void Store(char16_t* units, __m128i block)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(units), block);
}

inline __m128i Repeat(char16_t unit)
{
    return _mm_set1_epi16(static_cast<short>(unit));
}

inline unsigned MaskOf(__m128i equal)
{
    return static_cast<unsigned>(_mm_movemask_epi8(equal));
}

__attribute__((target("avx2"))) inline __m256i LoadWide(char16_t const* units)
{
    return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(units));
}

__attribute__((target("avx2"))) inline __m256i RepeatWide(char16_t unit)
{
    return _mm256_set1_epi16(static_cast<short>(unit));
}

__attribute__((target("avx2"))) inline unsigned WideMaskOf(__m256i equal)
{
    return static_cast<unsigned>(_mm256_movemask_epi8(equal));
}

inline int FirstOf(unsigned mask)
{
    return __builtin_ctz(mask) / 2;
}

inline int LastOf(unsigned mask)
{
    return (31 - __builtin_clz(mask)) / 2;
}

/// Positions where the unit is one of `N`.
template <int N>
class OneOf
{
public:
    OneOf(char16_t const* text, char16_t const* units) : m_text(text)
    {
        for (int i = 0; i < N; ++i) {
            m_units[i] = units[i];
        }
    }

    bool Test(int at) const
    {
        bool isOne = false;
        for (char16_t const unit : m_units) {
            isOne |= m_text[at] == unit;
        }
        return isOne;
    }

    __m128i Equal(int at) const
    {
        __m128i const block = Load(m_text + at);
        __m128i equal = _mm_cmpeq_epi16(block, Repeat(m_units[0]));
        for (int i = 1; i < N; ++i) {
            equal = _mm_or_si128(equal, _mm_cmpeq_epi16(block, Repeat(m_units[i])));
        }
        return equal;
    }

    __attribute__((target("avx2"))) __m256i WideEqual(int at) const
    {
        __m256i const block = LoadWide(m_text + at);
        __m256i equal = _mm256_cmpeq_epi16(block, RepeatWide(m_units[0]));
        for (int i = 1; i < N; ++i) {
            equal = _mm256_or_si256(equal, _mm256_cmpeq_epi16(block, RepeatWide(m_units[i])));
        }
        return equal;
    }

    unsigned Mask(int at) const { return MaskOf(Equal(at)); }
    __attribute__((target("avx2"))) unsigned WideMask(int at) const
    {
        return WideMaskOf(WideEqual(at));
    }

private:
    char16_t const* m_text;
    char16_t m_units[N];
};

/// Positions where the first filter holds, and the second one `distance` units later.
template <class Filter>
class Both
{
public:
    Both(Filter const& first, Filter const& second) : m_first(first), m_second(second) {}

    bool Test(int at) const { return m_first.Test(at) && m_second.Test(at); }

    unsigned Mask(int at) const
    {
        return MaskOf(_mm_and_si128(m_first.Equal(at), m_second.Equal(at)));
    }

    __attribute__((target("avx2"))) unsigned WideMask(int at) const
    {
        return WideMaskOf(_mm256_and_si256(m_first.WideEqual(at), m_second.WideEqual(at)));
    }

private:
    Filter m_first;
    Filter m_second;
};

/// Positions where the filter does not hold.
template <class Filter>
class Not
{
public:
    explicit Not(Filter const& filter) : m_filter(filter) {}

    bool Test(int at) const { return !m_filter.Test(at); }
    unsigned Mask(int at) const { return m_filter.Mask(at) ^ 0xFFFF; }
    __attribute__((target("avx2"))) unsigned WideMask(int at) const
    {
        return ~m_filter.WideMask(at);
    }

private:
    Filter m_filter;
};

/// Visits the positions of a mask in ascending order until `visit` is true; -1 if it never is.
template <class Visit>
int VisitMask(unsigned mask, int at, Visit const& visit)
{
    for (mask &= 0x55555555; mask != 0; mask &= mask - 1) {
        int const candidate = at + FirstOf(mask);
        if (visit(candidate)) {
            return candidate;
        }
    }
    return -1;
}

template <class Visit>
int VisitMaskBackwards(unsigned mask, int at, Visit const& visit)
{
    mask &= 0x55555555;
    while (mask != 0) {
        int const offset = LastOf(mask);
        if (visit(at + offset)) {
            return at + offset;
        }
        mask ^= 1U << (2 * offset);
    }
    return -1;
}

template <class Filter, class Visit>
__attribute__((target("avx2"))) int VisitWide(Filter const& filter, int positions, int& at,
                                              Visit const& visit)
{
    for (; at + kWideBlock <= positions; at += kWideBlock) {
        unsigned const mask = filter.WideMask(at);
        if (mask != 0) {
            int const found = VisitMask(mask, at, visit);
            if (found >= 0) {
                return found;
            }
        }
    }
    return -1;
}

/// Visits the positions from `at` on, the last block overlapping the one before.
template <class Filter, class Visit>
int VisitBlocks(Filter const& filter, int positions, int at, Visit const& visit)
{
    int found = -1;
    for (; found < 0 && at + kBlock <= positions; at += kBlock) {
        found = VisitMask(filter.Mask(at), at, visit);
    }
    if (found < 0 && at < positions && positions >= kBlock) {
        int const done = at - (positions - kBlock);
        found = VisitMask(filter.Mask(positions - kBlock) >> (2 * done), at, visit);
        at = positions;
    }
    for (; found < 0 && at < positions; ++at) {
        found = filter.Test(at) && visit(at) ? at : -1;
    }
    return found;
}

/// Calls `visit` for the positions below `positions` that pass the filter, in ascending order;
/// returns the first one for which it is true, -1 when it is for none.
template <class Filter, class Visit>
int Forwards(Filter const& filter, int positions, Visit const& visit)
{
    int at = 0;
    if (positions >= kWideBlock && HasWideBlocks()) {
        int const found = VisitWide(filter, positions, at, visit);
        if (found >= 0) {
            return found;
        }
    }
    return VisitBlocks(filter, positions, at, visit);
}

/// As `Forwards`, in descending order.
template <class Filter, class Visit>
int Backwards(Filter const& filter, int positions, Visit const& visit)
{
    int found = -1;
    int end = positions;
    for (; found < 0 && end >= kBlock; end -= kBlock) {
        found = VisitMaskBackwards(filter.Mask(end - kBlock), end - kBlock, visit);
    }
    if (found < 0 && end > 0 && positions >= kBlock) {
        found = VisitMaskBackwards(filter.Mask(0) & ((1U << (2 * end)) - 1), 0, visit);
        end = 0;
    }
    for (; found < 0 && end > 0; --end) {
        found = filter.Test(end - 1) && visit(end - 1) ? end - 1 : -1;
    }
    return found;
}

/// A filter as `TextSearch` wants it.
template <class Filter>
class Scanner
{
public:
    explicit Scanner(Filter const& filter) : m_filter(filter) {}

    template <class Visit>
    int First(int positions, Visit const& visit) const
    {
        return Forwards(m_filter, positions, visit);
    }

    template <class Visit>
    int Last(int positions, Visit const& visit) const
    {
        return Backwards(m_filter, positions, visit);
    }

private:
    Filter m_filter;
};

} // namespace UnitScan
