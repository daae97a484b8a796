#include "korsys/main/text/UnitSearch_p.h"

#include "korsys/tests/support/TextPeers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

using namespace UnitSearch;

TEST(UnitSearchTest, UnitsAndSetsAtEveryLengthAndAlignment)
{
    std::mt19937 random(101);
    // The low and the high byte of the units agree with another one's: bytes must not be mixed up.
    std::u16string const alphabet = u"aaaaaaab\u6161\u0161\xFFFF";
    for (std::size_t i = 0; i <= 70 * 8; ++i) {
        std::u16string const text = RandomText(random, i / 8, alphabet);
        Exact const t(text, i % 8);
        int const n = Size(text);
        SCOPED_TRACE(testing::Message() << "length " << n << ", offset " << i % 8);
        for (char16_t const unit : {u'b', u'\u6161', u'\xFFFF', u'#'}) {
            ASSERT_EQ(FindUnit(t, n, unit), int(text.find(unit)));
            ASSERT_EQ(FindLastUnit(t, n, unit), int(text.rfind(unit)));
            ASSERT_EQ(CountUnit(t, n, unit), std::count(text.begin(), text.end(), unit));
        }
        for (std::u16string const set : {u"", u"b", u"ab", u"\xFFFF\u0161\u6161", u"a\u0161b\u6161",
                                         u"0123456789b", u"a0123456789\u0161\u6161"}) {
            Exact const s(set);
            ASSERT_EQ(FindAnyOf(t, n, s, Size(set)), int(text.find_first_of(set)));
            ASSERT_EQ(FindNoneOf(t, n, s, Size(set)), int(text.find_first_not_of(set)));
            ASSERT_EQ(FindLastAnyOf(t, n, s, Size(set)), int(text.find_last_of(set)));
            ASSERT_EQ(FindLastNoneOf(t, n, s, Size(set)), int(text.find_last_not_of(set)));
        }
    }
}

// A single unit alone at each place: the random texts mostly have an early one.
TEST(UnitSearchTest, TheOnlyUnitIsFoundAtEveryPlaceOfALongText)
{
    for (int length = 60; length <= 140; length += 5) {
        for (int at = 0; at < length; ++at) {
            Exact const t(
                std::u16string(std::size_t(length), u'a').replace(std::size_t(at), 1, u"b"));
            ASSERT_EQ(FindUnit(t, length, u'b'), at);
            ASSERT_EQ(FindLastUnit(t, length, u'b'), at);
            ASSERT_EQ(FindNoneOf(t, length, u"a", 1), at);
            ASSERT_EQ(FindText(t, length, u"ba", 2), at < length - 1 ? at : -1);
            ASSERT_EQ(FindLastText(t, length, u"ab", 2), at - 1);
        }
    }
}

void CheckTexts(std::u16string const& text, std::u16string const& needle, std::size_t offset)
{
    Exact const t(text, offset % 8);
    Exact const s(needle, offset / 8 % 8);
    auto const found = [&](auto find) { return find(t, Size(text), s, Size(needle)); };
    int const order = text.compare(needle); // of numbers, not of bytes in memory
    ASSERT_EQ(found(Compare), (order > 0) - (order < 0));
    std::array expected = {int(text.find(needle)), int(text.rfind(needle)), 0};
    for (std::size_t at = text.find(needle); at != text.npos; at = text.find(needle, at + 1)) {
        ++expected[2];
    }
    ASSERT_EQ((std::array{found(FindText), found(FindLastText), found(CountText)}), expected);
    ASSERT_EQ((std::array{found(Scalar::FindText), found(Scalar::FindLastText),
                          found(Scalar::CountText)}),
              expected);
}

