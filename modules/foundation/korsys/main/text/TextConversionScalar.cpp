#include "korsys/main/text/TextConversionScalar_p.h"

#include "korsys/main/text/TextConversionKernels_p.h"

#include <string>

namespace TextConversion {
namespace {

/// What the first byte of a character says about the rest.
struct Lead
{
    unsigned trailing;     ///< Bytes that follow; 0 for a byte that begins no longer character.
    unsigned char lowest;  ///< The range of the second byte, which keeps out what is too long for
    unsigned char highest; ///< its value, surrogates, and values above 10FFFF.
    unsigned char bits;    ///< The bits of the code point in the first byte.
};

Lead ReadLead(unsigned char byte)
{
    if (byte < 0xC2 || byte > 0xF4) {
        return {0, 0, 0, 0};
    }
    if (byte < 0xE0) {
        return {1, 0x80, 0xBF, static_cast<unsigned char>(byte & 0x1F)};
    }
    if (byte < 0xF0) {
        unsigned char const lowest = byte == 0xE0 ? 0xA0 : 0x80;
        unsigned char const highest = byte == 0xED ? 0x9F : 0xBF;
        return {2, lowest, highest, static_cast<unsigned char>(byte & 0x0F)};
    }
    unsigned char const lowest = byte == 0xF0 ? 0x90 : 0x80;
    unsigned char const highest = byte == 0xF4 ? 0x8F : 0xBF;
    return {3, lowest, highest, static_cast<unsigned char>(byte & 0x07)};
}

} // namespace

char32_t TakeLongerUtf8(char const*& from, char const* end)
{
    Lead lead = ReadLead(static_cast<unsigned char>(*from++));
    if (lead.trailing == 0) {
        return kIllFormed;
    }
    char32_t codePoint = lead.bits;
    for (unsigned left = lead.trailing; left != 0; --left) {
        auto const byte = static_cast<unsigned char>(from != end ? *from : 0);
        if (byte < lead.lowest || byte > lead.highest) {
            return kIllFormed;
        }
        ++from;
        codePoint = (codePoint << 6) | (byte & 0x3F);
        lead.lowest = 0x80;
        lead.highest = 0xBF;
    }
    return codePoint;
}

namespace {

std::size_t CountUtf16Scalar(char const* from, std::size_t n)
{
    std::size_t units = 0;
    for (std::size_t i = 0; i < n; ++i) {
        auto const byte = static_cast<unsigned char>(from[i]);
        // One unit for each byte that is not a trailing one, and the second half of a pair.
        units += ((byte & 0xC0) != 0x80 ? 1 : 0) + (byte >= 0xF0 ? 1 : 0);
    }
    return units;
}

bool DecodeUtf8Scalar(char const* from, std::size_t n, char16_t* to, std::size_t /*units*/)
{
    for (char const* const end = from + n; from != end;) {
        char32_t const taken = TakeUtf8(from, end);
        if (taken == kIllFormed) {
            return false;
        }
        to = PutUtf16(taken, to);
    }
    return true;
}

bool DecodeAsciiScalar(char const* from, std::size_t n, char16_t* to)
{
    unsigned seen = 0;
    for (std::size_t i = 0; i < n; ++i) {
        to[i] = static_cast<unsigned char>(from[i]);
        seen |= to[i];
    }
    return seen < 0x80;
}

std::size_t CountUtf8Scalar(char16_t const* from, std::size_t n)
{
    std::size_t bytes = 0;
    for (char16_t const* const end = from + n; from != end;) {
        char32_t const codePoint = Repaired(TakeUtf16(from, end));
        bytes += 1 + (codePoint >= 0x80 ? 1 : 0) + (codePoint >= 0x800 ? 1 : 0) +
                 (codePoint >= 0x10000 ? 1 : 0);
    }
    return bytes;
}

std::size_t EncodeUtf8Scalar(char16_t const* from, std::size_t n, char* to, std::size_t /*room*/)
{
    char* const start = to;
    for (char16_t const* const end = from + n; from != end;) {
        to = PutUtf8(Repaired(TakeUtf16(from, end)), to);
    }
    return static_cast<std::size_t>(to - start);
}

bool EncodeAsciiScalar(char16_t const* from, std::size_t n, char* to)
{
    unsigned seen = 0;
    for (std::size_t i = 0; i < n; ++i) {
        seen |= from[i];
        to[i] = static_cast<char>(from[i]);
    }
    return seen < 0x80;
}

std::size_t CountPairsScalar(char16_t const* from, std::size_t n)
{
    std::size_t pairs = 0;
    for (std::size_t i = 1; i < n; ++i) {
        pairs += IsHighSurrogate(from[i - 1]) && IsLowSurrogate(from[i]) ? 1 : 0;
    }
    return pairs;
}

void Latin1ToUtf16Scalar(char const* from, std::size_t n, char16_t* to)
{
    for (std::size_t i = 0; i < n; ++i) {
        to[i] = static_cast<unsigned char>(from[i]);
    }
}

bool Utf16ToLatin1Scalar(char16_t const* from, std::size_t n, char* to)
{
    bool fitted = true;
    for (std::size_t i = 0; i < n; ++i) {
        bool const fits = from[i] <= 0xFF;
        to[i] = fits ? static_cast<char>(from[i]) : '?';
        fitted = fitted && fits;
    }
    return fitted;
}

bool IsAsciiScalar(char const* text, std::size_t n)
{
    unsigned seen = 0;
    for (std::size_t i = 0; i < n; ++i) {
        seen |= static_cast<unsigned char>(text[i]);
    }
    return seen < 0x80;
}

bool IsAsciiScalar(char16_t const* text, std::size_t n)
{
    unsigned seen = 0;
    for (std::size_t i = 0; i < n; ++i) {
        seen |= text[i];
    }
    return seen < 0x80;
}

std::size_t LengthScalar(char16_t const* zeroTerminated)
{
    return std::char_traits<char16_t>::length(zeroTerminated);
}

} // namespace

Kernels const kScalarKernels = {
    "scalar",         CountUtf16Scalar,  DecodeUtf8Scalar, DecodeAsciiScalar,   CountUtf8Scalar,
    EncodeUtf8Scalar, EncodeAsciiScalar, CountPairsScalar, Latin1ToUtf16Scalar, Utf16ToLatin1Scalar,
    IsAsciiScalar,    IsAsciiScalar,     LengthScalar,
};

} // namespace TextConversion
