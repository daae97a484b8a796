#include "Paths.h"

#include <algorithm>

namespace TextCensus {
namespace {

bool IsControl(char16_t c)
{
    return c < u' ' || (c >= 0x7F && c < 0xA0);
}

} // namespace

TString TextOf(std::filesystem::path const& path)
{
    return TString::fromStdString(path.native());
}

TString Printable(TString const& text)
{
    if (std::none_of(text.cbegin(), text.cend(), IsControl)) {
        return text;
    }
    TString printable;
    for (char16_t const c : text) {
        if (IsControl(c)) {
            printable += u"\\x" + TString::number(c, 16, 2, u'0').toUpper();
        } else {
            printable += c;
        }
    }
    return printable;
}

} // namespace TextCensus
