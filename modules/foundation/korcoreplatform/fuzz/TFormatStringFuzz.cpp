// The two ways of formatting must give the same text or the same error, whatever the template; a
// text must also be what the core's forgiving rendering makes of the template. The first byte
// chooses how many parameters there are, the second how the rest becomes units: parameters up to a
// "/", then the template.

#include "korcoreplatform/main/string/TFormatString.h"

#include "korsys/main/text/TFormatStringCore.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kLiteralUnits =
    300; // more than four times what the reader of templates takes at once

void Require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

TString UnitsOf(std::uint8_t const* data, std::size_t size, bool wide)
{
    TString units;
    std::size_t const step = wide ? 2 : 1;
    for (std::size_t i = 0; i + step <= size; i += step) {
        units.append(static_cast<char16_t>(wide ? data[i] | data[i + 1] << 8 : data[i]));
    }
    return units;
}

/// The text, or the error's id and message.
template <class Format>
TString Outcome(Format const& format, bool& failed)
{
    try {
        failed = false;
        return format();
    } catch (TFormatString::Exception const& e) {
        failed = true;
        return TString(e.GetErrorInfo().GetError().GetName()) + TString(e.GetMessagesFront());
    }
}

/// Formats with the parameters given, at once and in steps.
template <class... Values>
void CheckLiteral(char16_t const (&literal)[kLiteralUnits], Values const&... values)
{
    bool failed = false;
    bool failedInSteps = false;
    TString const text = Outcome([&] { return TFormat(literal, values...); }, failed);
    TString const inSteps = Outcome(
        [&] { return TFormatString(TString(literal)).args(values...).result(); }, failedInSteps);
    Require(failed == failedInSteps && text == inSteps);
    if (!failed) {
        TFormatStringCore core{TString(literal)};
        core.arg({TFormatArgument::Of(values).Text()...});
        Require(core.result() == text);
    }
}

/// A template of any length, zero units included, in a block of its size.
void CheckText(TString const& text, std::vector<TString> const& parameters)
{
    TString exact = text;
    exact.squeeze();
    try {
        TFormatString format(exact);
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
    TString const units = UnitsOf(data + 2, size - 2, data[1] % 2 == 1);
    int const slash = units.indexOf(u'/');
    TString const value = slash < 0 ? TString() : units.left(slash);
    TString const text = units.mid(slash + 1);

    char16_t literal[kLiteralUnits] = {};
    std::copy_n(text.constData(), std::min(text.length(), kLiteralUnits - 1), literal);
    switch (data[0] % 4) {
    case 0:
        CheckLiteral(literal);
        break;
    case 1:
        CheckLiteral(literal, value);
        break;
    case 2:
        CheckLiteral(literal, data[0], value);
        break;
    default:
        CheckLiteral(literal, value, u'x', value.constData());
        break;
    }
    CheckText(text, std::vector<TString>(data[0] % 16, value));
    return 0;
}
