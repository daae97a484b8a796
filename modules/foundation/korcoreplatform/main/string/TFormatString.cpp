#include "korcoreplatform/main/string/TFormatString.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/main/text/TFormatStringCore.h"
#include "korsys/main/text/TStringErrors_p.h"
#include "korsys/main/text/UnitSearch_p.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

using TFormatDetail::Layout;

namespace {

constexpr int kMarkerLimit = 100; ///< Marker numbers are below.

using MakeError = KorvelError (*)();

[[noreturn, gnu::cold]] void ThrowTemplateError(char16_t const* message, MakeError makeError)
{
    ThrowError<TFormatString::Exception>(TString(message), makeError);
}

[[noreturn, gnu::cold]] void ThrowInsufficientParameters(std::size_t count, Layout const& layout)
{
    ThrowError<TFormatString::Exception>(
        TFormat(u"Insufficient parameters to format string (have %1, need %2: format string = "
                u"\"%3\").",
                count, layout.maxMarker,
                TString(layout.text.data(), static_cast<int>(layout.text.size()))),
        &KorErrorsError::AutoGen_0x24F8A094);
}

bool IsDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

/// Whether a template goes on behind a zero unit or ends before it.
enum class Zero
{
    IsText,
    EndsText
};

/// Finds the units at which a reader of templates has to stop, up to 64 units at a time.
class StopFinder
{
public:
    static constexpr int kUnits = 64;

    explicit StopFinder(Zero zero) :
        m_percent(Repeated(u'%')), m_otherStop(Repeated(zero == Zero::EndsText ? u'\0' : u'%'))
    {
    }

    /// One bit for each of `n` units, the first unit's lowest, set for those that are stops.
    std::uint64_t Find(char16_t const* units, int n) const
    {
        std::uint64_t stops = 0;
        int i = 0;
        for (; i + kBlock <= n; i += kBlock) {
            stops |= FindInBlock(units + i) << i;
        }
        for (; i < n; ++i) {
            bool const isStop = units[i] == m_percent[0] || units[i] == m_otherStop[0];
            stops |= std::uint64_t(isStop) << i;
        }
        return stops;
    }

private:
    // Vector types of the compiler: every machine compares eight units in its own way.
    static constexpr int kBlock = 8;
    using Block [[gnu::vector_size(16)]] = std::uint16_t;
    using Halves [[gnu::vector_size(16)]] = std::uint64_t;

    static Block Repeated(std::uint16_t unit)
    {
        return Block{} + unit;
    }

    std::uint64_t FindInBlock(char16_t const* units) const
    {
        constexpr Block kBits = {1, 2, 4, 8, 16, 32, 64, 128};
        Block block;
        std::memcpy(&block, units, sizeof(block));
        Block const bits = reinterpret_cast<Block>((block == m_percent) | (block == m_otherStop)) & kBits;
        Halves const halves = reinterpret_cast<Halves>(bits);
        return (halves[0] | halves[1]) * 0x0001000100010001 >> 48; // adds up the four lanes
    }

    Block m_percent;
    Block m_otherStop;
};

/// Reads the markers of a template and checks them on the way.
class MarkerReader
{
public:
    MarkerReader(std::u16string_view text, Zero zero) :
        m_begin(text.data()), m_end(m_begin + text.size()), m_zero(zero)
    {
    }

    Layout ReadAll(TFormatString::Marker* markers)
    {
        StopFinder const finder(m_zero);
        Layout layout{{}, markers, 0, 0};
        char16_t const* next = m_begin; // what is before it has been read
        for (char16_t const* block = m_begin; block < m_end; block += StopFinder::kUnits) {
            int const n = static_cast<int>(std::min<std::ptrdiff_t>(m_end - block, StopFinder::kUnits));
            std::uint64_t stops = finder.Find(block, n);
            for (; stops != 0; stops &= stops - 1) {
                char16_t const* const stop = block + __builtin_ctzll(stops);
                if (*stop == 0) {
                    m_end = stop;
                } else if (stop >= next) {
                    TFormatString::Marker const marker = Read(stop);
                    next = stop + marker.length;
                    layout.maxMarker = std::max(layout.maxMarker, marker.number);
                    markers[layout.markerCount++] = marker;
                }
            }
        }
        layout.text = {m_begin, static_cast<std::size_t>(m_end - m_begin)};
        return layout;
    }

private:
    bool IsEnd(char16_t const* at) const
    {
        return at == m_end || (*at == 0 && m_zero == Zero::EndsText);
    }

