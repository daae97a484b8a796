#include "korcoreplatform/main/string/TFormatString.h"

#include "korcoreplatform/tests/support/KorTest.h"

namespace {

// The ids of what is wrong with a template, as `Outcome` tells them.
constexpr char16_t kLeadingZero[] = u"0xE643480C";
constexpr char16_t kNumberless[] = u"0x4CBC0F36";
constexpr char16_t kAbove99[] = u"0x06BAA2A5";
constexpr char16_t kIncomplete[] = u"0x703C877B";
constexpr char kInsufficient[] = "TFormatStringException_AutoGen_0x24F8A094";

/// What formatting gave: the text, or the number of the error, which has the listed message.
template <class Format>
TString Outcome(Format const& format)
{
    try {
        return format();
    } catch (TFormatString::Exception const& e) {
        TString const id = e.GetErrorInfo().GetError().GetName();
        EXPECT_KOR_ERROR(e.Throw(), TFormatString::Exception, id.toStdString());
        return id.right(10);
    }
}

constexpr int kFew = 64; ///< Units of templates that may be read a short way.

/// `TFormat` for templates that are made at run time, in an array of that size; they have no zero.
template <int units, class... Values>
TString FormatAtOnce(TString const& formatString, Values const&... values)
{
    char16_t literal[units] = {};
    std::copy(formatString.cbegin(), formatString.cend(), literal);
    return TFormat(literal, values...);
}

TEST(TFormatStringTest, TemplatesFormatOrFailAtOnce)
{
    struct
    {
        int line;
        TString formatString, expected;
    } const cases[] = {
        {__LINE__, u"", u""},
        {__LINE__, u"%1 and %1", u"x and x"},
        {__LINE__, u"%2%1", u"yx"},
        {__LINE__, u"(%3)", u"(%1)"}, // the third parameter: not read as a marker again
        {__LINE__, u"%4%4|", u"|"},   // the fourth is empty
        {__LINE__, u"%1%%1", u"x%1"}, // a marker, a percent sign, a digit
        {__LINE__, u"%%%%%2%%", u"%%y%"},
        {__LINE__, u"%10%1", u"10thx"}, // two digits belong to the marker
        {__LINE__, u"%0", kLeadingZero},
        {__LINE__, u"50% off", kNumberless},
        {__LINE__, u"%\x0661", kNumberless}, // a digit of another script
        {__LINE__, u"%:", kNumberless},      // what follows '9'
        {__LINE__, u"%1%", kIncomplete},
        {__LINE__, u"%100", kAbove99},
        {__LINE__, u"%99999999999", kAbove99},
        {__LINE__, u"100%", kIncomplete},
        {__LINE__, u"%%%", kIncomplete},
        {__LINE__, u"%99 %0 %", kLeadingZero}, // the first error counts, before what lacks
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.line);
        auto const atOnce = [&](auto units) {
            return Outcome([&] {
                return FormatAtOnce<units>(c.formatString, "x", u"y", TString(u"%1"), u"", 5, 6, 7,
                                           8, 9, "10th");
            });
        };
        EXPECT_EQ(atOnce(std::integral_constant<int, kFew>()), c.expected);
        EXPECT_EQ(atOnce(std::integral_constant<int, kFew + 1>()), c.expected);
        TFormatString format(u"%2!");
        format.args("x", u"y", TString(u"%1"), u"", 5, 6, 7, 8, 9, "10th");
        EXPECT_EQ(Outcome([&] { return (format = c.formatString).result(); }), c.expected);
        bool const failed = c.expected.startsWith(u"0x");
        EXPECT_EQ(format.formatString(), failed ? TString(u"%2!") : c.formatString);
        EXPECT_EQ(format.result(), failed ? TString(u"y!") : c.expected);
    }
}

TEST(TFormatStringTest, AMarkerIsFoundWhereverItStands)
{
    for (int length = 0; length < 140; ++length) {
        for (int at = 0; at <= length; ++at) {
            TString const before(u'x', at);
            TString const behind(u'x', length - at);
            for (char16_t const* const marker : {u"%1", u"%%", u"%12"}) {
                TString const formatString = before + marker + behind;
                TString const replacement = marker == TString(u"%%") ? u"%" : u"text";
                std::vector<TString> const parameters(12, replacement);
                ASSERT_EQ(TFormatString(formatString).arg(parameters).result(),
                          before + replacement + behind);
                auto const atOnce = [&](auto units, TString const& r) {
                    return FormatAtOnce<units>(formatString, r, r, r, r, r, r, r, r, r, r, r, r);
                };
                TString const text = formatString.length() <= kFew
                                         ? atOnce(std::integral_constant<int, kFew>(), replacement)
                                         : atOnce(std::integral_constant<int, 150>(), replacement);
                ASSERT_EQ(text, before + replacement + behind);
            }
        }
    }
}

