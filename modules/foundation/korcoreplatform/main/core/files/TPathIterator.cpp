#include "korcoreplatform/main/core/files/PathText_p.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

using PathText::kWordUnits;
using PathText::Units;

[[noreturn]] void Throw(char16_t const* message, KorvelError (*makeError)())
{
    ThrowError<TPath::Exception>(TString(message), makeError, TError::ErrorSource::Internal, false);
}

/// Copies a few units; returns whether there is a backslash among them.
bool CopyAndFindBackslash(char16_t* to, char16_t const* from, int n)
{
    std::uint64_t found = 0;
    if (n < kWordUnits) {
        for (int i = 0; i < n; ++i) {
            to[i] = from[i];
            found |= from[i] == u'\\';
        }
        return found != 0;
    }
    for (int i = 0; i < n; i += kWordUnits) {
        int const at = std::min(i, n - kWordUnits); // the last word may overlap the one before
        std::uint64_t const word = PathText::WordAt(from + at);
        std::memcpy(to + at, &word, sizeof(word));
        found |= PathText::Marks(word, u'\\');
    }
    return found != 0;
}

/// Where the element after the one of `elementLength` units at `position` begins.
int PositionBehind(Units const& units, int position, int elementLength)
{
    if (position == units.length) {
        Throw(u"TPath::iterator trying to increment beyond end.",
              &KorErrorsError::AutoGen_0x2AFC3482);
    }
    int const next = units.BehindSeparatorAt(position + elementLength);
    if (next > units.length) {
        Throw(u"TPath::iterator out of sync in next.", &KorErrorsError::AutoGen_0x5CD09D9F);
    }
    if (next == position) {
        Throw(u"TPath::iterator found a zero-length element.", &KorErrorsError::AutoGen_0x97C2DA67);
    }
    return next;
}

/// Makes `element` the one at `position`, empty at the end.
/// Requires: `position` is within the text or at its end.
void Read(Units const& units, int position, TString& element)
{
    int const n = position == units.length ? 0 : units.ElementLengthAt(position);
    char16_t* const to = element.resizeForOverwrite(n);
    if (CopyAndFindBackslash(to, units.at + position, n)) {
        element.replace(u'\\', u'/');
    }
}

} // namespace

TString TPath::iterator::get() const
{
    return iterator(m_path, m_position).m_element;
}

TPath::iterator TPath::iterator::next() const
{
    return iterator(m_path, NextPosition());
}

TPath::iterator TPath::iterator::prev() const
{
    return iterator(m_path, PreviousPosition());
}

TPath::iterator& TPath::iterator::operator++()
{
    Units const units(m_path->m_text);
    int const position = PositionBehind(units, m_position, m_element.length());
    Read(units, position, m_element);
    m_position = position;
    return *this;
}

TPath::iterator TPath::iterator::operator++(int)
{
    iterator old = *this;
    ++*this;
    return old;
}

TPath::iterator& TPath::iterator::operator--()
{
    int const position = PreviousPosition();
    ReadElement(position);
    m_position = position;
    return *this;
}

TPath::iterator TPath::iterator::operator--(int)
{
    iterator old = *this;
    --*this;
    return old;
}

int TPath::iterator::NextPosition() const
{
    // The element is as long as it is in the path.
    return PositionBehind(Units(m_path->m_text), m_position, m_element.length());
}

int TPath::iterator::PreviousPosition() const
{
    if (m_position == 0) {
        Throw(u"TPath::iterator trying to decrement beyond beginning.",
              &KorErrorsError::AutoGen_0xA7D4C6D2);
    }
    Units const units(m_path->m_text);
    int previous = 0;
    while (true) {
        int next = previous + m_path->ElementLengthAt(previous);
        if (next < m_position) {
            next = units.BehindSeparatorAt(next);
        }
        if (next == m_position) {
            return previous;
        }
        if (next > m_position) {
            Throw(u"TPath::iterator out of sync in prev.", &KorErrorsError::AutoGen_0xD1461535);
        }
        previous = next;
    }
}

void TPath::iterator::ReadElement(int position)
{
    Units const units(m_path->m_text);
    if (position > units.length) {
        Throw(u"Invalid index in TPath::iterator::get.", &KorErrorsError::AutoGen_0x6C57764F);
    }
    if (position < 0) {
        static_cast<void>(m_path->ElementLengthAt(position)); // throws
    }
    Read(units, position, m_element);
}
