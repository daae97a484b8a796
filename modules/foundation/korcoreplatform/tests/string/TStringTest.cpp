#include "korcoreplatform/main/string/TString.h"

#include "korcoreplatform/tests/support/KorTest.h"

#include <QDebug>
#include <QRegularExpression>

namespace {

QString const kWithZero = QString("a") + QChar(0) + QString("b");

TEST(TStringQtTest, TakesQtTextsInThreeWays)
{
    // Construction keeps the zero unit and what follows it ...
    EXPECT_EQ(TString(kWithZero).length(), 3);
    EXPECT_EQ(TString::fromQString(kWithZero), QStringToTString(kWithZero));
    EXPECT_EQ((TString(u"-") + kWithZero).length(), 4);
    // ... comparison, search and += stop before it ...
    EXPECT_TRUE(TString(u"a") == kWithZero);
    EXPECT_FALSE(TString(kWithZero) == kWithZero);
    EXPECT_GT(TString(u"ab").compare(kWithZero), 0);
    EXPECT_TRUE(TString(u"xA").endsWith(kWithZero, TString::CaseInsensitive));
    EXPECT_TRUE(TString(u"ac").startsWith(kWithZero));
    EXPECT_TRUE(TString(u"ca").contains(kWithZero));
    EXPECT_EQ(TString(u"-") += kWithZero, u"-a");
    // ... and bytes are UTF-8 up to the first zero byte.
    QByteArray const bytes("\xC3\xA4_\0cd", 6);
    EXPECT_EQ(TString(bytes), u"\u00E4_");
    EXPECT_EQ(TString(u"-") += bytes, u"-\u00E4_");
    EXPECT_EQ(TString(u"old") = bytes, u"\u00E4_");
    // Nothing behind a text without a zero is read.
    std::vector<char> const exact = {'a', 'b', 'c'};
    std::vector<QChar> const units = {QChar('a'), QChar('b')};
    QByteArray const raw = QByteArray::fromRawData(exact.data(), 2);
    QString const qRaw = QString::fromRawData(units.data(), 1);
    EXPECT_EQ(TString(raw), u"ab");
    EXPECT_EQ(TString(u"-").append(raw), u"-ab");
    EXPECT_EQ(TString(u"-") += qRaw, u"-a");
    EXPECT_TRUE(TString(u"a") == qRaw);
}

TEST(TStringQtTest, GivesQtTexts)
{
    EXPECT_TRUE(TString().toQString().isNull());
    EXPECT_TRUE(TStringToQString(TStringCore(u"x").truncate(0)).isNull());
    EXPECT_EQ(TString(kWithZero).toQString(), kWithZero);
    QString debugged;
    QDebug(&debugged) << TString(u"text");
    EXPECT_EQ(TString(debugged).trimmed(), u"\"text\"");
    QString qText("theirs");
    TString text(u"ours");
    text.swap(qText);
    EXPECT_TRUE(text == u"theirs" && qText == "ours");
}

TEST(TStringQtTest, RegularExpressions)
{
    QRegularExpression const digits("([0-9]+)");
    QRegularExpression const invalid("(");
    TString const text(u"a1b22c");
    EXPECT_EQ(TString(text).replace(digits, u"<\\1>"), u"a<1>b<22>c");
    EXPECT_EQ(TString(text).removeAll(digits), u"abc");
    EXPECT_EQ(text.section(digits, 1, 1), u"b");
    EXPECT_EQ(TString(text).replace(invalid, u"x"), text);
    EXPECT_EQ(text.section(invalid, 0), u"");
}

TEST(TStringTest, CollationSortsTheEmptyTextLast)
{
    EXPECT_EQ(TString().CollateNoCase(u"x"), 1);
    EXPECT_EQ(TString(u"x").CollateNoCase(u""), -1);
    EXPECT_EQ(TString(u"x").CollateNoCase(nullptr), -1);
    EXPECT_EQ(TString().CollateNoCase(nullptr), 0);
    EXPECT_EQ(TString(u"x").CollateNoCase(u"x"), 0);
    EXPECT_NE(TString(u"x").CollateNoCase(u"X"), 0); // case counts, whatever the name says
    EXPECT_EQ(TString(u"a").CollateNoCase(u"b"), -TString(u"b").CollateNoCase(u"a"));
}

/// How two operands of any types stand to one another.
template <class Left, class Right>
std::vector<bool> Relations(Left const& a, Right const& b)
{
    return {a == b, a != b, a<b, a <= b, a> b, a >= b};
}

TEST(TStringTest, OperandsOfEveryType)
{
    TString const b(u"b");
    std::vector<bool> const less = Relations(1, 2);
    std::vector<bool> const equal = Relations(1, 1);
    std::vector<bool> const greater = Relations(2, 1);
    EXPECT_EQ(Relations(b, u"c"), less);
    EXPECT_EQ(Relations(u"a", b), less);
    EXPECT_EQ(Relations(b, u'b'), equal);
    EXPECT_EQ(Relations(u'b', b), equal);
    EXPECT_EQ(Relations(b, u"a"), greater);
    EXPECT_EQ(Relations(u'c', b), greater);
    EXPECT_EQ(Relations(b, QString("c")), less);
    EXPECT_TRUE(b == TStringCore(u"b") && TStringCore(u"b") == b && b == u"b" && u"c" != b);
    EXPECT_EQ(u"a" + b + u'c' + QString("d"), u"abcd");
    EXPECT_EQ(u'a' + b + u"c", u"abc");
    EXPECT_EQ(QString("a") + b, u"ab");
    // An array is not taken for a truth value or a count.
    static_assert(!std::is_convertible_v<int, TString>);
    TString const part(u"a part of twenty uni"); // chained sums keep long blocks
    EXPECT_EQ(part + part + part + u'!' + u"?", part.repeated(3) + u"!?");
    EXPECT_EQ(part, u"a part of twenty uni");
    EXPECT_EQ(std::hash<TString>()(part), std::hash<TStringCore>()(part));
    std::ostringstream out;
    out << TString(u"\u20AC");
    EXPECT_EQ(out.str(), "\xE2\x82\xAC");
}

TEST(TStringLegacyTest, AnswersAsOlderCallersExpect)
{
    TString text(u"hello");
    EXPECT_EQ(text.Insert(0, u'>'), 6);
    EXPECT_EQ(text.Delete(0), 5);
    EXPECT_EQ(text.Remove(u'l'), 2);
    EXPECT_EQ(text, u"heo");
    EXPECT_EQ(text.Replace(u"e", u"ee"), 1);
    EXPECT_EQ(text.Replace(u'e', u'E'), 2);
    EXPECT_EQ(text.Find(u"EE"), 1);
    EXPECT_EQ(text.ReverseFind(u'E'), 2);
    EXPECT_EQ(text.Append(u"abc", 2), u"hEEoab");
    EXPECT_EQ(text.Append(u"abc", 9).Right(3), u"abc");
    EXPECT_NE(TString(u"abc").Compare(u"ABC"), 0);
    EXPECT_EQ(TString(u"abc").CompareNoCase(u"ABC"), 0);
    EXPECT_EQ(TString(u"Ab").MakeUpper().MakeLower().AppendChar(u'c'), u"abc");
    text.SetAt(0, u'H');
    EXPECT_EQ(text.GetAt(0), u'H');
    EXPECT_EQ(text.SetString(u"xyz", 2), u"xy");
}

TEST(TStringLegacyTest, BuffersAreWrittenAndReleased)
{
    constexpr char kBadLength[] = "StringException_AutoGen_0xDBED6C12";
    TString text(u"some text in a block of its own");
    TString const copy(text);
    char16_t* buffer = text.GetBuffer(40);
    EXPECT_GE(text.capacity(), 40);
    buffer[0] = u'S';
    buffer[4] = 0;
    text.ReleaseBuffer();
    EXPECT_EQ(text, u"Some");
    EXPECT_EQ(copy, u"some text in a block of its own");
    std::fill_n(text.GetBuffer(9), 9, u'-'); // no room is left for a zero
    text.ReleaseBuffer();
    EXPECT_EQ(text, u"---------");
    text.GetBufferSetLength(3)[2] = u'!';
    text.ReleaseBuffer(3);
    EXPECT_KOR_ERROR(text.GetBufferSetLength(-1), StringException, kBadLength);
    EXPECT_KOR_ERROR(text.ReleaseBuffer(text.capacity() + 1), StringException, kBadLength);
    EXPECT_EQ(text, u"--!");
}

template <class Less, class More>
void ExpectOrder(Less const& less, More const& more)
{
    EXPECT_TRUE(less < more && less <= more && less != more);
    EXPECT_FALSE(less > more || less >= more || less == more);
    EXPECT_TRUE(more > less && more >= less && more != less);
    EXPECT_FALSE(more < less || more <= less || more == less);
}

TEST(TStringTest, TextsOfAllTypesCompareInEitherOrder)
{
    ExpectOrder(TString(u"a"), TStringCore(u"b"));
    ExpectOrder(TString(u"a"), QString("b"));
    ExpectOrder(QString("a"), TString(u"b"));
    for (auto const& b : {TStringCore(u"b"), TStringCore(u"ba")}) {
        ExpectOrder(u"a", b);
        ExpectOrder(u'a', b);
        ExpectOrder(u"a", TString(b));
        ExpectOrder(u'a', TString(b));
        ExpectOrder(b, u"c");
        ExpectOrder(b, u'c');
    }
    TStringCore const text(u"\u00E4");
    EXPECT_TRUE(u"\u00E4" == text && u'\u00E4' == text && text == u'\u00E4');
    EXPECT_TRUE('\xE4' == text && text == '\xE4' && text < '\xE5' && '\xE3' < text);
}

TEST(TStringTest, NarrowTextIsUtf8AndNarrowUnitsAreLatin1)
{
    TString const text(u"x\u00E4");
    EXPECT_EQ(TString("\xC3\xA4"), TString('\xE4', 1));
    EXPECT_EQ(TString(u"x").append("\xC3\xA4").append('\xE4'), u"x\u00E4\u00E4");
    EXPECT_TRUE(text.contains("\xC3\xA4") && text.endsWith("\xC3\xA4") && text == "x\xC3\xA4");
    EXPECT_TRUE(text.endsWith('\xE4') && text.lastIndexOf('\xE4') == 1 && text != '\xE4');
    EXPECT_EQ(TString(u"x") + '\xE4', text);
    EXPECT_EQ("x" + TString('\xE4', 1), text);
    EXPECT_EQ(TString('\xE4', 1).prepend('x').insert(1, '\xE4').Trim('\xE4'), u"x");
}

TEST(TStringTest, ALengthWithATextIsNoLengthOfAPointer)
{
    TString const text(u"abc");
    EXPECT_EQ(TString(text, 40), text);
    EXPECT_EQ(TString(u"-").append(text, 2), u"-ab");
    EXPECT_EQ(TString(u"-").insert(0, text, 40), u"abc-");
    TString assigned(u"old");
    EXPECT_EQ(assigned.assign(text, 1), u"a");
    assigned = {};
    EXPECT_TRUE(assigned.isEmpty());
}

} // namespace
