#include "korcoreplatform/main/string/TFormatString.h"

#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/KorTest.h"
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

constexpr char16_t kLeadingZero[] = u"TFormatStringException_AutoGen_0xE643480C: "
                                    u"Leading zero in marker number in format string.";
constexpr char16_t kNumberless[] = u"TFormatStringException_AutoGen_0x4CBC0F36: "
                                   u"Invalid numberless marker in format string.";
constexpr char16_t kAbove99[] = u"TFormatStringException_AutoGen_0x06BAA2A5: "
                                u"Invalid marker number > 99 in format string.";
constexpr char16_t kIncomplete[] = u"TFormatStringException_AutoGen_0x703C877B: "
                                   u"Format string ends with an incomplete marker.";
constexpr char kInsufficient[] = "TFormatStringException_AutoGen_0x24F8A094";

/// What formatting gave: the text, or the error's id and message.
template <class Format>
TString Outcome(Format const& format)
{
    try {
        return format();
    } catch (TFormatString::Exception const& e) {
        return e.GetErrorInfo().GetError().GetName() + TString(u": ") + e.GetMessagesFront();
    }
}

/// `TFormat` for templates that are made at run time; they have no zero unit.
template <class... Values>
TString FormatAtOnce(TString const& formatString, Values const&... values)
{
    char16_t literal[500] = {};
    std::copy(formatString.cbegin(), formatString.cend(), literal);
    return TFormat(literal, values...);
}

TEST(TFormatStringTest, TemplatesFormatOrFailAtOnce)
{
    struct Case
    {
        int line;
        TString formatString;
        TString expected;
    };
    Case const cases[] = {
        {__LINE__, u"", u""},
        {__LINE__, u"no marker", u"no marker"},
        {__LINE__, u"%1 and %1", u"x and x"},
        {__LINE__, u"%2%1", u"yx"},
        {__LINE__, u"(%3)", u"(%1)"}, // the third parameter: not read as a marker again
        {__LINE__, u"%4%4|", u"|"},   // the fourth is empty
        {__LINE__, u"%1%%1", u"x%1"}, // a marker, a percent sign, a digit
        {__LINE__, u"%%%%%2%%", u"%%y%"},
        {__LINE__, u"%10%1", u"10thx"}, // two digits belong to the marker
        {__LINE__, u"%0", kLeadingZero},
        {__LINE__, u"%01", kLeadingZero},
        {__LINE__, u"50% off", kNumberless},
        {__LINE__, u"%\x0661", kNumberless}, // a digit of another script
        {__LINE__, u"%100", kAbove99},
        {__LINE__, u"%99999999999", kAbove99},
        {__LINE__, u"100%", kIncomplete},
        {__LINE__, u"%%%", kIncomplete},
        {__LINE__, u"%99 %0 %", kLeadingZero}, // the first error counts, before what lacks
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(Outcome([&] {
                      return FormatAtOnce(c.formatString, "x", u"y", TString(u"%1"), u"", 5, 6, 7,
                                          8, 9, "10th");
                  }),
                  c.expected);
        TFormatString format(u"%2!");
        format.args("x", u"y", TString(u"%1"), u"", 5, 6, 7, 8, 9, "10th");
        EXPECT_EQ(Outcome([&] { return (format = c.formatString).result(); }), c.expected);
        bool const failed = c.expected.startsWith(u"TFormatStringException");
        EXPECT_EQ(format.formatString(), failed ? TString(u"%2!") : c.formatString);
        EXPECT_EQ(format.result(), failed ? TString(u"y!") : c.expected);
    }
}

TEST(TFormatStringTest, MissingParametersAreToldAndLeaveTheObjectUsable)
{
    TString const message(u": Insufficient parameters to format string (have 2, need 3: format "
                          u"string = \"%1 %3\").");
    TFormatString format(u"%1 %3");
    format.arg(u"a", u"b");
    EXPECT_EQ(Outcome([&] { return format.result(); }), TString(kInsufficient) + message);
    EXPECT_EQ(Outcome([] { return TFormat(u"%1 %3", 1, 2); }), TString(kInsufficient) + message);
    EXPECT_EQ(format.arg(u"c").result(), u"a c");
    try {
        TFormat(u"%99");
        ADD_FAILURE() << "did not throw";
    } catch (KorvelException const& e) {
        std::unique_ptr<KorvelException const> const clone(e.Clone());
        EXPECT_KOR_ERROR(clone->Throw(), TFormatString::Exception, kInsufficient);
        // The form for the lowest layers renders what it has.
        KorvelException const partial(TFormatString(u"%1, %2").arg(u"a"), e.GetErrorInfo());
        EXPECT_EQ(partial.GetMessagesFront(), u"a, %2");
    }
}

