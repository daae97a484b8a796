#include "korcoreplatform/main/string/TFormatString.h"

#include "korcoreplatform/main/string/TString.h"
#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/StringException.h"
#include "korsys/main/text/TFormatStringCore.h"

#include <gtest/gtest.h>

#include <QString>

#include <algorithm>
#include <climits>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr char kInsufficient[] = "TFormatStringException_AutoGen_0x24F8A094";
constexpr char kLeadingZero[] = "TFormatStringException_AutoGen_0xE643480C";
constexpr char kNumberless[] = "TFormatStringException_AutoGen_0x4CBC0F36";
constexpr char kAbove99[] = "TFormatStringException_AutoGen_0x06BAA2A5";
constexpr char kIncomplete[] = "TFormatStringException_AutoGen_0x703C877B";

/// `TFormat` for templates that are made at run time; they have no zero unit.
template <class... Values>
TString FormatAtOnce(TString const& formatString, Values const&... values)
{
    char16_t literal[256] = {};
    std::copy(formatString.cbegin(), formatString.cend(), literal);
    return TFormat(literal, values...);
}

TEST(TFormatStringTest, MarkersAreReplacedByTheirParameters)
{
    struct Case
    {
        int line;
        char16_t const* formatString;
        char16_t const* expected;
    };
    Case const cases[] = {
        {__LINE__, u"", u""},
        {__LINE__, u"no marker", u"no marker"},
        {__LINE__, u"%1 and %1", u"x and x"},
        {__LINE__, u"%2%1", u"yx"},
        {__LINE__, u"(%3)", u"(%1)"}, // the third parameter: not read as a marker again
        {__LINE__, u"%4%4|", u"|"},   // the fourth is empty
        {__LINE__, u"%1%%1", u"x%1"}, // a marker, a percent sign, a digit
        {__LINE__, u"100%%", u"100%"},
        {__LINE__, u"%%%%%2", u"%%y"},
        {__LINE__, u"%10%1", u"10thx"}, // two digits belong to the marker
        {__LINE__, u"%1\xD83D\xDE00%2", u"x\xD83D\xDE00y"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        std::vector<TString> const list = {u"x", u"y", u"%1", u"",  u"5",
                                           u"6", u"7", u"8",  u"9", u"10th"};
        TFormatString format(c.formatString);
        EXPECT_EQ(TString(format.arg(list)), TString(c.expected));
        EXPECT_EQ(FormatAtOnce(c.formatString, "x", u"y", TString(u"%1"), TStringCore(), 5, 6, 7, 8,
                               9, "10th"),
                  TString(c.expected));
    }
}

TEST(TFormatStringTest, BadTemplatesFailAtOnceAndChangeNothing)
{
    struct Case
    {
        int line;
        char16_t const* formatString;
        char const* errorId;
        char16_t const* message;
    };
    Case const cases[] = {
        {__LINE__, u"%0", kLeadingZero, u"Leading zero in marker number in format string."},
        {__LINE__, u"%01", kLeadingZero, u"Leading zero in marker number in format string."},
        {__LINE__, u"50% off", kNumberless, u"Invalid numberless marker in format string."},
        {__LINE__, u"%\x0661", kNumberless,
         u"Invalid numberless marker in format string."}, // a digit elsewhere
        {__LINE__, u"%100", kAbove99, u"Invalid marker number > 99 in format string."},
        {__LINE__, u"%99999999999", kAbove99, u"Invalid marker number > 99 in format string."},
        {__LINE__, u"100%", kIncomplete, u"Format string ends with an incomplete marker."},
        {__LINE__, u"%%%", kIncomplete, u"Format string ends with an incomplete marker."},
        {__LINE__, u"%0 then %", kLeadingZero,
         u"Leading zero in marker number in format string."}, // the first counts
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_KOR_ERROR(TFormatString{c.formatString}, TFormatString::Exception, c.errorId);
        // Also where the parameters would not do either.
        EXPECT_KOR_ERROR(FormatAtOnce(c.formatString + TString()), TFormatString::Exception,
                         c.errorId);
        TFormatString format(u"%2!");
        format.arg(u"a").arg(u"b");
        EXPECT_KOR_ERROR(format = c.formatString, TFormatString::Exception, c.errorId);
        EXPECT_EQ(format.formatString(), u"%2!");
        EXPECT_EQ(format.result(), u"b!");
        try {
            TFormatString const bad(c.formatString);
        } catch (TFormatString::Exception const& e) {
            EXPECT_EQ(e.GetMessagesFront(), TStringCore(c.message));
        }
    }
}

TEST(TFormatStringTest, MissingParametersAreToldAndLeaveTheObjectUsable)
{
    TFormatString format(u"%1 %3");
    format.arg(u"a", u"b");
    try {
        format.result();
        FAIL() << "formatted without the third parameter";
    } catch (TFormatString::Exception const& e) {
        EXPECT_EQ(e.GetMessagesFront(),
                  u"Insufficient parameters to format string (have 2, need 3: "
                  u"format string = \"%1 %3\").");
    }
    EXPECT_KOR_ERROR(format.result(), TFormatString::Exception, kInsufficient);
    EXPECT_KOR_ERROR(TFormat(u"%1 %3", 1, 2), TFormatString::Exception, kInsufficient);
    EXPECT_KOR_ERROR(TFormat(u"%99"), TFormatString::Exception, kInsufficient);
    EXPECT_EQ(format.arg(u"c").result(), u"a c");
    // The form for the lowest layers renders what it has.
    TError::ErrorInfo const info(KorErrorsError::AutoGen_0x24F8A094(), TError::ErrorSource::User,
                                 grpc::UNKNOWN);
    EXPECT_EQ(KorvelException(TFormatString(u"%1, %2").arg(u"a"), info).GetMessagesFront(),
              u"a, %2");
}

TEST(TFormatStringTest, FieldsArePadded)
{
    struct Case
    {
        int line;
        TFormatString format;
        char16_t const* expected;
    };
    TFormatString const one(u"%1");
    auto const with = [&] { return one; };
    Case const cases[] = {
        {__LINE__, with().arg(u"ab", 4, u'*'), u"**ab"},
        {__LINE__, with().arg(u"ab", -4, u'*'), u"ab**"},
        {__LINE__, with().arg(u"ab", 3), u" ab"},
        {__LINE__, with().arg(u"abcdef", 4), u"abcdef"},
        {__LINE__, with().arg(u"abcdef", -4), u"abcdef"},
        {__LINE__, with().arg(u'c', 3, u'-'), u"--c"},
        {__LINE__, with().arg(-5, 6, 10, u'0'), u"0000-5"}, // the finished text is padded
        {__LINE__, with().arg(3.5, 8, 'f', -1, u'_'), u"3.500000"},
        {__LINE__, with().arg(3.5, -6, 'f', 2, u'_', true), u"3.5___"},
        {__LINE__, with().arg(1e6), u"1e+06"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(c.format.result(), TString(c.expected));
    }
    constexpr char kTooLong[] = "StringException_AutoGen_0xC83B3D89";
    TFormatString format(u"%1");
    EXPECT_KOR_ERROR(format.arg(u"a", INT_MIN), StringException, kTooLong);
    EXPECT_KOR_ERROR(format.arg(1, 0, 1), StringException, "StringException_AutoGen_0x30E31408");
    EXPECT_KOR_ERROR(format.result(), TFormatString::Exception, kInsufficient); // nothing was bound
}

TEST(TFormatStringTest, IntegersOfEveryWidthKeepTheirValueAndBase)
{
    TFormatString format(u"%1 %2 %3 %4 %5 %6 %7 %8");
    format.arg(short(SHRT_MIN))
        .arg(static_cast<unsigned short>(USHRT_MAX))
        .arg(INT_MIN)
        .arg(UINT_MAX);
    format.arg(LONG_MIN).arg(ULONG_MAX).arg(LLONG_MIN).arg(ULLONG_MAX);
    EXPECT_EQ(format.result(), u"-32768 65535 -2147483648 4294967295 -9223372036854775808 "
                               u"18446744073709551615 -9223372036854775808 18446744073709551615");
    format.clearParms();
    format.arg(short(26), 0, 16)
        .arg(static_cast<unsigned short>(26), 0, 16)
        .arg(26, 0, 16)
        .arg(26u, 0, 16);
    format.arg(26l, 0, 16).arg(26ul, 0, 16).arg(26ll, 0, 16).arg(26ull, 0, 16);
    EXPECT_EQ(format.result(), u"1a 1a 1a 1a 1a 1a 1a 1a");
}

TEST(TFormatStringTest, BindersAppendInOrderExceptForTheList)
{
    TString const t[] = {u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"i", u"j"};
    TFormatString const two(u"%1%2"), five(u"%1%2%3%4%5"), ten(u"%1%2%3%4%5%6%7%8%9%10");
    auto const with = [](TFormatString const& format) { return format; };
    EXPECT_EQ(with(two).arg(t[0], t[1]).result(), u"ab");
    EXPECT_EQ(with(five).arg(t[0], t[1], t[2]).arg(t[3], t[4]).result(), u"abcde");
    EXPECT_EQ(
        with(ten).arg(t[0], t[1], t[2], t[3]).arg(t[4], t[5], t[6], t[7], t[8], t[9]).result(),
        u"abcdefghij");
    EXPECT_EQ(
        with(ten).arg(t[0], t[1], t[2], t[3], t[4]).arg(t[5], t[6], t[7], t[8], t[9]).result(),
        u"abcdefghij");
    EXPECT_EQ(
        with(ten).arg(t[0], t[1], t[2], t[3], t[4], t[5], t[6]).arg(t[7], t[8], t[9]).result(),
        u"abcdefghij");
    EXPECT_EQ(
        with(ten).arg(t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7]).args(t[8], t[9]).result(),
        u"abcdefghij");
    EXPECT_EQ(
        with(ten).arg(t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8]).arg(u'j').result(),
        u"abcdefghij");
    EXPECT_EQ(with(ten).arg(t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8], t[9]).result(),
              u"abcdefghij");

    TFormatString format(u"%1%2");
    format.arg(u"x", u"y").arg(std::vector<TString>{u"p", u"q"}).arg(u"r");
    EXPECT_EQ(format.result(), u"pq");
    format = u"%3-%1"; // the parameters stay
    EXPECT_EQ(format.result(), u"r-p");
    format = TString(u"%1%%");
    format.clearParms(); // the template stays
    EXPECT_EQ(format.arg(1).result(), u"1%");
}

