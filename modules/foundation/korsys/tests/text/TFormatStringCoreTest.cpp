#include "korsys/main/text/TFormatStringCore.h"

#include "korsys/tests/support/KorTest.h"

#include <vector>

namespace {

TEST(TFormatStringCoreTest, ReplacesMarkersAndLeavesTheRestAsWritten)
{
    struct Case
    {
        int line;
        char16_t const* format;
        std::vector<TStringCore> parameters;
        char16_t const* result;
    };
    std::vector<TStringCore> const ab = {u"a", u"b"};
    std::vector<TStringCore> many;
    for (int i = 1; i <= 120; ++i) {
        many.push_back(TStringCore::number(-i));
    }
    Case const cases[] = {
        {__LINE__, u"no marker", ab, u"no marker"},
        {__LINE__, u"%2%1 and %1", ab, u"ba and a"},
        {__LINE__, u"100%%", {}, u"100%"},
        {__LINE__, u"%%1 %%%1 %1%%", ab, u"%1 %a a%"},
        {__LINE__, u"%1", {u"%2%%", u"x"}, u"%2%%"}, // parameters are not read again
        // A marker takes all its digits, and 99 is the last.
        {__LINE__, u"%12 %1x2 %99", many, u"-12 -1x2 -99"},
        {__LINE__, u"%100 %4294967297 %%100", many, u"%100 %4294967297 %100"},
        // What has no value stays.
        {__LINE__, u"%1 %3 %2", ab, u"a %3 b"},
        {__LINE__, u"%0 %01 %x % %", ab, u"%0 %01 %x % %"},
        {__LINE__, u"% 1%%%", ab, u"% 1%%"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(TFormatStringCore(c.format).arg(c.parameters).result(), c.result);
    }

    TFormatStringCore format(u"%1 %2");
    EXPECT_EQ(format.arg({u"a", u"b"}).arg({u"c"}).result(), u"c %2") << "all are replaced";
}

} // namespace