TEST(TFormatStringTest, MissingParametersAreToldAndLeaveTheObjectUsable)
{
    TString const message(u"Insufficient parameters to format string (have 2, need 3: format "
                          u"string = \"%1 %3\").");
    TFormatString format(u"%1 %3");
    format.arg(u"a", u"b");
    EXPECT_KOR_ERROR_TEXT(format.result(), TFormatString::Exception, kInsufficient, message);
    EXPECT_KOR_ERROR_TEXT(TFormat(u"%1 %3", 1, 2), TFormatString::Exception, kInsufficient,
                          message);
    EXPECT_EQ(format.arg(u"c").result(), u"a c");
    // The form for the lowest layers renders what it has.
    KorvelException const partial(TFormatString(u"%1, %2").arg(u"a"), KorTest::SomeError());
    EXPECT_EQ(partial.GetMessagesFront(), u"a, %2");
}

TEST(TFormatStringTest, ErrorsOfTheTemplateComeBeforeThoseOfValues)
{
    TFormatString const failing(u"%1"); // its conversion to a text fails
    EXPECT_EQ(Outcome([&] { return TFormat(u"50% off", failing); }), kNumberless);
    EXPECT_EQ(Outcome([&] { return TFormat(u"%2%", 1, failing); }), kIncomplete);
    EXPECT_EQ(Outcome([&] { return TFormat(u"100%%", failing); }), u"0x24F8A094");
}

TEST(TFormatStringTest, FieldsArePadded)
{
    auto const one = [] { return TFormatString(u"%1"); };
    EXPECT_EQ(one().arg(u"ab", 4, u'*').result(), u"**ab");
    EXPECT_EQ(one().arg(u"ab", -4, u'*').result(), u"ab**");
    EXPECT_EQ(one().arg(u"abcdef", 4).result(), u"abcdef");
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
    TString const a(u"a"), b(u"b"), c(u"c"), d(u"d"), e(u"e"), f(u"f"), g(u"g"), h(u"h"), i(u"i");
    auto const ten = [] { return TFormatString(u"%1%2%3%4%5%6%7%8%9%10"); };
    for (TFormatString const& format :
         {ten().arg(a, b).arg(c, d, e).arg(f, g, h, i, u"j"),
          ten().arg(a, b, c, d).arg(e, f, g, h, i, u"j"),
          ten().arg(a, b, c, d, e, f, g).args(h, i, u'j'),
          ten().arg(a, b, c, d, e, f, g, h).arg(i).arg(u'j'),
          ten().arg(a, b, c, d, e, f, g, h, i).arg(u"j"),
          ten().arg(a, b, c, d, e, f, g, h, i, u"j"),
          ten().arg(u"x").arg(std::vector<TString>{a, b, c, d, e, f, g, h, i}).arg(u"j")}) {
        EXPECT_EQ(format.result(), u"abcdefghij");
    }
    TFormatString format(u"%1%2");
    format.arg(a, b) = u"%2-%1"; // the parameters stay
    TFormatString& same = format;
    format = std::move(same);
    EXPECT_EQ(format.result(), u"b-a");
    TFormatString const taken = std::move(format);
    EXPECT_EQ(taken.result(), u"b-a");
    EXPECT_EQ(format.result(), TString()); // asks for nothing
    EXPECT_EQ((format = "\xC3\xA9%1").arg(u"x").result(), u"\u00E9x");
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

/// Formats seven values in both ways.
template <class... Values>
void ExpectTexts(TString const& expected, Values const&... values)
{
    EXPECT_EQ(TFormatString(u"%1|%2|%3|%4|%5|%6|%7").args(values...).result(), expected);
    EXPECT_EQ(TFormat(u"%1|%2|%3|%4|%5|%6|%7", values...), expected);
}

TEST(TFormatStringTest, EveryKindOfValueHasItsText)
{
    // An enumerator is its number, not its character.
    ExpectTexts(u"c|\u00E4|\u20AC|1|-65|7|65", 'c', '\xE4', u'\u20AC', true,
                static_cast<signed char>(-65), kPlain, Scoped::Letter);
    ExpectTexts(u"-2147483648|4294967295|-9223372036854775808|18446744073709551615|"
                u"-1.23457e+06|0x12ab|0x0",
                INT_MIN, UINT_MAX, LLONG_MIN, ULLONG_MAX, -1234567.0f,
                reinterpret_cast<void*>(0x12ab), nullptr);
    char16_t const literal[] = {u'l', u'i', u't', u'\0', u'x', u'\0'};
    ExpectTexts(TString(u"lit|\u00E4|||a\0b|a\0b|inner", 21), literal, "\xC3\xA4",
                static_cast<char16_t const*>(nullptr), static_cast<char const*>(nullptr),
                TStringCore(u"a\0b", 3), QString::fromUtf16(u"a\0b", 3),
                TFormatString(u"%1").arg(u"inner"));
    TString const text = Convertible();
    ExpectTexts(text + u"||||||", Convertible(), u"", u"", u"", u"", u"", u"");
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

} // namespace
