#include "korsys/main/error/KorErrorsError.h"

#include <cstddef>
#include <iterator>

namespace {

constexpr unsigned int kNumbers[] = {
#define KOR_ERROR_ID(category, kind, number, message) number,
#include "korsys/main/error/KorErrorIds.h"
};

constexpr char const* kSpellings[] = {
#define KOR_ERROR_ID(category, kind, number, message) #number,
#include "korsys/main/error/KorErrorIds.h"
};

constexpr bool AllNumbersDiffer()
{
    for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (kNumbers[i] == kNumbers[j]) {
                return false;
            }
        }
    }
    return true;
}

/// "0x" and exactly eight digits, the letters among them in upper case.
constexpr bool IsSpelledInFull(char const* number)
{
    if (number[0] != '0' || number[1] != 'x') {
        return false;
    }
    int digits = 0;
    for (char const* p = number + 2; *p != '\0'; ++p, ++digits) {
        if (!(*p >= '0' && *p <= '9') && !(*p >= 'A' && *p <= 'F')) {
            return false;
        }
    }
    return digits == 8;
}

constexpr bool AllNumbersAreSpelledInFull()
{
    for (char const* spelling : kSpellings) {
        if (!IsSpelledInFull(spelling)) {
            return false;
        }
    }
    return true;
}

static_assert(AllNumbersDiffer(), "two errors in KorErrorIds.h have the same number");
static_assert(AllNumbersAreSpelledInFull(),
              "a number in KorErrorIds.h is not \"0x\" and eight upper-case digits");

} // namespace

// The number, the digits in the function's name and those in the id string are one token.
#define KOR_ERROR_ID(category, kind, number, message)                                              \
    KorvelError KorErrorsError::kind##_##number()                                                  \
    {                                                                                              \
        return KorvelError::MakeError(number, u"" #category "_" #kind "_" #number);                \
    }
#include "korsys/main/error/KorErrorIds.h"
