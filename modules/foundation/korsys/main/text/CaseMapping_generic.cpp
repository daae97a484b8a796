#include "korsys/main/text/CaseMapping_p.h"

namespace CaseMapping {

int FindChange(LetterCase to, char16_t const* text, int length) noexcept
{
    return Scalar::FindChange(to, text, length);
}

int Map(LetterCase to, char16_t const* text, int length, char16_t* out) noexcept
{
    return Scalar::Map(to, text, length, out);
}

int MismatchFolded(char16_t const* left, char16_t const* right, int length) noexcept
{
    return Scalar::MismatchFolded(left, right, length);
}

int FindUnitFolded(char16_t const* text, int length, char16_t unit)
{
    return Scalar::FindUnitFolded(text, length, unit);
}

int FindLastUnitFolded(char16_t const* text, int length, char16_t unit)
{
    return Scalar::FindLastUnitFolded(text, length, unit);
}

int CountUnitFolded(char16_t const* text, int length, char16_t unit)
{
    return Scalar::CountUnitFolded(text, length, unit);
}

int FindTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    return Scalar::FindTextFolded(text, length, needle, needleLength);
}

int FindLastTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    return Scalar::FindLastTextFolded(text, length, needle, needleLength);
}

int CountTextFolded(char16_t const* text, int length, char16_t const* needle, int needleLength)
{
    return Scalar::CountTextFolded(text, length, needle, needleLength);
}

} // namespace CaseMapping
