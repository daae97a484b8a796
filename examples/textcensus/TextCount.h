/// The census of one file's bytes.

#pragma once

#include "LongestLines.h"

#include "korcoreplatform/main/string/TTextEncoding.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace TextCensus {

/// What reports call the encodings, in the order of `EncodingType`.
constexpr std::array<char16_t const*, 4> kEncodingNames = {u"utf-8", u"utf-16le", u"utf-32le",
                                                           u"iso-8859-1"};

inline std::size_t IndexOf(EncodingType encoding)
{
    return static_cast<std::size_t>(encoding - EncodingUtf8);
}

/// How the lines of a text end.
enum class LineEnding
{
    LF,
    CRLF,
    CR,
    Mixed, ///< More than one of the above.
    None
};

/// What there is to say about one text.
struct TextCount
{
    EncodingType encoding = EncodingUtf8;
    bool hasByteOrderMark = false;
    LineEnding lineEnding = LineEnding::None;
    std::uint64_t bytes = 0;
    std::uint64_t codeUnits = 0;    ///< After decoding, without the byte-order mark.
    std::uint64_t lines = 0;        ///< The last one counts with or without its ending.
    std::uint64_t replacements = 0; ///< Characters U+FFFD that the bytes did not spell.
    LongestLines longestLines;      ///< Without path.
};

/// Detects the encoding of `size` bytes, decodes them and counts. Nothing of the text is kept.
TextCount CountText(char const* data, std::size_t size);

} // namespace TextCensus
