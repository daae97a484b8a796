/// Messages made from a template with numbered markers, and the values of the markers.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TFormatArgument.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorvelException.h"

#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <type_traits>
#include <vector>

class TFormatStringCore;

/// A template with markers "%1" to "%99" and the parameters bound to it, "%1" first. Markers stand
/// in any order and any number of times; "%%" is a percent sign. Parameters are inserted literally.
///
///     TFormatString format(u"%2 of %1 files");
///     format.arg(total).arg(done, 4, 10, u'0');
///     TString const text = format.result(); // "0003 of 12 files"
///
/// The template is checked when it is set. Throws, wherever a template is given: `Exception` with
/// id AutoGen_0xE643480C for a marker number with a leading zero, AutoGen_0x4CBC0F36 for a percent
/// sign without number, AutoGen_0x06BAA2A5 for a number above 99, AutoGen_0x703C877B for a percent
/// sign at the end. A template that fails leaves the object as it was.
///
/// Thread safety: one object may be read from several threads; a write needs it alone.
class KORCOREPLATFORM_EXPORT TFormatString
{
public:
    /// A marker of the template: `length` units from `position` on, the percent sign included. The
    /// escaped percent sign has the number 0.
    struct Marker
    {
        Marker() = default; ///< Holds anything.
        explicit Marker(int atPosition) noexcept : position(atPosition), length(2), number(0) {}

        int position;
        int length;
        int number;
    };

    class Exception;

    TFormatString(TString const& formatString);
    TFormatString(char const* formatString); ///< UTF-8.
    TFormatString(char16_t const* formatString);
    TFormatString(TFormatString const&) = default;
    TFormatString(TFormatString&& other) noexcept; ///< Leaves an empty template.
    ~TFormatString() = default;

    TFormatString& operator=(TFormatString const&) = default;
    TFormatString& operator=(TFormatString&& other) noexcept; ///< Of itself, nothing changes.

    /// Replace the template; the parameters stay.
    TFormatString& operator=(TString const& formatString);
    template <class Char, std::enable_if_t<std::is_same_v<Char, char>, int> = 0>
    TFormatString& operator=(Char const* formatString) ///< UTF-8.
    {
        return *this = TString(formatString);
    }
    TFormatString& operator=(char16_t const* formatString);

    TString const& formatString() const noexcept { return m_formatString; }

    /// Bind the next parameter. A positive field width, in code units, pads the text on the left up
    /// to that width, a negative one on the right; a longer text is never cut. Numbers are padded
    /// as finished texts: zeros as fill come before the sign. Throws: `StringException` with id
    /// AutoGen_0x30E31408 for a base outside 2 to 64, AutoGen_0xC83B3D89 for a field wider than the
    /// longest text. `wchar_t` and `char32_t` bind as numbers.
    TFormatString& arg(TString const& value, int fieldWidth = 0, char16_t fill = u' ');
    TFormatString& arg(char16_t c, int fieldWidth = 0, char16_t fill = u' ');
    TFormatString& arg(char c, int fieldWidth = 0, char16_t fill = u' '); ///< A Latin-1 character.
    TFormatString& arg(short v, int fieldWidth = 0, int base = 10, char16_t fill = u' ');
    TFormatString& arg(unsigned short v, int fieldWidth = 0, int base = 10, char16_t fill = u' ');
    TFormatString& arg(int v, int fieldWidth = 0, int base = 10, char16_t fill = u' ');
    TFormatString& arg(unsigned int v, int fieldWidth = 0, int base = 10, char16_t fill = u' ');
    TFormatString& arg(long v, int fieldWidth = 0, int base = 10, char16_t fill = u' ');
    TFormatString& arg(unsigned long v, int fieldWidth = 0, int base = 10, char16_t fill = u' ');
    TFormatString& arg(long long v, int fieldWidth = 0, int base = 10, char16_t fill = u' ');
    TFormatString& arg(unsigned long long v, int fieldWidth = 0, int base = 10,
                       char16_t fill = u' ');

    /// `format`, `precision` (negative: 6) and `trimZeros` as in `TString::number`.
    TFormatString& arg(double v, int fieldWidth = 0, char format = 'g', int precision = -1,
                       char16_t fill = u' ', bool trimZeros = false);

