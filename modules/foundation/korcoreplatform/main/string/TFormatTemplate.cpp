#include "korcoreplatform/main/string/TFormatTemplate_p.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"

#include <algorithm>
#include <cstring>
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

/// Goes through the units of a template at which its reader has to look: percent signs and, where
/// they end the text, zeros.
class Stops
{
public:
    Stops(char16_t const* begin, char16_t const* end, Zero zero)
        : m_block(begin), m_end(end), m_percent(Repeated(u'%')),
          m_otherStop(Repeated(zero == Zero::EndsText ? u'\0' : u'%')), m_bits(FindInWord())
    {}

    /// The next stop, the end when there is none.
    char16_t const* Next()
    {
        while (m_bits == 0) {
            if (m_end - m_block <= kWord) {
                return m_end;
            }
            m_block += kWord;
            m_bits = FindInWord();
        }
        char16_t const* const stop = m_block + __builtin_ctzll(m_bits);
        m_bits &= m_bits - 1;
        return stop;
    }

private:
    // Vector types of the compiler: every machine compares eight units in its own way.
    static constexpr int kWord = 64;
    static constexpr int kVector = 8;
    using Vector [[gnu::vector_size(16)]] = std::uint16_t;
    using Halves [[gnu::vector_size(16)]] = std::uint64_t;

    static Vector Repeated(std::uint16_t unit) { return Vector{} + unit; }

    /// One bit for each of the 64 units from m_block on, the first unit's lowest.
    std::uint64_t FindInWord() const
    {
        int const n = static_cast<int>(std::min<std::ptrdiff_t>(m_end - m_block, kWord));
        if (n < kVector) {
            return FindInFew(n);
        }
        std::uint64_t bits = 0;
        for (int i = 0; i < n; i += kVector) {
            int const at = std::min(i, n - kVector); // the last one may overlap
            bits |= FindInVector(m_block + at) << at;
        }
        return bits;
    }

    std::uint64_t FindInFew(int n) const
    {
        std::uint64_t bits = 0;
        for (int i = 0; i < n; ++i) {
            bool const isStop = m_block[i] == m_percent[0] || m_block[i] == m_otherStop[0];
            bits |= std::uint64_t(isStop) << i;
        }
        return bits;
    }

    std::uint64_t FindInVector(char16_t const* units) const
    {
        constexpr Vector kLaneBits = {1, 2, 4, 8, 16, 32, 64, 128};
        Vector vector;
        std::memcpy(&vector, units, sizeof(vector));
        auto const stops =
            reinterpret_cast<Vector>((vector == m_percent) | (vector == m_otherStop)) & kLaneBits;
        auto const halves = reinterpret_cast<Halves>(stops);
        return (halves[0] | halves[1]) * 0x0001000100010001 >> 48; // the sum of the four lanes
    }

    char16_t const* m_block;
    char16_t const* m_end;
    Vector m_percent;
    Vector m_otherStop;
    std::uint64_t m_bits; ///< The stops of the block that are still to come.
};

/// Reads the markers of a template and checks them on the way.
class MarkerReader
{
public:
    MarkerReader(std::u16string_view text, Zero zero)
        : m_begin(text.data()), m_end(m_begin + text.size()), m_zero(zero)
    {}

    Layout ReadAll(TFormatString::Marker* markers) const
    {
        int count = 0;
        int maxMarker = 0;
        char16_t const* next = m_begin; // what is before it has been read
        Stops stops(m_begin, m_end, m_zero);
        char16_t const* stop = stops.Next();
        for (; !IsEnd(stop); stop = stops.Next()) {
            if (stop >= next) {
                TFormatString::Marker& marker = markers[count++];
                next = Read(stop, marker);
                maxMarker = std::max(maxMarker, marker.number);
            }
        }
        return {{m_begin, static_cast<std::size_t>(stop - m_begin)}, markers, count, maxMarker};
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

Layout Check(char16_t const* text, std::size_t n, TFormatString::Marker* markers)
{
    return ReadTemplate({text, n}, Zero::EndsText, markers);
}

TString Format(Layout const& layout, std::initializer_list<std::u16string_view> parameters)
{
    return Render(layout, parameters.size(),
                  [&](int number) { return parameters.begin()[number - 1]; });
}

} // namespace TFormatDetail
