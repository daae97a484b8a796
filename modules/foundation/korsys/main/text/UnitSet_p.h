/// Asking many times whether a unit is in a set.

#pragma once

#include <algorithm>
#include <cstdint>

namespace UnitSet {

/// The set's units, looked through one by one: for few units or few questions.
class List
{
public:
    List(char16_t const* units, int length) : m_units(units), m_length(length) {}

    bool operator()(char16_t unit) const
    {
        char16_t const* const end = m_units + m_length;
        return std::find(m_units, end, unit) != end;
    }

private:
    char16_t const* m_units;
    int m_length;
};

/// A bit for each of the 65536 units.
class Bitmap
{
public:
    Bitmap(char16_t const* units, int length)
    {
        for (int i = 0; i < length; ++i) {
            m_words[units[i] >> 6] |= std::uint64_t(1) << (units[i] & 63);
        }
    }

    bool operator()(char16_t unit) const { return (m_words[unit >> 6] >> (unit & 63) & 1) != 0; }

private:
    std::uint64_t m_words[1024] = {};
};

/// Calls `ask` with the form of the set that suits so many questions; returns what it returns.
template <class Ask>
int With(char16_t const* units, int length, int questions, Ask const& ask)
{
    constexpr std::int64_t kBitmapCost = 512; // about what clearing it takes, in comparisons
    bool const isCheapAsList = std::int64_t(length) * questions <= kBitmapCost || length <= 4;
    return isCheapAsList ? ask(List(units, length)) : ask(Bitmap(units, length));
}

} // namespace UnitSet
