#include "korcoreplatform/main/string/TTextEncoding.h"

#include "korsys/main/text/TStringErrors_p.h"
#include "korsys/main/text/TextConversion_p.h"

#include <QString>
#include <QTextCodec>
#include <QTextDecoder>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string_view>
#include <tuple>

namespace {

constexpr std::string_view kDeclarationStart = "<?xml";
constexpr std::string_view kBlanks = " \t\r\n";

// What is shorter, in bytes, does not count as a wide declaration.
constexpr std::size_t kMinUtf16Declaration = 11;
constexpr std::size_t kMinUtf32Declaration = 21;

constexpr std::size_t kLongestName = 10; ///< Units of the longest encoding name.

bool StartsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

/// Do the bytes start with an XML declaration in little-endian units of `unitBytes` bytes?
bool StartsWithWideDeclaration(std::string_view bytes, std::size_t unitBytes)
{
    for (std::size_t i = 0; i < kDeclarationStart.size(); ++i) {
        std::string_view const unit = bytes.substr(i * unitBytes, unitBytes);
        if (unit[0] != kDeclarationStart[i] || unit.find_first_not_of('\0', 1) != unit.npos) {
            return false;
        }
    }
    return true;
}

void SkipBlanks(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// The name that a declaration gives for its encoding; empty when it gives none.
std::string_view DeclaredName(std::string_view declaration)
{
    constexpr std::string_view kAttribute = "encoding";
    std::size_t const attribute = declaration.find(kAttribute);
    if (attribute == declaration.npos) {
        return {};
    }
    std::string_view rest = declaration.substr(attribute + kAttribute.size());
    SkipBlanks(rest);
    if (StartsWith(rest, "=")) {
        rest.remove_prefix(1);
        SkipBlanks(rest);
    }
    if (!StartsWith(rest, "\"") && !StartsWith(rest, "'")) {
        return {};
    }
    std::size_t const end = rest.find(rest[0], 1);
    return end == rest.npos ? std::string_view() : rest.substr(1, end - 1);
}

EncodingType EncodingOfName(std::string_view latin1Name)
{
    static std::map<TString, EncodingType> const s_encodings = {
        {u"utf-8", EncodingUtf8},
        {u"utf-16le", EncodingUtf16LE},
        {u"utf-32le", EncodingUtf32LE},
        {u"iso-8859-1", EncodingLatin1},
    };
    if (latin1Name.size() > kLongestName) {
        return EncodingUtf8;
    }
    int const length = static_cast<int>(latin1Name.size());
    TString const name = TString::fromLatin1(latin1Name.data(), length);
    auto const found = s_encodings.find(name.toLower());
    return found == s_encodings.end() ? EncodingUtf8 : found->second;
}

/// The encoding of bytes that start with no mark.
EncodingType MarklessEncoding(std::string_view bytes)
{
    if (StartsWith(bytes, kDeclarationStart)) {
        std::size_t const end = bytes.find("?>", kDeclarationStart.size());
        return end == bytes.npos ? EncodingUtf8
                                 : EncodingOfName(DeclaredName(bytes.substr(0, end)));
    }
    if (bytes.size() >= kMinUtf16Declaration && StartsWithWideDeclaration(bytes, 2)) {
        return EncodingUtf16LE;
    }
    if (bytes.size() >= kMinUtf32Declaration && StartsWithWideDeclaration(bytes, 4)) {
        return EncodingUtf32LE;
    }
    return EncodingUtf8;
}

/// The unit at an index, in the byte order of the data. The bytes need no alignment.
template <class Unit>
Unit RawUnit(char const* bytes, std::size_t index)
{
    Unit unit;
    std::memcpy(&unit, bytes + index * sizeof(Unit), sizeof(Unit));
    return unit;
}

/// How many of the units are text: those before the first zero when the last is zero, else all.
/// Throws: `StringException` when there are more than a text can hold, before looking at any.
template <class Unit>
int TextLength(char const* bytes, std::size_t size)
{
    std::size_t const units = size / sizeof(Unit);
    if (units > std::size_t(TString::kMaxLength)) {
        TStringErrors::ThrowTooLong(static_cast<std::int64_t>(units));
    }
    if (units == 0 || RawUnit<Unit>(bytes, units - 1) != 0) {
        return static_cast<int>(units);
    }
    if constexpr (sizeof(Unit) == 1) {
        return static_cast<int>(std::strlen(bytes));
    }
    int length = 0;
    while (RawUnit<Unit>(bytes, static_cast<std::size_t>(length)) != 0) {
        ++length;
    }
    return length;
}

/// Copies little-endian units, which need no alignment.
template <class Unit>
void CopyUnits(Unit* to, char const* bytes, std::size_t n)
{
    std::memcpy(to, bytes, n * sizeof(Unit));
    if constexpr (__BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__) {
        for (std::size_t i = 0; i < n; ++i) {
            auto* const unit = reinterpret_cast<unsigned char*>(to + i);
            std::reverse(unit, unit + sizeof(Unit));
        }
    }
}

TString FromUtf16Bytes(char const* bytes, int units)
{
    TString text;
    CopyUnits(text.resizeForOverwrite(units), bytes, static_cast<std::size_t>(units));
    return text;
}

TString FromUtf32Bytes(char const* bytes, int codePoints)
{
    constexpr int kBlock = 1024;
    char32_t block[kBlock];
    TString text;
    text.reserve(codePoints);
    for (int left = codePoints; left > 0; left -= kBlock) {
        auto const n = static_cast<std::size_t>(std::min(left, kBlock));
        CopyUnits(block, bytes, n);
        bytes += n * sizeof(char32_t);
        char16_t* const end = text.extend(static_cast<int>(TextConversion::CountUtf16(block, n)));
        TextConversion::Utf32ToUtf16(block, n, end);
    }
    return text;
}

TString Decoded(EncodingType encoding, char const* bytes, std::size_t size)
{
    switch (encoding) {
    case EncodingUtf8:
        return TString::fromUtf8(bytes, TextLength<char>(bytes, size));
    case EncodingUtf16LE:
        return FromUtf16Bytes(bytes, TextLength<char16_t>(bytes, size));
    case EncodingUtf32LE:
        return FromUtf32Bytes(bytes, TextLength<char32_t>(bytes, size));
    case EncodingLatin1:
        return TString::fromLatin1(bytes, TextLength<char>(bytes, size));
    }
    return TString();
}

} // namespace

std::pair<EncodingType, std::int32_t> DetectEncoding(void const* data, unsigned long size)
{
    using namespace std::string_view_literals;
    std::string_view const bytes(static_cast<char const*>(data), data == nullptr ? 0 : size);
    if (StartsWith(bytes, "\xEF\xBB\xBF")) {
        return {EncodingUtf8, 3};
    }
    if (StartsWith(bytes, "\xFF\xFE\0\0"sv)) {
        return {EncodingUtf32LE, 4};
    }
    if (StartsWith(bytes, "\xFF\xFE")) {
        return {EncodingUtf16LE, 2};
    }
    return {MarklessEncoding(bytes), 0};
}

TTextEncoding::TTextEncoding(void const* data, unsigned long size)
{
    std::tie(m_encoding, m_bomLength) = DetectEncoding(data, size);
}

TTextEncoding::TTextEncoding(std::vector<char> const& data)
    : TTextEncoding(data.data(), data.size())
{}

TTextEncoding::TTextEncoding(std::vector<unsigned char> const& data)
    : TTextEncoding(data.data(), data.size())
{}

TString TTextEncoding::ToTString(void const* data, unsigned long size)
{
    if (data == nullptr || size == 0) {
        return TString();
    }
    auto const offset = m_bomSkipped ? 0 : static_cast<unsigned long>(m_bomLength);
    m_bomSkipped = true;
    if (size <= offset) {
        return TString();
    }
    return Decoded(m_encoding, static_cast<char const*>(data) + offset, size - offset);
}

TString TTextEncoding::ToTString(std::vector<char> const& data)
{
    return ToTString(data.data(), data.size());
}

TString TTextEncoding::ToTString(std::vector<unsigned char> const& data)
{
    return ToTString(data.data(), data.size());
}

TString TStringFromEncoding(char const* data, char const* encodingName, bool* failed)
{
    if (data == nullptr || *data == '\0') {
        return TString();
    }
    bool const isNamed = encodingName != nullptr && *encodingName != '\0';
    QTextCodec* const codec = isNamed ? QTextCodec::codecForName(encodingName) : nullptr;
    if (codec == nullptr) {
        return TString::fromUtf8(data);
    }
    int const size = TStringErrors::CheckedSum(static_cast<std::int64_t>(std::strlen(data)));
    std::unique_ptr<QTextDecoder> const decoder(codec->makeDecoder());
    TString text(decoder->toUnicode(data, size));
    if (failed != nullptr) {
        *failed = decoder->hasFailure();
    }
    return text;
}

// Stands here, so that the text type does not depend on what is made of it.
TString TString::fromEncoding(char const* data, char const* encodingName, bool* failed)
{
    return TStringFromEncoding(data, encodingName, failed);
}
