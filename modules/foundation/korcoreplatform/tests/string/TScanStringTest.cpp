#include "korcoreplatform/main/string/TScanString.h"

#include "korcoreplatform/main/string/TString.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/error/LogicException.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <type_traits>

namespace {

constexpr char kNotAtEnd[] = "TFormatStringException_AutoGen_0x00985BE7";
constexpr char kNoBool[] = "TFormatStringException_AutoGen_0x0E56132D";
constexpr char kNoInt[] = "TFormatStringException_AutoGen_0x5D4E46DF";
constexpr char kNoFloat[] = "TFormatStringException_AutoGen_0x47A09D13";
constexpr char kNoNewline[] = "TFormatStringException_AutoGen_0x2241B337";
constexpr char kIntOutside[] = "TFormatStringException_AutoGen_0x7C7E3D50";
constexpr char kDoubleOutside[] = "TFormatStringException_AutoGen_0xDB5CF171";
constexpr char kFloatOutside[] = "TFormatStringException_AutoGen_0x3FBB5E47";
constexpr char kMismatch[] = "TFormatStringException_AutoGen_0x4CA5552B";

/// What is left in front of the cursor.
TString RestOf(TScanString scan)
{
    TString rest;
    scan.readString(rest, -1);
    return rest;
}

TEST(TScanStringTest, BooleansAreWordsInAnyCase)
{
    struct Case
    {
        int line;
        char16_t const* text;
        bool expected;
        char16_t const* rest;
    };
    Case const cases[] = {
        {__LINE__, u"1", true, u""},
        {__LINE__, u"0", false, u""},
        {__LINE__, u"10", true, u"0"},
        {__LINE__, u"True", true, u""},
        {__LINE__, u"FALSE,", false, u","},
        {__LINE__, u"YES", true, u""},
        {__LINE__, u"No", false, u""},
        {__LINE__, u"yesterday", true, u"terday"},
        {__LINE__, u"nothing", false, u"thing"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        bool value = !c.expected;
        TScanString scan(c.text);
        EXPECT_EQ(RestOf(scan.readBool(value)), TString(c.rest));
        EXPECT_EQ(value, c.expected);
        scan.reset();
        EXPECT_EQ(RestOf(scan.skipBool()), TString(c.rest));
    }
}

TEST(TScanStringTest, NumbersEndWhereTheirFormEnds)
{
    struct Case
    {
        int line;
        char16_t const* text;
        int base;
        int expected;
        char16_t const* rest;
    };
    Case const cases[] = {
        {__LINE__, u"-12,5", 10, -12, u",5"}, {__LINE__, u"+7-3", 10, 7, u"-3"},
        {__LINE__, u"0x1fg", 16, 31, u"g"},   {__LINE__, u"0x1fg", 10, 0, u"x1fg"},
        {__LINE__, u"0xg", 0, 0, u"xg"},      {__LINE__, u"017 ", 0, 15, u" "},
        {__LINE__, u"1_!", 64, 127, u"!"},    {__LINE__, u"zZ!", 36, 35 * 36 + 35, u"!"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        int value = -1;
        TScanString scan(c.text);
        EXPECT_EQ(RestOf(scan.readInt(value, c.base)), TString(c.rest));
        EXPECT_EQ(value, c.expected);
        scan.reset();
        EXPECT_EQ(RestOf(scan.skipInt(c.base)), TString(c.rest));
    }
    double wide = 0;
    float narrow = 0;
    TScanString scan(u"-1.5e-3e 2.5x.");
    EXPECT_EQ(RestOf(scan.readFloat(wide)), u"e 2.5x.");
    EXPECT_EQ(RestOf(scan.skip(u"e ").readFloat(narrow)), u"x.");
    EXPECT_EQ(wide, -1.5e-3);
    EXPECT_EQ(narrow, 2.5f);
    EXPECT_EQ(RestOf(TScanString(u"1.e5,").skipFloat()), u",");
}

TEST(TScanStringTest, LinesEndAtLineFeeds)
{
    struct Case
    {
        int line;
        char16_t const* text;
        char16_t const* expected;
        char16_t const* rest;
    };
    Case const cases[] = {
        {__LINE__, u"ab\r\nc", u"ab\r", u"c"}, // the carriage return stays in the line
        {__LINE__, u"a\n\rb", u"a", u"b"},     // both are one newline
        {__LINE__, u"a\n\n\rb", u"a", u"\n\rb"}, {__LINE__, u"\nb", u"", u"b"},
        {__LINE__, u"a\rb", u"a\rb", u""},       {__LINE__, u"", u"", u""},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        TString value(u"old");
        TScanString scan(c.text);
        EXPECT_EQ(RestOf(scan.readLine(value)), TString(c.rest));
        EXPECT_EQ(value, TString(c.expected));
        scan.reset();
        EXPECT_EQ(RestOf(scan.skipLine()), TString(c.rest));
    }
    EXPECT_EQ(RestOf(TScanString(u"\r\n\n").skipNewline()), u"\n");
    EXPECT_EQ(RestOf(TScanString(u"\r\r").skipNewline()), u"\r");
    EXPECT_EQ(RestOf(TScanString(u"").skipNewline().skipNewline()), u"");
}

TEST(TScanStringTest, RunsStopAtTheFirstUnitThatDoesNotBelong)
{
    struct Case
    {
        int line;
        char16_t const* text;
        char16_t const* expected;
        char16_t const* rest;
        void (*read)(TScanString&, TString&);
        void (*skip)(TScanString&);
    };
    using Scan = TScanString;
    Case const cases[] = {
        {__LINE__, u"abcd", u"abcd", u"", [](Scan& s, TString& v) { s.readString(v, 10); },
         [](Scan& s) { s.skipString(10); }},
        {__LINE__, u"abcd", u"ab", u"cd", [](Scan& s, TString& v) { s.readString(v, 2); },
         [](Scan& s) { s.skipString(2); }},
        {__LINE__, u"abcd", u"abcd", u"", [](Scan& s, TString& v) { s.readString(v, -1); },
         [](Scan& s) { s.skipString(-1); }},
        {__LINE__, u"ab\u2003c", u"ab", u"\u2003c",
         [](Scan& s, TString& v) { s.readNonWhitespace(v); },
         [](Scan& s) { s.skipNonWhitespace(); }},
        {__LINE__, u" ab", u"", u" ab", [](Scan& s, TString& v) { s.readNonWhitespace(v); },
         [](Scan& s) { s.skipNonWhitespace(); }},
        {__LINE__, u"cabbed", u"cabb", u"ed", [](Scan& s, TString& v) { s.readAnyOf(v, u"abc"); },
         [](Scan& s) { s.skipAnyOf(u"abc"); }},
        {__LINE__, u"ab", u"ab", u"", [](Scan& s, TString& v) { s.readAnyOf(v, u"ab"); },
         [](Scan& s) { s.skipAnyOf(u"ab"); }},
        {__LINE__, u"ab", u"", u"ab", [](Scan& s, TString& v) { s.readAnyOf(v, nullptr); },
         [](Scan& s) { s.skipAnyOf(nullptr); }},
        {__LINE__, u"key=a", u"key", u"=a", [](Scan& s, TString& v) { s.readAnyNotOf(v, u":="); },
         [](Scan& s) { s.skipAnyNotOf(u":="); }},
        {__LINE__, u"key", u"key", u"", [](Scan& s, TString& v) { s.readAnyNotOf(v, nullptr); },
         [](Scan& s) { s.skipAnyNotOf(u"="); }},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        TString value(u"old");
        TScanString scan(c.text);
        c.read(scan, value);
        EXPECT_EQ(value, TString(c.expected));
        EXPECT_EQ(RestOf(scan), TString(c.rest));
        scan.reset();
        c.skip(scan);
        EXPECT_EQ(RestOf(scan), TString(c.rest));
    }
    EXPECT_EQ(RestOf(TScanString(u" \t\r\n\u00A0x ").skipWhitespace()), u"x ");
}

TEST(TScanStringTest, FailuresHaveTheirIdsAndTellWhereTheCursorIs)
{
    struct Case
    {
        int line;
        char16_t const* text;
        char const* errorId;
        char16_t const* message;
        char16_t const* rest;
        void (*scan)(TScanString&);
    };
    using Scan = TScanString;
    static bool s_flag = true;
    static int s_number = 1;
    static double s_wide = 1;
    static float s_narrow = 1;
    Case const cases[] = {
        {__LINE__, u" true", kNoBool, u"lengthBool: Boolean value not found.", u" true",
         [](Scan& s) { s.readBool(s_flag); }},
        {__LINE__, u"tru", kNoBool, u"lengthBool: Boolean value not found.", u"tru",
         [](Scan& s) { s.skipBool(); }},
        {__LINE__, u"\u0011", kNoBool, u"lengthBool: Boolean value not found.", u"\u0011",
         [](Scan& s) { s.readBool(s_flag); }},
        {__LINE__, u"-x", kNoInt, u"lengthInt: Integer value not found.", u"-x",
         [](Scan& s) { s.readInt(s_number); }},
        {__LINE__, u"9", kNoInt, u"lengthInt: Integer value not found.", u"9",
         [](Scan& s) { s.skipInt(8); }},
        {__LINE__, u"2147483648;", kIntOutside, u"readInt: Integer value not found.", u";",
         [](Scan& s) { s.readInt(s_number); }},
        {__LINE__, u"inf", kNoFloat, u"lengthFloat: Float value not found.", u"inf",
         [](Scan& s) { s.readFloat(s_wide); }},
        {__LINE__, u"1e999;", kDoubleOutside, u"readDouble: Float value not found.", u";",
         [](Scan& s) { s.readFloat(s_wide); }},
        {__LINE__, u"1e39;", kFloatOutside, u"readFloat: Float value not found.", u";",
         [](Scan& s) { s.readFloat(s_narrow); }},
        {__LINE__, u"x\n", kNoNewline, u"lengthNewLine: No new line found.", u"x\n",
         [](Scan& s) { s.skipNewline(); }},
        {__LINE__, u"ABC", kMismatch, u"skip: String mismatch.", u"ABC",
         [](Scan& s) { s.skip(u"abc"); }},
        {__LINE__, u"ab", kMismatch, u"skip: String mismatch.", u"ab",
         [](Scan& s) { s.skip(u"abc"); }},
        {__LINE__, u" ", kNotAtEnd, u"end(): Expected null character.", u" ",
         [](Scan& s) { s.end(); }},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        TScanString scan(c.text);
        EXPECT_KOR_ERROR(c.scan(scan), TScanString::Exception, c.errorId);
        EXPECT_EQ(RestOf(scan), TString(c.rest));
        try {
            scan.reset();
            c.scan(scan);
        } catch (TScanString::Exception const& e) {
            EXPECT_EQ(TString(e.GetMessagesFront()), TString(u"TScanString::") + c.message);
            std::unique_ptr<KorvelException const> const clone(e.Clone());
            EXPECT_KOR_ERROR(clone->Throw(), TScanString::Exception, c.errorId);
        }
    }
    EXPECT_TRUE(s_flag && s_number == 1 && s_wide == 1 && s_narrow == 1); // nothing was stored
}

TEST(TScanStringTest, ValuesAreReadOneAfterAnother)
{
    TString const text(u"size = 12, on\n  end \n");
    TScanString scan(text);
    TString key;
    TString line;
    int size = 0;
    bool on = false;
    scan.readAnyNotOf(key, u" =").skipWhitespace().skip(u"=").skipWhitespace().readInt(size);
    EXPECT_KOR_ERROR(scan.skip(u", ").readBool(on), TScanString::Exception, kNoBool);
    scan.skip(u"on").skipNewline().skipWhitespace().readNonWhitespace(line).skipWhitespace().end();
    EXPECT_EQ(key + TString::number(size) + line, u"size12end");
    scan.SetText(u"next");
    EXPECT_EQ(RestOf(scan), u"next");
}

TEST(TScanStringTest, AScannerWithoutTextReadsAsEmpty)
{
    static_assert(!std::is_constructible_v<TScanString, TString>, "the text would dangle");
    static_assert(!std::is_constructible_v<TScanString, TStringCore const&>, "the same");
    TScanString scan;
    TString value(u"old");
    int number = 0;
    scan.readLine(value).skipWhitespace().skip(u"").skip(nullptr).skipNewline().end();
    EXPECT_TRUE(value.isEmpty());
    EXPECT_KOR_ERROR(scan.readInt(number), TScanString::Exception, kNoInt);
    EXPECT_KOR_ERROR(scan.skipFloat(), TScanString::Exception, kNoFloat);
    EXPECT_KOR_ERROR(scan.skipBool(), TScanString::Exception, kNoBool);
    EXPECT_EQ(TScanString::lengthString(nullptr, 3), 0);
    EXPECT_KOR_ERROR(scan.reset(), LogicException, "LogicException_LogicAssert_0x858A74C8");
    try {
        scan.reset();
    } catch (LogicException const& e) {
        EXPECT_EQ(TString(e.GetMessagesFront()),
                  u"Internal error in file \"modules/foundation/korcoreplatform/main/string/"
                  u"TScanString\" at line 225: text");
    }
}

// Measuring a value must not look at the text behind it: that would make long texts quadratic.
TEST(TScanStringTest, AMillionValuesAreReadInLinearTime)
{
    TString text;
    for (int i = 0; i < 1000000; ++i) {
        text += u"1 ";
    }
    TScanString scan(text);
    long sum = 0;
    auto const start = std::chrono::steady_clock::now();
    for (int i = 0; i < 500000; ++i) {
        int number = 0;
        double real = 0;
        scan.readInt(number).skipWhitespace().readFloat(real).skipWhitespace();
        sum += number + static_cast<long>(real);
    }
    scan.end();
    EXPECT_EQ(sum, 1000000);
    // Quadratic work would take minutes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

} // namespace
