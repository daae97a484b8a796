/// Conversions between UTF-16 text and UTF-8, UTF-32, Latin-1 and Latin-9, on plain memory.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <cstddef>
#include <string>

/// Nothing here allocates except `ToUtf8`, nothing throws except for want of memory, and no byte
/// outside the given ranges is read or written, except that `Length` reads some beside the text.
/// Lengths are in elements of the pointer that stands before them: bytes, 16-bit units or 32-bit
/// code points. A pointer may be null when its length is 0. Embedded zeros and byte order marks are
/// ordinary characters.
///
/// Conversion never fails. What cannot be converted is replaced:
/// - U+FFFD stands for each maximal ill-formed part of UTF-8: the bytes that begin a character but
///   do not finish it, or one byte that cannot begin any;
/// - U+FFFD stands for each unpaired surrogate of UTF-16, and for each UTF-32 element that is a
///   surrogate or lies above 10FFFF;
/// - '?' stands for each unit that Latin-1 or Latin-9 does not have, so for each half of a pair.
///
/// Thread safety: all functions may be called from any thread.
namespace TextConversion {

// UTF-8 to UTF-16. `Utf8ToUtf16` below joins these into one conversion.

/// The units that `from` becomes if it is well-formed; any number up to 2 * n if it is not. The
/// fastest of the counts, as it looks at each byte alone.
KORSYS_EXPORT std::size_t CountUtf16IfWellFormed(char const* from, std::size_t n);

/// Converts well-formed text into exactly the `units` that `CountUtf16IfWellFormed` told for it.
/// Returns false when `from` is ill-formed; `to` then holds anything.
KORSYS_EXPORT bool DecodeWellFormedUtf8(char const* from, std::size_t n, char16_t* to,
                                        std::size_t units);

/// Converts any bytes and returns how many units that made. Requires: `to` has room for n units.
KORSYS_EXPORT std::size_t DecodeUtf8(char const* from, std::size_t n, char16_t* to);

/// Whether the text is long and ASCII in all of many places. Then it has next to as many units as
/// bytes, and to convert it at once is faster than to count first.
KORSYS_EXPORT bool SeemsAscii(char const* from, std::size_t n);

/// Converts ASCII up to a place not far before the first other byte, and returns its length. `to`
/// has room for n units; those behind the returned length hold anything.
KORSYS_EXPORT std::size_t DecodeAsciiStart(char const* from, std::size_t n, char16_t* to);

/// Converts any bytes into a text that `resize` provides. `char16_t* resize(std::size_t units)`
/// makes the text hold exactly `units`, at most n, and returns where they are. New units may hold
/// anything; a call for fewer units than the call before keeps the first ones. There is one call
/// for nearly all text, and further ones for ill-formed text and for long text that is not ASCII in
/// a few places; what the last call asked for is the result.
///
///     TextConversion::Utf8ToUtf16(from, n, [&](std::size_t units) { return Resize(units); });
template <class Resize>
void Utf8ToUtf16(char const* from, std::size_t n, Resize&& resize)
{
    std::size_t const ascii = SeemsAscii(from, n) ? DecodeAsciiStart(from, n, resize(n)) : 0;
    if (ascii == n && n != 0) {
        return;
    }
    std::size_t const units = CountUtf16IfWellFormed(from + ascii, n - ascii);
    if (units <= n - ascii &&
        DecodeWellFormedUtf8(from + ascii, n - ascii, resize(ascii + units) + ascii, units)) {
        return;
    }
    resize(DecodeUtf8(from, n, resize(n))); // too large for a while, rather than read twice
}

// UTF-16 to UTF-8

/// The exact number of bytes that `EncodeUtf8` writes, at most 3 * n.
KORSYS_EXPORT std::size_t CountUtf8(char16_t const* from, std::size_t n);

/// Requires: `bytes` is `CountUtf8(from, n)`, and `to` has room for exactly as many.
KORSYS_EXPORT void EncodeUtf8(char16_t const* from, std::size_t n, char* to, std::size_t bytes);

/// Long text takes the memory that it needs and no more.
KORSYS_EXPORT std::string ToUtf8(char16_t const* from, std::size_t n);

// UTF-32

/// The exact number of units that `Utf32ToUtf16` writes, at most 2 * n.
KORSYS_EXPORT std::size_t CountUtf16(char32_t const* from, std::size_t n);
KORSYS_EXPORT void Utf32ToUtf16(char32_t const* from, std::size_t n, char16_t* to);

/// The number of code points; an unpaired surrogate counts as one. This is the number of elements
/// that `Utf16ToUtf32` writes.
KORSYS_EXPORT std::size_t CountCodePoints(char16_t const* from, std::size_t n);
KORSYS_EXPORT void Utf16ToUtf32(char16_t const* from, std::size_t n, char32_t* to);

// Latin-1 and Latin-9: each byte is one unit, so `to` has room for n elements. The narrowing
// functions return whether every unit fitted.

KORSYS_EXPORT void Latin1ToUtf16(char const* from, std::size_t n, char16_t* to);
KORSYS_EXPORT bool Utf16ToLatin1(char16_t const* from, std::size_t n, char* to);
KORSYS_EXPORT void Latin9ToUtf16(char const* from, std::size_t n, char16_t* to);
KORSYS_EXPORT bool Utf16ToLatin9(char16_t const* from, std::size_t n, char* to);

// Questions

KORSYS_EXPORT bool IsAscii(char const* text, std::size_t n);
KORSYS_EXPORT bool IsAscii(char16_t const* text, std::size_t n);

/// The number of units before the first zero unit.
KORSYS_EXPORT std::size_t Length(char16_t const* zeroTerminated);

} // namespace TextConversion
