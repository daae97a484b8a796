#include "korcoreplatform/main/string/UnicodeCore.h"

#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"

using namespace std::string_literals;

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
    std::pair<std::u16string, std::string> const cases[] = {
        {u"a", "a"},
        {u"ab", "ab"}, // fills the buffer, without room for the zero
        {u"\u00E9\u20AC\U0001F600", "\u00E9\u20AC\U0001F600"},
        {std::u16string(1000, u'x'), std::string(1000, 'x')},
        {u"a\0b"s, "a\0b"s},
        {u"", ""},
    };
    ToUTF8 to;
    FromUTF8 from;
    for (auto const& [units, bytes] : cases) {
        SCOPED_TRACE(bytes.size());
        char const* const converted = to(units.data(), units.size());
        EXPECT_EQ(converted, to.Data());
        EXPECT_EQ(ResultWithZero(to), bytes + '\0');
        EXPECT_STREQ(ToUTF8(units.c_str()).Data(), bytes.c_str()); // ends at the zero
        char16_t const* const back = from(bytes.data(), bytes.size());
        EXPECT_EQ(back, from.Data());
        EXPECT_EQ(ResultWithZero(from), units + u'\0');
        EXPECT_EQ(FromUTF8(bytes.c_str()).Length(), TString::length(units.c_str()));
    }
    AllocationCounter const counter;
    to.Convert(u"again", 5);
    EXPECT_TRUE(counter.Count() == 0 || !AllocationCounter::IsAvailable());
    // What is ill-formed becomes the replacement character.
    EXPECT_STREQ(ToUTF8(u"\xD800x\xDC00").Data(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
    EXPECT_EQ(ResultWithZero(FromUTF8("a\xFF_")), u"a\uFFFD_\0"s);
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
