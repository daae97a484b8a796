#include "korsys/main/text/CaseMapping_p.h"

#include "korsys/main/text/UnitSearch_p.h"
#include "korsys/tests/support/KorTest.h"
#include "korsys/tests/support/TextPeers.h"
#include "korsys/tests/support/Threads.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace {

using CaseMapping::LetterCase;

std::u16string FromCodePoint(UChar32 codePoint)
{
    char16_t units[2];
    int length = 0;
    U16_APPEND_UNSAFE(units, length, codePoint);
    return std::u16string(units, units + length);
}

std::u16string Changed(LetterCase to, std::u16string const& text)
{
    Exact const exact(text);
    int const first = CaseMapping::FindChange(to, exact, Size(text));
    EXPECT_EQ(first, CaseMapping::Scalar::FindChange(to, exact, Size(text)));
    Exact const out(text);
    int done = CaseMapping::Map(to, exact + first, Size(text) - first, out + first);
    EXPECT_EQ(done, CaseMapping::Scalar::Map(to, exact + first, Size(text) - first, out + first));
    done += first;
    int const left = Size(text) - done;
    Exact const rest(std::u16string(
        static_cast<std::size_t>(CaseMapping::MappedLength(to, exact + done, left)), u'#'));
    CaseMapping::MapAny(to, exact + done, left, rest);
    return out.Text().substr(0, static_cast<std::size_t>(done)) + rest.Text();
}

/// What ICU makes of each code point by itself.
std::u16string Expected(LetterCase to, std::u16string const& text)
{
    std::u16string mapped;
    for (int i = 0; i < Size(text);) {
        int const start = i;
        UChar32 codePoint = 0;
        U16_NEXT(text.data(), i, Size(text), codePoint);
        char16_t upper[8];
        UErrorCode error = U_ZERO_ERROR;
        if (to == LetterCase::Lower) {
            mapped += codePoint == 0x130 ? u"i\u0307" : FromCodePoint(u_tolower(codePoint));
        } else {
            int const length =
                u_strToUpper(upper, 8, &text[std::size_t(start)], i - start, "", &error);
            mapped.append(upper, std::size_t(length));
        }
    }
    return mapped;
}

/// Each unit, or each low surrogate with the high one before it, folded by ICU.
std::u32string Folded(std::u16string const& text)
{
    std::u32string folded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const isPair = i > 0 && U16_IS_LEAD(text[i - 1]) && U16_IS_TRAIL(text[i]);
        UChar32 const codePoint =
            isPair ? U16_GET_SUPPLEMENTARY(text[i - 1], text[i]) : UChar32(text[i]);
        folded += static_cast<char32_t>(u_foldCase(codePoint, U_FOLD_CASE_DEFAULT));
    }
    return folded;
}

std::u16string RandomLetters(std::mt19937& random, std::size_t length)
{
    static std::u16string const s_alphabets[] = {
        u"abzAZ@[`{09", u"kKsS\u212A\u017F", u"aB\u0434\u0414\u1C81\u00DF\u0130",
        // Case pairs of two units, halves apart, and much without case.
        u"\xD801\xDC00\xDC28\xD83D\xDE00kK", u"\u03C3\u03C2\u03A3\u0386\u03AC\u1F80\u0390",
        std::u16string(u"\u4E00\u1E9E\uFF21\uFF41\u0101\u0100\0aA", 9)};
    return RandomText(random, length, s_alphabets[random() % std::size(s_alphabets)]);
}

/// The text with the case of some letters changed, where that keeps the length.
std::u16string Recased(std::mt19937& random, std::u16string text)
{
    for (char16_t& unit : text) {
        UChar32 const other = random() % 2 == 0 ? u_toupper(unit) : u_tolower(unit);
        if (random() % 3 == 0 && other <= 0xFFFF) {
            unit = static_cast<char16_t>(other);
        }
    }
    return text;
}

TEST(CaseMappingTest, EveryCodePointMapsAndFoldsAsIcuDoes)
{
    std::map<UChar32, int> sizes;
    for (UChar32 codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        std::u16string const text = FromCodePoint(codePoint);
        for (LetterCase const to : {LetterCase::Lower, LetterCase::Upper}) {
            std::u16string const expected = Expected(to, text);
            bool const isKept = CaseMapping::FindChange(to, text.data(), Size(text)) == Size(text);
            ASSERT_EQ(isKept, expected == text) << std::hex << codePoint;
            ASSERT_EQ(Changed(to, text), expected) << std::hex << codePoint;
        }
        UChar32 const folded = u_foldCase(codePoint, U_FOLD_CASE_DEFAULT);
        std::u16string const foldedText = FromCodePoint(folded);
        // What comparing unit by unit rests on: the same length, the same high surrogate.
        ASSERT_EQ(foldedText.size(), text.size()) << std::hex << codePoint;
        ASSERT_TRUE(text.size() == 1 || foldedText[0] == text[0]) << std::hex << codePoint;
        ASSERT_TRUE(CaseMapping::EqualFolded(text.data(), foldedText.data(), Size(text)));
        ASSERT_LE(++sizes[folded], 8) << std::hex << folded; // the search has room for so many
    }
}

TEST(CaseMappingTest, TextsMapAsTheirCodePointsDo)
{
    std::mt19937 random(201);
    for (std::size_t round = 0; round < 6000; ++round) {
        std::u16string const text =
            RandomLetters(random, round % 71) + RandomLetters(random, random() % 20);
        for (LetterCase const to : {LetterCase::Lower, LetterCase::Upper}) {
            ASSERT_EQ(Changed(to, text), Expected(to, text));
        }
        ASSERT_FALSE(HasFailure());
    }
}

