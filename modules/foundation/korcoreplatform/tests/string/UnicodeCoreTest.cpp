#include "korcoreplatform/main/string/UnicodeCore.h"

#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using UnicodeCore::FromUTF8;
using UnicodeCore::ToUTF8;

template <class Converter>
auto ResultWithZero(Converter const& converter)
{
    return std::basic_string(converter.Data(), std::size_t(converter.Length()) + 1);
}

TEST(UnicodeCoreTest, TextsConvertBothWays)
{
    using namespace std::string_literals;
    struct Case
    {
        int line;
        std::u16string units;
        std::string bytes;
    };
    Case const cases[] = {
        {__LINE__, u"a", "a"},
        {__LINE__, u"ab", "ab"}, // fills the buffer, without room for the zero
        {__LINE__, u"\u00E9\u20AC\U0001F600", "\u00E9\u20AC\U0001F600"},
        {__LINE__, std::u16string(1000, u'x'), std::string(1000, 'x')},
        {__LINE__, u"a\0b"s, "a\0b"s},
        {__LINE__, u"", ""},
    };
    ToUTF8 to;
    FromUTF8 from;
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        char const* const bytes = to(c.units.data(), c.units.size());
        EXPECT_EQ(bytes, to.Data());
        EXPECT_EQ(ResultWithZero(to), c.bytes + '\0');
        EXPECT_STREQ(ToUTF8(c.units.c_str()).Data(), c.bytes.c_str()); // ends at the zero
        char16_t const* const units = from(c.bytes.data(), c.bytes.size());
        EXPECT_EQ(units, from.Data());
        EXPECT_EQ(ResultWithZero(from), c.units + u'\0');
        EXPECT_EQ(FromUTF8(c.bytes.c_str()).Length(), TString::length(c.units.c_str()));
    }
    AllocationCounter const counter;
    to.Convert(u"again", 5);
    if (AllocationCounter::IsAvailable()) {
        EXPECT_EQ(counter.Count(), 0);
    }
}

TEST(UnicodeCoreTest, WhatIsIllFormedBecomesTheReplacementCharacter)
{
    EXPECT_STREQ(ToUTF8(u"\xD800x\xDC00").Data(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
    EXPECT_EQ(ResultWithZero(FromUTF8("a\xFF"
                                      "b")),
              std::u16string(u"a\uFFFDb") + u'\0');
}

template <class Converter, class Unit>
void ExpectFailuresKeepTheResult(Unit const* text, std::string const& message)
{
    LogRecording const log;
    Converter converter(text);
    auto const before = ResultWithZero(converter);
    converter.Convert(nullptr, -1);
    converter(text, 1ul << 31);
    converter(nullptr, 3);
    converter.Convert(text, -2);
    EXPECT_EQ(ResultWithZero(converter), before);
    EXPECT_EQ(log.Lines(), std::vector<std::string>(4, message));
}

TEST(UnicodeCoreTest, FailuresAreLoggedAndKeepTheResult)
{
    ExpectFailuresKeepTheResult<ToUTF8>(u"text", "Warn: ICU error 1 while converting  to UTF8");
    ExpectFailuresKeepTheResult<FromUTF8>("text", "Warn: ICU error 1 while converting  from UTF8");
}

} // namespace
