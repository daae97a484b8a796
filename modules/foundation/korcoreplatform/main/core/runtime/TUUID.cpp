#include "korcoreplatform/main/core/runtime/TUUID.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/ThrowError.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace {

constexpr std::size_t kBytes = 16;
constexpr int kBracedUnits = 38;
constexpr int kCompactUnits = 32;
constexpr std::size_t kUnbracedUnits = 36;
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

/// The byte of a word, 0 for the most significant one.
unsigned char ByteOf(std::uint32_t word, int index)
{
    return static_cast<unsigned char>(word >> (24 - 8 * index));
}

inline QUuid FromWords(Words const& words)
{
    auto const [a, b, c, d] = words;
    return QUuid(a, static_cast<ushort>(b >> 16), static_cast<ushort>(b), ByteOf(c, 0),
                 ByteOf(c, 1), ByteOf(c, 2), ByteOf(c, 3), ByteOf(d, 0), ByteOf(d, 1), ByteOf(d, 2),
                 ByteOf(d, 3));
}

QUuid FromBigEndian(unsigned char const* bytes)
{
    return FromWords({BigEndian32(bytes), BigEndian32(bytes + 4), BigEndian32(bytes + 8),
                      BigEndian32(bytes + 12)});
}

// Writing

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

TString Base36(Words const& words)
{
    TString text;
    text.reserve(kBase36Group * static_cast<int>(words.size()));
    for (std::uint32_t const word : words) {
        text += TString::number(word, 36, kBase36Group, u'0');
    }
    return text;
}

TString Base64(Words const& words)
{
    std::uint64_t const first = std::uint64_t(words[0]) << 32 | words[1];
    std::uint64_t const second = std::uint64_t(words[2]) << 32 | words[3];
    return TString::number(first, 64, kBase64Group, u'0') +
           TString::number(second, 64, kBase64Group, u'0');
}

// Reading

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

template <class Unit>
unsigned AsNumber(Unit unit)
{
    return std::make_unsigned_t<Unit>(unit);
}

/// Requires: a Latin-1 character.
template <class Unit>
std::int64_t DigitValue(Unit unit)
{
    return kDigitValues[AsNumber(unit)];
}

/// The number that four digits are; negative when one of them is none, as the sign of its value
/// stays to the end. Nearly every text is good, so there is no branch for each digit.
template <class Unit>
std::int64_t ReadFour(Unit const* text)
{
    return DigitValue(text[0]) * 4096 | DigitValue(text[1]) * 256 | DigitValue(text[2]) * 16 |
           DigitValue(text[3]);
}

/// Two groups of four digits as one number, negative as above.
template <class Unit>
std::int64_t ReadEight(Unit const* high, Unit const* low)
{
    return ReadFour(high) * 65536 | ReadFour(low);
}

bool IsLatin1(char const*)
{
    return true;
}

/// Looks at the units of an identifier, four at a time.
bool IsLatin1(char16_t const* text)
{
    static_assert(kUnbracedUnits % 4 == 0);
    std::uint64_t all = 0;
    for (std::size_t i = 0; i < kUnbracedUnits; i += 4) {
        std::uint64_t four;
        std::memcpy(&four, text + i, sizeof(four));
        all |= four;
    }
    return (all & 0xFF00FF00FF00FF00u) == 0;
}

/// Reads an identifier from the start of a text of `length` units.
template <class Unit>
QUuid FromHex(Unit const* text, std::size_t length)
{
    if (length > 0 && text[0] == Unit('{')) {
        ++text;
        --length;
    }
    if (length < kUnbracedUnits || text[8] != Unit('-') || text[13] != Unit('-') ||
        text[18] != Unit('-') || text[23] != Unit('-') || !IsLatin1(text)) {
        return QUuid();
    }
    std::int64_t const words[] = {
        ReadEight(text, text + 4),
        ReadEight(text + 9, text + 14),
        ReadEight(text + 19, text + 24),
        ReadEight(text + 28, text + 32),
    };
    if ((words[0] | words[1] | words[2] | words[3]) < 0) {
        return QUuid();
    }
    return FromWords({std::uint32_t(words[0]), std::uint32_t(words[1]), std::uint32_t(words[2]),
                      std::uint32_t(words[3])});
}

} // namespace

TUUID::TUUID(char const* text) noexcept
    : m_uuid(text == nullptr ? QUuid() : FromHex(text, std::strlen(text)))
{}

TUUID::TUUID(char16_t const* text) noexcept
    : m_uuid(FromHex(text, static_cast<std::size_t>(TString::length(text))))
{}

TUUID::TUUID(TString const& text) noexcept
    : m_uuid(FromHex(text.constData(), static_cast<std::size_t>(text.length())))
{}

TUUID::TUUID(QString const& text) : TUUID(TString(text)) {}

TString TUUID::ToString(TUUIDFormatOption format) const
{
    Words const words = WordsOf(m_uuid);
    switch (format) {
    case TUUIDFormatOption::Compact:
        return Compact(words);
    case TUUIDFormatOption::Base36:
        return Base36(words);
    case TUUIDFormatOption::Base64:
        return Base64(words);
    case TUUIDFormatOption::Braced:
        break;
    }
    return Braced(words);
}

std::vector<unsigned char> TUUID::ToRFC4122() const
{
    std::vector<unsigned char> bytes;
    bytes.reserve(kBytes);
    for (std::uint32_t const word : WordsOf(m_uuid)) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes.push_back(static_cast<unsigned char>(word >> shift));
        }
    }
    return bytes;
}

TUUID TUUID::CreateUUID()
{
    return QUuid::createUuid();
}

TUUID TUUID::FromBase36(TString const& text)
{
    Words words{};
    if (text.length() < kBase36Group * static_cast<int>(words.size())) {
        ThrowError<KorvelException>(TString(u"TUUID::FromBase36: String too short."),
                                    &KorErrorsError::AutoGen_0x318CE3BA);
    }
    bool isGood = true;
    int at = 0;
    for (std::uint32_t& word : words) {
        bool isNumber = false;
        word = text.mid(at, kBase36Group).toUInt(&isNumber, 36);
        isGood = isGood && isNumber;
        at += kBase36Group;
    }
    if (!isGood) {
        ThrowError<KorvelException>(TString(u"TUUID::FromBase36: String cannot be parsed."),
                                    &KorErrorsError::AutoGen_0x9B4122E9);
    }
    return FromWords(words);
}

TUUID TUUID::FromRFC4122(std::vector<unsigned char> const& bytes)
{
    return bytes.size() == kBytes ? FromBigEndian(bytes.data()) : QUuid();
}

TUUID TUUID::FromRFC4122(unsigned char const* bytes, int size)
{
    return bytes != nullptr && size == kBytes ? FromBigEndian(bytes) : QUuid();
}
