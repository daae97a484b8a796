// Searching a text, taking it apart and putting it together.

#include "korsys/main/text/TStringCore.h"

#include "korsys/main/text/CaseMapping_p.h"
#include "korsys/main/text/TCType.h"
#include "korsys/main/text/TStringErrors_p.h"
#include "korsys/main/text/UnitSearch_p.h"

#include <algorithm>

using TStringErrors::CheckedLength;
using TStringErrors::CheckedSum;

namespace {

struct Range
{
    int begin;
    int end;
};

int FindIn(char16_t const* text, int length, char16_t const* needle, int needleLength,
           TStringCore::CaseSensitivity cs)
{
    return cs == TStringCore::CaseSensitive
               ? UnitSearch::FindText(text, length, needle, needleLength)
               : CaseMapping::FindTextFolded(text, length, needle, needleLength);
}

int FindUnitIn(char16_t const* text, int length, char16_t c, TStringCore::CaseSensitivity cs)
{
    return cs == TStringCore::CaseSensitive ? UnitSearch::FindUnit(text, length, c)
                                            : CaseMapping::FindUnitFolded(text, length, c);
}

int IndexOf(TStringCore const& text, char16_t const* needle, int needleLength, int from,
            TStringCore::CaseSensitivity cs)
{
    int const length = text.length();
    int const start = from < 0 ? from + length : from;
    if (start < 0 || start > length - needleLength) {
        return -1;
    }
    int const found = FindIn(text.constData() + start, length - start, needle, needleLength, cs);
    return found < 0 ? -1 : found + start;
}

int LastIndexOf(TStringCore const& text, char16_t const* needle, int needleLength, int from,
                TStringCore::CaseSensitivity cs)
{
    int const length = text.length();
    int const start = from < 0 ? from + length : from;
    if (needleLength == 0 && start == length) {
        return length;
    }
    if (start < 0 || start >= length || needleLength > length) {
        return -1;
    }
    int const searched = std::min(start, length - needleLength) + needleLength;
    return cs == TStringCore::CaseSensitive
               ? UnitSearch::FindLastText(text.constData(), searched, needle, needleLength)
               : CaseMapping::FindLastTextFolded(text.constData(), searched, needle, needleLength);
}

bool EqualUnits(char16_t const* a, char16_t const* b, int n, TStringCore::CaseSensitivity cs)
{
    return cs == TStringCore::CaseSensitive ? UnitSearch::Equal(a, b, n)
                                            : CaseMapping::EqualFolded(a, b, n);
}

/// Calls `take(begin, end)` for every part of a text of `length` units. `findNext(from)` gives the
/// next separator at or after `from`, -1 if there is none.
template <class FindNext, class Take>
void ForEachPart(int length, int separatorLength, TStringCore::SplitBehavior behavior,
                 FindNext const& findNext, Take const& take)
{
    auto const takePart = [&](int begin, int end) {
        if (begin != end || behavior == TStringCore::KeepEmptyParts) {
            take(begin, end);
        }
    };
    int const step = separatorLength == 0 ? 1 : 0; // an empty separator must not be found again
    int begin = 0;
    int separator = findNext(0);
    while (separator >= 0) {
        takePart(begin, separator);
        begin = separator + separatorLength;
        separator = begin + step <= length ? findNext(begin + step) : -1;
    }
    takePart(begin, length);
}

/// A finder for `ForEachPart`: the separator is a text.
auto TextFinder(char16_t const* data, int length, TStringCore const& sep,
                TStringCore::CaseSensitivity cs)
{
    return [=, needle = sep.constData(), needleLength = sep.length()](int from) {
        int const found = FindIn(data + from, length - from, needle, needleLength, cs);
        return found < 0 ? -1 : found + from;
    };
}

std::vector<Range> Fields(TStringCore const& text, TStringCore const& sep,
                          TStringCore::CaseSensitivity cs)
{
    std::vector<Range> fields;
    ForEachPart(text.length(), sep.length(), TStringCore::KeepEmptyParts,
                TextFinder(text.constData(), text.length(), sep, cs), [&](int begin, int end) {
                    fields.push_back({begin, end});
                });
    return fields;
}

} // namespace

