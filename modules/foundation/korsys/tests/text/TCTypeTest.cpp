#include "korsys/main/text/TCType.h"

#include <unicode/uchar.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(TCTypeTest, SpacesAndLettersOfEveryUnit)
{
    std::u16string const spaces =
        u"\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
        u"\u200A\u2028\u2029\u202F\u205F\u3000";
    for (int i = 0; i <= 0xFFFF; ++i) {
        char16_t const unit = static_cast<char16_t>(i);
        ASSERT_EQ(TCType::isSpace(unit), spaces.find(unit) != spaces.npos) << std::hex << i;
        ASSERT_EQ(TCType::isAlpha(unit), (U_GET_GC_MASK(i) & U_GC_L_MASK) != 0) << std::hex << i;
    }
}

} // namespace
