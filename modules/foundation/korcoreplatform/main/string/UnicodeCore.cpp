#include "korcoreplatform/main/string/UnicodeCore.h"

#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TString.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace {

constexpr char16_t kToFailed[] = u"ICU error %1 while converting %2 to UTF8";
constexpr char16_t kFromFailed[] = u"ICU error %1 while converting %2 from UTF8";
constexpr UChar32 kReplacement = 0xFFFD;
constexpr unsigned long kMaxInt = std::numeric_limits<int>::max();

void LogFailure(char16_t const* message, UErrorCode error, TString const& text)
{
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Warn),
               TFormatString(message).arg(static_cast<int>(error)).arg(text));
}

template <class Unit>
std::int32_t Capacity(std::vector<Unit> const& buffer)
{
    return static_cast<std::int32_t>(std::min<std::size_t>(buffer.size(), kMaxInt));
}

/// Fills a converter's buffer by one of the ICU functions. `length` stays when that fails.
template <class Unit, class Source>
UErrorCode Fill(std::vector<Unit>& buffer, int& length,
                Unit* (*convert)(Unit*, std::int32_t, std::int32_t*, Source const*, std::int32_t,
                                 UChar32, std::int32_t*, UErrorCode*),
                Source const* text, int textLength)
{
    std::int32_t needed = 0;
    UErrorCode error = U_ZERO_ERROR;
    convert(buffer.data(), Capacity(buffer), &needed, text, textLength, kReplacement, nullptr,
            &error);
    if (error == U_BUFFER_OVERFLOW_ERROR) {
        buffer.back() = Unit(); // as `assign` may throw
        buffer.assign(static_cast<std::size_t>(needed) + 1, Unit());
        error = U_ZERO_ERROR;
        convert(buffer.data(), Capacity(buffer), &needed, text, textLength, kReplacement, nullptr,
                &error);
    }
    if (U_SUCCESS(error)) {
        length = needed;
    }
    auto const end = static_cast<std::size_t>(length);
    if (end == buffer.size()) {
        buffer.push_back(Unit()); // the result fits without its zero
    }
    buffer[end] = Unit();
    return error;
}

/// What could not be converted, empty when the arguments describe no text.
template <class Unit>
TString TextOf(Unit const* text, int length)
{
    return text == nullptr || length < -1 ? TString() : TString(text, length);
}

} // namespace

namespace UnicodeCore {

ToUTF8::ToUTF8(char16_t const* text) : ToUTF8()
{
    Convert(text, -1);
}

ToUTF8::ToUTF8(char16_t const* text, unsigned long length) : ToUTF8()
{
    (*this)(text, length);
}

void ToUTF8::Convert(char16_t const* text, int length)
{
    UErrorCode const error = Fill(m_buffer, m_length, &u_strToUTF8WithSub, text, length);
    if (U_FAILURE(error)) {
        LogFailure(kToFailed, error, TextOf(text, length));
    }
}

char const* ToUTF8::operator()(char16_t const* text)
{
    Convert(text, -1);
    return Data();
}

char const* ToUTF8::operator()(char16_t const* text, unsigned long length)
{
    if (length > kMaxInt) {
        LogFailure(kToFailed, U_ILLEGAL_ARGUMENT_ERROR, TString());
    } else {
        Convert(text, static_cast<int>(length));
    }
    return Data();
}

FromUTF8::FromUTF8(char const* text) : FromUTF8()
{
    Convert(text, -1);
}

FromUTF8::FromUTF8(char const* text, unsigned long length) : FromUTF8()
{
    (*this)(text, length);
}

void FromUTF8::Convert(char const* text, int length)
{
    UErrorCode const error = Fill(m_buffer, m_length, &u_strFromUTF8WithSub, text, length);
    if (U_FAILURE(error)) {
        LogFailure(kFromFailed, error, TextOf(text, length));
    }
}

char16_t const* FromUTF8::operator()(char const* text)
{
    Convert(text, -1);
    return Data();
}

char16_t const* FromUTF8::operator()(char const* text, unsigned long length)
{
    if (length > kMaxInt) {
        LogFailure(kFromFailed, U_ILLEGAL_ARGUMENT_ERROR, TString());
    } else {
        Convert(text, static_cast<int>(length));
    }
    return Data();
}

} // namespace UnicodeCore