    TFormatString::Marker Read(char16_t const* percent) const
    {
        TFormatString::Marker marker(static_cast<int>(percent - m_begin));
        char16_t const* at = percent + 1;
        if (IsEnd(at)) {
            ThrowTemplateError(u"Format string ends with an incomplete marker.",
                               &KorErrorsError::AutoGen_0x703C877B);
        }
        if (*at != u'%') {
            CheckFirstDigit(*at);
            marker.number = ReadNumber(at);
            marker.length = static_cast<int>(at - percent);
        }
        return marker;
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
            ThrowNotPositive(at);
        }
        return number;
    }

    [[noreturn]] void ThrowNotPositive(char16_t const* behind) const
    {
        if (IsEnd(behind)) {
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

struct UnitCopier : TStringManager
{
    using TStringManager::copyUnits;
};

char16_t* CopyUnits(char16_t const* from, std::size_t n, char16_t* to)
{
    UnitCopier::copyUnits(to, from, static_cast<int>(n));
    return to + n;
}

/// Writes a result. `parameterOf(number)` is the view of a parameter.
template <class ParameterOf>
TString Render(Layout const& layout, std::size_t parameterCount, ParameterOf const& parameterOf)
{
    if (static_cast<std::size_t>(layout.maxMarker) > parameterCount) {
        ThrowInsufficientParameters(parameterCount, layout);
    }
    auto const replacementOf = [&](TFormatString::Marker const& marker) {
        return marker.number == 0 ? std::u16string_view(u"%", 1) : parameterOf(marker.number);
    };
    TFormatString::Marker const* const end = layout.markers + layout.markerCount;
    auto length = static_cast<std::int64_t>(layout.text.size());
    for (TFormatString::Marker const* marker = layout.markers; marker != end; ++marker) {
        length += static_cast<std::int64_t>(replacementOf(*marker).size()) - marker->length;
    }

    TString result;
    char16_t* to = result.resizeForOverwrite(TStringErrors::CheckedSum(length));
    char16_t const* from = layout.text.data();
    for (TFormatString::Marker const* marker = layout.markers; marker != end; ++marker) {
        char16_t const* const percent = layout.text.data() + marker->position;
        to = CopyUnits(from, static_cast<std::size_t>(percent - from), to);
        std::u16string_view const replacement = replacementOf(*marker);
        to = CopyUnits(replacement.data(), replacement.size(), to);
        from = percent + marker->length;
    }
    CopyUnits(from, static_cast<std::size_t>(layout.text.data() + layout.text.size() - from), to);
    return result;
}

std::u16string_view ViewOf(TString const& text)
{
    return TFormatArgument::SharedText(text).View();
}

} // namespace

Layout TFormatDetail::Check(char16_t const* text, std::size_t n, TFormatString::Marker* markers)
{
    return MarkerReader({text, n}, Zero::EndsText).ReadAll(markers);
}

TString TFormatDetail::Format(Layout const& layout,
                              std::initializer_list<std::u16string_view> parameters)
{
    return Render(layout, parameters.size(),
                  [&](int number) { return parameters.begin()[number - 1]; });
}

TFormatString::TFormatString(TString const& formatString)
{
    setTemplate(formatString);
}

TFormatString::TFormatString(char const* formatString) : TFormatString(TString(formatString)) {}

TFormatString::TFormatString(char16_t const* formatString) : TFormatString(TString(formatString)) {}

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
    Layout const layout = MarkerReader(ViewOf(formatString), Zero::IsText).ReadAll(markers.data());
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
        m_parameters.push_back(value.leftJustified(fieldWidth == INT_MIN ? INT_MAX : -fieldWidth, fill));
    }
    return *this;
}

TFormatString& TFormatString::arg(char16_t c, int fieldWidth, char16_t fill)
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
    m_parameters.reserve(m_parameters.size() + n);
}

TString TFormatString::result() const
{
    Layout const layout{ViewOf(m_formatString), m_markers.data(),
                        static_cast<int>(m_markers.size()), m_maxMarker};
    return Render(layout, m_parameters.size(), [this](int number) {
        return ViewOf(m_parameters[static_cast<std::size_t>(number) - 1]);
    });
}

TFormatString::operator TFormatStringCore() const
{
    TFormatStringCore core(m_formatString);
    core.arg(std::vector<TStringCore>(m_parameters.begin(), m_parameters.end()));
    return core;
}

TFormatString::Exception::Exception(TString const& message, TError::ErrorInfo const& errorInfo) :
    KorvelException(message, errorInfo)
{
}

TFormatString::Exception::~Exception() = default;

TFormatString::Exception* TFormatString::Exception::Clone() const
{
    return new Exception(*this);
}

void TFormatString::Exception::Throw() const
{
    throw Exception(*this);
}
