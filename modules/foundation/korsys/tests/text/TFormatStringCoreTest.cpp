#include "korsys/main/text/TFormatStringCore.h"

#include "korsys/tests/support/KorTest.h"

namespace {

TEST(TFormatStringCoreTest, ReplacesMarkersAndLeavesTheRestAsWritten)
{
    TFormatStringCore format(u"");
    std::vector<TStringCore> values = {u"%2%%", u"b"};
    char16_t const* const few[][2] = {
        {u"%%1 %%%2 %2%% 100%%", u"%1 %b b% 100%"},
        {u"%1", u"%2%%"},         // parameters are not read again
        {u"%2 %3 %2", u"b %3 b"}, // what has no value stays
        {u"%0 %01 %x % %", u"%0 %01 %x % %"},
        {u"% 1%%%", u"% 1%%"},
    };
    for (auto const& [text, result] : few) {
        EXPECT_EQ(TFormatStringCore(text).arg(values).result(), result);
    }
    for (int i = 3; i <= 120; ++i) {
        values.push_back(TStringCore::number(-i));
    }
    // A marker takes all its digits, and 99 is the last.
    format = TFormatStringCore(u"%12 %3x2 %99 %100 %4294967297 %%100");
    EXPECT_EQ(format.arg(values).result(), u"-12 -3x2 -99 %100 %4294967297 %100");
    EXPECT_EQ(format.arg({u"a"}).result().left(3), u"%12") << "all are replaced";
}

} // namespace
