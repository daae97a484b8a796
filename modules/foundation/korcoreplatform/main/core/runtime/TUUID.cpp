#include "korcoreplatform/main/core/runtime/TUUID.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/ThrowError.h"

#include <array>
#include <cstdint>

namespace {

constexpr int kBytes = 16;
constexpr int kBracedUnits = 38;
constexpr int kCompactUnits = 32;
constexpr int kBase36Group = 7;  ///< Digits that any 32-bit value fits in.
constexpr int kBase64Group = 11; ///< Digits that any 64-bit value fits in.

std::uint32_t BigEndian32(unsigned char const* bytes)
{
    return std::uint32_t(bytes[0]) << 24 | std::uint32_t(bytes[1]) << 16 |
           std::uint32_t(bytes[2]) << 8 | std::uint32_t(bytes[3]);
}

/// An identifier as four 32-bit values, most significant first.
using Words = std::array<std::uint32_t, 4>;

Words WordsOf(QUuid const& uuid)
{
    return {uuid.data1, std::uint32_t(uuid.data2) << 16 | uuid.data3, BigEndian32(uuid.data4),
            BigEndian32(uuid.data4 + 4)};
}

QUuid FromWords(Words const& words)
{
    QUuid uuid;
    uuid.data1 = words[0];
    uuid.data2 = static_cast<std::uint16_t>(words[1] >> 16);
    uuid.data3 = static_cast<std::uint16_t>(words[1]);
    for (unsigned i = 0; i < 8; ++i) {
        uuid.data4[i] = static_cast<unsigned char>(words[2 + i / 4] >> (24 - i % 4 * 8));
    }
    return uuid;
}

// Text in hexadecimal digits

struct DigitPair
{
    char16_t units[2];
};

/// The two digits of every byte.
constexpr std::array<DigitPair, 256> kDigitPairs = [] {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    std::array<DigitPair, 256> pairs{};
    for (unsigned i = 0; i < pairs.size(); ++i) {
        pairs[i] = {{kDigits[i / 16], kDigits[i % 16]}};
    }
    return pairs;
}();

/// Writes the lowest `bytes` bytes of a value and returns the place behind them.
char16_t* WriteHex(char16_t* to, std::uint32_t value, int bytes)
{
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
        std::memcpy(to, &kDigitPairs[value >> shift & 0xFF], sizeof(DigitPair));
        to += 2;
    }
    return to;
}

TString Braced(Words const& words)
{
    TString text;
    char16_t* to = text.resizeForOverwrite(kBracedUnits);
    *to++ = u'{';
    to = WriteHex(to, words[0], 4);
    *to++ = u'-';
    to = WriteHex(to, words[1] >> 16, 2);
    *to++ = u'-';
    to = WriteHex(to, words[1], 2);
    *to++ = u'-';
    to = WriteHex(to, words[2] >> 16, 2);
    *to++ = u'-';
    to = WriteHex(to, words[2], 2);
    *WriteHex(to, words[3], 4) = u'}';
    return text;
}

TString Compact(Words const& words)
{
    TString text;
    char16_t* to = text.resizeForOverwrite(kCompactUnits);
    for (std::uint32_t const word : words) {
        to = WriteHex(to, word, 4);
    }
    return text;
}

/// The value of every Latin-1 character as a hexadecimal digit; -1 for what is none.
constexpr std::array<std::int8_t, 256> kDigitValues = [] {
    std::array<std::int8_t, 256> values{};
    for (std::int8_t& value : values) {
        value = -1;
    }
    for (unsigned i = 0; i < 10; ++i) {
        values['0' + i] = static_cast<std::int8_t>(i);
    }
    for (unsigned i = 0; i < 6; ++i) {
        values['A' + i] = values['a' + i] = static_cast<std::int8_t>(10 + i);
    }
    return values;
}();

/// Reads the text of an identifier, which a zero ends.
template <class Unit>
QUuid FromHex(Unit const* text)
{
    if (text == nullptr) {
        return QUuid();
    }
    ...
}

} // namespace
