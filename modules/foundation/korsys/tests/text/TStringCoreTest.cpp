#include "korsys/main/text/TStringCore.h"

#include "korsys/main/error/StringException.h"
#include "korsys/main/text/THash.h"
#include "korsys/tests/support/KorTest.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <thread>
#include <vector>

namespace {

constexpr char kIndex[] = "StringException_AutoGen_0x9798B690";
constexpr char kBadLength[] = "StringException_AutoGen_0xDBED6C12";
constexpr char kTooLong[] = "StringException_AutoGen_0xC83B3D89";
constexpr char kNullText[] = "StringException_AutoGen_0xB1923A1A";
constexpr char kBase[] = "StringException_AutoGen_0x30E31408";
constexpr char kIterator[] = "StringException_AutoGen_0x4A0E3015";

TStringCore const kShort(u"fourteen units", 14);
TStringCore const kLong(u"fifteen units..", 15);

TEST(TStringCoreStorageTest, TheFormFollowsTheLengthAndTheHistory)
{
    TStringCore text(kShort);
    EXPECT_FALSE(text.isLong());
    text.append(u'!');
    EXPECT_TRUE(text.isLong());
    EXPECT_EQ(text.length(), 15);
    text.truncate(3); // keeps its block
    EXPECT_TRUE(text.isLong());
    EXPECT_EQ(text, u"fou");
    EXPECT_EQ(std::hash<TStringCore>()(text), std::hash<TStringCore>()(TStringCore(u"fou")));
    EXPECT_EQ(std::hash<TStringCore>()(text), THash32(u"fou", 6, 0xDEADBEEF));
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
    std::vector<std::function<void(TStringCore&)>> const changes = {
        [](TStringCore& s) { s.append(u'x'); },
        [](TStringCore& s) { s.insert(3, u"yz"); },
        [](TStringCore& s) { s[4] = u'#'; },
        [](TStringCore& s) { s.front() = u'#'; },
        [](TStringCore& s) { *s.begin() = u'#'; },
        [](TStringCore& s) { s.resize(9); },
        [](TStringCore& s) { s.resize(40); },
        [](TStringCore& s) { s.removeAt(2, 5); },
        [](TStringCore& s) { s.truncate(4); },
        [](TStringCore& s) { s.fill(u'f'); },
        [](TStringCore& s) { s.reverse(); },
        [](TStringCore& s) { s.replace(u'e', u'E'); },
        [](TStringCore& s) { s.replace(TStringCore(u"e"), TStringCore(u"EE")); },
        [](TStringCore& s) { s.trim(u"f."); },
        [](TStringCore& s) { s.assign(u"another text of some length"); },
        [](TStringCore& s) {
            s.reserve(200);
            s.data()[1] = u'#';
        },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        SCOPED_TRACE(i);
        TStringCore original(kLong.constData(), kLong.length());
        TStringCore const copy(original);
        ASSERT_EQ(copy.constData(), original.constData());
        changes[i](original);
        EXPECT_EQ(copy, kLong);
        EXPECT_NE(original, kLong);
        EXPECT_EQ(original.constData()[original.length()], 0);
    }
}

TEST(TStringCoreStorageTest, ManyThreadsCopyAndChangeOneBlock)
{
    TStringCore const shared(u"a text that is long enough for a block of its own");
    std::vector<std::thread> threads;
    for (char16_t mark = u'0'; mark < u'4'; ++mark) {
        threads.emplace_back([&shared, mark] {
            for (int i = 0; i < 2000; ++i) {
                TStringCore mine(shared);
                TStringCore other(mine);
                mine[0] = mark;
                other.append(mark);
                ASSERT_EQ(mine.front(), mark);
                ASSERT_EQ(other.back(), mark);
                ASSERT_EQ(shared.front(), u'a');
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(shared.isShared());
}

TEST(TStringCoreStorageTest, ATextMayBeItsOwnArgument)
{
    for (TStringCore const& base : {TStringCore(u"abcdef"), TStringCore(u"abcdefghijklmnopqrst")}) {
        auto const changed = [&](auto const& change) {
            TStringCore s(base.constData(), base.length());
            change(s);
            return s;
        };
        TStringCore const rest = base.mid(2);
        EXPECT_EQ(changed([](TStringCore& s) { s.append(s); }).length(), 2 * base.length());
        EXPECT_EQ(changed([](TStringCore& s) { s.append(s.constData() + 2, 3); }).right(3), u"cde");
        EXPECT_EQ(changed([](TStringCore& s) { s.insert(2, s.constData() + 1, 2); }).left(5),
                  u"abbcc");
        EXPECT_EQ(changed([](TStringCore& s) { s.replace(0, 1, s.constData() + 3, 3); }).left(4),
                  u"defb");
        EXPECT_EQ(changed([](TStringCore& s) { s.replace(s, s); }), base);
        EXPECT_EQ(changed([](TStringCore& s) { s = s.constData() + 2; }), rest);
        EXPECT_EQ(changed([](TStringCore& s) { s.assign(s.constData() + 2); }), rest);
        EXPECT_EQ(changed([](TStringCore& s) { s = *&s; }), base);
        EXPECT_EQ(changed([](TStringCore& s) {
                      TStringCore& same = s;
                      s = std::move(same);
                  }),
                  base);
        EXPECT_EQ(changed([](TStringCore& s) { s.trim(s); }), u"");
    }
}

TEST(TStringCoreErrorTest, MisuseHasItsOwnErrorAndChangesNothing)
{
    struct Case
    {
        int line;
        char const* errorId;
        std::function<void(TStringCore&)> misuse;
    };
    char16_t const* const null = nullptr;
    int const huge = TStringCore::kMaxLength;
    std::vector<Case> const cases = {
        {__LINE__, kIndex, [](TStringCore& s) { s.at(15); }},
        {__LINE__, kIndex, [](TStringCore& s) { s.at(-1); }},
        {__LINE__, kIndex, [](TStringCore& s) { s[15] = u'x'; }},
        {__LINE__, kIndex, [](TStringCore& s) { s[1ul << 40] = u'x'; }},
        {__LINE__, kIndex, [](TStringCore const& s) { (void)s[16]; }},
        {__LINE__, kIndex, [](TStringCore&) { TStringCore().front(); }},
        {__LINE__, kIndex,
         [](TStringCore&) {
             TStringCore const empty;
             empty.back();
         }},
        {__LINE__, kBadLength, [](TStringCore& s) { s.append(u"x", -2); }},
        {__LINE__, kBadLength, [=](TStringCore& s) { s.assign(null, -2); }},
        {__LINE__, kBadLength, [](TStringCore& s) { s = TStringCore("x", -7); }},
        {__LINE__, kNullText, [=](TStringCore& s) { s.insert(0, null, 1); }},
        {__LINE__, kNullText, [](TStringCore& s) { s = TStringCore::fromLatin1(nullptr, 3); }},
        {__LINE__, kTooLong, [=](TStringCore& s) { s.resize(huge + 1); }},
        {__LINE__, kTooLong, [=](TStringCore& s) { s.append(u'x', huge); }},
        {__LINE__, kTooLong, [=](TStringCore& s) { s = s.repeated(1 << 30); }},
        {__LINE__, kTooLong, [=](TStringCore& s) { s.insert(huge, u"xy"); }},
        {__LINE__, kBase, [](TStringCore&) { TStringCore::number(1, 1); }},
        {__LINE__, kBase, [](TStringCore&) { TStringCore::number(1ull, 65); }},
        {__LINE__, kIterator, [](TStringCore& s) { ++s.codepoint_cend(); }},
        {__LINE__, kIterator, [](TStringCore& s) { --s.codepoint_cbegin(); }},
        {__LINE__, kIterator, [](TStringCore& s) { *s.codepoint_cend(); }},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        TStringCore text(kLong);
        EXPECT_KOR_ERROR(c.misuse(text), StringException, c.errorId);
        EXPECT_EQ(text, kLong);
    }
    try {
        kLong.at(20);
    } catch (StringException const& e) {
        EXPECT_STREQ(e.what(), "TStringCore: index 20 is outside a text of 15 units.");
    }
}

TEST(TStringCoreErrorTest, EmptinessIsNoMisuse)
{
    char16_t const* const null = nullptr;
    EXPECT_EQ(TStringCore(null), u"");
    EXPECT_EQ(TStringCore(null, 0).append(null).append(null, -1), u"");
    EXPECT_EQ(TStringCore(u'x', 0), TStringCore('x', -3));
    EXPECT_EQ(TStringCore(u"ab").resize(-4), u"");
    EXPECT_EQ(TStringCore(u"ab").resize(4), TStringCore(u"ab\0\0", 4));
    EXPECT_EQ(kLong[15], 0);
    EXPECT_EQ(kLong.compare(null), 1);
    EXPECT_EQ(TStringCore::findStr(null, 0, null, -1), 0);
}

TEST(TStringCoreTest, CodePointIteratorsJoinPairsAndKeepLoneSurrogates)
{
    char16_t const units[] = {u'a', 0xD83D, 0xDE00, 0xDC00, 0xD800, u'z'};
    TStringCore text(units, 6);
    std::vector<char32_t> const wanted = {U'a', 0x1F600, 0xDC00, 0xD800, U'z'};
    std::vector<char32_t> const forward(text.codepoint_cbegin(), text.codepoint_cend());
    EXPECT_EQ(forward, wanted);
    std::vector<char32_t> backward;
    for (auto it = text.codepoint_cend(); it != text.codepoint_cbegin();) {
        backward.insert(backward.begin(), *--it);
    }
    EXPECT_EQ(backward, wanted);
    EXPECT_EQ(text.lengthInCodePoints(), 5);
    text.insert(std::next(text.codepoint_cbegin(), 2), TStringCore(u"--"));
    EXPECT_EQ(text.mid(3, 2), u"--");
}

TEST(TStringCoreTest, ReversesCodePoints)
{
    EXPECT_EQ(TStringCore(u"ab\U0001F600c").reversed(), u"c\U0001F600ba");
}

TEST(TStringCoreTest, FindsUnitsInAndOutOfSets)
{
    TStringCore const text(u"key = value;");
    EXPECT_EQ(text.findOneOf(u"=;"), 4);
    EXPECT_EQ(text.findOneOf(TStringCore(u"=;"), 5), 11);
    EXPECT_EQ(text.findOneOf(u""), -1);
    EXPECT_EQ(text.findOneNotOf(u"eky"), 3);
    EXPECT_EQ(text.findOneNotOf(u"", 7), 7);
    EXPECT_EQ(text.findOneNotOf(u"key =value;"), -1);
    EXPECT_EQ(text.findOneOf(u"k", -5), 0);
    EXPECT_EQ(text.findOneOf(u"k", 99), -1);
    EXPECT_EQ(text.spanIncluding(u"ykex"), u"key");
    EXPECT_EQ(text.spanExcluding(u"=;"), u"key ");
    EXPECT_EQ(text.spanExcluding(u"#"), text);
    EXPECT_EQ(TStringCore(u"a-b_c").replaceAnyOf(u"-_", u'.'), u"a.b.c");
    EXPECT_EQ(TStringCore(u"a-b_c").replaceAnyOf(TStringCore(u"-_"), TStringCore(u"::")),
              u"a::b::c");
    EXPECT_EQ(TStringCore(u"a-b_c").removeAnyOf(u"_c-"), u"ab");
}

TEST(TStringCoreTest, ReplaceCountCounts)
{
    struct Case
    {
        int line;
        char16_t const* text;
        char16_t const* before;
        char16_t const* after;
        int count;
        char16_t const* result;
    };
    Case const cases[] = {
        {__LINE__, u"aaaa", u"aa", u"b", 2, u"bb"},
        {__LINE__, u"hello", u"", u"x", 6, u"xhxexlxlxox"},
        {__LINE__, u"", u"", u"x", 1, u"x"},
        {__LINE__, u"ab", u"", u"", 3, u"ab"},
        {__LINE__, u"abc", u"x", u"yy", 0, u"abc"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        TStringCore text(c.text);
        EXPECT_EQ(TStringCore::replaceCount(text, c.before, c.after), c.count);
        EXPECT_EQ(text, c.result);
    }
    TStringCore many(u'a', 1000); // more hits than the stack holds
    EXPECT_EQ(TStringCore::replaceCount(many, u"a", u"bc"), 1000);
    EXPECT_EQ(many, TStringCore(u"bc").repeated(1000));
}

TEST(TStringCoreTest, TokenizeGivesWhatSplitGives)
{
    for (char16_t const* source : {u"", u",", u"a", u"a,b", u",a,,b,", u",,,"}) {
        TStringCore const text(source);
        for (auto behavior : {TStringCore::KeepEmptyParts, TStringCore::SkipEmptyParts}) {
            std::vector<TStringCore> parts;
            int pos = 0;
            for (TStringCore t = text.tokenize(u',', pos, behavior); pos != -1;
                 t = text.tokenize(u',', pos, behavior)) {
                parts.push_back(t);
            }
            EXPECT_EQ(parts, TStringCore::split(text.constData(), text.length(), u',', behavior))
                << text << " " << behavior;
        }
    }
    int pos = -7;
    EXPECT_EQ(TStringCore(u"a,b").tokenize(TStringCore(u", "), pos), u"");
    EXPECT_EQ(pos, -1);
}

TEST(TStringCoreTest, SplitOnAnyAndTrimTakeEveryUnitOfTheSet)
{
    TStringCore const text(u"--a;b,-c--");
    std::vector<TStringCore> const parts = {u"--a", u"b", u"-c--"};
    EXPECT_EQ(TStringCore::splitOnAny(text.constData(), text.length(), u";,"), parts);
    EXPECT_EQ(TStringCore(text).trim(u'-'), u"a;b,-c");
    EXPECT_EQ(TStringCore(text).trimLeft(u"-a"), u";b,-c--");
    EXPECT_EQ(TStringCore(text).trimRight(TStringCore(u"-c")), u"--a;b,");
    EXPECT_EQ(TStringCore(u" \u2003x\u00A0").trim(), u"x");
    EXPECT_EQ(TStringCore(u" \t ").trimRight(), u"");
    EXPECT_EQ(TStringCore(u" a ").trimLeft(), u"a ");
}

TEST(TStringCoreTest, LineEndings)
{
    struct Case
    {
        int line;
        char16_t const* text;
        char16_t const* unixText;
        char16_t const* dosText;
    };
    Case const cases[] = {
        {__LINE__, u"a\r\nb\n", u"a\nb\n", u"a\r\nb\r\n"},
        {__LINE__, u"\r\r\n\n", u"\r\n\n", u"\r\r\n\r\n"},
        {__LINE__, u"a\r", u"a\r", u"a\r"},
        {__LINE__, u"\n", u"\n", u"\r\n"},
        {__LINE__, u"none", u"none", u"none"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(TStringCore(c.text).dosToUnix(), c.unixText);
        EXPECT_EQ(TStringCore(c.text).unixToDos(), c.dosText);
        EXPECT_EQ(TStringCore(c.text).unixToDos().unixToDos(), c.dosText);
        TStringCore buffer(c.text);
        int const length = TStringCore::dosToUnix(buffer.data());
        EXPECT_EQ(TStringCore(buffer.constData()), c.unixText);
        EXPECT_EQ(length, TStringCore(c.unixText).length());
    }
    EXPECT_EQ(TStringCore(u"a").prependBOM().prependBOM(), u"\uFEFFa");
    EXPECT_EQ(TStringCore(u"\uFEFFa").removeBOM().removeBOM(), u"a");
}

TEST(TStringCoreTest, ComparesNoFurtherThanTold)
{
    EXPECT_EQ(TStringCore::compareN(u"abcX", u"abcY", 3), 0);
    EXPECT_LT(TStringCore::compareN(u"abcX", u"abcY", 4), 0);
    EXPECT_EQ(TStringCore::compareN(u"ABC", u"abc", 9, TStringCore::CaseInsensitive), 0);
    EXPECT_GT(TStringCore::compareN(u"abc", u"ab", 9), 0);
    EXPECT_EQ(TStringCore::compareN(nullptr, u"abc", 0), 0);
    EXPECT_EQ(TStringCore::compareN(u"abc", u"abc", -1), 0);
}

TEST(TStringCoreTest, CaseMappingMayLengthen)
{
    EXPECT_EQ(TStringCore(u"stra\u00DFe, \uFB01n").toUpper(), u"STRASSE, FIN");
    EXPECT_EQ(TStringCore(u"\u0130stanbul und mehr").toLower(), u"i\u0307stanbul und mehr");
    TStringCore const unchanged(u"nothing to do in this text");
    EXPECT_EQ(unchanged.toLower().constData(), unchanged.constData()); // shares the block
}

TEST(TStringCoreTest, NumbersInFields)
{
    EXPECT_EQ(TStringCore::number(-255, 16), u"ffffffffffffff01");
    EXPECT_EQ(TStringCore::number(-5, 10, 6, u'0'), u"-00005");
    EXPECT_EQ(TStringCore::number(7, 2, -5, u'.'), u"111..");
    EXPECT_EQ(TStringCore::number(INT64_MIN), u"-9223372036854775808");
    EXPECT_EQ(TStringCore::number(0.1, 'f', 20), u"0.10000000000000000555");
    EXPECT_EQ(TStringCore::number(2.5, 'f', 4, true), u"2.5");
    EXPECT_EQ(TStringCore::pointer(nullptr), u"0x0");
}

TEST(TStringCoreTest, EncodingsRoundTrip)
{
    TStringCore const text(u"na\u00EFve \u20AC \U0001F600");
    EXPECT_EQ(TStringCore::fromStdString(text.toStdString()), text);
    EXPECT_EQ(TStringCore::fromStdUString(text.toStdUString()), text);
    EXPECT_EQ(TStringCore::fromStdWString(text.toStdWString()), text);
    EXPECT_EQ(TStringCore::fromStdU16String(text.toStdU16String()), text);
    EXPECT_EQ(TStringCore::fromWChar(text.toWCharVector().data()), text);
    EXPECT_EQ(TStringCore("a\xFF\xC3").length(), 3); // one U+FFFD for each ill-formed part
    bool ok = true;
    EXPECT_EQ(text.toLatin1(&ok), "na\xEFve ? ??");
    EXPECT_FALSE(ok);
    EXPECT_EQ(text.left(7).toLatin9(&ok), "na\xEFve \xA4");
    EXPECT_TRUE(ok);
    char16_t const lone[] = {u'a', 0xDC00};
    EXPECT_EQ(TStringCore(lone, 2).toLocal8Bit(&ok), "a\xEF\xBF\xBD");
    EXPECT_FALSE(ok);
    wchar_t wide[3] = {L'#', L'#', L'#'};
    EXPECT_EQ(TStringCore(u"abcd").toWCharArray(wide, 2), 2);
    EXPECT_EQ(std::wstring(wide, 3), L"ab#");
    std::ostringstream out;
    out << text;
    EXPECT_EQ(out.str(), text.toStdString());
}

} // namespace
