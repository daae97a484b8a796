/// Upper and lower case, and searching and comparing without regard to case, on UTF-16 in memory.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <cstdint>

/// Two independent things on a pointer and a length in units.
///
/// Mapping is the full Unicode mapping without language or context: sharp s becomes SS in upper
/// case, every capital sigma the same small sigma. The result may be longer than the text. To map:
///
///     int const first = FindChange(LetterCase::Upper, text, length);
///     if (first == length) { return the text itself; }
///     // copy `first` units to the result, which has room for `length`
///     int const done = first + Map(LetterCase::Upper, text + first, length - first, out + first);
///     if (done < length) { // seldom: make room for done + MappedLength(... text + done ...)
///         MapAny(LetterCase::Upper, text + done, length - done, out + done);
///     }
///
/// Folding is the simple one: each code point is replaced by one other of the same number of units,
/// so texts that are equal without regard to case are equally long. A surrogate pair folds as one
/// code point; a surrogate without its partner stands for itself.
///
/// All answers are those of the ICU library in the process. What is asked of it is kept in tables
/// that grow on first use and stay until the process ends.
///
/// Lengths are never negative, and a length of 0 allows any pointer. No function touches units
/// outside those it was given.
///
/// Thread safety: every function may be called from any thread.
namespace CaseMapping {

enum class LetterCase
{
    Lower,
    Upper
};

/// The index of the first unit of a code point that the mapping changes, `length` if it has none.
KORSYS_EXPORT int FindChange(LetterCase to, char16_t const* text, int length) noexcept;

/// Maps to `out`, which has room for `length` units and does not overlap the text, up to the first
/// code point whose mapping has another number of units than itself. Returns how many units were
/// read and written.
KORSYS_EXPORT int Map(LetterCase to, char16_t const* text, int length, char16_t* out) noexcept;

/// The number of units of the mapped text.
KORSYS_EXPORT std::int64_t MappedLength(LetterCase to, char16_t const* text, int length) noexcept;

/// Maps the whole text to `out`, which has room for `MappedLength` units and does not overlap it.
KORSYS_EXPORT void MapAny(LetterCase to, char16_t const* text, int length, char16_t* out) noexcept;

/// A code point without its case; a lone surrogate or a number above 0x10FFFF is kept.
KORSYS_EXPORT char32_t Fold(char32_t codePoint) noexcept;

/// The first index at which the folded texts differ, `length` when they are equal.
KORSYS_EXPORT int MismatchFolded(char16_t const* left, char16_t const* right, int length) noexcept;

inline bool EqualFolded(char16_t const* left, char16_t const* right, int length) noexcept
{
    return MismatchFolded(left, right, length) == length;
}

/// -1, 0 or 1 by the first units that differ once folded. After equal high surrogates, a low one
/// counts as the code point that the pair stands for, so it sorts after every other unit.
KORSYS_EXPORT int CompareFolded(char16_t const* left, int leftLength, char16_t const* right,
                                int rightLength) noexcept;

/// As in `UnitSearch`, on folded texts. Units are sought one by one, whether or not they are half
/// of a pair, and so is a needle of one unit; no occurrence of a longer one begins inside a pair.
/// Throws: `std::bad_alloc` when the table for searching cannot be made at its first use.
KORSYS_EXPORT int FindUnitFolded(char16_t const* text, int length, char16_t unit);
KORSYS_EXPORT int FindLastUnitFolded(char16_t const* text, int length, char16_t unit);
KORSYS_EXPORT int CountUnitFolded(char16_t const* text, int length, char16_t unit);
KORSYS_EXPORT int FindTextFolded(char16_t const* text, int length, char16_t const* needle,
                                 int needleLength);
KORSYS_EXPORT int FindLastTextFolded(char16_t const* text, int length, char16_t const* needle,
                                     int needleLength);
KORSYS_EXPORT int CountTextFolded(char16_t const* text, int length, char16_t const* needle,
                                  int needleLength);

/// The same functions written plainly: what processors without a version of their own run, and what
/// the others are held against.
namespace Scalar {

KORSYS_EXPORT int FindChange(LetterCase to, char16_t const* text, int length) noexcept;
KORSYS_EXPORT int Map(LetterCase to, char16_t const* text, int length, char16_t* out) noexcept;
KORSYS_EXPORT int MismatchFolded(char16_t const* left, char16_t const* right, int length) noexcept;
KORSYS_EXPORT int FindUnitFolded(char16_t const* text, int length, char16_t unit);
KORSYS_EXPORT int FindLastUnitFolded(char16_t const* text, int length, char16_t unit);
KORSYS_EXPORT int CountUnitFolded(char16_t const* text, int length, char16_t unit);
KORSYS_EXPORT int FindTextFolded(char16_t const* text, int length, char16_t const* needle,
                                 int needleLength);
KORSYS_EXPORT int FindLastTextFolded(char16_t const* text, int length, char16_t const* needle,
                                     int needleLength);
KORSYS_EXPORT int CountTextFolded(char16_t const* text, int length, char16_t const* needle,
                                  int needleLength);

} // namespace Scalar
} // namespace CaseMapping
