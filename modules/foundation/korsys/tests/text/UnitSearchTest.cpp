#include "korsys/main/text/UnitSearch_p.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

namespace {

/// A copy of a text that ends where its memory ends, so that the address sanitizer sees a read
/// behind it, and that begins `offset` units behind an allocation's alignment.
class Exact
{
public:
    Exact(std::u16string const& text, std::size_t offset)
        : m_units(new char16_t[text.size() + offset]), m_offset(offset)
    {
        text.copy(m_units.get() + offset, text.size());
    }
    char16_t* Data() const { return m_units.get() + m_offset; }

private:
    std::unique_ptr<char16_t[]> m_units;
    std::size_t m_offset;
};

std::u16string RandomText(std::mt19937& random, std::size_t length, std::u16string const& alphabet)
{
    std::u16string text(length, u' ');
    for (char16_t& unit : text) {
        unit = alphabet[random() % alphabet.size()];
    }
    return text;
}

int IndexOf(std::size_t position)
{
    return position == std::u16string::npos ? -1 : static_cast<int>(position);
}

int CountOf(std::u16string const& text, std::u16string const& needle)
{
    int count = 0;
    for (std::size_t at = text.find(needle); at != text.npos; at = text.find(needle, at + 1)) {
        ++count;
    }
    return count;
}

TEST(UnitSearchTest, UnitsAndSetsAtEveryLengthAndAlignment)
{
    std::mt19937 random(101);
    // The low and the high byte of the units agree with another one's: bytes must not be mixed up.
    std::u16string const alphabet = u"aaaaaaab\u6161\u0161\xFFFF";
    std::u16string const sets[] = {u"",
                                   u"b",
                                   u"ab",
                                   u"\xFFFF\u0161\u6161",
                                   u"a\u0161b\u6161",
                                   u"0123456789b",
                                   u"a0123456789\u0161\u6161"};
    for (std::size_t length = 0; length <= 70; ++length) {
        for (std::size_t offset = 0; offset < 8; ++offset) {
            std::u16string const text = RandomText(random, length, alphabet);
            Exact const copy(text, offset);
            int const n = static_cast<int>(length);
            SCOPED_TRACE(testing::Message() << "length " << length << ", offset " << offset);
            for (char16_t const unit : {u'b', u'\u6161', u'\xFFFF', u'#'}) {
                ASSERT_EQ(UnitSearch::FindUnit(copy.Data(), n, unit), IndexOf(text.find(unit)));
                ASSERT_EQ(UnitSearch::FindLastUnit(copy.Data(), n, unit),
                          IndexOf(text.rfind(unit)));
                ASSERT_EQ(UnitSearch::CountUnit(copy.Data(), n, unit),
                          std::count(text.begin(), text.end(), unit));
            }
            for (std::u16string const& set : sets) {
                Exact const exactSet(set, 0);
                char16_t const* const s = exactSet.Data();
                int const m = static_cast<int>(set.size());
                ASSERT_EQ(UnitSearch::FindAnyOf(copy.Data(), n, s, m),
                          IndexOf(text.find_first_of(set)));
                ASSERT_EQ(UnitSearch::FindNoneOf(copy.Data(), n, s, m),
                          IndexOf(text.find_first_not_of(set)));
                ASSERT_EQ(UnitSearch::FindLastAnyOf(copy.Data(), n, s, m),
                          IndexOf(text.find_last_of(set)));
                ASSERT_EQ(UnitSearch::FindLastNoneOf(copy.Data(), n, s, m),
                          IndexOf(text.find_last_not_of(set)));
            }
        }
    }
}

// A single unit alone at each place: the random texts mostly have an early one.
TEST(UnitSearchTest, TheOnlyUnitIsFoundAtEveryPlaceOfALongText)
{
    for (int length = 60; length <= 140; length += 5) {
        for (int at = 0; at < length; ++at) {
            std::u16string text(static_cast<std::size_t>(length), u'a');
            text[static_cast<std::size_t>(at)] = u'b';
            Exact const copy(text, 0);
            ASSERT_EQ(UnitSearch::FindUnit(copy.Data(), length, u'b'), at);
            ASSERT_EQ(UnitSearch::FindLastUnit(copy.Data(), length, u'b'), at);
            ASSERT_EQ(UnitSearch::FindNoneOf(copy.Data(), length, u"a", 1), at);
            ASSERT_EQ(UnitSearch::FindText(copy.Data(), length, u"ba", 2),
                      at < length - 1 ? at : -1);
            ASSERT_EQ(UnitSearch::FindLastText(copy.Data(), length, u"ab", 2), at - 1);
        }
    }
}

TEST(UnitSearchTest, TextsAreFoundAsAPlainSearchFindsThem)
{
    std::mt19937 random(102);
    for (int round = 0; round < 40000; ++round) {
        std::u16string const alphabet = round % 3 == 0 ? u"ab" : u"abc\u0161";
        std::u16string const text = RandomText(random, random() % 90, alphabet);
        std::u16string needle = RandomText(random, random() % (round % 5 == 0 ? 40 : 6), alphabet);
        if (!text.empty() && round % 4 == 0) {
            needle = text.substr(random() % text.size(), needle.size()); // occurs for certain
        }
        Exact const t(text, random() % 8);
        Exact const s(needle, random() % 8);
        int const n = static_cast<int>(text.size());
        int const m = static_cast<int>(needle.size());
        ASSERT_EQ(UnitSearch::FindText(t.Data(), n, s.Data(), m), IndexOf(text.find(needle)));
        ASSERT_EQ(UnitSearch::FindLastText(t.Data(), n, s.Data(), m), IndexOf(text.rfind(needle)));
        ASSERT_EQ(UnitSearch::CountText(t.Data(), n, s.Data(), m), CountOf(text, needle));
        ASSERT_EQ(UnitSearch::Scalar::FindText(t.Data(), n, s.Data(), m),
                  IndexOf(text.find(needle)));
        ASSERT_EQ(UnitSearch::Scalar::FindLastText(t.Data(), n, s.Data(), m),
                  IndexOf(text.rfind(needle)));
        ASSERT_EQ(UnitSearch::Scalar::CountText(t.Data(), n, s.Data(), m), CountOf(text, needle));
    }
}

// Long enough that comparing at candidates gives up; needles with and without a period, and with
// the rare unit at every third of them.
TEST(UnitSearchTest, RepetitiveTextsAreFoundByTheLinearMethodToo)
{
    std::mt19937 random(103);
    std::u16string const units[] = {u"a", u"ab", u"aab", u"abaab"};
    for (std::u16string const& unit : units) {
        for (int round = 0; round < 60; ++round) {
            std::u16string text;
            while (text.size() < 3000) {
                text += unit;
            }
            for (int change = round % 4; change > 0; --change) {
                text[random() % text.size()] = u'c';
            }
            std::u16string needle = text.substr(random() % 2000, 1 + random() % 700);
            if (round % 2 == 0) {
                needle[needle.size() * (random() % 3) / 3] = u'c';
            }
            SCOPED_TRACE(testing::Message() << "round " << round << ", length " << needle.size());
            int const n = static_cast<int>(text.size());
            int const m = static_cast<int>(needle.size());
            ASSERT_EQ(UnitSearch::FindText(text.data(), n, needle.data(), m),
                      IndexOf(text.find(needle)));
            ASSERT_EQ(UnitSearch::FindLastText(text.data(), n, needle.data(), m),
                      IndexOf(text.rfind(needle)));
            ASSERT_EQ(UnitSearch::CountText(text.data(), n, needle.data(), m),
                      CountOf(text, needle));
        }
    }
}

// Comparing at each candidate would take 10^11 steps: such a search does not end while a test may
// run.
TEST(UnitSearchTest, AdversarialNeedlesTakeLinearTime)
{
    std::size_t const half = 400000;
    std::u16string const text(2 * half, u'a');
    std::u16string const run(half, u'a');
    int const n = static_cast<int>(text.size());
    int const m = static_cast<int>(half) + 2;
    EXPECT_EQ(UnitSearch::CountUnit(text.data(), n, u'a'), n);
    for (std::u16string const& needle : {run + u"ba", u"ab" + run, u"a" + run + u"a"}) {
        bool const occurs = needle.find(u'b') == needle.npos;
        EXPECT_EQ(UnitSearch::FindText(text.data(), n, needle.data(), m), occurs ? 0 : -1);
        EXPECT_EQ(UnitSearch::FindLastText(text.data(), n, needle.data(), m), occurs ? n - m : -1);
        EXPECT_EQ(UnitSearch::CountText(text.data(), n, needle.data(), m), occurs ? n - m + 1 : 0);
    }
}

TEST(UnitSearchTest, ComparisonGoesByTheFirstDifferingUnit)
{
    // Neighbours in order; units are compared as numbers, not as bytes in memory.
    std::u16string const ascending[] = {u"",
                                        std::u16string(1, u'\0'),
                                        std::u16string(2, u'\0'),
                                        u"a",
                                        u"aa",
                                        u"a\u0101",
                                        u"b",
                                        u"\u00FF",
                                        u"\u0100",
                                        u"\xD800\xDC00",
                                        u"\xE000",
                                        u"\xFFFF"};
    for (std::u16string const& left : ascending) {
        for (std::u16string const& right : ascending) {
            int const expected = &left == &right ? 0 : &left < &right ? -1 : 1;
            EXPECT_EQ(UnitSearch::Compare(left.data(), static_cast<int>(left.size()), right.data(),
                                          static_cast<int>(right.size())),
                      expected);
        }
    }
    for (int length = 0; length <= 70; ++length) {
        std::u16string const text(static_cast<std::size_t>(length), u'\u0100');
        Exact const left(text, 1);
        for (int at = 0; at <= length; ++at) {
            Exact const right(text, 2);
            if (at < length) {
                right.Data()[at] = u'\u00FF';
            }
            ASSERT_EQ(UnitSearch::Mismatch(left.Data(), right.Data(), length), at);
            ASSERT_EQ(UnitSearch::Compare(left.Data(), length, right.Data(), length),
                      at < length ? 1 : 0);
        }
    }
}

TEST(UnitSearchTest, ReplacingAndReversingAtEveryLength)
{
    std::mt19937 random(104);
    for (std::size_t length = 0; length <= 70; ++length) {
        std::u16string text = RandomText(random, length, u"ab\xD800\xDC00\xDC01");
        Exact const copy(text, length % 8);
        int const n = static_cast<int>(length);
        ASSERT_EQ(UnitSearch::ReplaceUnit(copy.Data(), n, u'a', u'\u6161'),
                  std::count(text.begin(), text.end(), u'a'));
        std::replace(text.begin(), text.end(), u'a', u'\u6161');
        ASSERT_EQ(std::u16string(copy.Data(), length), text);

        std::u16string reversed(text);
        UnitSearch::Scalar::Reverse(reversed.data(), n);
        UnitSearch::Reverse(copy.Data(), n);
        ASSERT_EQ(std::u16string(copy.Data(), length), reversed);
    }
    // A pair keeps its order, and two lone halves that meet become a pair.
    std::u16string text = {u'a', 0xD83D, 0xDE00, u'b', 0xDC00, 0xD800};
    UnitSearch::Scalar::Reverse(text.data(), static_cast<int>(text.size()));
    EXPECT_EQ(text, std::u16string({0xD800, 0xDC00, u'b', 0xD83D, 0xDE00, u'a'}));
}

} // namespace