enum Plain
{
    kPlain = 7
};
enum class Scoped : char
{
    Letter = 'A'
};
struct Convertible
{
    operator TString() const { return u"a text of more than fourteen units"; }
};

TEST(TFormatStringTest, EveryKindOfValueHasItsText)
{
    auto const expectText = [](int line, auto const& value, TString const& expected) {
        SCOPED_TRACE(line);
        EXPECT_EQ(TFormatString(u"<%1>").args(value).result(), u"<" + expected + u">");
        EXPECT_EQ(TFormat(u"<%1>", value), u"<" + expected + u">");
    };
    expectText(__LINE__, 'c', u"c");
    expectText(__LINE__, '\xE4', u"\u00E4");
    expectText(__LINE__, u'\u20AC', u"\u20AC");
    expectText(__LINE__, true, u"1");
    expectText(__LINE__, static_cast<signed char>(-65), u"-65");
    expectText(__LINE__, static_cast<unsigned char>(200), u"200");
    expectText(__LINE__, kPlain, u"7");
    expectText(__LINE__, Scoped::Letter, u"65"); // its number, not its character
    expectText(__LINE__, INT_MIN, u"-2147483648");
    expectText(__LINE__, UINT_MAX, u"4294967295");
    expectText(__LINE__, LLONG_MIN, u"-9223372036854775808");
    expectText(__LINE__, ULLONG_MAX, u"18446744073709551615");
    expectText(__LINE__, 0.1f, u"0.1");
    expectText(__LINE__, -1234567.0, u"-1.23457e+06");
    expectText(__LINE__, u"lit\0eral", u"lit"); // ends at its zero
    expectText(__LINE__, "\xC3\xA4", u"\u00E4");
    expectText(__LINE__, static_cast<char16_t const*>(nullptr), u"");
    expectText(__LINE__, static_cast<char const*>(nullptr), u"");
    expectText(__LINE__, TString(u"a\0b", 3), TString(u"a\0b", 3));
    expectText(__LINE__, TStringCore(u"core"), u"core");
    expectText(__LINE__, QString::fromUtf16(u"a\0b", 3), TString(u"a\0b", 3));
    expectText(__LINE__, TFormatString(u"%1").arg(u"inner"), u"inner");
    expectText(__LINE__, Convertible(), u"a text of more than fourteen units");
    expectText(__LINE__, reinterpret_cast<void*>(0x12ab), u"0x12ab");
    expectText(__LINE__, nullptr, u"0x0");
}

