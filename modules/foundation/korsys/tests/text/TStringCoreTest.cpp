#include "korsys/main/text/TStringCore.h"

#include "korsys/main/text/THash.h"
#include "korsys/tests/support/KorTest.h"
#include "korsys/tests/support/Threads.h"

namespace {

constexpr char kIndex[] = "StringException_AutoGen_0x9798B690";
constexpr char kBadLength[] = "StringException_AutoGen_0xDBED6C12";
constexpr char kTooLong[] = "StringException_AutoGen_0xC83B3D89";
constexpr char kNullText[] = "StringException_AutoGen_0xB1923A1A";
constexpr char kBase[] = "StringException_AutoGen_0x30E31408";
constexpr char kIterator[] = "StringException_AutoGen_0x4A0E3015";
constexpr char16_t const* kNull = nullptr;

using Text = TStringCore;
using Change = std::function<void(Text&)>;

Text const kLong(u"fifteen units..", 15);

TEST(TStringCoreStorageTest, TheFormFollowsTheLengthAndTheHistory)
{
    Text text(u"fourteen units", 14);
    EXPECT_FALSE(text.isLong());
    text.append(u'!');
    EXPECT_TRUE(text.isLong());
    text.truncate(3); // keeps its block
    EXPECT_TRUE(text.isLong());
    EXPECT_EQ(text, u"fou");
    EXPECT_EQ(std::hash<Text>()(text), THash32(u"fou", 6, 0xDEADBEEF));
    text.squeeze();
    EXPECT_FALSE(text.isLong());
    text = kLong;
    text.reserve(100);
    EXPECT_GE(text.capacity(), 100);
    EXPECT_EQ(text, kLong);
    text.clear();
    EXPECT_FALSE(text.isLong());
    EXPECT_EQ(text.constData()[0], 0);
}

TEST(TStringCoreStorageTest, CopiesShareUntilOneChanges)
{
    // Each change must leave the copy made before it alone.
    Change const changes[] = {
        [](Text& s) { s.append(u'x'); },
        [](Text& s) { s.insert(3, u"yz"); },
        [](Text& s) { s[4] = u'#'; },
        [](Text& s) { s.front() = u'#'; },
        [](Text& s) { *s.begin() = u'#'; },
        [](Text& s) { s.resize(9); },
        [](Text& s) { s.resize(40); },
        [](Text& s) { s.removeAt(2, 5); },
        [](Text& s) { s.truncate(4); },
        [](Text& s) { s.fill(u'f'); },
        [](Text& s) { s.reverse(); },
        [](Text& s) { s.replace(u'e', u'E'); },
        [](Text& s) { s.replace(Text(u"e"), Text(u"EE")); },
        [](Text& s) { s.trim(u"f."); },
        [](Text& s) { s.assign(u"another text of some length"); },
        [](Text& s) { s.reserve(200), s.data()[1] = u'#'; },
    };
    for (Change const& change : changes) {
        SCOPED_TRACE(&change - changes);
        Text original(kLong.constData(), kLong.length());
        Text const copy(original);
        ASSERT_EQ(copy.constData(), original.constData());
        change(original);
        EXPECT_EQ(copy, kLong);
        EXPECT_NE(original, kLong);
        EXPECT_EQ(original.constData()[original.length()], 0);
    }
}

TEST(TStringCoreStorageTest, ManyThreadsCopyAndChangeOneBlock)
{
    Text const shared(u"a text that is long enough for a block of its own");
    OnThreads(4, [&shared](unsigned thread) {
        auto const mark = static_cast<char16_t>(u'0' + thread);
        for (int i = 0; i < 2000; ++i) {
            Text mine(shared);
            Text other(mine);
            mine[0] = mark;
            other.append(mark);
            ASSERT_TRUE(mine.front() == mark && other.back() == mark && shared[0] == u'a');
        }
    });
    EXPECT_FALSE(shared.isShared());
}

TEST(TStringCoreStorageTest, ATextMayBeItsOwnArgument)
{
    // The same changes with another text's units and with its own.
    std::function<void(Text&, Text const&)> const changes[] = {
        [](Text& s, Text const& t) { s.append(t); },
        [](Text& s, Text const& t) { s.append(t.constData() + 2, 3); },
        [](Text& s, Text const& t) { s.insert(2, t.constData() + 1, 2); },
        [](Text& s, Text const& t) { s.replace(0, 1, t.constData() + 3, 3); },
        [](Text& s, Text const& t) { s.replace(t, t); },
        [](Text& s, Text const& t) { s = t.constData() + 2; },
        [](Text& s, Text const& t) { s.assign(t.constData() + 2); },
        [](Text& s, Text const& t) { s = t; },
        [](Text& s, Text const& t) { s = std::move(const_cast<Text&>(t)); },
        [](Text& s, Text const& t) { s.trim(t); },
    };
    for (auto const& change : changes) {
        for (Text other : {u"abcdef", u"abcdefghijklmnopqrst"}) {
            SCOPED_TRACE(&change - changes);
            Text same(other.constData(), other.length());
            Text expected(other.constData(), other.length());
            change(same, same);
            change(expected, other);
            EXPECT_EQ(same, expected);
        }
    }
}

TEST(TStringCoreErrorTest, MisuseHasItsOwnErrorAndChangesNothing)
{
    constexpr int kHuge = Text::kMaxLength;
    struct
    {
        int line;
        char const* errorId;
        Change misuse;
    } const cases[] = {
        {__LINE__, kIndex, [](Text& s) { s.at(15); }},
        {__LINE__, kIndex, [](Text& s) { s.at(-1); }},
        {__LINE__, kIndex, [](Text& s) { s[15] = u'x'; }},
        {__LINE__, kIndex, [](Text& s) { s[1ul << 40] = u'x'; }},
        {__LINE__, kIndex, [](Text const& s) { (void)s[16]; }},
        {__LINE__, kIndex, [](Text&) { Text().front(); }},
        {__LINE__, kIndex, [](Text&) { std::as_const(*std::make_unique<Text>()).back(); }},
        {__LINE__, kBadLength, [](Text& s) { s.append(u"x", -2); }},
        {__LINE__, kBadLength, [](Text& s) { s.assign(kNull, -2); }},
        {__LINE__, kBadLength, [](Text& s) { s = Text("x", -7); }},
        {__LINE__, kNullText, [](Text& s) { s.insert(0, kNull, 1); }},
        {__LINE__, kNullText, [](Text& s) { s = Text::fromLatin1(nullptr, 3); }},
        {__LINE__, kTooLong, [](Text& s) { s.resize(kHuge + 1); }},
        {__LINE__, kTooLong, [](Text& s) { s.append(u'x', kHuge); }},
        {__LINE__, kTooLong, [](Text& s) { s = s.repeated(1 << 30); }},
        {__LINE__, kTooLong, [](Text& s) { s.insert(kHuge, u"xy"); }},
        {__LINE__, kBase, [](Text&) { Text::number(1, 1); }},
        {__LINE__, kBase, [](Text&) { Text::number(1ull, 65); }},
        {__LINE__, kIterator, [](Text& s) { ++s.codepoint_cend(); }},
        {__LINE__, kIterator, [](Text& s) { --s.codepoint_cbegin(); }},
        {__LINE__, kIterator, [](Text& s) { *s.codepoint_cend(); }},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.line);
        Text text(kLong);
        EXPECT_KOR_ERROR(c.misuse(text), StringException, c.errorId);
        EXPECT_EQ(text, kLong);
    }
    EXPECT_KOR_ERROR_TEXT(kLong.at(20), StringException, kIndex,
                          u"TStringCore: index 20 is outside a text of 15 units.");
}

