#include "korsys/main/text/TStringErrors_p.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/StringException.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/main/text/TConstCodePointIterator.h"

namespace {

/// Puts the numbers into the places of "%1" and "%2".
TStringCore Filled(char16_t const* message, long long first, long long second = 0)
{
    TStringCore text(message);
    text.replace(TStringCore(u"%1"), TStringCore::number(first));
    text.replace(TStringCore(u"%2"), TStringCore::number(second));
    return text;
}

} // namespace

void TStringErrors::ThrowIndexOutside(std::int64_t index, std::int64_t length)
{
    ThrowError<StringException>(
        Filled(u"TStringCore: index %1 is outside a text of %2 units.", index, length),
        &KorErrorsError::AutoGen_0x9798B690);
}

void TStringErrors::ThrowBadLength(std::int64_t length)
{
    ThrowError<StringException>(Filled(u"TStringCore: length %1 is not valid.", length),
                                &KorErrorsError::AutoGen_0xDBED6C12);
}

void TStringErrors::ThrowTooLong(std::int64_t length)
{
    ThrowError<StringException>(Filled(u"TStringCore: a text of %1 units is too long.", length),
                                &KorErrorsError::AutoGen_0xC83B3D89);
}

void TStringErrors::ThrowNullText(std::int64_t length)
{
    ThrowError<StringException>(Filled(u"TStringCore: null text with length %1.", length),
                                &KorErrorsError::AutoGen_0xB1923A1A);
}

void TStringErrors::ThrowBadBase(int base)
{
    ThrowError<StringException>(Filled(u"TStringCore: %1 is not a number base.", base),
                                &KorErrorsError::AutoGen_0x30E31408);
}

void ThrowCodePointIteratorOutside()
{
    ThrowError<StringException>(
        TStringCore(u"TStringCore: code point iterator moved outside its text."),
        &KorErrorsError::AutoGen_0x4A0E3015);
}
