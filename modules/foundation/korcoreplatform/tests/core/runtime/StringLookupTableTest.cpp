#include "korcoreplatform/main/core/runtime/StringLookupTable.h"

#include "korcoreplatform/tests/support/KorTest.h"

namespace {

TEST(StringLookupTableTest, TextsAreFoundByTheWholeKey)
{
    std::unordered_map<TString, TString> const map{{u"", u"nameless"}, {u"a", u"A"}, {u"aa", u""}};
    StringLookupTable const table = FromStringLookupTable(map);
    EXPECT_EQ(LookupString(table, u"a"), u"A");
    EXPECT_EQ(LookupString(table, u"aa"), u"");
    EXPECT_EQ(LookupString(table, u"b"), u"");
    EXPECT_EQ(LookupString(table, nullptr), u"nameless");
    EXPECT_EQ(ToStringLookupTable(table), map);
}

} // namespace
