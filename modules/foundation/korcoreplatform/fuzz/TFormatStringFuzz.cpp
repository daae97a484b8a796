// The two ways of formatting must give the same text or the same error, whatever the template; a
// text must also be what the core's forgiving rendering makes of the template. The first byte
// chooses how many parameters the last check has, the second how the rest becomes units: a value up
// to a "/", then the template.

#include "korcoreplatform/main/string/TFormatString.h"

#include "korcoreplatform/fuzz/support/FuzzInput.h"
#include "korsys/main/text/TFormatStringCore.h"

#include <algorithm>
#include <vector>

namespace {

/// More than four times what the reader of templates takes at once.
using Literal = char16_t[300];

/// The text, or the error's id and message behind a unit that no text begins with.
template <class Format>
TString Outcome(Format const& format)
{
    try {
        return u"+" + TString(format());
    } catch (TFormatString::Exception const& e) {
        return TString(e.GetErrorInfo().GetError().GetName()) + TString(e.GetMessagesFront());
    }
}

/// Formats with the parameters given, at once, in steps and as the core does.
template <class... Values>
void CheckLiteral(Literal const& literal, Values const&... values)
{
    TString const text = Outcome([&] { return TFormat(literal, values...); });
    Require(text ==
            Outcome([&] { return TFormatString(TString(literal)).args(values...).result(); }));
    TFormatStringCore core{TString(literal)};
    core.arg({TFormatArgument::Of(values).Text()...});
    Require(!text.startsWith(u'+') || u"+" + TString(core.result()) == text);
}

/// A template of any length, zero units included, in a block of its size.
void CheckText(TString text, std::vector<TString> const& parameters)
{
    text.squeeze();
    try {
        TFormatString format(text);
        format.arg(parameters);
        TString const result = format.result();
        Require(TString(static_cast<TFormatStringCore>(format).result()) == result);
        format = TString(result); // a valid template or not
    } catch (TFormatString::Exception const&) {}
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    std::u16string const units = (data[1] % 2 == 1 ? Units : Latin1)(data + 2, size - 2);
    std::size_t const slash = units.find(u'/'); // one more than "none" is 0
    TString const value =
        TString::fromStdU16String(units.substr(0, slash == units.npos ? 0 : slash));
    TString const text = TString::fromStdU16String(units.substr(slash + 1));
    Literal literal = {};
    std::copy_n(text.constData(), std::min<std::size_t>(text.length(), std::size(literal) - 1),
                literal);
    CheckLiteral(literal);
    CheckLiteral(literal, value);
    CheckLiteral(literal, data[0], value);
    CheckLiteral(literal, value, u'x', value.constData());
    CheckText(text, std::vector<TString>(data[0] % 16, value));
    return 0;
}
