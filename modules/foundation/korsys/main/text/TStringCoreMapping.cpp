// Case, the order of code points, line endings and the byte-order mark of a text.

#include "korsys/main/text/CaseMapping_p.h"
#include "korsys/main/text/TStringCore.h"
#include "korsys/main/text/TStringErrors_p.h"
#include "korsys/main/text/UnitSearch_p.h"

#include <algorithm>
#include <utility>

using TStringErrors::CheckedSum;

namespace {

constexpr char16_t kByteOrderMark = 0xFEFF;

int DropCarriageReturns(char16_t* text, int length)
{
    int kept = 0;
    for (int i = 0; i < length; ++i) {
        bool const beforeLineFeed = i + 1 < length && text[i + 1] == u'\n';
        if (text[i] != u'\r' || !beforeLineFeed) {
            text[kept++] = text[i];
        }
    }
    return kept;
}

int CountLoneLineFeeds(TStringCore const& text)
{
    int const pairs = text.contains(u'\r') ? text.count(u"\r\n") : 0;
    return text.count(u'\n') - pairs;
}

/// Most texts that change do so at the first letter; seeing that saves a search.
bool ChangesAtOnce(char16_t first, CaseMapping::LetterCase to)
{
    return to == CaseMapping::LetterCase::Upper ? first >= u'a' && first <= u'z'
                                                : first >= u'A' && first <= u'Z';
}

/// Makes `result`, an empty text, the mapped `text`.
void MapTo(TStringCore& result, TStringCore const& text, CaseMapping::LetterCase to)
{
    char16_t const* const from = text.constData();
    int const length = text.length();
    int const unchanged =
        ChangesAtOnce(from[0], to) ? 0 : CaseMapping::FindChange(to, from, length);
    if (unchanged == length) {
        result = text;
        return;
    }
    char16_t* out = result.resizeForOverwrite(length);
    if (unchanged != 0) {
        std::copy_n(from, unchanged, out);
    }
    int const rest = length - unchanged;
    int const done = unchanged + CaseMapping::Map(to, from + unchanged, rest, out + unchanged);
    if (done < length) {
        std::int64_t const more = CaseMapping::MappedLength(to, from + done, length - done);
        result.truncate(done);
        out = result.TStringManager::resize(CheckedSum(done + more));
        CaseMapping::MapAny(to, from + done, length - done, out + done);
    }
}

} // namespace

void TStringCore::becomeLower(TStringCore const& source)
{
    MapTo(*this, source, CaseMapping::LetterCase::Lower);
}

void TStringCore::becomeUpper(TStringCore const& source)
{
    MapTo(*this, source, CaseMapping::LetterCase::Upper);
}

TStringCore& TStringCore::reverse()
{
    UnitSearch::Reverse(data(), length());
    return *this;
}

TStringCore TStringCore::reversed() const
{
    TStringCore result(*this);
    result.reverse();
    return result;
}

TStringCore& TStringCore::dosToUnix()
{
    int const first = indexOf(u"\r\n");
    if (first >= 0) {
        char16_t* const units = data();
        TStringManager::resize(first + DropCarriageReturns(units + first, length() - first));
    }
    return *this;
}

int TStringCore::dosToUnix(char16_t* text)
{
    if (text == nullptr) {
        return 0;
    }
    int const kept = DropCarriageReturns(text, length(text));
    text[kept] = 0;
    return kept;
}

TStringCore& TStringCore::unixToDos()
{
    int const lone = CountLoneLineFeeds(*this);
    if (lone != 0) {
        TStringCore result;
        char16_t* to = result.resizeForOverwrite(CheckedSum(std::int64_t(length()) + lone));
        char16_t before = 0;
        for (char16_t const unit : std::as_const(*this)) {
            if (unit == u'\n' && before != u'\r') {
                *to++ = u'\r';
            }
            *to++ = before = unit;
        }
        swap(result);
    }
    return *this;
}

bool TStringCore::hasBOM() const noexcept
{
    return constData()[0] == kByteOrderMark;
}

TStringCore& TStringCore::removeBOM()
{
    return hasBOM() ? removeAt(0, 1) : *this;
}

TStringCore& TStringCore::prependBOM()
{
    return hasBOM() ? *this : prepend(kByteOrderMark);
}
