#include "korsys/main/text/CaseMapping_p.h"

#include "korsys/main/text/UnitSearch_p.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using CaseMapping::LetterCase;

/// A heap block of exactly the text's size, so that the address sanitizer sees a read behind it.
using Exact = std::vector<char16_t>;

Exact MakeExact(std::u16string const& text)
{
    return Exact(text.begin(), text.end());
}

int Size(std::u16string const& text)
{
    return static_cast<int>(text.size());
}

std::u16string FromCodePoint(UChar32 codePoint)
{
    char16_t units[2];
    int length = 0;
    U16_APPEND_UNSAFE(units, length, codePoint);
    return std::u16string(units, units + length);
}

std::u16string Changed(LetterCase to, std::u16string const& text)
{
    Exact const exact = MakeExact(text);
    int const length = Size(text);
    int const first = CaseMapping::FindChange(to, exact.data(), length);
    Exact out(exact.begin(), exact.begin() + first);
    out.resize(text.size());
    int const done =
        first + CaseMapping::Map(to, exact.data() + first, length - first, out.data() + first);
    std::int64_t const rest = CaseMapping::MappedLength(to, exact.data() + done, length - done);
    out.resize(static_cast<std::size_t>(done + rest));
    CaseMapping::MapAny(to, exact.data() + done, length - done, out.data() + done);
    return std::u16string(out.begin(), out.end());
}

/// What ICU makes of one code point, by itself.
std::u16string Expected(LetterCase to, UChar32 codePoint)
{
    if (to == LetterCase::Lower) {
        return codePoint == 0x130 ? u"i\u0307" : FromCodePoint(u_tolower(codePoint));
    }
    std::u16string const text = FromCodePoint(codePoint);
    char16_t mapped[8];
    UErrorCode error = U_ZERO_ERROR;
    int const length = u_strToUpper(mapped, 8, text.data(), Size(text), "", &error);
    return std::u16string(mapped, static_cast<std::size_t>(length));
}

std::u16string ExpectedText(LetterCase to, std::u16string const& text)
{
    std::u16string mapped;
    for (int i = 0; i < Size(text);) {
        UChar32 codePoint = 0;
        U16_NEXT(text.data(), i, Size(text), codePoint);
        mapped += Expected(to, codePoint);
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

std::u16string RandomText(std::mt19937& random, std::size_t length)
{
    static std::vector<std::u16string> const s_alphabets = {
        u"abzAZ@[`{09",
        u"kKsS\u212A\u017F",
        u"aB\u0434\u0414\u1C81\u00DF\u0130",
        u"\u03C3\u03C2\u03A3\u0386\u03AC\u1F80\u0390",
        u"\xD801\xDC00\xDC28\xD83D\xDE00kK",
        std::u16string(u"\u4E00\u1E9E\uFF21\uFF41\u0101\u0100\0aA", 9)};
    std::u16string const& alphabet = s_alphabets[random() % s_alphabets.size()];
    std::u16string text(length, u' ');
    for (char16_t& unit : text) {
        unit = alphabet[random() % alphabet.size()];
    }
    return text;
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
            std::u16string const expected = Expected(to, codePoint);
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
        ++sizes[folded];
    }
    for (auto const& [folded, size] : sizes) {
        ASSERT_LE(size, 8) << std::hex << folded; // the search has room for so many
    }
}

TEST(CaseMappingTest, SpecialMappings)
{
    std::u16string const cases[][3] = {
        // The text, its lower and its upper case.
        {u"", u"", u""},
        {u"stra\u00DFe \uFB01", u"stra\u00DFe \uFB01", u"STRASSE FI"},
        {u"\u1E9E\u0130I\u0131", u"\u00DFi\u0307i\u0131", u"\u1E9E\u0130II"},
        {u"\u03A3\u0391\u03A3", u"\u03C3\u03B1\u03C3", u"\u03A3\u0391\u03A3"},
        {u"\u212A\u017F", u"k\u017F", u"\u212AS"},
        {u"a\xD801x\xDC28", u"a\xD801x\xDC28", u"A\xD801X\xDC28"}, // halves apart are no pair
    };
    for (auto const& [text, lower, upper] : cases) {
        EXPECT_EQ(Changed(LetterCase::Lower, text), lower);
        EXPECT_EQ(Changed(LetterCase::Upper, text), upper);
    }
}

TEST(CaseMappingTest, TextsMapAsTheirCodePointsDo)
{
    std::mt19937 random(201);
    for (int round = 0; round < 6000; ++round) {
        std::u16string const text = RandomText(random, static_cast<std::size_t>(round % 71)) +
                                    RandomText(random, random() % 20);
        for (LetterCase const to : {LetterCase::Lower, LetterCase::Upper}) {
            ASSERT_EQ(Changed(to, text), ExpectedText(to, text));
            Exact const exact = MakeExact(text);
            Exact out(text.size());
            ASSERT_EQ(CaseMapping::FindChange(to, exact.data(), Size(text)),
                      CaseMapping::Scalar::FindChange(to, exact.data(), Size(text)));
            ASSERT_EQ(CaseMapping::Map(to, exact.data(), Size(text), out.data()),
                      CaseMapping::Scalar::Map(to, exact.data(), Size(text), out.data()));
        }
    }
}

TEST(CaseMappingTest, FoldedComparisonIsThatOfTheFoldedTexts)
{
    std::mt19937 random(202);
    auto const sign = [](int value) { return value < 0 ? -1 : value > 0 ? 1 : 0; };
    for (int round = 0; round < 20000; ++round) {
        std::u16string const left = RandomText(random, static_cast<std::size_t>(round % 71));
        std::u16string right = Recased(random, left);
        if (round % 2 == 0 && !right.empty()) {
            right[random() % right.size()] = RandomText(random, 1)[0];
        }
        right.resize(right.size() - (round % 3 == 0 ? right.size() / 4 : 0));
        Exact const l = MakeExact(left);
        Exact const r = MakeExact(right);
        ASSERT_EQ(CaseMapping::CompareFolded(l.data(), Size(left), r.data(), Size(right)),
                  sign(Folded(left).compare(Folded(right))));
        int const common = std::min(Size(left), Size(right));
        ASSERT_EQ(CaseMapping::MismatchFolded(l.data(), r.data(), common),
                  CaseMapping::Scalar::MismatchFolded(l.data(), r.data(), common));
    }
}

TEST(CaseMappingTest, UnitsAreFoundInEveryFormThatFoldsAlike)
{
    for (std::u16string const group :
         {u"kK\u212A", u"\u0432\u0412\u1C80", u"\u03B8\u0398\u03D1\u03F4",
          u"\u0442\u0422\u1C84\u1C85", u"\uFF21\uFF41", u"7", u"\xD801", u"\xDC28"}) {
        for (int length = 1; length <= 40; ++length) {
            int const at = length * 2 / 3;
            for (std::size_t i = 0; i < group.size(); ++i) {
                Exact text(static_cast<std::size_t>(length), u'-');
                text[static_cast<std::size_t>(at)] = group[i];
                char16_t const sought = group[(i + 1) % group.size()];
                EXPECT_EQ(CaseMapping::FindUnitFolded(text.data(), length, sought), at);
                EXPECT_EQ(CaseMapping::FindLastUnitFolded(text.data(), length, sought), at);
                EXPECT_EQ(CaseMapping::CountUnitFolded(text.data(), length, sought), 1);
                EXPECT_EQ(CaseMapping::FindUnitFolded(text.data(), length, u'!'), -1);
            }
        }
    }
}

/// The first and the last place and the count of a needle.
using Found = std::array<int, 3>;

Found FindAll(std::u16string const& text, std::u16string const& needle)
{
    Exact const t = MakeExact(text);
    Exact const s = MakeExact(needle);
    auto const call = [&](auto... find) {
        return Found{find(t.data(), Size(text), s.data(), Size(needle))...};
    };
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
        std::u16string const text = RandomText(random, random() % 71) + RandomText(random, 8);
        std::u16string needle =
            Recased(random, text.substr(random() % text.size(), 2 + random() % 9));
        if (round % 4 == 0 || needle.size() < 2) { // single units do not look at pairs
            needle = RandomText(random, 2 + random() % 3);
        }
        std::u32string const foldedText = Folded(text);
        std::u32string const foldedNeedle = Folded(needle);
        Found expected = {-1, -1, 0};
        for (std::size_t at = foldedText.find(foldedNeedle); at != foldedText.npos;
             at = foldedText.find(foldedNeedle, at + 1)) {
            int const place = static_cast<int>(at);
            expected = {expected[2] == 0 ? place : expected[0], place, expected[2] + 1};
        }
        ASSERT_EQ(FindAll(text, needle), expected);
    }
}

