/// Finding a text within a text in linear time and constant space, whatever the two look like.

#pragma once

#include <algorithm>

/// Finds occurrences one after the other by splitting the needle in two at a place where a mismatch
/// to the right of it allows the longest safe step; the right part is compared forwards, then the
/// left part backwards. A needle that repeats itself also remembers how much of the next window it
/// has seen already.
///
/// Slower than a filter on ordinary text, but never more than a few comparisons a unit. The texts
/// are functions from an index to a unit, so that they can be folded or read backwards on the way.
/// Requires: the needle has at least one unit.
template <class NeedleAt, class TextAt>
class LinearMatch
{
public:
    LinearMatch(NeedleAt needle, int needleLength, TextAt text, int textLength, int from)
        : m_needle(needle), m_text(text), m_needleLength(needleLength), m_textLength(textLength),
          m_at(from)
    {
        Split();
    }

    /// The next occurrence, -1 after the last one.
    int Next()
    {
        while (m_at <= m_textLength - m_needleLength) {
            int const right = MatchRight();
            if (right < m_needleLength) {
                m_at += right - m_split + 1;
                m_seen = 0;
                continue;
            }
            bool const isMatch = MatchesLeft();
            int const found = m_at;
            m_at += m_step;
            m_seen = m_repeats ? m_needleLength - m_step : 0;
            if (isMatch) {
                return found;
            }
        }
        return -1;
    }

private:
    struct Suffix
    {
        int start;
        int period;
    };

    /// The greatest suffix of the needle by the order of the units, or by the opposite order.
    Suffix GreatestSuffix(bool opposite) const
    {
        Suffix greatest = {0, 1};
        int candidate = 1;
        int matched = 0;
        while (candidate + matched < m_needleLength) {
            auto const theirs = m_needle(candidate + matched);
            auto const ours = m_needle(greatest.start + matched);
            if (theirs == ours) {
                ++matched;
                if (matched == greatest.period) {
                    candidate += greatest.period;
                    matched = 0;
                }
            } else if ((theirs < ours) != opposite) {
                candidate += matched + 1;
                matched = 0;
                greatest.period = candidate - greatest.start;
            } else {
                greatest = {candidate, 1};
                ++candidate;
                matched = 0;
            }
        }
        return greatest;
    }

    void Split()
    {
        Suffix const one = GreatestSuffix(false);
        Suffix const other = GreatestSuffix(true);
        Suffix const chosen = one.start > other.start ? one : other;
        m_split = chosen.start;
        m_step = chosen.period;
        m_repeats = true;
        for (int i = 0; i < m_split && m_repeats; ++i) {
            m_repeats = m_needle(i) == m_needle(i + m_step);
        }
        if (!m_repeats) {
            m_step = std::max(m_split, m_needleLength - m_split) + 1;
        }
    }

    /// The first index from the split on that differs, the needle's length when none does.
    int MatchRight() const
    {
        int i = std::max(m_split, m_seen);
        while (i < m_needleLength && m_needle(i) == m_text(m_at + i)) {
            ++i;
        }
        return i;
    }

    bool MatchesLeft() const
    {
        int i = m_split;
        while (i > m_seen && m_needle(i - 1) == m_text(m_at + i - 1)) {
            --i;
        }
        return i <= m_seen;
    }

    NeedleAt m_needle;
    TextAt m_text;
    int m_needleLength;
    int m_textLength;
    int m_at;        ///< Where the next window begins.
    int m_seen = 0;  ///< How many units of the window are known to match.
    int m_split = 0; ///< Where the needle's right part begins.
    int m_step = 1;  ///< How far the window moves when the right part matched.
    bool m_repeats = false;
};
