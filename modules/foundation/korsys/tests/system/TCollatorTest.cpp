#include "korsys/main/system/TCollator.h"

#include "korsys/tests/support/TextPeers.h"

#include <gtest/gtest.h>

namespace {

int Compare(std::u16string const& a, std::u16string const& b)
{
    int const compared = TCollator::Compare(a.data(), Size(a), b.data(), Size(b));
    EXPECT_EQ(TCollator::Compare(b.data(), Size(b), a.data(), Size(a)), -compared);
    return compared;
}

TEST(TCollatorTest, OrdersAsPeopleDo)
{
    EXPECT_EQ(Compare(u"", u"a"), -1);
    EXPECT_EQ(Compare(u"abcd", u"abc"), 1);
    EXPECT_EQ(Compare(u"\u00E9", u"e\u0301"), 0); // one letter in two normal forms
    EXPECT_EQ(Compare(u"e", u"\u00E9"), -1);
    EXPECT_EQ(Compare(u"f", u"\u00E9"), 1) << "an accent counts less than the next letter";
    EXPECT_NE(Compare(u"a", u"A"), 0) << "case counts";
    EXPECT_EQ(TCollator::Compare(u"abX", 2, u"abY", 2), 0) << "lengths end the texts";
}

} // namespace