TEST(CaseMappingTest, EmptyAndOverlongNeedles)
{
    EXPECT_EQ(FindAll(u"ab", u""), (Found{0, 2, 3}));
    EXPECT_EQ(FindAll(u"a", u"ab"), (Found{-1, -1, 0}));
    EXPECT_EQ(FindAll(u"", u"ab"), (Found{-1, -1, 0}));
    EXPECT_EQ(FindAll(u"", u"a"), (Found{-1, -1, 0}));
}

// As in the search with case: what compares at each candidate does not end.
TEST(CaseMappingTest, AdversarialNeedlesTakeLinearTime)
{
    int const half = 200000;
    std::u16string const text(2 * half, u'A');
    std::u16string const run(half, u'a');
    EXPECT_EQ(FindAll(text, run + u"BA"), (Found{-1, -1, 0}));
    EXPECT_EQ(FindAll(text, u"AB" + run), (Found{-1, -1, 0}));
    EXPECT_EQ(FindAll(text, u"A" + run), (Found{0, half - 1, half}));
}

// The tables fill while others read them. Each thread goes through the units in another order.
TEST(CaseMappingThreadTest, TablesFillFromManyThreads)
{
    std::vector<std::thread> threads;
    std::atomic<int> wrong(0);
    for (unsigned const order : {0u, 0x1FFFu, 1u, 0x1FFEu}) {
        threads.emplace_back([order, &wrong] {
            for (unsigned i = 0; i < 0x2000; ++i) {
                char16_t const unit = static_cast<char16_t>(i ^ order);
                char16_t const folded =
                    static_cast<char16_t>(u_foldCase(unit, U_FOLD_CASE_DEFAULT));
                bool const isRight = CaseMapping::EqualFolded(&unit, &folded, 1) &&
                                     CaseMapping::FindUnitFolded(&unit, 1, folded) == 0 &&
                                     Changed(LetterCase::Lower, std::u16string(1, unit)) ==
                                         Expected(LetterCase::Lower, unit);
                wrong += isRight ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace
