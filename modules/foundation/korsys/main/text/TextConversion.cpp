#include "korsys/main/text/TextConversion_p.h"

#include "korsys/main/text/TextConversionKernels_p.h"
#include "korsys/main/text/TextConversionScalar_p.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace TextConversion {

namespace {

/// What is encoded at a time on its way into a `std::string`, which cannot grow without filling
/// its new bytes first: the bytes of a piece are still in the nearest cache when they are copied.
constexpr std::size_t kPieceUnits = 2048;
constexpr std::size_t kAsciiPieceUnits = 1024; ///< The same, where the string is filled in place.

/// With some room that lets the encoder work in whole blocks up to the end.
constexpr std::size_t kPieceBytes = 3 * kPieceUnits + 128;

/// Text of fewer bytes stays in the caches, where to count its units costs next to nothing.
constexpr std::size_t kLeastSampled = 64 * 1024;

/// What is decoded at a time of text that seems to be ASCII. A piece with other bytes in it is
/// decoded again.
constexpr std::size_t kDecodedPiece = 32 * 1024;

constexpr char16_t Latin9Unit(unsigned byte)
{
    switch (byte) {
    case 0xA4:
        return 0x20AC;
    case 0xA6:
        return 0x0160;
    case 0xA8:
        return 0x0161;
    case 0xB4:
        return 0x017D;
    case 0xB8:
        return 0x017E;
    case 0xBC:
        return 0x0152;
    case 0xBD:
        return 0x0153;
    case 0xBE:
        return 0x0178;
    default:
        return static_cast<char16_t>(byte);
    }
}

constexpr std::array<char16_t, 256> MakeLatin9Units()
{
    std::array<char16_t, 256> units{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        units[byte] = Latin9Unit(byte);
    }
    return units;
}

constexpr std::array<char16_t, 256> kLatin9Units = MakeLatin9Units();

/// The byte of a unit, or -1. The bytes that differ from Latin-1 all lie in A4..BE.
int Latin9Byte(char16_t unit)
{
    if (unit <= 0xFF && kLatin9Units[unit] == unit) {
        return unit;
    }
    for (int byte = 0xA4; byte <= 0xBE; ++byte) {
        if (kLatin9Units[static_cast<unsigned>(byte)] == unit) {
            return byte;
        }
    }
    return -1;
}

char32_t RepairedUtf32(char32_t codePoint)
{
    return codePoint > 0x10FFFF || IsSurrogate(codePoint) ? kReplacement : codePoint;
}

/// Bytes that are no text are often zeros and plain letters in between.
constexpr std::ptrdiff_t kAsciiBlock = 16;

bool BeginsWithAsciiBlock(char const* from, char const* end)
{
    if (end - from < kAsciiBlock) {
        return false;
    }
    std::uint64_t halves[2];
    std::memcpy(halves, from, sizeof(halves));
    return ((halves[0] | halves[1]) & 0x8080808080808080u) == 0;
}

/// At most a piece, and never the first half of a pair without the second.
std::size_t PieceOf(char16_t const* from, std::size_t n)
{
    if (n <= kPieceUnits) {
        return n;
    }
    return IsHighSurrogate(from[kPieceUnits - 1]) ? kPieceUnits - 1 : kPieceUnits;
}

/// The pieces at the start of the text that are ASCII. They take no count of the whole text before,
/// which would mean to read it twice: all of it may be ASCII.
std::string EncodeAsciiStart(Kernels const& kernels, char16_t const* from, std::size_t n)
{
    std::string ascii;
    if (!kernels.isAsciiUnits(from, std::min(n, kAsciiPieceUnits))) {
        return ascii;
    }
    ascii.reserve(n);
    while (ascii.size() != n) {
        std::size_t const done = ascii.size();
        std::size_t const piece = std::min(n - done, kAsciiPieceUnits);
        ascii.resize(done + piece);
        if (!kernels.encodeAscii(from + done, piece, &ascii[done])) {
            ascii.resize(done);
            break;
        }
    }
    return ascii;
}

/// Makes room for `more` bytes and no others; `reserve` alone may double the memory of a text.
void GrowExactly(std::string& text, std::size_t more)
{
    std::string grown;
    grown.reserve(text.size() + more);
    grown += text;
    text.swap(grown);
}

} // namespace

std::size_t CountUtf16IfWellFormed(char const* from, std::size_t n)
{
    return BestKernels().countUtf16(from, n);
}

bool DecodeWellFormedUtf8(char const* from, std::size_t n, char16_t* to, std::size_t units)
{
    return BestKernels().decodeUtf8(from, n, to, units);
}

