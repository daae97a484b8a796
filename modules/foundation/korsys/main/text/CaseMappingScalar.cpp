#include "korsys/main/text/CaseMapping_p.h"
#include "korsys/main/text/CaseTables_p.h"
#include "korsys/main/text/SurrogatePairs_p.h"
#include "korsys/main/text/TextSearch_p.h"

#include <algorithm>

using CaseTables::FoldAt;
using CaseTables::FoldUnit;

namespace CaseMapping {

std::int64_t MappedLength(LetterCase to, char16_t const* text, int length) noexcept
{
    std::int64_t mappedLength = 0;
    for (int index = 0; index < length;) {
        CaseTables::Mapped const mapped = CaseTables::Ask(to, text + index, length - index);
        mappedLength += mapped.written;
        index += mapped.read;
    }
    return mappedLength;
}

void MapAny(LetterCase to, char16_t const* text, int length, char16_t* out) noexcept
{
    for (int index = 0; index < length;) {
        int const done = Map(to, text + index, length - index, out);
        index += done;
        out += done;
        if (index < length) {
            CaseTables::Mapped const mapped = CaseTables::Ask(to, text + index, length - index);
            out = std::copy(mapped.units, mapped.units + mapped.written, out);
            index += mapped.read;
        }
    }
}

int CompareFolded(char16_t const* left, int leftLength, char16_t const* right,
                  int rightLength) noexcept
{
    int const common = std::min(leftLength, rightLength);
    int const at = MismatchFolded(left, right, common);
    if (at < common) {
        return FoldAt(left, at) < FoldAt(right, at) ? -1 : 1;
    }
    return leftLength == rightLength ? 0 : leftLength < rightLength ? -1 : 1;
}

namespace Scalar {
namespace {

auto ScannerFor(char16_t const* text, char16_t unit)
{
    return TextSearch::MakePlainScanner(
        [text, folded = FoldUnit(unit)](int at) { return FoldUnit(text[at]) == folded; });
}

struct FoldedUnits
{
    static char32_t At(char16_t const* text, int index) { return FoldAt(text, index); }

    static int Equal(char16_t const* text, int at, char16_t const* needle, int length)
    {
        return SurrogatePairs::IsInside(text, at)
                   ? 0
                   : Scalar::MismatchFolded(text + at, needle, length);
    }

    template <class Ask>
    static int WithScanner(char16_t const* text, char16_t const* needle, int, Ask const& ask)
    {
        return ask(ScannerFor(text, needle[0]));
    }
};

} // namespace

int FindChange(LetterCase to, char16_t const* text, int length) noexcept
{
    return to == LetterCase::Lower
               ? CaseTables::UnchangedUntil<LetterCase::Lower>(text, 0, length, length)
               : CaseTables::UnchangedUntil<LetterCase::Upper>(text, 0, length, length);
}

int Map(LetterCase to, char16_t const* text, int length, char16_t* out) noexcept
{
    return to == LetterCase::Lower
               ? CaseTables::MapUntil<LetterCase::Lower>(text, 0, length, length, out)
               : CaseTables::MapUntil<LetterCase::Upper>(text, 0, length, length, out);
}

int MismatchFolded(char16_t const* left, char16_t const* right, int length) noexcept
{
    int at = 0;
    while (at < length && FoldAt(left, at) == FoldAt(right, at)) {
        ++at;
    }
    return at;
}

int FindUnitFolded(char16_t const* text, int length, char16_t unit)
{
    return ScannerFor(text, unit).First(length, [](int) { return true; });
}

int FindLastUnitFolded(char16_t const* text, int length, char16_t unit)
{
    return ScannerFor(text, unit).Last(length, [](int) { return true; });
}

int CountUnitFolded(char16_t const* text, int length, char16_t unit)
{
    char16_t const folded = FoldUnit(unit);
    return static_cast<int>(
        std::count_if(text, text + length, [folded](char16_t u) { return FoldUnit(u) == folded; }));
}

int FindTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 1) {
        return Scalar::FindUnitFolded(text, length, needle[0]);
    }
    return TextSearch::FindFirst<FoldedUnits>(text, length, needle, needleLength);
}

int FindLastTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 1) {
        return Scalar::FindLastUnitFolded(text, length, needle[0]);
    }
    return TextSearch::FindLast<FoldedUnits>(text, length, needle, needleLength);
}

int CountTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    if (needleLength == 1) {
        return Scalar::CountUnitFolded(text, length, needle[0]);
    }
    return TextSearch::Count<FoldedUnits>(text, length, needle, needleLength);
}

} // namespace Scalar
} // namespace CaseMapping
