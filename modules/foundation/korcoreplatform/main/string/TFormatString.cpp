#include "korcoreplatform/main/string/TFormatString.h"

#include "korcoreplatform/main/string/TFormatTemplate_p.h"
#include "korsys/main/text/TFormatStringCore.h"
#include "korsys/main/text/UnitSearch_p.h"

#include <algorithm>
#include <climits>
#include <utility>

using TFormatDetail::Layout;

namespace {

std::u16string_view ViewOf(TString const& text)
{
    return TFormatArgument::SharedText(text).View();
}

} // namespace

TFormatString::TFormatString(TString const& formatString)
{
    setTemplate(formatString);
}

TFormatString::TFormatString(char const* formatString) : TFormatString(TString(formatString)) {}

TFormatString::TFormatString(char16_t const* formatString) : TFormatString(TString(formatString)) {}

TFormatString::TFormatString(TFormatString&& other) noexcept
    : m_maxMarker(std::exchange(other.m_maxMarker, 0)), m_markers(std::move(other.m_markers)),
      m_parameters(std::move(other.m_parameters)), m_formatString(std::move(other.m_formatString))
{}

TFormatString& TFormatString::operator=(TFormatString&& other) noexcept
{
    TFormatString moved(std::move(other)); // first: the other may be this object
    std::swap(m_maxMarker, moved.m_maxMarker);
    m_markers.swap(moved.m_markers);
    m_parameters.swap(moved.m_parameters);
    m_formatString.swap(moved.m_formatString);
    return *this;
}

TFormatString& TFormatString::operator=(TString const& formatString)
{
    setTemplate(formatString);
    return *this;
}

TFormatString& TFormatString::operator=(char16_t const* formatString)
{
    return *this = TString(formatString);
}

void TFormatString::setTemplate(TString const& formatString)
{
    // Every marker has a percent sign, so this room is enough, and one allocation.
    int const percentSigns =
        UnitSearch::CountUnit(formatString.constData(), formatString.length(), u'%');
    std::vector<Marker> markers(static_cast<std::size_t>(percentSigns), Marker(0));
    Layout const layout = TFormatDetail::ReadTemplate(ViewOf(formatString),
                                                      TFormatDetail::Zero::IsText, markers.data());
    markers.erase(markers.begin() + layout.markerCount, markers.end());
    m_parameters.reserve(static_cast<std::size_t>(layout.maxMarker));

    m_maxMarker = layout.maxMarker;
    m_markers.swap(markers);
    m_formatString = formatString;
}

TFormatString& TFormatString::arg(TString const& value, int fieldWidth, char16_t fill)
{
    if (fieldWidth == 0) {
        m_parameters.push_back(value);
    } else if (fieldWidth > 0) {
        m_parameters.push_back(value.rightJustified(fieldWidth, fill));
    } else {
        m_parameters.push_back(
            value.leftJustified(fieldWidth == INT_MIN ? INT_MAX : -fieldWidth, fill));
    }
    return *this;
}

TFormatString& TFormatString::arg(char16_t c, int fieldWidth, char16_t fill)
{
    return arg(TString(c, 1), fieldWidth, fill);
}

TFormatString& TFormatString::arg(char c, int fieldWidth, char16_t fill)
{
    return arg(TString(c, 1), fieldWidth, fill);
}

TFormatString& TFormatString::arg(short v, int fieldWidth, int base, char16_t fill)
{
    return arg(TString::number(v, base), fieldWidth, fill);
}

TFormatString& TFormatString::arg(unsigned short v, int fieldWidth, int base, char16_t fill)
{
    return arg(TString::number(v, base), fieldWidth, fill);
}

TFormatString& TFormatString::arg(int v, int fieldWidth, int base, char16_t fill)
{
    return arg(TString::number(v, base), fieldWidth, fill);
}

TFormatString& TFormatString::arg(unsigned int v, int fieldWidth, int base, char16_t fill)
{
    return arg(TString::number(v, base), fieldWidth, fill);
}

TFormatString& TFormatString::arg(long v, int fieldWidth, int base, char16_t fill)
{
    return arg(TString::number(v, base), fieldWidth, fill);
}

