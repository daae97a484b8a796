/// What ICU says about the case of single units, remembered.

#pragma once

#include "korsys/main/text/CaseMapping_p.h"

#include <atomic>
#include <cstdint>

/// The tables behind `CaseMapping`: an entry for each unit, empty until the unit is first met.
///
/// An entry says all there is about its unit in one word, so it is read and written without order:
/// threads that meet a unit at the same time store the same word. The tables start as zeros, so
/// memory is taken only for the parts of Unicode that a process sees.
namespace CaseTables {

using CaseMapping::LetterCase;

/// Set in an entry that holds an answer in its low 16 bits. Never set for surrogates, nor where the
/// answer is not one unit: they are asked for each time.
constexpr std::uint32_t kKnown = 0x10000;

struct Table
{
    std::uint32_t operator[](char16_t unit) const noexcept
    {
        return entries[unit].load(std::memory_order_relaxed);
    }

    std::atomic<std::uint32_t> entries[0x10000];
};

extern Table s_fold;
extern Table s_lower;
extern Table s_upper;

template <LetterCase To>
Table const& TableFor() noexcept
{
    return To == LetterCase::Lower ? s_lower : s_upper;
}

/// The answers where the table has none; they are entered where they can be.
char16_t AskFold(char16_t unit) noexcept;
char32_t AskFoldAt(char16_t const* text, int index) noexcept;

/// A unit by itself: surrogates are kept.
inline char16_t FoldUnit(char16_t unit) noexcept
{
    std::uint32_t const entry = s_fold[unit];
    return (entry & kKnown) != 0 ? static_cast<char16_t>(entry) : AskFold(unit);
}

/// What the unit at `index` counts in a comparison: the folded unit, and for the second unit of a
/// pair the pair's folded code point. The first unit counts as it is, for folding never changes it.
inline char32_t FoldAt(char16_t const* text, int index) noexcept
{
    std::uint32_t const entry = s_fold[text[index]];
    return (entry & kKnown) != 0 ? static_cast<char16_t>(entry) : AskFoldAt(text, index);
}

/// One code point's mapping.
struct Mapped
{
    int read;          ///< Units of the text: 1 or 2.
    int written;       ///< Units in `units`.
    char16_t units[8]; ///< The longest mapping has 3.
};

/// Maps the code point that the text begins with. Requires: `length` > 0.
Mapped Ask(LetterCase to, char16_t const* text, int length) noexcept;

/// Maps the code points that begin before `end`, from `index` on, as `CaseMapping::Map` does.
/// Returns the index of the first one not mapped; that is `end` + 1 after a pair across the end.
template <LetterCase To>
int MapUntil(char16_t const* text, int index, int end, int length, char16_t* out) noexcept
{
    while (index < end) {
        std::uint32_t const entry = TableFor<To>()[text[index]];
        if ((entry & kKnown) != 0) {
            out[index] = static_cast<char16_t>(entry);
            ++index;
            continue;
        }
        Mapped const mapped = Ask(To, text + index, length - index);
        if (mapped.written != mapped.read) {
            break;
        }
        for (int i = 0; i < mapped.read; ++i) {
            out[index + i] = mapped.units[i];
        }
        index += mapped.read;
    }
    return index;
}

/// Whether the mapping changes the code point that begins at `index`; `read` gets its units.
template <LetterCase To>
bool Changes(char16_t const* text, int index, int length, int& read) noexcept
{
    std::uint32_t const entry = TableFor<To>()[text[index]];
    read = 1;
    if ((entry & kKnown) != 0) {
        return static_cast<char16_t>(entry) != text[index];
    }
    Mapped const mapped = Ask(To, text + index, length - index);
    read = mapped.read;
    return mapped.written != read || mapped.units[0] != text[index] ||
           (read == 2 && mapped.units[1] != text[index + 1]);
}

/// The index of the first code point from `index` on that changes. When none does that begins
/// before `end`, that is `end`, or `end` + 1 after a pair across the end.
template <LetterCase To>
int UnchangedUntil(char16_t const* text, int index, int end, int length) noexcept
{
    int read = 0;
    while (index < end && !Changes<To>(text, index, length, read)) {
        index += read;
    }
    return index;
}

/// The units that fold alike: one to `count`, the other places repeat one of them. Today no more
/// than four do; a later ICU has room for more.
struct Variants
{
    static constexpr int kMost = 8;

    int count;
    char16_t units[kMost];
};

/// Throws: `std::bad_alloc` when the table for searching cannot be made at the first call.
Variants VariantsOf(char16_t unit);

} // namespace CaseTables
