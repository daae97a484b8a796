/// Looking at the text of a path without copying it.

#pragma once

#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/text/TCType.h"
#include "korsys/main/text/UnitSearch_p.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace PathText {

/// Why a name with a zero unit in it is refused: Qt would take the file that it begins with.
inline constexpr char kZeroInName[] = "The file name holds a zero character";

inline bool HoldsZero(TString const& name)
{
    return name.contains(u'\0');
}

// Four units at a time: most elements of paths are short, and end within a word or two.

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the first unit is the lowest of a word");

inline constexpr int kWordUnits = 4;
inline constexpr std::uint64_t kOneInEachUnit = 0x0001000100010001;

inline std::uint64_t WordAt(char16_t const* units)
{
    std::uint64_t word;
    std::memcpy(&word, units, sizeof(word));
    return word;
}

/// The highest bit of every unit of the word that is `wanted`. Only units above such a one may be
/// marked by mistake.
inline std::uint64_t Marks(std::uint64_t word, char16_t wanted)
{
    std::uint64_t const zeroWhereFound = word ^ kOneInEachUnit * wanted;
    return (zeroWhereFound - kOneInEachUnit) & ~zeroWhereFound & kOneInEachUnit << 15;
}

/// The units of a path's text, with the zero behind them: a question about the unit at the end
/// needs no look at the length.
struct Units
{
    explicit Units(TString const& text) noexcept : at(text.constData()), length(text.length()) {}

    bool IsSeparator(int i) const { return at[i] == u'/'; }

    bool StartsWith(std::u16string_view text) const
    {
        return std::u16string_view(at, static_cast<std::size_t>(length)).substr(0, text.size()) ==
               text;
    }

    /// The next separator at or after `from`, the length when there is none.
    int SeparatorOrEnd(int from) const
    {
        for (; length - from >= kWordUnits; from += kWordUnits) {
            std::uint64_t const marks = Marks(WordAt(at + from), u'/');
            if (marks != 0) {
                return from + __builtin_ctzll(marks) / 16;
            }
        }
        while (from < length && !IsSeparator(from)) {
            ++from;
        }
        return from;
    }

    int Separator(int from) const
    {
        int const found = SeparatorOrEnd(from);
        return found < length ? found : -1;
    }

    /// The first unit at or after `from` that is no separator.
    int BehindSeparators(int from) const
    {
        while (IsSeparator(from)) {
            ++from;
        }
        return from;
    }

    int BehindLastSeparator() const { return UnitSearch::FindLastUnit(at, length, u'/') + 1; }

    bool IsUNC() const
    {
        return length >= 3 && IsSeparator(0) && IsSeparator(1) &&
               (at[2] != u'?' || (length >= 8 && StartsWith(u"//?/UNC/")));
    }

    int RootNameLength() const
    {
        if (length < 2) {
            return 0;
        }
        if (at[1] == u':') {
            return TCType::isAlpha(at[0]) ? 2 : 0;
        }
        return IsUNC() ? SeparatorOrEnd(2) : 0;
    }

    int RootDirectoryIndex() const
    {
        int const name = RootNameLength();
        return IsSeparator(name) ? name : -1;
    }

    int FilenameIndex() const
    {
        int const index = BehindLastSeparator();
        return index < length || BehindSeparators(0) < length ? index : -1;
    }

    /// What is before the file name that begins at `filename`: without the separator in front of
    /// it, unless that is the root directory.
    int LengthBefore(int filename) const
    {
        return filename > RootDirectoryIndex() + 1 ? filename - 1 : filename;
    }

    /// What of the text is the parent: never all of it.
    int ParentLength() const
    {
        int const filename = FilenameIndex();
        if (filename < 0) {
            return std::max(length - 1, 0);
        }
        int const before = LengthBefore(filename);
        return before < length ? before : 0;
    }

    /// The last dot of the file name, -1 unless something but dots is in front of it.
    int ExtensionDot() const
    {
        int dot = length - 1;
        while (dot > 0 && at[dot] != u'.' && !IsSeparator(dot)) {
            --dot;
        }
        if (dot <= 0 || IsSeparator(dot)) {
            return -1;
        }
        int before = dot - 1;
        while (before > 0 && at[before] == u'.') {
            --before;
        }
        return at[before] == u'.' || IsSeparator(before) ? -1 : dot;
    }

    /// Requires: `position` is within the text.
    int ElementLengthAt(int position) const
    {
        if (position > 0 && !IsSeparator(position)) {
            return SeparatorOrEnd(position) - position;
        }
        int const name = RootNameLength();
        if (position == 0 && name > 0) {
            return name;
        }
        return position == name && IsSeparator(name) ? 1 : SeparatorOrEnd(position) - position;
    }

    /// Requires: `position` is within the text.
    int SeparatorLengthAt(int position) const
    {
        if (!IsSeparator(position) || position == RootNameLength()) {
            return 0;
        }
        return BehindSeparators(position) - position;
    }

    /// Where the element after one that ends before `position` begins.
    int BehindSeparatorAt(int position) const
    {
        return position < length ? position + SeparatorLengthAt(position) : position;
    }

    char16_t const* at;
    int length;
};

} // namespace PathText