/// What formatting gave: the text, or the error's id and message.
template <class Format>
TString Outcome(Format const& format)
{
    try {
        return format();
    } catch (TFormatString::Exception const& e) {
        return TString(e.GetErrorInfo().GetError().GetName()) + u": " +
               TString(e.GetMessagesFront());
    }
}

// Long enough for markers on both sides of every boundary that the reader of templates has.
TEST(TFormatStringTest, BothWaysAndTheCoreAgreeOnRandomTemplates)
{
    std::mt19937 random(401); // fixed seed: a failure can be run again
    char16_t const* const pieces[] = {u"%1", u"%2", u"%3",          u"%%", u"a",
                                      u"bc", u"0",  u"plain text ", u"9",  u"\u20AC"};
    char16_t const* const faults[] = {u"%", u"%4", u"%0", u"%12", u"%123"};
    int formatted = 0;
    for (int i = 0; i < 20000; ++i) {
        TString text;
        for (unsigned count = random() % 40; count > 0; --count) {
            bool const isFault = random() % 100 == 0;
            text += isFault ? faults[random() % std::size(faults)]
                            : pieces[random() % std::size(pieces)];
        }
        char16_t literal[500] = {};
        std::copy(text.cbegin(), text.cend(), literal);
        if (random() % 20 == 0) {
            literal[random() % 100] = 0; // what follows is no part of the template
        }
        TString const value(u'v', static_cast<int>(random() % 20));
        int const number = static_cast<int>(random());
        TString const atOnce = Outcome([&] { return TFormat(literal, value, number, "x"); });
        TString const inSteps = Outcome(
            [&] { return TFormatString(TString(literal)).args(value, number, "x").result(); });
        ASSERT_EQ(atOnce, inSteps) << TString(literal);
        if (!atOnce.startsWith(u"TFormatStringException")) {
            TFormatStringCore core{TString(literal)};
            core.arg({value, TString::number(number), u"x"});
            ASSERT_EQ(atOnce, TString(core.result())) << TString(literal);
            ++formatted;
        }
    }
    EXPECT_GT(formatted, 5000);
}