// Search

int TStringCore::indexOf(TStringCore const& text, int from, CaseSensitivity cs) const
{
    return IndexOf(*this, text.constData(), text.length(), from, cs);
}

int TStringCore::indexOf(char16_t const* text, int from, CaseSensitivity cs) const
{
    return IndexOf(*this, text, length(text), from, cs);
}

int TStringCore::indexOf(char16_t c, int from, CaseSensitivity cs) const
{
    int const n = length();
    int const start = std::max(from < 0 ? from + n : from, 0);
    if (start >= n) {
        return -1;
    }
    int const found = FindUnitIn(constData() + start, n - start, c, cs);
    return found < 0 ? -1 : found + start;
}

int TStringCore::lastIndexOf(TStringCore const& text, int from, CaseSensitivity cs) const
{
    return LastIndexOf(*this, text.constData(), text.length(), from, cs);
}

int TStringCore::lastIndexOf(char16_t const* text, int from, CaseSensitivity cs) const
{
    return LastIndexOf(*this, text, length(text), from, cs);
}

int TStringCore::lastIndexOf(char16_t c, int from, CaseSensitivity cs) const
{
    return LastIndexOf(*this, &c, 1, from, cs);
}

bool TStringCore::contains(TStringCore const& text, CaseSensitivity cs) const
{
    return FindIn(constData(), length(), text.constData(), text.length(), cs) >= 0;
}

bool TStringCore::contains(char16_t const* text, CaseSensitivity cs) const
{
    return FindIn(constData(), length(), text, length(text), cs) >= 0;
}

bool TStringCore::contains(char16_t c, CaseSensitivity cs) const
{
    return FindUnitIn(constData(), length(), c, cs) >= 0;
}

int TStringCore::count(TStringCore const& text, CaseSensitivity cs) const
{
    return cs == CaseSensitive
               ? UnitSearch::CountText(constData(), length(), text.constData(), text.length())
               : CaseMapping::CountTextFolded(constData(), length(), text.constData(),
                                              text.length());
}

int TStringCore::count(char16_t const* text, CaseSensitivity cs) const
{
    return count(TStringCore(text), cs);
}

int TStringCore::count(char16_t c, CaseSensitivity cs) const
{
    return cs == CaseSensitive ? UnitSearch::CountUnit(constData(), length(), c)
                               : CaseMapping::CountUnitFolded(constData(), length(), c);
}

bool TStringCore::startsWith(TStringCore const& text, CaseSensitivity cs) const
{
    int const n = text.length();
    return n <= length() && EqualUnits(constData(), text.constData(), n, cs);
}

bool TStringCore::startsWith(char16_t const* text, CaseSensitivity cs) const
{
    int const n = length(text);
    return n <= length() && EqualUnits(constData(), text, n, cs);
}

bool TStringCore::startsWith(char16_t c, CaseSensitivity cs) const
{
    return !isEmpty() && EqualUnits(constData(), &c, 1, cs);
}

bool TStringCore::endsWith(TStringCore const& text, CaseSensitivity cs) const
{
    int const n = text.length();
    return n <= length() && EqualUnits(cend() - n, text.constData(), n, cs);
}

bool TStringCore::endsWith(char16_t const* text, CaseSensitivity cs) const
{
    int const n = length(text);
    return n <= length() && EqualUnits(cend() - n, text, n, cs);
}

bool TStringCore::endsWith(char16_t c, CaseSensitivity cs) const
{
    return !isEmpty() && EqualUnits(cend() - 1, &c, 1, cs);
}

int TStringCore::findChar(char16_t c, int from) const
{
    return indexOf(c, std::max(from, 0));
}

int TStringCore::findStr(TStringCore const& text, int from, CaseSensitivity cs) const
{
    return indexOf(text, std::max(from, 0), cs);
}

