#include "korsys/main/text/SurrogatePairs_p.h"
#include "korsys/main/text/TextSearch_p.h"
#include "korsys/main/text/UnitSearch_p.h"
#include "korsys/main/text/UnitSet_p.h"

#include <algorithm>

namespace UnitSearch::Scalar {
namespace {

struct ExactUnits
{
    static char16_t At(char16_t const* text, int index) { return text[index]; }

    static int Equal(char16_t const* text, int at, char16_t const* needle, int length)
    {
        return Scalar::Mismatch(text + at, needle, length);
    }

    template <class Ask>
    static int WithScanner(char16_t const* text, char16_t const* needle, int, Ask const& ask)
    {
        return ask(TextSearch::MakePlainScanner([=](int at) { return text[at] == needle[0]; }));
    }
};

template <class IsWanted>
int FindFirstIf(char16_t const* text, int length, IsWanted const& isWanted)
{
    char16_t const* const found = std::find_if(text, text + length, isWanted);
    return found == text + length ? -1 : static_cast<int>(found - text);
}

template <class IsWanted>
int FindLastIf(char16_t const* text, int length, IsWanted const& isWanted)
{
    while (length > 0 && !isWanted(text[length - 1])) {
        --length;
    }
    return length - 1;
}

} // namespace

int FindUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    return FindFirstIf(text, length, [unit](char16_t u) { return u == unit; });
}

int FindLastUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    return FindLastIf(text, length, [unit](char16_t u) { return u == unit; });
}

int CountUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    return static_cast<int>(std::count(text, text + length, unit));
}

int FindText(char16_t const* text, int length, char16_t const* needle, int needleLength) noexcept
{
    return TextSearch::FindFirst<ExactUnits>(text, length, needle, needleLength);
}

int FindLastText(char16_t const* text, int length, char16_t const* needle,
                 int needleLength) noexcept
{
    return TextSearch::FindLast<ExactUnits>(text, length, needle, needleLength);
}

int CountText(char16_t const* text, int length, char16_t const* needle, int needleLength) noexcept
{
    return TextSearch::Count<ExactUnits>(text, length, needle, needleLength);
}

int FindAnyOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    return UnitSet::With(set, setLength, length,
                         [=](auto const& contains) { return FindFirstIf(text, length, contains); });
}

int FindLastAnyOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    return UnitSet::With(set, setLength, length,
                         [=](auto const& contains) { return FindLastIf(text, length, contains); });
}

int FindNoneOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    return UnitSet::With(set, setLength, length, [=](auto const& contains) {
        return FindFirstIf(text, length, [&](char16_t unit) { return !contains(unit); });
    });
}

int FindLastNoneOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    return UnitSet::With(set, setLength, length, [=](auto const& contains) {
        return FindLastIf(text, length, [&](char16_t unit) { return !contains(unit); });
    });
}

int Mismatch(char16_t const* left, char16_t const* right, int length) noexcept
{
    int at = 0;
    while (at < length && left[at] == right[at]) {
        ++at;
    }
    return at;
}

int Compare(char16_t const* left, int leftLength, char16_t const* right, int rightLength) noexcept
{
    int const common = std::min(leftLength, rightLength);
    int const at = Scalar::Mismatch(left, right, common);
    if (at < common) {
        return left[at] < right[at] ? -1 : 1;
    }
    return leftLength == rightLength ? 0 : leftLength < rightLength ? -1 : 1;
}

int ReplaceUnit(char16_t* text, int length, char16_t before, char16_t after) noexcept
{
    int count = 0;
    for (int at = 0; at < length; ++at) {
        if (text[at] == before) {
            text[at] = after;
            ++count;
        }
    }
    return count;
}

void Reverse(char16_t* text, int length) noexcept
{
    std::reverse(text, text + length);
    SurrogatePairs::Restore(text, length);
}

} // namespace UnitSearch::Scalar
