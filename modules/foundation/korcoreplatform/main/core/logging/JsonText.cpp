#include "korcoreplatform/main/core/logging/JsonText_p.h"

#include "korcoreplatform/main/core/logging/LineBuffer_p.h"
#include "korcoreplatform/main/core/logging/PlainUnits_p.h"
#include "korsys/main/text/NumberText_p.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace TLog::JsonText {
namespace {

constexpr std::size_t kEscapeBytes = 6;
constexpr std::size_t kEscapeScratchBytes = 2; ///< What `WriteHexEscape` overwrites behind it.
constexpr std::size_t kPieceUnits = 512; ///< Room is asked for piece by piece, for the worst case.
constexpr std::size_t kNumberBytes = 32;

/// The letter of the short escape for a unit, 0 when it has none.
constexpr char ShortEscape(char16_t unit)
{
    switch (unit) {
    case u'\b':
        return 'b';
    case u'\t':
        return 't';
    case u'\n':
        return 'n';
    case u'\f':
        return 'f';
    case u'\r':
        return 'r';
    case u'"':
    case u'\\':
        return static_cast<char>(unit);
    default:
        return 0;
    }
}

/// Writes a backslash, "u" and four lower-case hexadecimal digits, which are worked out at once.
char* WriteHexEscape(char* to, char16_t unit)
{
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the first byte is the lowest");
    std::uint32_t const nibbles =
        (unit >> 12 & 0xFu) | (unit & 0x0F00u) | (unit & 0x00F0u) << 12 | (unit & 0x000Fu) << 24;
    std::uint32_t const letters = (nibbles + 0x06060606u) >> 4 & 0x01010101u;
    std::uint32_t const digits = nibbles + 0x30303030u + letters * ('a' - '0' - 10);
    std::uint64_t const bytes = std::uint64_t(digits) << 16 | 'u' << 8 | '\\';
    std::memcpy(to, &bytes, sizeof(bytes));
    return to + kEscapeBytes;
}

char* WriteEscape(char* to, char16_t unit)
{
    char const letter = unit <= u'\\' ? ShortEscape(unit) : '\0';
    if (letter == 0) {
        return WriteHexEscape(to, unit);
    }
    to[0] = '\\';
    to[1] = letter;
    return to + 2;
}

/// Escapes units up to `end` or a zero, at which it returns.
char16_t const* EscapePiece(char16_t const* from, char16_t const* end, char*& to)
{
    while (true) {
        std::size_t const plain = CopyPlainUnits(from, static_cast<std::size_t>(end - from), to);
        from += plain;
        to += plain;
        do {
            if (from == end || *from == 0) {
                return from;
            }
            to = WriteEscape(to, *from++);
        } while (from == end || !IsPlainUnit(*from));
    }
}

/// For escapes and both quotes.
constexpr std::size_t RoomFor(std::ptrdiff_t units)
{
    return static_cast<std::size_t>(units) * kEscapeBytes + 2 + kEscapeScratchBytes;
}

} // namespace

void AppendString(LineBuffer& out, char16_t const* units, std::size_t n)
{
    char16_t const* const end = units + n;
    char16_t const* pieceEnd = units + std::min(n, kPieceUnits);
    char* to = out.Reserve(RoomFor(pieceEnd - units));
    *to++ = '"';
    units = EscapePiece(units, pieceEnd, to);
    while (units == pieceEnd && units != end) {
        out.Commit(to);
        pieceEnd = units + std::min(static_cast<std::size_t>(end - units), kPieceUnits);
        to = out.Reserve(RoomFor(pieceEnd - units));
        units = EscapePiece(units, pieceEnd, to);
    }
    *to++ = '"';
    out.Commit(to);
}

void AppendPlain(LineBuffer& out, std::string_view bytes)
{
    char* to = out.Reserve(bytes.size() + 2);
    *to++ = '"';
    to = std::copy(bytes.begin(), bytes.end(), to);
    *to++ = '"';
    out.Commit(to);
}

void AppendInt(LineBuffer& out, long long value)
{
    char* const to = out.Reserve(kNumberBytes);
    out.Commit(std::to_chars(to, to + kNumberBytes, value).ptr);
}

void AppendDouble(LineBuffer& out, double value)
{
    if (!std::isfinite(value)) {
        out.Append(kNull);
        return;
    }
    NumberText::FloatText const text(value, 'g', 6);
    char* const to = out.Reserve(static_cast<std::size_t>(text.Length()));
    auto const byteOf = [](char16_t unit) { return static_cast<char>(unit); };
    out.Commit(std::transform(text.Data(), text.Data() + text.Length(), to, byteOf));
}

void AppendScientific(LineBuffer& out, double value)
{
    if (value == 0.0 || !std::isfinite(value)) {
        AppendDouble(out, value);
        return;
    }
    char* const to = out.Reserve(kNumberBytes);
    out.Commit(std::to_chars(to, to + kNumberBytes, value, std::chars_format::scientific, 2).ptr);
}

} // namespace TLog::JsonText
