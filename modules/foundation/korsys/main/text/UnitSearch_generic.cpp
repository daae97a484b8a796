#include "korsys/main/text/UnitSearch_p.h"

namespace UnitSearch {

int FindUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    return Scalar::FindUnit(text, length, unit);
}

int FindLastUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    return Scalar::FindLastUnit(text, length, unit);
}

int CountUnit(char16_t const* text, int length, char16_t unit) noexcept
{
    return Scalar::CountUnit(text, length, unit);
}

int FindText(char16_t const* text, int length, char16_t const* needle, int needleLength) noexcept
{
    return Scalar::FindText(text, length, needle, needleLength);
}

int FindLastText(char16_t const* text, int length, char16_t const* needle,
                 int needleLength) noexcept
{
    return Scalar::FindLastText(text, length, needle, needleLength);
}

int CountText(char16_t const* text, int length, char16_t const* needle, int needleLength) noexcept
{
    return Scalar::CountText(text, length, needle, needleLength);
}

int FindAnyOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    return Scalar::FindAnyOf(text, length, set, setLength);
}

int FindLastAnyOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    return Scalar::FindLastAnyOf(text, length, set, setLength);
}

int FindNoneOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    return Scalar::FindNoneOf(text, length, set, setLength);
}

int FindLastNoneOf(char16_t const* text, int length, char16_t const* set, int setLength) noexcept
{
    return Scalar::FindLastNoneOf(text, length, set, setLength);
}

int Mismatch(char16_t const* left, char16_t const* right, int length) noexcept
{
    return Scalar::Mismatch(left, right, length);
}

int Compare(char16_t const* left, int leftLength, char16_t const* right, int rightLength) noexcept
{
    return Scalar::Compare(left, leftLength, right, rightLength);
}

int ReplaceUnit(char16_t* text, int length, char16_t before, char16_t after) noexcept
{
    return Scalar::ReplaceUnit(text, length, before, after);
}

void Reverse(char16_t* text, int length) noexcept
{
    Scalar::Reverse(text, length);
}

} // namespace UnitSearch