int TStringCore::findStr(char16_t const* text, int from, CaseSensitivity cs) const
{
    return indexOf(text, std::max(from, 0), cs);
}

int TStringCore::findStr(char16_t const* text, int len, char16_t const* wanted, int wantedLen,
                         CaseSensitivity cs)
{
    int const n = CheckedLength(text, len);
    return FindIn(text, n, wanted, CheckedLength(wanted, wantedLen), cs);
}

int TStringCore::findOneOf(char16_t const* set, int from) const
{
    int const start = std::clamp(from, 0, length());
    int const found = findOneOf(constData() + start, length() - start, set);
    return found < 0 ? -1 : found + start;
}

int TStringCore::findOneOf(TStringCore const& set, int from) const
{
    int const start = std::clamp(from, 0, length());
    int const found =
        UnitSearch::FindAnyOf(constData() + start, length() - start, set.constData(), set.length());
    return found < 0 ? -1 : found + start;
}

int TStringCore::findOneOf(char16_t const* text, int len, char16_t const* set)
{
    return UnitSearch::FindAnyOf(text, CheckedLength(text, len), set, length(set));
}

int TStringCore::findOneNotOf(char16_t const* set, int from) const
{
    int const start = std::clamp(from, 0, length());
    int const found = findOneNotOf(constData() + start, length() - start, set);
    return found < 0 ? -1 : found + start;
}

int TStringCore::findOneNotOf(TStringCore const& set, int from) const
{
    int const start = std::clamp(from, 0, length());
    int const found =
        findOneNotOf(constData() + start, length() - start, set.constData(), set.length());
    return found < 0 ? -1 : found + start;
}

int TStringCore::findOneNotOf(char16_t c, int from) const
{
    return findOneNotOf(TStringCore(&c, 1), from);
}

int TStringCore::findOneNotOf(char16_t const* text, int len, char16_t const* set)
{
    return findOneNotOf(text, len, set, length(set));
}

int TStringCore::findOneNotOf(char16_t const* text, int len, char16_t const* set, int setLen)
{
    int const n = CheckedLength(text, len);
    return UnitSearch::FindNoneOf(text, n, set, CheckedLength(set, setLen));
}

TStringCore TStringCore::spanIncluding(TStringCore const& set) const
{
    int const end = findOneNotOf(set);
    return end < 0 ? *this : mid(0, end);
}

TStringCore TStringCore::spanExcluding(TStringCore const& set) const
{
    int const end = findOneOf(set);
    return end < 0 ? *this : mid(0, end);
}

// Substring, split, join

TStringCore::Part TStringCore::midPart(int pos, int n) const noexcept
{
    std::int64_t const wantedEnd = n < 0 ? length() : static_cast<std::int64_t>(pos) + n;
    int const end = static_cast<int>(std::min<std::int64_t>(wantedEnd, length()));
    int const begin = std::max(pos, 0);
    return begin < end ? Part{begin, end - begin} : Part{0, 0};
}

TStringCore TStringCore::section(char16_t sep, int start, int end, SectionFlags flags) const
{
    return section(TStringCore(&sep, 1), start, end, flags);
}

TStringCore TStringCore::section(char16_t const* sep, int start, int end, SectionFlags flags) const
{
    return section(TStringCore(sep), start, end, flags);
}