TEST(TFormatStringTest, ZeroUnitsOfATemplateAreText)
{
    EXPECT_EQ(TFormatString(TString(u"a\0%1", 4)).arg(u"x").result(), TString(u"a\0x", 3));
    EXPECT_KOR_ERROR(TFormatString(TString(u"%\0", 2)), TFormatString::Exception, kNumberless);
    char16_t const unterminated[] = {u'%', u'1', u'%'};
    EXPECT_KOR_ERROR(TFormat(unterminated, 1), TFormatString::Exception, kIncomplete);
}

TEST(TFormatStringTest, ExceptionsKeepTheirClassWhenTheyAreCopied)
{
    TError::ErrorInfo const info(KorErrorsError::AutoGen_0x24F8A094(), TError::ErrorSource::User,
                                 grpc::UNKNOWN);
    TFormatString::Exception moved{TFormatString::Exception(u"m", info)};
    KorvelException const& root = moved;
    std::unique_ptr<KorvelException const> const clone(root.Clone());
    EXPECT_KOR_ERROR(clone->Throw(), TFormatString::Exception, kInsufficient);
}

TEST(TFormatStringTest, OneAllocationMakesAResult)
{
    if (!AllocationCounter::IsAvailable()) {
        GTEST_SKIP() << "allocations cannot be counted in this build";
    }
    struct Case
    {
        int line;
        int expected;
        TString (*format)();
    };
    static TString const s_text(u"a text that lies in a block of its own");
    static QString const s_qText("another one");
    static TFormatString const s_bound = TFormatString(u"%1%%%1%1").arg(s_text);
    static TFormatString const s_short = TFormatString(u"%2").arg(s_text).arg(u"fourteen units");
    Case const cases[] = {
        {__LINE__, 0,
         [] { return TFormat(u"%1 %2 %3 %4", 12345, u"ab", u'c', 1.5f); }}, // 14 units
        {__LINE__, 1, [] { return TFormat(u"%1 %2 %3 %4", 12345, u"ab", u'c', 1.25f); }},
        {__LINE__, 1, [] { return TFormat(u"%1, %2, %3", s_text, s_qText, LLONG_MIN); }},
        {__LINE__, 1, [] { return TFormat(u"%1%1%1%1%1%1%1%1%1%1%1%1%1%1%1%1%1%1", &s_text); }},
        {__LINE__, 1, [] { return s_bound.result(); }},
        {__LINE__, 0, [] { return s_short.result(); }},
        // The markers, and the room for their parameters.
        {__LINE__, 2, [] { return TFormatString(TString(u"%1%2%3%1%1")).formatString(); }},
        {__LINE__, 0, [] { return TFormatString(s_text).formatString(); }},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        AllocationCounter const counter;
        TString const result = c.format();
        int const count = counter.Count();
        EXPECT_EQ(count, c.expected) << result;
    }
}

} // namespace
