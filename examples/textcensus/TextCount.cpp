#include "TextCount.h"

#include "korcoreplatform/main/string/TString.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace TextCensus {
namespace {

constexpr char16_t kReplacement = u'\uFFFD';

std::size_t UnitBytes(EncodingType encoding)
{
    switch (encoding) {
    case EncodingUtf16LE:
        return 2;
    case EncodingUtf32LE:
        return 4;
    default:
        return 1;
    }
}

/// Decodes everything. `ToTString` takes bytes that end with a zero for a text that ends at its
/// first one; in a file zeros are characters like all, so those at the end are kept back and added.
TString Decode(TTextEncoding& encoding, char const* data, std::size_t size)
{
    std::size_t const unitBytes = UnitBytes(encoding.Encoding());
    std::size_t const start = static_cast<std::size_t>(encoding.BOMLength());
    std::string_view const units(data + start, (size - start) / unitBytes * unitBytes);
    // With zeros only, nothing is found and the sum wraps to 0.
    std::size_t const usedBytes = units.find_last_not_of('\0') + 1;
    std::size_t const usedUnits = (usedBytes + unitBytes - 1) / unitBytes;
    TString text = encoding.ToTString(data, start + usedUnits * unitBytes);
    text.append(u'\0', static_cast<int>(units.size() / unitBytes - usedUnits));
    return text;
}

template <class Unit>
std::uint64_t CountUnits(char const* data, std::size_t size, Unit wanted)
{
    std::uint64_t count = 0;
    for (std::size_t i = 0; i + sizeof(Unit) <= size; i += sizeof(Unit)) {
        Unit unit;
        std::memcpy(&unit, data + i, sizeof(Unit));
        count += unit == wanted ? 1 : 0;
    }
    return count;
}

std::uint64_t CountOccurrences(std::string_view bytes, std::string_view wanted)
{
    std::uint64_t count = 0;
    for (std::size_t at = bytes.find(wanted); at != bytes.npos; at = bytes.find(wanted, at + 1)) {
        ++count;
    }
    return count;
}

/// The characters U+FFFD that the bytes hold themselves.
std::uint64_t CountSpelledReplacements(EncodingType encoding, char const* data, std::size_t size)
{
    switch (encoding) {
    case EncodingUtf8:
        return CountOccurrences({data, size}, "\xEF\xBF\xBD");
    case EncodingUtf16LE:
        return CountUnits<char16_t>(data, size, kReplacement);
    case EncodingUtf32LE:
        return CountUnits<char32_t>(data, size, kReplacement);
    default:
        return 0;
    }
}

std::uint64_t CountReplacements(TString const& text, EncodingType encoding, char const* data,
                                std::size_t size)
{
    if (!text.contains(kReplacement)) {
        return 0;
    }
    auto const inText = static_cast<std::uint64_t>(text.count(kReplacement));
    return inText - std::min(inText, CountSpelledReplacements(encoding, data, size));
}

/// Goes through a text line by line.
class LineCounter
{
public:
    explicit LineCounter(TextCount& count) : m_count(count) {}

    void Count(TString const& text)
    {
        int const length = text.length();
        bool const hasCR = text.contains(u'\r');
        for (int start = 0; start < length;) {
            int const found = hasCR ? text.findOneOf(u"\r\n", start) : text.indexOf(u'\n', start);
            int const end = found < 0 ? length : found;
            AddLine(end - start);
            start = end + EndingLength(text, end);
        }
        m_count.lineEnding = Kind();
    }

private:
    void AddLine(int codeUnits)
    {
        ++m_count.lines;
        auto const length = static_cast<std::uint64_t>(codeUnits);
        if (m_count.longestLines.MayTake(length)) {
            m_count.longestLines.Take({length, TPath(), m_count.lines});
        }
    }

    int EndingLength(TString const& text, int end)
    {
        char16_t const* const units = text.constData() + end;
        if (end == text.length()) {
            return 0;
        }
        if (units[0] == u'\n') {
            m_hasLF = true;
            return 1;
        }
        bool const isPair = units[1] == u'\n'; // at the end of the text this is its closing zero
        (isPair ? m_hasCRLF : m_hasCR) = true;
        return isPair ? 2 : 1;
    }

    LineEnding Kind() const
    {
        if (m_hasLF + m_hasCRLF + m_hasCR > 1) {
            return LineEnding::Mixed;
        }
        return m_hasLF     ? LineEnding::LF
               : m_hasCRLF ? LineEnding::CRLF
               : m_hasCR   ? LineEnding::CR
                           : LineEnding::None;
    }

    TextCount& m_count;
    bool m_hasLF = false;
    bool m_hasCRLF = false;
    bool m_hasCR = false;
};

} // namespace

TextCount CountText(char const* data, std::size_t size)
{
    TTextEncoding encoding(data, size);
    TString const text = Decode(encoding, data, size);
    auto const markLength = static_cast<std::size_t>(encoding.BOMLength());

    TextCount count;
    count.encoding = encoding.Encoding();
    count.hasByteOrderMark = markLength > 0;
    count.bytes = size;
    count.codeUnits = static_cast<std::uint64_t>(text.length());
    count.replacements =
        CountReplacements(text, count.encoding, data + markLength, size - markLength);
    LineCounter(count).Count(text);
    return count;
}

} // namespace TextCensus