TEST(TStringCoreErrorTest, EmptinessIsNoMisuse)
{
    EXPECT_EQ(Text(kNull), u"");
    EXPECT_EQ(Text(kNull, 0).append(kNull).append(kNull, -1), u"");
    EXPECT_EQ(Text(u'x', 0), Text('x', -3));
    EXPECT_EQ(Text(u"ab").resize(-4), u"");
    EXPECT_EQ(Text(u"ab").resize(4), Text(u"ab\0\0", 4));
    EXPECT_TRUE(kLong[15] == 0 && kLong.at(14) == u'.' && kLong.front() == u'f');
    EXPECT_EQ(kLong.compare(kNull), 1);
    EXPECT_EQ(Text::findStr(kNull, 0, kNull, -1), 0);
}

TEST(TStringCoreTest, CodePointIteratorsJoinPairsAndKeepLoneSurrogates)
{
    char16_t const units[] = {u'a', 0xD83D, 0xDE00, 0xDC00, 0xD800, u'z'};
    Text text(units, 6);
    std::vector<char32_t> const wanted = {U'a', 0x1F600, 0xDC00, 0xD800, U'z'};
    EXPECT_EQ(std::vector<char32_t>(text.codepoint_cbegin(), text.codepoint_cend()), wanted);
    auto it = text.codepoint_cend();
    for (auto expected = wanted.rbegin(); expected != wanted.rend(); ++expected) {
        EXPECT_EQ(*--it, *expected);
    }
    EXPECT_EQ(it, text.codepoint_cbegin());
    EXPECT_EQ(text.lengthInCodePoints(), 5);
    EXPECT_EQ(Text(u"ab\U0001F600c").reversed(), u"c\U0001F600ba");
    text.insert(std::next(text.codepoint_cbegin(), 2), Text(u"--"));
    EXPECT_EQ(text.mid(3, 2), u"--");
}

