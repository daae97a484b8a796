/// Finding a text by filtered candidates, with a linear-time method behind it.

#pragma once

#include "korsys/main/text/LinearMatch_p.h"

#include <cstdint>

/// The part of text search that is the same for every processor, and for both meanings of equal.
///
/// `Units` says what equal means: `Units::At(text, i)` is the value to compare, and
/// `Units::Equal(text, at, needle, length)` tells how many units of the needle match at `at`.
/// `Units::WithScanner(text, needle, needleLength, ask)` returns `ask(scanner)`. A scanner lists
/// candidates: `First(positions, visit)` and `Last(positions, visit)` call `visit(at)` for all `at`
/// in 0 .. positions - 1 where the needle may begin, in ascending or descending order, and return
/// the first one for which it is true, else -1.
namespace TextSearch {

/// Compares the needle at candidates, until that has cost out of proportion to the text passed.
template <class Units>
class Verifier
{
public:
    Verifier(char16_t const* text, char16_t const* needle, int needleLength)
        : m_text(text), m_needle(needle), m_needleLength(needleLength)
    {}

    bool Matches(int at)
    {
        int const equal = Units::Equal(m_text, at, m_needle, m_needleLength);
        m_work += equal;
        return equal == m_needleLength;
    }

    /// Whether to change to the linear method, after `passed` units of the text.
    bool IsExhausted(int passed) const { return m_work > kAllowance + kWorkPerUnit * passed; }

private:
    static constexpr std::int64_t kAllowance = 2048;
    static constexpr std::int64_t kWorkPerUnit = 4;

    char16_t const* m_text;
    char16_t const* m_needle;
    int m_needleLength;
    std::int64_t m_work = 0; ///< Equal units seen so far.
};

template <class NeedleAt, class TextAt>
LinearMatch<NeedleAt, TextAt> MakeLinearMatch(NeedleAt needleAt, int needleLength, TextAt textAt,
                                              int length, int from)
{
    return LinearMatch<NeedleAt, TextAt>(needleAt, needleLength, textAt, length, from);
}

template <class Units>
int FindFirst(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 0 || needleLength > length) {
        return needleLength == 0 ? 0 : -1;
    }
    Verifier<Units> verifier(text, needle, needleLength);
    bool isMatch = false;
    auto const isLast = [&](int candidate) {
        isMatch = verifier.Matches(candidate);
        return isMatch || verifier.IsExhausted(candidate);
    };
    int const at = Units::WithScanner(text, needle, needleLength, [&](auto const& scanner) {
        return scanner.First(length - needleLength + 1, isLast);
    });
    if (at < 0 || isMatch) {
        return at;
    }
    return MakeLinearMatch([=](int i) { return Units::At(needle, i); }, needleLength,
                           [=](int i) { return Units::At(text, i); }, length, at + 1)
        .Next();
}

template <class Units>
int FindLast(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 0 || needleLength > length) {
        return needleLength == 0 ? length : -1;
    }
    int const positions = length - needleLength + 1;
    Verifier<Units> verifier(text, needle, needleLength);
    bool isMatch = false;
    auto const isLast = [&](int candidate) {
        isMatch = verifier.Matches(candidate);
        return isMatch || verifier.IsExhausted(positions - 1 - candidate);
    };
    int const at = Units::WithScanner(text, needle, needleLength, [&](auto const& scanner) {
        return scanner.Last(positions, isLast);
    });
    if (at < 0 || isMatch) {
        return at;
    }
    // Both read backwards, from the last unit that a match before `at` can have.
    int const end = at - 1 + needleLength;
    auto const needleBackwards = [=](int i) { return Units::At(needle, needleLength - 1 - i); };
    auto const textBackwards = [=](int i) { return Units::At(text, end - 1 - i); };
    int const found = MakeLinearMatch(needleBackwards, needleLength, textBackwards, end, 0).Next();
    return found < 0 ? -1 : end - found - needleLength;
}

template <class Units>
int Count(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 0 || needleLength > length) {
        return needleLength == 0 ? length + 1 : 0;
    }
    Verifier<Units> verifier(text, needle, needleLength);
    int count = 0;
    auto const isLast = [&](int candidate) {
        count += verifier.Matches(candidate) ? 1 : 0;
        return verifier.IsExhausted(candidate);
    };
    int const at = Units::WithScanner(text, needle, needleLength, [&](auto const& scanner) {
        return scanner.First(length - needleLength + 1, isLast);
    });
    if (at < 0) {
        return count;
    }
    auto rest = MakeLinearMatch([=](int i) { return Units::At(needle, i); }, needleLength,
                                [=](int i) { return Units::At(text, i); }, length, at + 1);
    while (rest.Next() >= 0) {
        ++count;
    }
    return count;
}

/// The scanner without a filter worth the name: the first units are compared.
template <class IsCandidate>
class PlainScanner
{
public:
    explicit PlainScanner(IsCandidate isCandidate) : m_isCandidate(isCandidate) {}

    template <class Visit>
    int First(int positions, Visit const& visit) const
    {
        for (int at = 0; at < positions; ++at) {
            if (m_isCandidate(at) && visit(at)) {
                return at;
            }
        }
        return -1;
    }

    template <class Visit>
    int Last(int positions, Visit const& visit) const
    {
        for (int at = positions - 1; at >= 0; --at) {
            if (m_isCandidate(at) && visit(at)) {
                return at;
            }
        }
        return -1;
    }

private:
    IsCandidate m_isCandidate;
};

template <class IsCandidate>
PlainScanner<IsCandidate> MakePlainScanner(IsCandidate isCandidate)
{
    return PlainScanner<IsCandidate>(isCandidate);
}

} // namespace TextSearch
