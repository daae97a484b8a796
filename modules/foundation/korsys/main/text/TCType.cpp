#include "korsys/main/text/TCType.h"

#include <unicode/uchar.h>

bool TCType::isWideSpace(char16_t unit) noexcept
{
    return u_isUWhiteSpace(unit) != 0;
}

bool TCType::isAlpha(char16_t unit) noexcept
{
    return u_isalpha(unit) != 0;
}
