#include "korsys/main/text/TFormatStringCore.h"

#include <string>

namespace {

constexpr int kMaxMarker = 99;

bool IsDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

/// Reads the digits at `p` and moves it behind them.
/// Returns their number, or 0 when they are not the number of a marker.
int ReadMarkerNumber(char16_t const*& p, char16_t const* end)
{
    bool const leadingZero = p != end && *p == u'0';
    int number = 0;
    for (; p != end && IsDigit(*p); ++p) {
        if (number <= kMaxMarker) {
            number = number * 10 + (*p - u'0');
        }
    }
    return leadingZero || number > kMaxMarker ? 0 : number;
}

char16_t const* FindPercent(char16_t const* p, char16_t const* end)
{
    char16_t const* const found =
        std::char_traits<char16_t>::find(p, static_cast<std::size_t>(end - p), u'%');
    return found != nullptr ? found : end;
}

void AppendRange(TStringCore& text, char16_t const* begin, char16_t const* end)
{
    text.append(begin, static_cast<int>(end - begin));
}

} // namespace

TFormatStringCore::TFormatStringCore(TStringCore const& formatString) : m_formatString(formatString)
{}

TFormatStringCore& TFormatStringCore::arg(std::vector<TStringCore> const& parameters)
{
    m_parameters = parameters;
    return *this;
}

TStringCore TFormatStringCore::result() const
{
    TStringCore text;
    char16_t const* copied = m_formatString.constData(); // what is before it is in `text`
    char16_t const* const end = copied + m_formatString.length();
    for (char16_t const* percent = FindPercent(copied, end); percent != end;) {
        char16_t const* next = percent + 1;
        if (next != end && *next == u'%') {
            AppendRange(text, copied, next);
            copied = ++next;
        } else {
            int const number = ReadMarkerNumber(next, end);
            if (number > 0 && static_cast<std::size_t>(number) <= m_parameters.size()) {
                AppendRange(text, copied, percent);
                text.append(m_parameters[static_cast<std::size_t>(number) - 1]);
                copied = next;
            }
        }
        percent = FindPercent(next, end);
    }
    AppendRange(text, copied, end);
    return text;
}
