/// Walks the code points of a UTF-16 text, surrogate pairs joined.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <cstddef>
#include <string_view> // declares the iterator tags as well, in less than half of <iterator>

/// A constant bidirectional iterator over the code points of a text. A surrogate without its
/// partner is delivered as itself.
///
/// `Text` has `length()` and `constData()`. The iterator points to its text, which must outlive
/// it and stay unchanged while it is used.
///
/// Throws: `StringException` with id AutoGen_0x4A0E3015 when it is moved outside its text or read
/// at the end.
template <class Text>
class TConstCodePointIterator
{
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = char32_t;
    using difference_type = std::ptrdiff_t;
    using pointer = char32_t const*;
    using reference = char32_t;

    TConstCodePointIterator() = default;
    TConstCodePointIterator(Text const& text, int unitIndex) : m_text(&text), m_index(unitIndex) {}

    char32_t operator*() const
    {
        int const units = unitsAt();
        char16_t const* const p = m_text->constData() + m_index;
        return units == 2 ? join(p[0], p[1]) : char32_t(p[0]);
    }

    TConstCodePointIterator& operator++()
    {
        m_index += unitsAt();
        return *this;
    }

    TConstCodePointIterator operator++(int)
    {
        TConstCodePointIterator const old = *this;
        ++*this;
        return old;
    }

    TConstCodePointIterator& operator--()
    {
        m_index -= unitsBefore();
        return *this;
    }

    TConstCodePointIterator operator--(int)
    {
        TConstCodePointIterator const old = *this;
        --*this;
        return old;
    }

    /// Index of the code unit at which the current code point starts.
    int base() const { return m_index; }

    friend bool operator==(TConstCodePointIterator const& a, TConstCodePointIterator const& b)
    {
        return a.m_text == b.m_text && a.m_index == b.m_index;
    }

    friend bool operator!=(TConstCodePointIterator const& a, TConstCodePointIterator const& b)
    {
        return !(a == b);
    }

private:
    static bool isHigh(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
    static bool isLow(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

    static char32_t join(char16_t high, char16_t low)
    {
        return 0x10000 + ((char32_t(high) & 0x3FF) << 10) + (char32_t(low) & 0x3FF);
    }

    int unitsAt() const;
    int unitsBefore() const;

    Text const* m_text = nullptr;
    int m_index = 0;
};

/// Raises the failure of an iterator that leaves its text.
[[noreturn]] KORSYS_EXPORT void ThrowCodePointIteratorOutside();

template <class Text>
int TConstCodePointIterator<Text>::unitsAt() const
{
    if (m_text == nullptr || m_index < 0 || m_index >= m_text->length()) {
        ThrowCodePointIteratorOutside();
    }
    char16_t const* const p = m_text->constData() + m_index;
    return isHigh(p[0]) && isLow(p[1]) ? 2 : 1; // p[1] is the terminating zero at the latest
}

template <class Text>
int TConstCodePointIterator<Text>::unitsBefore() const
{
    if (m_text == nullptr || m_index <= 0 || m_index > m_text->length()) {
        ThrowCodePointIteratorOutside();
    }
    char16_t const* const p = m_text->constData() + m_index;
    return m_index >= 2 && isLow(p[-1]) && isHigh(p[-2]) ? 2 : 1;
}