TEST(CaseMappingTest, FoldedComparisonIsThatOfTheFoldedTexts)
{
    std::mt19937 random(202);
    for (std::size_t round = 0; round < 20000; ++round) {
        std::u16string const left = RandomLetters(random, round % 71);
        std::u16string right = Recased(random, left);
        if (round % 2 == 0 && !right.empty()) {
            right[random() % right.size()] = RandomLetters(random, 1)[0];
        }
        right.resize(right.size() - (round % 3 == 0 ? right.size() / 4 : 0));
        Exact const l(left);
        Exact const r(right);
        int const expected = Folded(left).compare(Folded(right));
        ASSERT_EQ(CaseMapping::CompareFolded(l, Size(left), r, Size(right)),
                  (expected > 0) - (expected < 0));
        ASSERT_EQ(CaseMapping::MismatchFolded(l, r, Size(right)),
                  CaseMapping::Scalar::MismatchFolded(l, r, Size(right)));
    }
}

TEST(CaseMappingTest, UnitsAreFoundInEveryFormThatFoldsAlike)
{
    for (std::u16string const group :
         {u"kK\u212A", u"\u0432\u0412\u1C80", u"\u03B8\u0398\u03D1\u03F4",
          u"\u0442\u0422\u1C84\u1C85", u"\uFF21\uFF41", u"7", u"\xD801", u"\xDC28"}) {
        for (int i = 0; i < 40 * Size(group); ++i) {
            int const length = 1 + i % 40;
            int const at = length * 2 / 3;
            Exact const text(std::u16string(std::size_t(length), u'-'));
            text[at] = group[std::size_t(i / 40)];
            char16_t const sought = group[std::size_t(i / 40 + 1) % group.size()];
            EXPECT_EQ(CaseMapping::FindUnitFolded(text, length, sought), at);
            EXPECT_EQ(CaseMapping::FindLastUnitFolded(text, length, sought), at);
            EXPECT_EQ(CaseMapping::CountUnitFolded(text, length, sought), 1);
            EXPECT_EQ(CaseMapping::FindUnitFolded(text, length, u'!'), -1);
        }
    }
}

/// The first and the last place and the count of a needle.
using Found = std::array<int, 3>;

Found FindAll(std::u16string const& text, std::u16string const& needle)
{
    Exact const t(text);
    Exact const s(needle);
    auto const call = [&](auto... find) { return Found{find(t, Size(text), s, Size(needle))...}; };
    Found const found = call(CaseMapping::FindTextFolded, CaseMapping::FindLastTextFolded,
                             CaseMapping::CountTextFolded);
    using namespace CaseMapping::Scalar;
    EXPECT_EQ(call(FindTextFolded, FindLastTextFolded, CountTextFolded), found);
    return found;
}

TEST(CaseMappingTest, TextsAreFoundWhereTheFoldedTextsAgree)
{
    std::mt19937 random(203);
    for (int round = 0; round < 40000; ++round) {
        std::u16string const text = RandomLetters(random, random() % 71) + RandomLetters(random, 8);
        std::u16string needle =
            Recased(random, text.substr(random() % text.size(), 2 + random() % 9));
        if (round % 4 == 0 || needle.size() < 2) { // single units do not look at pairs
            needle = RandomLetters(random, 2 + random() % 3);
        }
        std::u32string const foldedText = Folded(text);
        std::u32string const foldedNeedle = Folded(needle);
        Found expected = {int(foldedText.find(foldedNeedle)), int(foldedText.rfind(foldedNeedle)),
                          0};
        for (std::size_t at = foldedText.find(foldedNeedle); at != foldedText.npos;
             at = foldedText.find(foldedNeedle, at + 1)) {
            ++expected[2];
        }
        ASSERT_EQ(FindAll(text, needle), expected);
    }
    EXPECT_EQ(FindAll(u"ab", u""), (Found{0, 2, 3}));
    EXPECT_EQ(FindAll(u"a", u"ab"), (Found{-1, -1, 0}));
    EXPECT_EQ(FindAll(u"", u"ab"), (Found{-1, -1, 0}));
    EXPECT_EQ(FindAll(u"", u"a"), (Found{-1, -1, 0}));
    // As in the search with case: what compares at each candidate does not end.
    int const half = 200000;
    std::u16string const runs(2 * half, u'A');
    std::u16string const run(half, u'a');
    EXPECT_EQ(FindAll(runs, run + u"BA"), (Found{-1, -1, 0}));
    EXPECT_EQ(FindAll(runs, u"AB" + run), (Found{-1, -1, 0}));
    EXPECT_EQ(FindAll(runs, u"A" + run), (Found{0, half - 1, half}));
}

// The tables fill while others read them. Each thread goes through the units in another order.
TEST(CaseMappingThreadTest, TablesFillFromManyThreads)
{
    std::atomic<int> wrong(0);
    OnThreads(4, [&wrong](unsigned thread) {
        unsigned const order = thread / 2 * 0x1FFFu ^ thread % 2;
        for (unsigned i = 0; i < 0x2000; ++i) {
            char16_t const unit = static_cast<char16_t>(i ^ order);
            auto const folded = static_cast<char16_t>(u_foldCase(unit, U_FOLD_CASE_DEFAULT));
            std::u16string const text(1, unit);
            bool const isRight =
                CaseMapping::EqualFolded(&unit, &folded, 1) &&
                CaseMapping::FindUnitFolded(&unit, 1, folded) == 0 &&
                Changed(LetterCase::Lower, text) == Expected(LetterCase::Lower, text);
            wrong += isRight ? 0 : 1;
        }
    });
    EXPECT_EQ(wrong, 0);
}

} // namespace
