/// Searching, comparing and rewriting UTF-16 text in memory, unit by unit.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <cstddef>
#include <cstring>

/// Kernels on a pointer and a length in units; they know nothing of strings or of characters.
///
/// Lengths are never negative, and a length of 0 allows any pointer. No function reads or writes
/// outside the units it was given, allocates, or throws. Searches return an index from the start of
/// the text, -1 when nothing is found.
///
/// Searching for a text takes time linear in both lengths, also where the needle nearly occurs
/// everywhere (aaaa...ab).
///
/// Thread safety: every function may be called from any thread.
namespace UnitSearch {

KORSYS_EXPORT int FindUnit(char16_t const* text, int length, char16_t unit) noexcept;
KORSYS_EXPORT int FindLastUnit(char16_t const* text, int length, char16_t unit) noexcept;
KORSYS_EXPORT int CountUnit(char16_t const* text, int length, char16_t unit) noexcept;

/// The first occurrence; an empty needle occurs at 0.
KORSYS_EXPORT int FindText(char16_t const* text, int length, char16_t const* needle,
                           int needleLength) noexcept;
/// The last occurrence; an empty needle occurs at `length`.
KORSYS_EXPORT int FindLastText(char16_t const* text, int length, char16_t const* needle,
                               int needleLength) noexcept;
/// Occurrences may overlap: aa is three times in aaaa. An empty needle occurs `length` + 1 times.
KORSYS_EXPORT int CountText(char16_t const* text, int length, char16_t const* needle,
                            int needleLength) noexcept;

/// The first or last unit that is one of the set's; an empty set has none.
KORSYS_EXPORT int FindAnyOf(char16_t const* text, int length, char16_t const* set,
                            int setLength) noexcept;
KORSYS_EXPORT int FindLastAnyOf(char16_t const* text, int length, char16_t const* set,
                                int setLength) noexcept;
/// The first or last unit that is none of the set's; with an empty set that is every unit.
KORSYS_EXPORT int FindNoneOf(char16_t const* text, int length, char16_t const* set,
                             int setLength) noexcept;
KORSYS_EXPORT int FindLastNoneOf(char16_t const* text, int length, char16_t const* set,
                                 int setLength) noexcept;

/// The first index at which the two texts differ, `length` when they are equal.
KORSYS_EXPORT int Mismatch(char16_t const* left, char16_t const* right, int length) noexcept;

/// -1, 0 or 1 by the value of the first differing unit; a text sorts after its own beginnings.
KORSYS_EXPORT int Compare(char16_t const* left, int leftLength, char16_t const* right,
                          int rightLength) noexcept;

inline bool Equal(char16_t const* left, char16_t const* right, int length) noexcept
{
    return length == 0 ||
           std::memcmp(left, right, static_cast<std::size_t>(length) * sizeof(char16_t)) == 0;
}

/// Puts `after` in the place of every `before` and returns how many there were.
KORSYS_EXPORT int ReplaceUnit(char16_t* text, int length, char16_t before, char16_t after) noexcept;

/// Reverses the order of the code points: the two units of a surrogate pair keep their order.
KORSYS_EXPORT void Reverse(char16_t* text, int length) noexcept;

/// The same functions written plainly: what processors without a version of their own run, and what
/// the others are held against.
namespace Scalar {

KORSYS_EXPORT int FindUnit(char16_t const* text, int length, char16_t unit) noexcept;
KORSYS_EXPORT int FindLastUnit(char16_t const* text, int length, char16_t unit) noexcept;
KORSYS_EXPORT int CountUnit(char16_t const* text, int length, char16_t unit) noexcept;
KORSYS_EXPORT int FindText(char16_t const* text, int length, char16_t const* needle,
                           int needleLength) noexcept;
KORSYS_EXPORT int FindLastText(char16_t const* text, int length, char16_t const* needle,
                               int needleLength) noexcept;
KORSYS_EXPORT int CountText(char16_t const* text, int length, char16_t const* needle,
                            int needleLength) noexcept;
KORSYS_EXPORT int FindAnyOf(char16_t const* text, int length, char16_t const* set,
                            int setLength) noexcept;
KORSYS_EXPORT int FindLastAnyOf(char16_t const* text, int length, char16_t const* set,
                                int setLength) noexcept;
KORSYS_EXPORT int FindNoneOf(char16_t const* text, int length, char16_t const* set,
                             int setLength) noexcept;
KORSYS_EXPORT int FindLastNoneOf(char16_t const* text, int length, char16_t const* set,
                                 int setLength) noexcept;
KORSYS_EXPORT int Mismatch(char16_t const* left, char16_t const* right, int length) noexcept;
KORSYS_EXPORT int Compare(char16_t const* left, int leftLength, char16_t const* right,
                          int rightLength) noexcept;
KORSYS_EXPORT int ReplaceUnit(char16_t* text, int length, char16_t before, char16_t after) noexcept;
KORSYS_EXPORT void Reverse(char16_t* text, int length) noexcept;

} // namespace Scalar
} // namespace UnitSearch