TEST(UnitSearchTest, TextsAreFoundAsAPlainSearchFindsThem)
{
    std::mt19937 random(102);
    for (int round = 0; round < 40000; ++round) {
        SCOPED_TRACE(round);
        std::u16string const alphabet = round % 3 == 0 ? u"ab" : u"abc\u0161";
        std::u16string const text = RandomText(random, random() % 90, alphabet);
        std::u16string needle = RandomText(random, random() % (round % 5 == 0 ? 40 : 6), alphabet);
        if (!text.empty() && round % 4 == 0) {
            needle = text.substr(random() % text.size(), needle.size()); // occurs for certain
        }
        ASSERT_NO_FATAL_FAILURE(CheckTexts(text, needle, random()));
    }
}

// Long enough that comparing at candidates gives up; needles with and without a period, and with
// the rare unit at every third of them.
TEST(UnitSearchTest, RepetitiveTextsAreFoundByTheLinearMethodToo)
{
    std::mt19937 random(103);
    std::u16string const units[] = {u"a", u"ab", u"aab", u"abaab"};
    for (int round = 0; round < 240; ++round) {
        SCOPED_TRACE(round);
        std::u16string text;
        while (text.size() < 3000) {
            text += units[round % 4];
        }
        for (int change = round / 4 % 4; change > 0; --change) {
            text[random() % text.size()] = u'c';
        }
        std::u16string needle = text.substr(random() % 2000, 1 + random() % 700);
        if (round / 4 % 2 == 0) {
            needle[needle.size() * (random() % 3) / 3] = u'c';
        }
        ASSERT_NO_FATAL_FAILURE(CheckTexts(text, needle, 0));
    }
}

// Comparing at each candidate would take 10^11 steps: such a search does not end while a test may
// run.
TEST(UnitSearchTest, AdversarialNeedlesTakeLinearTime)
{
    std::size_t const half = 400000;
    std::u16string const text(2 * half, u'a');
    std::u16string const run(half, u'a');
    int const n = Size(text);
    int const m = Size(run) + 2;
    EXPECT_EQ(CountUnit(text.data(), n, u'a'), n);
    for (std::u16string const& needle : {run + u"ba", u"ab" + run, u"a" + run + u"a"}) {
        bool const occurs = needle.find(u'b') == needle.npos;
        EXPECT_EQ(FindText(text.data(), n, needle.data(), m), occurs ? 0 : -1);
        EXPECT_EQ(FindLastText(text.data(), n, needle.data(), m), occurs ? n - m : -1);
        EXPECT_EQ(CountText(text.data(), n, needle.data(), m), occurs ? n - m + 1 : 0);
    }
}

TEST(UnitSearchTest, AnyUnitMayBeTheFirstThatDiffers)
{
    for (int length = 0; length <= 70; ++length) {
        Exact const left(std::u16string(std::size_t(length), u'\u0100'), 1);
        for (int at = 0; at <= length; ++at) {
            Exact const right(left.Text(), 2);
            if (at < length) {
                right[at] = u'\u00FF';
            }
            ASSERT_EQ(Mismatch(left, right, length), at);
            ASSERT_EQ(Compare(left, length, right, length), at < length ? 1 : 0);
        }
    }
}

TEST(UnitSearchTest, ReplacingAndReversingAtEveryLength)
{
    std::mt19937 random(104);
    for (std::size_t length = 0; length <= 70; ++length) {
        std::u16string text = RandomText(random, length, u"ab\xD800\xDC00\xDC01");
        Exact const copy(text, length % 8);
        auto const replaced = std::count(text.begin(), text.end(), u'a');
        ASSERT_EQ(ReplaceUnit(copy, Size(text), u'a', u'\u6161'), replaced);
        std::replace(text.begin(), text.end(), u'a', u'\u6161');
        ASSERT_EQ(copy.Text(), text);
        Scalar::Reverse(text.data(), Size(text));
        Reverse(copy, Size(text));
        ASSERT_EQ(copy.Text(), text);
    }
    // A pair keeps its order, and two lone halves that meet become a pair.
    std::u16string text = {u'a', 0xD83D, 0xDE00, u'b', 0xDC00, 0xD800};
    Scalar::Reverse(text.data(), Size(text));
    EXPECT_EQ(text, std::u16string({0xD800, 0xDC00, u'b', 0xD83D, 0xDE00, u'a'}));
}

} // namespace
