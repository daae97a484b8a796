// Any bytes, cut anywhere: the detected encoding and the text of every piece agree with a plain
// reading of the same bytes, and only the first piece loses a byte-order mark.

#include "korcoreplatform/main/string/TTextEncoding.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

/// The text that bytes are as UTF-8, by ICU.
std::u16string ReadUtf8(Bytes const& bytes)
{
    std::u16string text(bytes.size(), u'\0');
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8WithSub(text.data(), static_cast<std::int32_t>(text.size()), &length,
                         reinterpret_cast<char const*>(bytes.data()),
                         static_cast<std::int32_t>(bytes.size()), 0xFFFD, nullptr, &error);
    Require(U_SUCCESS(error));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

/// Little-endian numbers of `width` bytes, those of the last few bytes dropped.
std::vector<std::uint32_t> Numbers(Bytes const& bytes, std::size_t width)
{
    std::vector<std::uint32_t> numbers(bytes.size() / width);
    for (std::size_t i = 0; i < numbers.size() * width; ++i) {
        numbers[i / width] |= std::uint32_t(bytes[i]) << (i % width * 8);
    }
    return numbers;
}

void AppendCodePoint(std::u16string& text, std::uint32_t c)
{
    if (c > 0xFFFF && c <= 0x10FFFF) {
        text += {U16_LEAD(c), U16_TRAIL(c)};
    } else {
        text += c > 0x10FFFF || U_IS_SURROGATE(c) ? u'\uFFFD' : static_cast<char16_t>(c);
    }
}

/// The text of a piece that is behind the mark, read number by number.
std::u16string PlainReading(EncodingType encoding, Bytes const& piece)
{
    std::size_t const width = encoding == EncodingUtf16LE ? 2 : encoding == EncodingUtf32LE ? 4 : 1;
    std::vector<std::uint32_t> numbers = Numbers(piece, width);
    if (!numbers.empty() && numbers.back() == 0) {
        numbers.erase(std::find(numbers.begin(), numbers.end(), 0u), numbers.end());
    }
    if (encoding == EncodingUtf8) {
        return ReadUtf8(Bytes(numbers.begin(), numbers.end()));
    }
    if (encoding == EncodingUtf32LE) {
        std::u16string text;
        for (std::uint32_t const number : numbers) {
            AppendCodePoint(text, number);
        }
        return text;
    }
    return std::u16string(numbers.begin(), numbers.end());
}

std::size_t CheckedMarkLength(Bytes const& bytes)
{
    auto const [encoding, bomLength] = DetectEncoding(bytes.data(), bytes.size());
    Require(encoding >= EncodingUtf8 && encoding <= EncodingLatin1);
    auto const startsWith = [&bytes](Bytes const& mark) {
        return bytes.size() >= mark.size() && std::equal(mark.begin(), mark.end(), bytes.begin());
    };
    if (bomLength == 0) {
        Require(!startsWith({0xEF, 0xBB, 0xBF}) && !startsWith({0xFF, 0xFE}));
    } else if (encoding == EncodingUtf8) {
        Require(bomLength == 3 && startsWith({0xEF, 0xBB, 0xBF}));
    } else if (encoding == EncodingUtf16LE) {
        Require(bomLength == 2 && startsWith({0xFF, 0xFE}) && !startsWith({0xFF, 0xFE, 0, 0}));
    } else {
        Require(encoding == EncodingUtf32LE && bomLength == 4 && startsWith({0xFF, 0xFE, 0, 0}));
    }
    return static_cast<std::size_t>(bomLength);
}

/// Gives the bytes in pieces of `pieceSize` bytes.
void CheckPieces(Bytes const& bytes, std::size_t pieceSize)
{
    std::size_t mark = CheckedMarkLength(bytes);
    TTextEncoding encoding(bytes);
    for (std::size_t at = 0; at < bytes.size(); at += pieceSize) {
        std::size_t const end = std::min(bytes.size(), at + pieceSize);
        std::size_t const begin = std::min(end, at + mark);
        mark = 0;
        auto const from = bytes.begin() + static_cast<std::ptrdiff_t>(begin);
        Bytes const behindMark(from, bytes.begin() + static_cast<std::ptrdiff_t>(end));
        TString const text = encoding.ToTString(bytes.data() + at, end - at);
        Require(text.toStdU16String() == PlainReading(encoding.Encoding(), behindMark));
    }
}

void CheckNamedCodecs(Bytes const& bytes)
{
    std::string const data(bytes.begin(), bytes.end());
    for (bool const before : {false, true}) {
        bool failed = before;
        TString const text = TStringFromEncoding(data.c_str(), "no such codec", &failed);
        Require(failed == before && text == TString::fromUtf8(data.c_str()));
    }
    bool failed = true;
    TString const text = TStringFromEncoding(data.c_str(), "iso-8859-1", &failed);
    Require(text == TString::fromLatin1(data.c_str()) && failed == text.isEmpty());
    for (char const* name : {"utf-8", "utf-16", "shift-jis", "gb18030", "iso-2022-jp"}) {
        TStringFromEncoding(data.c_str(), name, &failed);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    Bytes const bytes(data + 1, data + size); // the first byte tells where to cut
    CheckPieces(bytes, bytes.size() + 1);
    CheckPieces(bytes, 1u + data[0]);
    CheckNamedCodecs(bytes);
    return 0;
}
