// Any bytes, cut anywhere: the detected encoding and the text of every piece agree with a plain
// reading of the same bytes, and only the first piece loses a byte-order mark.

#include "korcoreplatform/main/string/TTextEncoding.h"

#include "korcoreplatform/fuzz/support/FuzzInput.h"
#include "korsys/tests/support/TextPeers.h"

#include <algorithm>

namespace {

/// The text of a piece that is behind the mark, read number by number.
std::u16string PlainReading(EncodingType encoding, std::string const& piece)
{
    std::size_t const width = encoding == EncodingUtf16LE ? 2 : encoding == EncodingUtf32LE ? 4 : 1;
    std::u32string numbers(piece.size() / width, U'\0'); // without the last few bytes
    for (std::size_t i = 0; i < numbers.size() * width; ++i) {
        numbers[i / width] |= char32_t(static_cast<unsigned char>(piece[i])) << (i % width * 8);
    }
    if (!numbers.empty() && numbers.back() == 0) {
        numbers.resize(numbers.find(U'\0'));
    }
    if (encoding == EncodingUtf8) {
        return IcuDecode(std::string(numbers.begin(), numbers.end()));
    }
    std::u16string text;
    for (char32_t const number : numbers) {
        bool const isPoint = number <= 0x10FFFF && !U_IS_SURROGATE(number);
        if (isPoint && number > 0xFFFF) {
            text += {U16_LEAD(number), U16_TRAIL(number)};
        } else {
            text += isPoint || width < 4 ? static_cast<char16_t>(number) : u'\uFFFD';
        }
    }
    return text;
}

std::size_t CheckedMarkLength(std::string const& bytes)
{
    using namespace std::string_literals;
    auto const [encoding, bomLength] = DetectEncoding(bytes.data(), bytes.size());
    Require(encoding >= EncodingUtf8 && encoding <= EncodingLatin1);
    bool const isWide = bytes.compare(0, 2, "\xFF\xFE") == 0;
    bool const isWidest = bytes.compare(0, 4, "\xFF\xFE\0\0"s) == 0;
    bool const isUtf8 = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
    Require(bomLength == (isUtf8 ? 3 : isWidest ? 4 : isWide ? 2 : 0));
    Require(bomLength == 0 || encoding == (isUtf8     ? EncodingUtf8
                                           : isWidest ? EncodingUtf32LE
                                                      : EncodingUtf16LE));
    return static_cast<std::size_t>(bomLength);
}

/// Gives the bytes in pieces of `pieceSize` bytes.
void CheckPieces(std::string const& bytes, std::size_t pieceSize)
{
    std::size_t mark = CheckedMarkLength(bytes);
    TTextEncoding encoding(bytes.data(), bytes.size());
    for (std::size_t at = 0; at < bytes.size(); at += pieceSize, mark = 0) {
        std::string const piece = bytes.substr(at, pieceSize);
        Exact const unaligned(piece, at % 4 + 1);
        TString const text = encoding.ToTString(unaligned, piece.size());
        Require(text.toStdU16String() ==
                PlainReading(encoding.Encoding(), piece.substr(std::min(mark, piece.size()))));
    }
}

void CheckNamedCodecs(char const* data)
{
    for (bool const before : {false, true}) {
        bool failed = before;
        TString const text = TStringFromEncoding(data, "no such codec", &failed);
        Require(failed == before && text == TString::fromUtf8(data));
    }
    bool failed = true;
    TString const text = TStringFromEncoding(data, "iso-8859-1", &failed);
    Require(text == TString::fromLatin1(data) && failed == text.isEmpty());
    for (char const* name : {"utf-8", "utf-16", "shift-jis", "gb18030", "iso-2022-jp"}) {
        TStringFromEncoding(data, name, &failed);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    std::string const bytes(data + 1, data + size); // the first byte tells where to cut
    CheckPieces(bytes, bytes.size() + 1);
    CheckPieces(bytes, 1u + data[0]);
    CheckNamedCodecs(bytes.c_str());
    return 0;
}