TStringCore TStringCore::section(TStringCore const& sep, int start, int end,
                                 SectionFlags flags) const
{
    bool const skipEmpty = (flags & SectionSkipEmpty) != 0;
    std::vector<Range> const fields =
        Fields(*this, sep, (flags & SectionCaseInsensitiveSeps) ? CaseInsensitive : CaseSensitive);
    auto const counts = [&](Range const& f) { return !skipEmpty || f.begin != f.end; };
    int const fieldCount = static_cast<int>(fields.size());
    int const counted = static_cast<int>(std::count_if(fields.begin(), fields.end(), counts));
    start += start < 0 ? counted : 0;
    end += end < 0 ? counted : 0;
    if (start >= fieldCount || end < 0 || start > end) {
        return TStringCore();
    }
    TStringCore result;
    int firstTaken = start;
    int lastTaken = end;
    int number = 0; // of the counted field that comes next
    for (int i = 0; i < fieldCount && number <= end; ++i) {
        if (number >= start) {
            firstTaken = number == start ? i : firstTaken;
            lastTaken = number == end ? i : lastTaken;
            if (number > start && i > 0) {
                result.append(sep);
            }
            result.append(constData() + fields[i].begin, fields[i].end - fields[i].begin);
        }
        number += counts(fields[i]) ? 1 : 0;
    }
    if ((flags & SectionIncludeLeadingSep) && firstTaken > 0) {
        result.prepend(sep);
    }
    if ((flags & SectionIncludeTrailingSep) && lastTaken < fieldCount - 1) {
        result.append(sep);
    }
    return result;
}

std::vector<TStringCore> TStringCore::split(char16_t const* data, int len, TStringCore const& sep,
                                            SplitBehavior behavior, CaseSensitivity cs)
{
    int const n = CheckedLength(data, len);
    std::vector<TStringCore> parts;
    ForEachPart(n, sep.length(), behavior, TextFinder(data, n, sep, cs),
                [&](int begin, int end) { parts.emplace_back(data + begin, end - begin); });
    return parts;
}

std::vector<TStringCore> TStringCore::split(char16_t const* data, int len, char16_t sep,
                                            SplitBehavior behavior, CaseSensitivity cs)
{
    return split(data, len, TStringCore(&sep, 1), behavior, cs);
}

std::vector<TStringCore> TStringCore::splitOnAny(char16_t const* data, int len,
                                                 TStringCore const& set, SplitBehavior behavior)
{
    int const n = CheckedLength(data, len);
    auto const findNext = [&](int from) {
        int const found =
            UnitSearch::FindAnyOf(data + from, n - from, set.constData(), set.length());
        return found < 0 ? -1 : found + from;
    };
    std::vector<TStringCore> parts;
    ForEachPart(n, 1, behavior, findNext,
                [&](int begin, int end) { parts.emplace_back(data + begin, end - begin); });
    return parts;
}

TStringCore TStringCore::tokenize(char16_t sep, int& pos, SplitBehavior behavior) const
{
    return tokenize(TStringCore(&sep, 1), pos, behavior);
}

TStringCore TStringCore::tokenize(TStringCore const& sep, int& pos, SplitBehavior behavior) const
{
    while (pos >= 0 && pos <= length()) {
        int const begin = pos;
        int const found = sep.isEmpty() ? -1 : indexOf(sep, begin);
        int const end = found < 0 ? length() : found;
        pos = found < 0 ? length() + 1 : found + sep.length();
        if (begin != end || behavior == KeepEmptyParts) {
            return mid(begin, end - begin);
        }
    }
    pos = -1;
    return TStringCore();
}

TStringCore TStringCore::join(std::vector<TStringCore> const& list, TStringCore const& sep)
{
    std::int64_t total = list.empty() ? 0 : std::int64_t(sep.length()) * (list.size() - 1);
    for (TStringCore const& part : list) {
        total += part.length();
    }
    TStringCore result;
    char16_t* to = result.resizeForOverwrite(CheckedSum(total));
    bool first = true;
    for (TStringCore const& part : list) {
        if (!first) {
            copyUnits(to, sep.constData(), sep.length());
            to += sep.length();
        }
        copyUnits(to, part.constData(), part.length());
        to += part.length();
        first = false;
    }
    return result;
}

TStringCore TStringCore::join(std::vector<TStringCore> const& list, char16_t sep)
{
    return join(list, TStringCore(&sep, 1));
}

// Trim and layout

/// Keeps `n` units from `from` on.
TStringCore& TStringCore::keep(int from, int n)
{
    if (n == length()) {
        return *this;
    }
    if (isShared()) {
        TStringCore part(constData() + from, n);
        swap(part);
        return *this;
    }
    char16_t* const units = data();
    std::memmove(units, units + from, static_cast<std::size_t>(n) * sizeof(char16_t));
    TStringManager::resize(n);
    return *this;
}