TEST(TFormatStringTest, FieldsArePadded)
{
    auto const one = [] { return TFormatString(u"%1"); };
    EXPECT_EQ(one().arg(u"ab", 4, u'*').result(), u"**ab");
    EXPECT_EQ(one().arg(u"ab", -4, u'*').result(), u"ab**");
    EXPECT_EQ(one().arg(u"ab", 3).result(), u" ab");
    EXPECT_EQ(one().arg(u"abcdef", 4).result(), u"abcdef");
    EXPECT_EQ(one().arg(u"abcdef", -4).result(), u"abcdef");
    EXPECT_EQ(one().arg(u'c', 3, u'-').result(), u"--c");
    EXPECT_EQ(one().arg('\xE4', -3, u'-').result(), u"\u00E4--");
    EXPECT_EQ(one().arg(-5, 6, 10, u'0').result(), u"0000-5"); // the finished text is padded
    EXPECT_EQ(one().arg(3.5, 9, 'f', -1, u'_').result(), u"_3.500000");
    EXPECT_EQ(one().arg(3.5, -6, 'f', 2, u'_', true).result(), u"3.5___");
    EXPECT_EQ(one().arg(1e6).result(), u"1e+06");
    TFormatString format(u"%1");
    EXPECT_KOR_ERROR(format.arg(u"a", INT_MIN), StringException,
                     "StringException_AutoGen_0xC83B3D89");
    EXPECT_KOR_ERROR(format.arg(1, 0, 1), StringException, "StringException_AutoGen_0x30E31408");
    EXPECT_EQ(format.args(7).result(), u"7"); // nothing was bound before
}

TEST(TFormatStringTest, IntegersOfEveryWidthKeepTheirValueAndBase)
{
    unsigned short const widest = USHRT_MAX;
    TFormatString format(u"%1 %2 %3 %4 %5 %6 %7 %8");
    format.arg(short(SHRT_MIN)).arg(widest).arg(INT_MIN).arg(UINT_MAX);
    format.arg(LONG_MIN).arg(ULONG_MAX).arg(LLONG_MIN).arg(ULLONG_MAX);
    EXPECT_EQ(format.result(), u"-32768 65535 -2147483648 4294967295 -9223372036854775808 "
                               u"18446744073709551615 -9223372036854775808 18446744073709551615");
    format.clearParms(); // the template stays
    format.arg(short(26), 0, 16).arg(widest, 0, 16).arg(26, 0, 16).arg(26u, 0, 16);
    format.arg(26l, 0, 16).arg(26ul, 0, 16).arg(26ll, 0, 16).arg(26ull, 0, 16);
    EXPECT_EQ(format.result(), u"1a ffff 1a 1a 1a 1a 1a 1a");
}

TEST(TFormatStringTest, BindersAppendInOrderExceptForTheList)
{
    TString const a(u"a"), b(u"b"), c(u"c"), d(u"d"), e(u"e"), f(u"f"), g(u"g"), h(u"h"), i(u"i"),
        j(u"j");
    auto const ten = [] { return TFormatString(u"%1%2%3%4%5%6%7%8%9%10"); };
    TFormatString const formats[] = {
        ten().arg(a, b).arg(c, d, e).arg(f, g, h, i, j),
        ten().arg(a, b, c, d).arg(e, f, g, h, i, j),
        ten().arg(a, b, c, d, e, f, g).args(h, i, j),
        ten().arg(a, b, c, d, e, f, g, h).arg(i).arg(j),
        ten().arg(a, b, c, d, e, f, g, h, i).arg(u'j'),
        ten().arg(a, b, c, d, e, f, g, h, i, j),
        ten().arg(u"x").arg(std::vector<TString>{a, b, c, d, e, f, g, h, i}).arg(j),
    };
    for (TFormatString const& format : formats) {
        EXPECT_EQ(format.result(), u"abcdefghij");
    }
    TFormatString format(u"%1%2");
    format.arg(a, b) = u"%2-%1"; // the parameters stay
    EXPECT_EQ(format.result(), u"b-a");
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
        EXPECT_EQ(TFormatString(u"%1").args(value).result(), expected);
        EXPECT_EQ(TFormat(u"%1", value), expected);
    };
    expectText(__LINE__, 'c', u"c");
    expectText(__LINE__, '\xE4', u"\u00E4");
    expectText(__LINE__, u'\u20AC', u"\u20AC");
    expectText(__LINE__, true, u"1");
    expectText(__LINE__, static_cast<signed char>(-65), u"-65");
    expectText(__LINE__, kPlain, u"7");
    expectText(__LINE__, Scoped::Letter, u"65"); // its number, not its character
    expectText(__LINE__, INT_MIN, u"-2147483648");
    expectText(__LINE__, UINT_MAX, u"4294967295");
    expectText(__LINE__, LLONG_MIN, u"-9223372036854775808");
    expectText(__LINE__, ULLONG_MAX, u"18446744073709551615");
    expectText(__LINE__, -1234567.0f, u"-1.23457e+06");
    char16_t const literal[] = {u'l', u'i', u't', u'\0', u'x', u'\0'};
    expectText(__LINE__, literal, u"lit");
    expectText(__LINE__, "\xC3\xA4", u"\u00E4");
    expectText(__LINE__, static_cast<char16_t const*>(nullptr), u"");
    expectText(__LINE__, static_cast<char const*>(nullptr), u"");
    expectText(__LINE__, TStringCore(u"a\0b", 3), TString(u"a\0b", 3));
    expectText(__LINE__, QString::fromUtf16(u"a\0b", 3), TString(u"a\0b", 3));
    expectText(__LINE__, TFormatString(u"%1").arg(u"inner"), u"inner");
    expectText(__LINE__, Convertible(), u"a text of more than fourteen units");
    expectText(__LINE__, reinterpret_cast<void*>(0x12ab), u"0x12ab");
    expectText(__LINE__, nullptr, u"0x0");
}