TEST(TStringCoreTest, SetsOfUnitsAreFoundReplacedAndTrimmed)
{
    Text const text(u"key = value;");
    EXPECT_EQ(text.findOneOf(u"=;"), 4);
    EXPECT_EQ(text.findOneOf(Text(u"=;"), 5), 11);
    EXPECT_EQ(text.findOneOf(u""), -1);
    EXPECT_EQ(text.findOneOf(u"k", -5), 0);
    EXPECT_EQ(text.findOneOf(u"k", 99), -1);
    EXPECT_EQ(text.findOneNotOf(u"eky"), 3);
    EXPECT_EQ(text.findOneNotOf(u"", 7), 7);
    EXPECT_EQ(text.findOneNotOf(u"key =value;"), -1);
    EXPECT_EQ(text.spanIncluding(u"ykex"), u"key");
    EXPECT_EQ(text.spanExcluding(u"=;"), u"key ");
    Text const parts(u"--a;b,-c--");
    EXPECT_EQ(Text(parts).replaceAnyOf(u";,", u'.'), u"--a.b.-c--");
    EXPECT_EQ(Text(parts).replaceAnyOf(Text(u";,"), Text(u"::")), u"--a::b::-c--");
    EXPECT_EQ(Text(parts).removeAnyOf(u",c-"), u"a;b");
    EXPECT_EQ(Text::splitOnAny(parts.constData(), parts.length(), u";,"),
              (std::vector<Text>{u"--a", u"b", u"-c--"}));
    EXPECT_EQ(Text(parts).trim(u'-'), u"a;b,-c");
    EXPECT_EQ(Text(parts).trimLeft(u"-a"), u";b,-c--");
    EXPECT_EQ(Text(parts).trimRight(Text(u"-c")), u"--a;b,");
    EXPECT_EQ(Text(u" \u2003x\u00A0").trim(), u"x");
    EXPECT_EQ(Text(u" \t ").trimRight(), u"");
    EXPECT_EQ(Text(u" a ").trimLeft(), u"a ");
}

TEST(TStringCoreTest, ReplaceCountCounts)
{
    std::tuple<Text, char16_t const*, char16_t const*, int, Text> const cases[] = {
        {u"aaaa", u"aa", u"b", 2, u"bb"},
        {u"hello", u"", u"x", 6, u"xhxexlxlxox"},
        {u"", u"", u"x", 1, u"x"},
        {u"ab", u"", u"", 3, u"ab"},
        {u"abc", u"x", u"yy", 0, u"abc"},
        {Text(u'a', 1000), u"a", u"bc", 1000, Text(u"bc").repeated(1000)},
    };
    for (auto const& [original, before, after, count, result] : cases) {
        SCOPED_TRACE(result);
        Text text = original;
        EXPECT_EQ(Text::replaceCount(text, before, after), count);
        EXPECT_EQ(text, result);
    }
}

TEST(TStringCoreTest, TokenizeGivesWhatSplitGives)
{
    for (Text const text : {u"", u",", u"a", u"a,b", u",a,,b,", u",,,"}) {
        for (auto behavior : {Text::KeepEmptyParts, Text::SkipEmptyParts}) {
            std::vector<Text> parts;
            int pos = 0;
            for (Text t = text.tokenize(u',', pos, behavior); pos != -1;
                 t = text.tokenize(u',', pos, behavior)) {
                parts.push_back(t);
            }
            EXPECT_EQ(parts, Text::split(text.constData(), text.length(), u',', behavior)) << text;
        }
    }
    int pos = -7;
    EXPECT_EQ(Text(u"a,b").tokenize(Text(u", "), pos), u"");
    EXPECT_EQ(pos, -1);
}