namespace {

int WhiteSpaceBefore(TStringCore const& text)
{
    return static_cast<int>(std::find_if_not(text.cbegin(), text.cend(), TCType::isSpace) -
                            text.cbegin());
}

/// Index behind the last unit that is not white space; `from` when there is none behind it.
int EndWithoutWhiteSpace(TStringCore const& text, int from)
{
    int end = text.length();
    while (end > from && TCType::isSpace(text.constData()[end - 1])) {
        --end;
    }
    return end;
}

int SetBefore(TStringCore const& text, TStringCore const& set)
{
    int const first = text.findOneNotOf(set);
    return first < 0 ? text.length() : first;
}

int EndWithoutSet(TStringCore const& text, TStringCore const& set)
{
    return 1 + UnitSearch::FindLastNoneOf(text.constData(), text.length(), set.constData(),
                                          set.length());
}

} // namespace

TStringCore& TStringCore::trim()
{
    int const from = WhiteSpaceBefore(*this);
    return keep(from, EndWithoutWhiteSpace(*this, from) - from);
}

TStringCore& TStringCore::trim(char16_t c)
{
    return trim(TStringCore(&c, 1));
}

TStringCore& TStringCore::trim(char16_t const* set)
{
    return trim(TStringCore(set));
}

TStringCore& TStringCore::trim(TStringCore const& set)
{
    int const from = SetBefore(*this, set);
    return keep(from, from == length() ? 0 : EndWithoutSet(*this, set) - from);
}

TStringCore& TStringCore::trimLeft()
{
    int const from = WhiteSpaceBefore(*this);
    return keep(from, length() - from);
}

TStringCore& TStringCore::trimLeft(char16_t c)
{
    return trimLeft(TStringCore(&c, 1));
}

TStringCore& TStringCore::trimLeft(char16_t const* set)
{
    return trimLeft(TStringCore(set));
}

TStringCore& TStringCore::trimLeft(TStringCore const& set)
{
    int const from = SetBefore(*this, set);
    return keep(from, length() - from);
}

TStringCore& TStringCore::trimRight()
{
    return keep(0, EndWithoutWhiteSpace(*this, 0));
}

TStringCore& TStringCore::trimRight(char16_t c)
{
    return trimRight(TStringCore(&c, 1));
}

TStringCore& TStringCore::trimRight(char16_t const* set)
{
    return trimRight(TStringCore(set));
}

TStringCore& TStringCore::trimRight(TStringCore const& set)
{
    return keep(0, EndWithoutSet(*this, set));
}

TStringCore::Part TStringCore::trimmedPart() const noexcept
{
    int const from = WhiteSpaceBefore(*this);
    return {from, EndWithoutWhiteSpace(*this, from) - from};
}

TStringCore TStringCore::leftJustified(int width, char16_t fill, bool truncate) const
{
    int const n = length();
    if (width <= n) {
        return truncate && width >= 0 ? left(width) : *this;
    }
    TStringCore result;
    char16_t* const units = result.resizeForOverwrite(width);
    copyUnits(units, constData(), n);
    std::fill(units + n, units + width, fill);
    return result;
}

TStringCore TStringCore::rightJustified(int width, char16_t fill, bool truncate) const
{
    int const n = length();
    if (width <= n) {
        return truncate && width >= 0 ? left(width) : *this;
    }
    TStringCore result;
    char16_t* const units = result.resizeForOverwrite(width);
    std::fill(units, units + (width - n), fill);
    copyUnits(units + (width - n), constData(), n);
    return result;
}

TStringCore TStringCore::repeated(int times) const
{
    if (times < 1 || isEmpty()) {
        return TStringCore();
    }
    TStringCore result;
    char16_t* to = result.resizeForOverwrite(CheckedSum(std::int64_t(length()) * times));
    for (int i = 0; i < times; ++i) {
        copyUnits(to, constData(), length());
        to += length();
    }
    return result;
}
