#include "korsys/main/system/TCollator.h"

#include <unicode/ucol.h>
#include <unicode/ustring.h>

namespace {

/// The collator of the default locale, or null when ICU has none. It is opened once and never
/// closed, so that it also serves static destructors; comparing does not change it.
UCollator const* DefaultCollator() noexcept
{
    static UCollator const* const s_collator = [] {
        UErrorCode status = U_ZERO_ERROR;
        UCollator* const collator = ::ucol_open(nullptr, &status);
        return U_SUCCESS(status) ? collator : nullptr;
    }();
    return s_collator;
}

int Sign(int value)
{
    return (value > 0) - (value < 0);
}

} // namespace

int TCollator::Compare(char16_t const* a, int aLength, char16_t const* b, int bLength) noexcept
{
    UCollator const* const collator = DefaultCollator();
    if (collator == nullptr) {
        return Sign(::u_strCompare(a, aLength, b, bLength, false));
    }
    return Sign(::ucol_strcoll(collator, a, aLength, b, bLength));
}