TEST(TStringCoreTest, LineEndings)
{
    char16_t const* const cases[][3] = {
        // The text, with line feeds alone, with both.
        {u"a\r\nb\n", u"a\nb\n", u"a\r\nb\r\n"},
        {u"\r\r\n\n", u"\r\n\n", u"\r\r\n\r\n"},
        {u"a\r", u"a\r", u"a\r"},
        {u"\n", u"\n", u"\r\n"},
        {u"none", u"none", u"none"},
    };
    for (auto const& [text, unixText, dosText] : cases) {
        SCOPED_TRACE(Text(text));
        EXPECT_EQ(Text(text).dosToUnix(), unixText);
        EXPECT_EQ(Text(text).unixToDos(), dosText);
        EXPECT_EQ(Text(text).unixToDos().unixToDos(), dosText);
        Text buffer(text);
        EXPECT_EQ(Text::dosToUnix(buffer.data()), Text(unixText).length());
        EXPECT_EQ(Text(buffer.constData()), unixText);
    }
    EXPECT_EQ(Text(u"a").prependBOM().prependBOM(), u"\uFEFFa");
    EXPECT_EQ(Text(u"\uFEFFa").removeBOM().removeBOM(), u"a");
}

TEST(TStringCoreTest, ComparesNoFurtherThanTold)
{
    EXPECT_EQ(Text::compareN(u"abcX", u"abcY", 3), 0);
    EXPECT_LT(Text::compareN(u"abcX", u"abcY", 4), 0);
    EXPECT_EQ(Text::compareN(u"ABC", u"abc", 9, Text::CaseInsensitive), 0);
    EXPECT_GT(Text::compareN(u"abc", u"ab", 9), 0);
    EXPECT_EQ(Text::compareN(nullptr, u"abc", 0), 0);
    EXPECT_EQ(Text::compareN(u"abc", u"abc", -1), 0);
}

TEST(TStringCoreTest, CaseMappingThatChangesNothingShares)
{
    Text const unchanged(u"nothing to do in this text");
    EXPECT_EQ(unchanged.toLower().constData(), unchanged.constData());
}

TEST(TStringCoreTest, NumbersInFields)
{
    EXPECT_EQ(Text::number(-255, 16), u"ffffffffffffff01");
    EXPECT_EQ(Text::number(-5, 10, 6, u'0'), u"-00005");
    EXPECT_EQ(Text::number(0.1, 'f', 20), u"0.10000000000000000555");
    EXPECT_EQ(Text::number(2.5, 'f', 4, true), u"2.5");
    EXPECT_EQ(Text::pointer(nullptr), u"0x0");
}

TEST(TStringCoreTest, EncodingsRoundTrip)
{
    Text const text(u"na\u00EFve \u20AC \U0001F600");
    EXPECT_EQ(Text::fromStdString(text.toStdString()), text);
    EXPECT_EQ(Text::fromStdUString(text.toStdUString()), text);
    EXPECT_EQ(Text::fromStdWString(text.toStdWString()), text);
    EXPECT_EQ(Text::fromStdU16String(text.toStdU16String()), text);
    EXPECT_EQ(Text::fromWChar(text.toWCharVector().data()), text);
    EXPECT_EQ(Text("a\xFF\xC3").length(), 3); // one U+FFFD for each ill-formed part
    bool ok = true;
    EXPECT_EQ(text.toLatin1(&ok), "na\xEFve ? ??");
    EXPECT_FALSE(ok);
    EXPECT_EQ(text.left(7).toLatin9(&ok), "na\xEFve \xA4");
    EXPECT_TRUE(ok);
    EXPECT_EQ(Text(char16_t(0xDC00), 1).toLocal8Bit(&ok), "\xEF\xBF\xBD");
    EXPECT_FALSE(ok);
    wchar_t wide[3] = {L'#', L'#', L'#'};
    EXPECT_EQ(Text(u"abcd").toWCharArray(wide, 2), 2);
    EXPECT_EQ(std::wstring(wide, 3), L"ab#");
    std::ostringstream out;
    out << text;
    EXPECT_EQ(out.str(), text.toStdString());
}

} // namespace