TFormatString& TFormatString::arg(unsigned long v, int fieldWidth, int base, char16_t fill)
{
    return arg(TString::number(v, base), fieldWidth, fill);
}

TFormatString& TFormatString::arg(long long v, int fieldWidth, int base, char16_t fill)
{
    return arg(TString::number(v, base), fieldWidth, fill);
}

TFormatString& TFormatString::arg(unsigned long long v, int fieldWidth, int base, char16_t fill)
{
    return arg(TString::number(v, base), fieldWidth, fill);
}

TFormatString& TFormatString::arg(double v, int fieldWidth, char format, int precision,
                                  char16_t fill, bool trimZeros)
{
    return arg(TString::number(v, format, precision < 0 ? 6 : precision, trimZeros), fieldWidth,
               fill);
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2)
{
    return bindAll({&a1, &a2});
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2, TString const& a3)
{
    return bindAll({&a1, &a2, &a3});
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2, TString const& a3,
                                  TString const& a4)
{
    return bindAll({&a1, &a2, &a3, &a4});
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2, TString const& a3,
                                  TString const& a4, TString const& a5)
{
    return bindAll({&a1, &a2, &a3, &a4, &a5});
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2, TString const& a3,
                                  TString const& a4, TString const& a5, TString const& a6)
{
    return bindAll({&a1, &a2, &a3, &a4, &a5, &a6});
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2, TString const& a3,
                                  TString const& a4, TString const& a5, TString const& a6,
                                  TString const& a7)
{
    return bindAll({&a1, &a2, &a3, &a4, &a5, &a6, &a7});
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2, TString const& a3,
                                  TString const& a4, TString const& a5, TString const& a6,
                                  TString const& a7, TString const& a8)
{
    return bindAll({&a1, &a2, &a3, &a4, &a5, &a6, &a7, &a8});
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2, TString const& a3,
                                  TString const& a4, TString const& a5, TString const& a6,
                                  TString const& a7, TString const& a8, TString const& a9)
{
    return bindAll({&a1, &a2, &a3, &a4, &a5, &a6, &a7, &a8, &a9});
}

TFormatString& TFormatString::arg(TString const& a1, TString const& a2, TString const& a3,
                                  TString const& a4, TString const& a5, TString const& a6,
                                  TString const& a7, TString const& a8, TString const& a9,
                                  TString const& a10)
{
    return bindAll({&a1, &a2, &a3, &a4, &a5, &a6, &a7, &a8, &a9, &a10});
}

TFormatString& TFormatString::arg(std::vector<TString> const& list)
{
    m_parameters = list;
    return *this;
}

TFormatString& TFormatString::bindAll(std::initializer_list<TString const*> values)
{
    reserveMore(values.size());
    for (TString const* const value : values) {
        m_parameters.push_back(*value);
    }
    return *this;
}

void TFormatString::reserveMore(std::size_t n)
{
    std::size_t const wanted = m_parameters.size() + n;
    if (wanted > m_parameters.capacity()) {
        m_parameters.reserve(std::max(wanted, 2 * m_parameters.capacity()));
    }
}

TString TFormatString::result() const
{
    Layout const layout{ViewOf(m_formatString), m_markers.data(),
                        static_cast<int>(m_markers.size()), m_maxMarker};
    return TFormatDetail::Render(layout, m_parameters.size(), [this](int number) {
        return ViewOf(m_parameters[static_cast<std::size_t>(number) - 1]);
    });
}

TFormatString::operator TFormatStringCore() const
{
    TFormatStringCore core(m_formatString);
    core.arg(std::vector<TStringCore>(m_parameters.begin(), m_parameters.end()));
    return core;
}

TFormatString::Exception::Exception(TString const& message, TError::ErrorInfo const& errorInfo)
    : KorvelException(message, errorInfo)
{}

TFormatString::Exception::~Exception() = default;

TFormatString::Exception* TFormatString::Exception::Clone() const
{
    return new Exception(*this);
}

void TFormatString::Exception::Throw() const
{
    throw Exception(*this);
}
