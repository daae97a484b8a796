#include "korcoreplatform/main/string/TFormatTemplate_p.h"

#include "korcoreplatform/main/string/TemplateStops_p.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace TFormatDetail {
namespace {

constexpr int kMarkerLimit = 100; ///< Marker numbers are below.

[[noreturn, gnu::cold]] void ThrowTemplateError(char16_t const* message, KorvelError (*makeError)())
{
    ThrowError<TFormatString::Exception>(TString(message), makeError);
}

bool IsDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

/// Reads the markers of a template and checks them on the way.
class MarkerReader
{
public:
    MarkerReader(std::u16string_view text, Zero zero)
        : m_begin(text.data()), m_end(m_begin + text.size()), m_zero(zero)
    {}

    Layout ReadAll(TFormatString::Marker* const markers) const
    {
        char16_t const otherStop = m_zero == Zero::EndsText ? u'\0' : u'%';
        TFormatString::Marker* marker = markers;
        int maxMarker = 0;
        char16_t const* next = m_begin; // what is before it has been read
        std::ptrdiff_t length = m_end - m_begin;
        for (std::ptrdiff_t at = 0; at < length; at += TemplateStops::kMaxUnits) {
            char16_t const* const units = m_begin + at;
            auto const n =
                static_cast<int>(std::min<std::ptrdiff_t>(length - at, TemplateStops::kMaxUnits));
            std::uint64_t bits = TemplateStops::Find(units, n, otherStop);
            for (; bits != 0; bits &= bits - 1) {
                char16_t const* const stop = units + __builtin_ctzll(bits);
                if (*stop == 0) { // a stop only where it ends the text
                    length = stop - m_begin;
                    break;
                }
                if (stop >= next) {
                    next = Read(stop, *marker);
                    maxMarker = std::max(maxMarker, marker->number);
                    ++marker;
                }
            }
        }
        return {{m_begin, static_cast<std::size_t>(length)},
                markers,
                static_cast<int>(marker - markers),
                maxMarker};
    }

private:
    bool IsEnd(char16_t const* at) const
    {
        return at == m_end || (*at == 0 && m_zero == Zero::EndsText);
    }

    /// Returns the end of the marker.
    char16_t const* Read(char16_t const* percent, TFormatString::Marker& marker) const
    {
        char16_t const* at = percent + 1;
        if (IsEnd(at)) {
            ThrowTemplateError(u"Format string ends with an incomplete marker.",
                               &KorErrorsError::AutoGen_0x703C877B);
        }
        int number = 0;
        if (*at == u'%') {
            ++at;
        } else {
            CheckFirstDigit(*at);
            number = ReadNumber(at);
        }
        marker.position = static_cast<int>(percent - m_begin);
        marker.length = static_cast<int>(at - percent);
        marker.number = number;
        return at;
    }

    static void CheckFirstDigit(char16_t c)
    {
        if (c == u'0') {
            ThrowTemplateError(u"Leading zero in marker number in format string.",
                               &KorErrorsError::AutoGen_0xE643480C);
        }
        if (!IsDigit(c)) {
            ThrowTemplateError(u"Invalid numberless marker in format string.",
                               &KorErrorsError::AutoGen_0x4CBC0F36);
        }
    }

    /// Reads the digits at `at` and moves it behind them.
    int ReadNumber(char16_t const*& at) const
    {
        int number = 0;
        for (; at != m_end && IsDigit(*at); ++at) {
            number = number * 10 + (*at - u'0');
            if (number >= kMarkerLimit) {
                ThrowTemplateError(u"Invalid marker number > 99 in format string.",
                                   &KorErrorsError::AutoGen_0x06BAA2A5);
            }
        }
        if (number <= 0) {
            ThrowNotPositive(IsEnd(at));
        }
        return number;
    }

    [[noreturn]] static void ThrowNotPositive(bool atEnd)
    {
        if (atEnd) {
            ThrowTemplateError(u"Format string ends with an invalid marker number <= 0.",
                               &KorErrorsError::AutoGen_0xD6462A0F);
        }
        ThrowTemplateError(u"Invalid marker number <= 0 in format string.",
                           &KorErrorsError::AutoGen_0x0C641F97);
    }

    char16_t const* m_begin;
    char16_t const* m_end;
    Zero m_zero;
};

using Parameters = std::initializer_list<std::u16string_view>;

/// Formats by a template as most are: one of few units, with markers of one digit that have their
/// parameters. Returns false for any other, and for a wrong one.
bool FormatSimple(TString& result, char16_t const* text, std::size_t n, Parameters parameters)
{
    if (n > TemplateStops::kMaxUnits) {
        return false;
    }
    std::uint64_t stops = TemplateStops::Find(text, static_cast<int>(n), u'\0');
    char16_t const* end = text + n;
    std::int64_t length = 0;
    for (std::uint64_t bits = stops; bits != 0; bits &= bits - 1) {
        char16_t const* const stop = text + __builtin_ctzll(bits);
        if (*stop == 0) {
            end = stop;
            stops ^= bits; // what is behind the text
            break;
        }
        bool const isSimple = end - stop > 2 && !IsDigit(stop[2]);
        std::size_t const index = isSimple ? stop[1] - std::size_t(u'1') : parameters.size();
        if (index >= std::min<std::size_t>(parameters.size(), 9)) {
            return false;
        }
        length += static_cast<std::int64_t>(parameters.begin()[index].size()) - 2;
    }
    char16_t* to = result.resizeForOverwrite(TStringErrors::CheckedSum(length + (end - text)));
    char16_t const* from = text; // what is before it has been written
    for (; stops != 0; stops &= stops - 1) {
        char16_t const* const percent = text + __builtin_ctzll(stops);
        to = Write(to, from, percent);
        std::u16string_view const parameter = parameters.begin()[percent[1] - u'1'];
        to = Write(to, parameter.data(), parameter.data() + parameter.size());
        from = percent + 2;
    }
    Write(to, from, end);
    return true;
}

} // namespace

Layout ReadTemplate(std::u16string_view text, Zero zero, TFormatString::Marker* markers)
{
    return MarkerReader(text, zero).ReadAll(markers);
}

void ThrowInsufficientParameters(std::size_t count, Layout const& layout)
{
    TString const text(layout.text.data(), static_cast<int>(layout.text.size()));
    ThrowError<TFormatString::Exception>(
        TFormat(u"Insufficient parameters to format string (have %1, need %2: format string = "
                u"\"%3\").",
                count, layout.maxMarker, text),
        &KorErrorsError::AutoGen_0x24F8A094);
}

void Check(char16_t const* text, std::size_t n, TFormatString::Marker* markers)
{
    ReadTemplate({text, n}, Zero::EndsText, markers);
}

TString Format(char16_t const* text, std::size_t n, TFormatString::Marker* markers,
               Parameters parameters)
{
    TString result;
    if (!FormatSimple(result, text, n, parameters)) {
        result = Render(ReadTemplate({text, n}, Zero::EndsText, markers), parameters.size(),
                        [&](int number) { return parameters.begin()[number - 1]; });
    }
    return result;
}

} // namespace TFormatDetail