// Long enough for markers on both sides of every boundary that the reader of templates has.
TEST(TFormatStringTest, BothWaysAndTheCoreAgreeOnRandomTemplates)
{
    std::mt19937 random(401); // fixed seed: a failure can be run again
    char16_t const* const pieces[] = {
        u"%1", u"%2", u"%3", u"%%", u"a", u"0", u"text of some length"};
    char16_t const* const faults[] = {u"%", u"%4", u"%0", u"%123"};
    int formatted = 0;
    for (int i = 0; i < 20000; ++i) {
        TString text;
        for (unsigned count = random() % 25; count > 0; --count) {
            text += random() % 100 == 0 ? faults[random() % std::size(faults)]
                                        : pieces[random() % std::size(pieces)];
        }
        TString const value(u'v', static_cast<int>(random() % 20));
        int const number = static_cast<int>(random());
        TString const atOnce = Outcome([&] { return FormatAtOnce(text, value, number, "x"); });
        ASSERT_EQ(atOnce,
                  Outcome([&] { return TFormatString(text).args(value, number, "x").result(); }));
        if (!atOnce.startsWith(u"TFormatStringException")) {
            TFormatStringCore core(text);
            ASSERT_EQ(atOnce, TString(core.arg({value, TString::number(number), u"x"}).result()))
                << text;
            ++formatted;
        }
    }
    EXPECT_GT(formatted, 5000);
}

TEST(TFormatStringTest, TemplatesEndWhereTheirTextOrArrayEnds)
{
    EXPECT_EQ(TFormatString(TString(u"a\0%1", 4)).arg(u"x").result(), TString(u"a\0x", 3));
    EXPECT_EQ(Outcome([] { return TFormatString(TString(u"%\0", 2)).result(); }), kNumberless);
    EXPECT_EQ(TFormat(u"a\0%1"), u"a");
    EXPECT_EQ(Outcome([] { return TFormat(u"%\0%"); }), kIncomplete);
    static constexpr char16_t kNoZeros[][2] = {{u'%', u'1'}, {u'2', u'%'}, {u'%', u'2'}};
    EXPECT_EQ(TFormat(kNoZeros[0], u"x"), u"x");
    EXPECT_EQ(Outcome([] { return TFormat(kNoZeros[1]); }), kIncomplete);
}

TEST(TFormatStringTest, OneAllocationMakesAResult)
{
    if (!AllocationCounter::IsAvailable()) {
        GTEST_SKIP() << "allocations cannot be counted in this build";
    }
    TString const text(u"a text that lies in a block of its own");
    QString const qText("another text in a block of its own");
    TFormatString const bound = TFormatString(u"%1%%%1%1").arg(text);
    auto const countOf = [](auto const& format) {
        AllocationCounter const counter;
        TString const result = format();
        return counter.Count();
    };
    // 14 units, 15 units, and arguments of more.
    EXPECT_EQ(countOf([] { return TFormat(u"%1 %2 %3 %4", 12345, u"ab", u'c', 1.5f); }), 0);
    EXPECT_EQ(countOf([] { return TFormat(u"%1 %2 %3 %4", 12345, u"ab", u'c', 1.25f); }), 1);
    EXPECT_EQ(countOf([&] { return TFormat(u"%1 %2 %3 %4", text, qText, LLONG_MIN, &text); }), 1);
    EXPECT_EQ(countOf([&] { return bound.result(); }), 1);
    // The markers, and the room for their parameters.
    EXPECT_EQ(countOf([] { return TFormatString(TString(u"%1%2%3%1%1")).formatString(); }), 2);
    EXPECT_EQ(countOf([&] { return TFormatString(text).formatString(); }), 0);
}

} // namespace
