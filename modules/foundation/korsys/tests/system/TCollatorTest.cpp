#include "korsys/main/system/TCollator.h"

#include <gtest/gtest.h>

#include <string>

namespace {

int Compare(std::u16string const& a, std::u16string const& b)
{
    return TCollator::Compare(a.data(), static_cast<int>(a.size()), b.data(),
                              static_cast<int>(b.size()));
}

TEST(TCollatorTest, OrdersAsPeopleDoInBothDirections)
{
    struct Case
    {
        int line;
        std::u16string a;
        std::u16string b;
        int order;
    };
    Case const cases[] = {
        {__LINE__, u"", u"", 0},
        {__LINE__, u"", u"a", -1},
        {__LINE__, u"a", u"b", -1},
        {__LINE__, u"abc", u"abcd", -1},
        {__LINE__, u"1", u"a", -1},
        {__LINE__, u"same", u"same", 0},
        // An accent counts less than the next letter, although its unit is larger.
        {__LINE__, u"\u00E9", u"f", -1},
        {__LINE__, u"e", u"\u00E9", -1},
        // One text in two normal forms.
        {__LINE__, u"\u00E9", u"e\u0301", 0},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(Compare(c.a, c.b), c.order);
        EXPECT_EQ(Compare(c.b, c.a), -c.order);
    }
    EXPECT_NE(Compare(u"a", u"A"), 0) << "case counts";
    EXPECT_EQ(TCollator::Compare(u"abX", 2, u"abY", 2), 0) << "lengths end the texts";
}

} // namespace