std::size_t DecodeUtf8(char const* from, std::size_t n, char16_t* to)
{
    char16_t* const start = to;
    for (char const* const end = from + n; from != end;) {
        if (BeginsWithAsciiBlock(from, end)) {
            to = std::copy_n(from, kAsciiBlock, to);
            from += kAsciiBlock;
            continue;
        }
        to = PutUtf16(Repaired(TakeUtf8(from, end)), to);
    }
    return static_cast<std::size_t>(to - start);
}

bool SeemsAscii(char const* from, std::size_t n)
{
    constexpr std::size_t kSamples = 64;
    constexpr std::size_t kSampleBytes = 64;
    if (n < kLeastSampled) {
        return false;
    }
    Kernels const& kernels = BestKernels();
    std::size_t const step = (n - kSampleBytes) / (kSamples - 1);
    for (std::size_t i = 0; i < kSamples; ++i) {
        if (!kernels.isAsciiBytes(from + i * step, kSampleBytes)) {
            return false;
        }
    }
    return true;
}

std::size_t DecodeAsciiStart(char const* from, std::size_t n, char16_t* to)
{
    Kernels const& kernels = BestKernels();
    std::size_t done = 0;
    while (done != n) {
        std::size_t const piece = std::min(n - done, kDecodedPiece);
        if (!kernels.decodeAscii(from + done, piece, to + done)) {
            break;
        }
        done += piece;
    }
    return done;
}

std::size_t CountUtf8(char16_t const* from, std::size_t n)
{
    return BestKernels().countUtf8(from, n);
}

void EncodeUtf8(char16_t const* from, std::size_t n, char* to, std::size_t bytes)
{
    BestKernels().encodeUtf8(from, n, to, bytes);
}

std::string ToUtf8(char16_t const* from, std::size_t n)
{
    Kernels const& kernels = BestKernels();
    char buffer[kPieceBytes];
    if (n <= kPieceUnits) {
        return std::string(buffer, kernels.encodeUtf8(from, n, buffer, kPieceBytes));
    }
    std::string utf8 = EncodeAsciiStart(kernels, from, n);
    if (utf8.size() == n) {
        return utf8;
    }
    from += utf8.size();
    n -= utf8.size();
    GrowExactly(utf8, kernels.countUtf8(from, n));
    while (n != 0) {
        std::size_t const piece = PieceOf(from, n);
        utf8.append(buffer, kernels.encodeUtf8(from, piece, buffer, kPieceBytes));
        from += piece;
        n -= piece;
    }
    return utf8;
}

std::size_t CountUtf16(char32_t const* from, std::size_t n)
{
    std::size_t units = n;
    for (std::size_t i = 0; i < n; ++i) {
        units += from[i] - 0x10000 < 0x100000 ? 1 : 0;
    }
    return units;
}

void Utf32ToUtf16(char32_t const* from, std::size_t n, char16_t* to)
{
    for (std::size_t i = 0; i < n; ++i) {
        to = PutUtf16(RepairedUtf32(from[i]), to);
    }
}

std::size_t CountCodePoints(char16_t const* from, std::size_t n)
{
    return n - BestKernels().countPairs(from, n);
}

void Utf16ToUtf32(char16_t const* from, std::size_t n, char32_t* to)
{
    for (char16_t const* const end = from + n; from != end;) {
        *to++ = Repaired(TakeUtf16(from, end));
    }
}

void Latin1ToUtf16(char const* from, std::size_t n, char16_t* to)
{
    BestKernels().latin1ToUtf16(from, n, to);
}

bool Utf16ToLatin1(char16_t const* from, std::size_t n, char* to)
{
    return BestKernels().utf16ToLatin1(from, n, to);
}

void Latin9ToUtf16(char const* from, std::size_t n, char16_t* to)
{
    for (std::size_t i = 0; i < n; ++i) {
        to[i] = kLatin9Units[static_cast<unsigned char>(from[i])];
    }
}

bool Utf16ToLatin9(char16_t const* from, std::size_t n, char* to)
{
    bool fitted = true;
    for (std::size_t i = 0; i < n; ++i) {
        int const byte = Latin9Byte(from[i]);
        to[i] = byte < 0 ? '?' : static_cast<char>(byte);
        fitted = fitted && byte >= 0;
    }
    return fitted;
}

bool IsAscii(char const* text, std::size_t n)
{
    return BestKernels().isAsciiBytes(text, n);
}

bool IsAscii(char16_t const* text, std::size_t n)
{
    return BestKernels().isAsciiUnits(text, n);
}

} // namespace TextConversion
