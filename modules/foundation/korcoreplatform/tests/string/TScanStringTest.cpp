#include "korcoreplatform/main/string/TScanString.h"

#include "korcoreplatform/tests/support/KorTest.h"

namespace {

using Scan = TScanString;
using Action = std::function<TString(Scan&)>;

/// Reads a value and gives it as a text.
template <class Value, class... Arguments>
Action Read(Scan& (Scan::*read)(Value&, Arguments...), Arguments... arguments)
{
    return [=](Scan& scan) {
        Value value = Value();
        (scan.*read)(value, arguments...);
        return TFormat(u"%1", value);
    };
}

template <class... Arguments>
Action Skip(Scan& (Scan::*skip)(Arguments...), Arguments... arguments)
{
    return [=](Scan& scan) {
        (scan.*skip)(arguments...);
        return TString();
    };
}

TString RestOf(Scan scan)
{
    return Read(&Scan::readString, -1)(scan);
}

TEST(TScanStringTest, ValuesEndWhereTheirFormEnds)
{
    Action const line = Read(&Scan::readLine);
    std::tuple<int, Action, TString, TString, TString> const cases[] = {
        {__LINE__, Read(&Scan::readBool), u"10", u"1", u"0"},
        {__LINE__, Read(&Scan::readBool), u"True,", u"1", u","},
        {__LINE__, Read(&Scan::readBool), u"YES", u"1", u""},
        {__LINE__, Read(&Scan::readBool), u"yesterday", u"1", u"terday"},
        {__LINE__, Read(&Scan::readBool), u"Nothing", u"0", u"thing"},
        {__LINE__, Read(&Scan::readInt, 10), u"-12,5", u"-12", u",5"},
        {__LINE__, Read(&Scan::readInt, 16), u"0x1fg", u"31", u"g"},
        {__LINE__, Read(&Scan::readInt, 0), u"+017 ", u"15", u" "},
        {__LINE__, Read(&Scan::readInt, 64), u"Z_!", u"3967", u"!"},
        {__LINE__, Read<double>(&Scan::readFloat), u"-1.5e-3e", u"-0.0015", u"e"},
        {__LINE__, Read<float>(&Scan::readFloat), u"2.5x.", u"2.5", u"x."},
        {__LINE__, line, u"ab\r\nc", u"ab\r", u"c"}, // the carriage return stays in the line
        {__LINE__, line, u"a\n\rb", u"a", u"b"},     // both are one newline
        {__LINE__, line, u"\n\n\rb", u"", u"\n\rb"},
        {__LINE__, Skip(&Scan::skipNewline), u"\r\n\n", u"", u"\n"},
        {__LINE__, Skip(&Scan::skipNewline), u"\r\r", u"", u"\r"},
        {__LINE__, Skip(&Scan::skipNewline), u"", u"", u""},
        {__LINE__, Read(&Scan::readString, 2), u"abcd", u"ab", u"cd"},
        {__LINE__, Read(&Scan::readString, 0), u"abcd", u"", u"abcd"},
        {__LINE__, Read(&Scan::readNonWhitespace), u"ab\u2003c", u"ab", u"\u2003c"},
        {__LINE__, Skip(&Scan::skipWhitespace), u" \t\r\n\u00A0x ", u"", u"x "},
        {__LINE__, Read(&Scan::readAnyOf, u"abc"), u"cabbed", u"cabb", u"ed"},
        {__LINE__, Read(&Scan::readAnyNotOf, u":="), u"key=a", u"key", u"=a"},
        {__LINE__, Read(&Scan::readAnyNotOf, u""), u"key", u"key", u""},
        {__LINE__, Skip(&Scan::skip, u"ab"), u"abc", u"", u"c"},
    };
    for (auto const& [line, action, text, expected, rest] : cases) {
        SCOPED_TRACE(line);
        Scan scan(text);
        EXPECT_EQ(action(scan), expected);
        EXPECT_EQ(RestOf(scan), rest);
        scan.reset();
        EXPECT_EQ(RestOf(scan), text);
    }
}

TEST(TScanStringTest, FailuresHaveTheirIdsAndTellWhereTheCursorIs)
{
    struct
    {
        Action action;
        TString text, rest;
        char const* id;
    } const cases[] = {
        {Read(&Scan::readBool), u" true", u" true", "0E56132D"},
        {Read(&Scan::readBool), u"tru", u"tru", "0E56132D"},
        {Read(&Scan::readBool), u"\u0011", u"\u0011", "0E56132D"},
        {Read(&Scan::readInt, 10), u"-x", u"-x", "5D4E46DF"},
        {Skip(&Scan::skipInt, 8), u"9", u"9", "5D4E46DF"},
        {Read(&Scan::readInt, 10), u"2147483648;", u";", "7C7E3D50"},
        {Read<float>(&Scan::readFloat), u"inf", u"inf", "47A09D13"},
        {Read<double>(&Scan::readFloat), u"1e999;", u";", "DB5CF171"},
        {Read<float>(&Scan::readFloat), u"1e39;", u";", "3FBB5E47"},
        {Skip(&Scan::skipNewline), u"x\n", u"x\n", "2241B337"},
        {Skip(&Scan::skip, u"abc"), u"aBC", u"aBC", "4CA5552B"},
        {Skip(&Scan::skip, u"abc"), u"ab", u"ab", "4CA5552B"},
        {[](Scan& scan) { return scan.end(), TString(); }, u" ", u" ", "00985BE7"},
    };
    for (auto const& c : cases) {
        Scan scan(c.text);
        EXPECT_KOR_ERROR(c.action(scan), Scan::Exception,
                         std::string("TFormatStringException_AutoGen_0x") + c.id);
        EXPECT_EQ(RestOf(scan), c.rest) << c.id;
    }
}

TEST(TScanStringTest, AScannerWithoutTextReadsAsEmpty)
{
    static_assert(!std::is_constructible_v<Scan, TString>, "the text would dangle");
    static_assert(!std::is_constructible_v<Scan, TStringCore const&>, "the same");
    Scan scan;
    TString value(u"old");
    scan.readLine(value).skipWhitespace().skip(nullptr).skipAnyNotOf(nullptr).skipNewline().end();
    EXPECT_TRUE(value.isEmpty());
    EXPECT_THROW(scan.skipInt(), Scan::Exception);
    EXPECT_THROW(scan.skipFloat(), Scan::Exception);
    EXPECT_THROW(scan.skipBool(), Scan::Exception);
    EXPECT_KOR_ASSERT(scan.reset(), "0x858A74C8", "string/TScanString", 225, "text");
    scan.SetText(u"next");
    EXPECT_EQ(RestOf(scan), u"next");
    scan.skipString(2).SetText(u"again"); // from its start
    EXPECT_EQ(RestOf(scan), u"again");
}

// Measuring a value must not look at the text behind it: reading would be quadratic and not end
// while a test may run.
TEST(TScanStringTest, ManyValuesAreReadInLinearTime)
{
    TString const text = TString(u"1 2 ").repeated(500000);
    double sum = 0;
    Scan scan(text);
    for (int i = 0; i < 500000; ++i) {
        int number = 0;
        double real = 0;
        scan.readInt(number).skipWhitespace().readFloat(real).skipWhitespace();
        sum += number + real;
    }
    scan.end();
    EXPECT_EQ(sum, 1500000);
}

} // namespace