    /// Bind the next two to ten parameters.
    TFormatString& arg(TString const& a1, TString const& a2);
    TFormatString& arg(TString const& a1, TString const& a2, TString const& a3);
    TFormatString& arg(TString const& a1, TString const& a2, TString const& a3, TString const& a4);
    TFormatString& arg(TString const& a1, TString const& a2, TString const& a3, TString const& a4,
                       TString const& a5);
    TFormatString& arg(TString const& a1, TString const& a2, TString const& a3, TString const& a4,
                       TString const& a5, TString const& a6);
    TFormatString& arg(TString const& a1, TString const& a2, TString const& a3, TString const& a4,
                       TString const& a5, TString const& a6, TString const& a7);
    TFormatString& arg(TString const& a1, TString const& a2, TString const& a3, TString const& a4,
                       TString const& a5, TString const& a6, TString const& a7, TString const& a8);
    TFormatString& arg(TString const& a1, TString const& a2, TString const& a3, TString const& a4,
                       TString const& a5, TString const& a6, TString const& a7, TString const& a8,
                       TString const& a9);
    TFormatString& arg(TString const& a1, TString const& a2, TString const& a3, TString const& a4,
                       TString const& a5, TString const& a6, TString const& a7, TString const& a8,
                       TString const& a9, TString const& a10);

    /// Replaces all parameters, unlike every other way of binding.
    TFormatString& arg(std::vector<TString> const& list);

    /// Binds the next parameters, each as TFormatArgument.h says.
    template <class... Values>
    TFormatString& args(Values const&... values)
    {
        reserveMore(sizeof...(values));
        (m_parameters.push_back(TFormatArgument::Of(values).Text()), ...);
        return *this;
    }

    /// Forgets the parameters. A template that is used again needs this between two results, as
    /// parameters beyond those that the template asks for are no error.
    void clearParms() noexcept { m_parameters.clear(); }

    /// The template with its markers replaced. Parameters that no marker asks for are left out.
    /// Throws: `Exception` with id AutoGen_0x24F8A094 when a marker has no parameter.
    TString result() const;
    operator TString() const { return result(); }

    /// The same template and parameters in the form whose rendering never fails.
    operator TFormatStringCore() const;

private:
    void setTemplate(TString const& formatString);
    void reserveMore(std::size_t n);
    TFormatString& bindAll(std::initializer_list<TString const*> values);

    int m_maxMarker = 0; ///< The highest number among the markers.
    std::vector<Marker> m_markers;
    std::vector<TString> m_parameters;
    TString m_formatString;
};

/// A template is not well-formed, or a marker has no parameter.
class KORCOREPLATFORM_EXPORT TFormatString::Exception : public KorvelException
{
public:
    Exception(TString const& message, TError::ErrorInfo const& errorInfo);
    Exception(Exception const&) noexcept = default;
    Exception(Exception&&) noexcept = default;
    Exception& operator=(Exception const&) noexcept = default;
    Exception& operator=(Exception&&) noexcept = default;
    ~Exception() override;

    Exception* Clone() const override;
    [[noreturn]] void Throw() const override;
};

/// What `TFormat` is made of.
namespace TFormatDetail {

/// Checks a template of at most `n` units that ends before its first zero.
/// Requires: room for n / 2 markers, which hold anything.
KORCOREPLATFORM_EXPORT void Check(char16_t const* text, std::size_t n,
                                  TFormatString::Marker* markers);

/// Formats by such a template, which it checks first.
KORCOREPLATFORM_EXPORT TString Format(char16_t const* text, std::size_t n,
                                      TFormatString::Marker* markers,
                                      std::initializer_list<std::u16string_view> parameters);

} // namespace TFormatDetail

/// Formats in one call: what `TFormatString(TString(literal)).args(values...).result()` gives and
/// throws. Allocates the result, and 8-bit texts in UTF-16; uses 6 bytes of stack a unit.
///
///     throw Failure(TFormat(u"Cannot open '%1': error %2.", path, errorCode));
template <std::size_t n, class... Values>
TString TFormat(char16_t const (&literal)[n], Values const&... values)
{
    TFormatString::Marker markers[n / 2 + 1];
    if constexpr ((TFormatArgument::kConvertsItself<Values> || ...)) {
        TFormatDetail::Check(literal, n, markers); // fails before a value does
    }
    return TFormatDetail::Format(literal, n, markers, {TFormatArgument::Of(values).View()...});
}
