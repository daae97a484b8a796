#include "korcoreplatform/main/string/TTextEncoding.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/error/StringException.h"

#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

constexpr char kTooLong[] = "StringException_AutoGen_0xC83B3D89";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf32Mark = "\xFF\xFE\0\0"sv;

/// ASCII text in little-endian units of some width.
std::string Widened(std::string_view ascii, std::size_t unitBytes)
{
    std::string bytes;
    for (char const c : ascii) {
        bytes += c + std::string(unitBytes - 1, '\0');
    }
    return bytes;
}

std::string Declaration(std::string_view attributes)
{
    return "<?xml version='1.0' " + std::string(attributes) + "?><a/>";
}

TEST(TTextEncodingTest, MarksAndDeclarationsTellTheEncoding)
{
    struct Case
    {
        int line;
        std::string bytes;
        EncodingType encoding;
        int bomLength;
    };
    std::string const longName(100, 'x');
    Case const cases[] = {
        // Marks, whole and cut short, and before a declaration that says something else.
        {__LINE__, "\xEF\xBB\xBF", EncodingUtf8, 3},
        {__LINE__, "\xEF\xBB", EncodingUtf8, 0},
        {__LINE__, "\xEF\xBB\xBF" + Declaration("encoding='iso-8859-1'"), EncodingUtf8, 3},
        {__LINE__, "\xFF\xFE", EncodingUtf16LE, 2},
        {__LINE__, "\xFF", EncodingUtf8, 0},
        {__LINE__, "\xFF\xFE\0"s, EncodingUtf16LE, 2},
        {__LINE__, "\xFF\xFE\x41\0"s, EncodingUtf16LE, 2},
        {__LINE__, "\xFF\xFE\0\0"s, EncodingUtf32LE, 4},
        {__LINE__, "\xFF\xFE\0\x41\0\0"s, EncodingUtf16LE, 2},
        // Big-endian marks are no marks.
        {__LINE__, "\xFE\xFF\0<\0?\0x\0m\0l\0 "s, EncodingUtf8, 0},
        {__LINE__, "\0\0\xFE\xFF\0\0\0<"s, EncodingUtf8, 0},
        // The start of a declaration in wide units, at its bounds and with one unit wrong.
        {__LINE__, Widened("<?xml", 2), EncodingUtf8, 0},
        {__LINE__, Widened("<?xml", 2) + " ", EncodingUtf16LE, 0},
        {__LINE__, Widened("<?xmk ", 2), EncodingUtf8, 0},
        {__LINE__, "<\0?\0x\0m\0l\1 \0"s, EncodingUtf8, 0},
        {__LINE__, Widened("<?xml", 4), EncodingUtf8, 0},
        {__LINE__, Widened("<?xml", 4) + " ", EncodingUtf32LE, 0},
        {__LINE__, Widened("<?xmk ", 4), EncodingUtf8, 0},
        {__LINE__, "<\0\0\1"s + Widened("?xml ", 4), EncodingUtf8, 0},
        // Names, and what is around them.
        {__LINE__, Declaration("encoding=\"ISO-8859-1\""), EncodingLatin1, 0},
        {__LINE__, Declaration("encoding='utf-16le'"), EncodingUtf16LE, 0},
        {__LINE__, Declaration("encoding='Utf-32LE'"), EncodingUtf32LE, 0},
        {__LINE__, Declaration("encoding \t=\r\n 'iso-8859-1'"), EncodingLatin1, 0},
        {__LINE__, Declaration("encoding'iso-8859-1'"), EncodingLatin1, 0},
        {__LINE__, Declaration("encoding\v'iso-8859-1'"), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding=='iso-8859-1'"), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding=iso-8859-1"), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding='iso-8859-1\""), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding='iso-8859-1"), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding=' iso-8859-1'"), EncodingUtf8, 0},
        {__LINE__, Declaration("Encoding='iso-8859-1'"), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding='utf-16'"), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding='us-ascii'"), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding=''"), EncodingUtf8, 0},
        {__LINE__, Declaration("encoding='" + longName + "'"), EncodingUtf8, 0},
        {__LINE__, Declaration("noencoding='utf-16le' encoding='iso-8859-1'"), EncodingUtf16LE, 0},
        {__LINE__, Declaration("encoding"), EncodingUtf8, 0},
        {__LINE__, "<?xml encoding='iso-8859-1'", EncodingUtf8, 0},
        {__LINE__, "<?xml?> encoding='iso-8859-1'?>", EncodingUtf8, 0},
        {__LINE__, "<?xml?encoding='iso-8859-1'?>", EncodingLatin1, 0},
        {__LINE__, " " + Declaration("encoding='iso-8859-1'"), EncodingUtf8, 0},
        {__LINE__, "<?xml", EncodingUtf8, 0},
        {__LINE__, "", EncodingUtf8, 0},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        // A block of exactly this size, so that a sanitizer sees a byte read too many.
        std::vector<unsigned char> const bytes(c.bytes.begin(), c.bytes.end());
        auto const [encoding, bomLength] = DetectEncoding(bytes.data(), bytes.size());
        EXPECT_EQ(encoding, c.encoding);
        EXPECT_EQ(bomLength, c.bomLength);
    }
    EXPECT_EQ(DetectEncoding(nullptr, 100), std::make_pair(EncodingUtf8, 0));
}

TEST(TTextEncodingTest, PiecesBecomeTextAndOnlyTheFirstLosesItsMark)
{
    struct Case
    {
        int line;
        std::vector<std::string> pieces; // the first one decides on the encoding
        std::vector<TString> texts;
    };
    std::string const latin1 = Declaration("encoding='iso-8859-1'");
    TString const latin1Text(latin1.c_str());
    Case const cases[] = {
        {__LINE__, {"\xEF\xBB\xBFz\xC3\xA9", "\xEF\xBB\xBFz"}, {u"z\u00E9", u"\uFEFFz"}},
        {__LINE__, {"\xFF\xFEz\0\xE9\0"s, "\xFF\xFEz\0"s}, {u"z\u00E9", u"\uFEFFz"}},
        {__LINE__, {"\xFF\xFE\0\0z\0\0\0"s, "\xFF\xFE\0\0z\0\0\0"s}, {u"z", u"\uFEFFz"}},
        {__LINE__, {latin1, "\xE9\xFF"}, {latin1Text, u"\u00E9\u00FF"}},
        // Bytes that make no whole unit are dropped; surrogates and numbers too high are replaced.
        {__LINE__, {"\xFF\xFEz\0\xE9"s, "\xE9"}, {u"z", u""}},
        {__LINE__, {"\xFF\xFE\0\0z\0\0\0\1\1\1"s, "\1\1\1"}, {u"z", u""}},
        {__LINE__, {"\xFF\xFE\0\0\0\xF6\1\0\0\xD8\0\0\0\0\x11\0"s}, {u"\U0001F600\uFFFD\uFFFD"}},
        // Zeros count, unless the last unit is one.
        {__LINE__, {"a\0b"s, "a\0b\0"s, "\0"s}, {TString(u"a\0b", 3), u"a", u""}},
        {__LINE__,
         {latin1, "a\0\xE9"s, "\xE9\0b\0"s},
         {latin1Text, TString(u"a\0\u00E9", 3), u"\u00E9"}},
        {__LINE__,
         {"\xFF\xFE"s, "a\0\0\0b\0"s, "a\0\0\0b\0\0\0\1"s},
         {u"", TString(u"a\0b", 3), u"a"}},
        {__LINE__, {"\xFF\xFE"s, "\0\1\1\0"s}, {u"", u"\u0100\u0001"}}, // zero bytes, no zero unit
        {__LINE__,
         {std::string(kUtf32Mark), Widened("a\0b"sv, 4), Widened("a\0b\0"sv, 4)},
         {u"", TString(u"a\0b", 3), u"a"}},
        // Empty pieces do not count as the first one; one that is cut inside its mark does.
        {__LINE__, {"\xEF\xBB\xBFz", ""}, {u"z", u""}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        TTextEncoding encoding(c.pieces[0].data(), c.pieces[0].size());
        EXPECT_EQ(encoding.ToTString(nullptr, 7), TString());
        EXPECT_EQ(encoding.ToTString("", 0), TString());
        for (std::size_t i = 0; i < c.pieces.size(); ++i) {
            std::vector<char> const exact(c.pieces[i].begin(), c.pieces[i].end());
            EXPECT_EQ(encoding.ToTString(exact), c.texts[i]) << "piece " << i;
        }
    }
    TTextEncoding cutInsideMark("\xFF\xFE\0\0", 4);
    TTextEncoding const unused(cutInsideMark);
    EXPECT_EQ(cutInsideMark.ToTString("\xFF\xFE\0", 3), TString());
    EXPECT_EQ(cutInsideMark.ToTString("z\0\0", 4), TString(u"z"));
    EXPECT_EQ(TTextEncoding(unused).ToTString("\xFF\xFE\0\0z\0\0", 8), TString(u"z"));
}

TEST(TTextEncodingTest, LongUnalignedPiecesAreConvertedWhole)
{
    constexpr char32_t kCodePoints[] = {U'a', U'\u0100', U'\U0001F600', U'\uFFFD', U'\u0001'};
    std::u32string codePoints;
    for (std::size_t i = 0; i < 5000; ++i) {
        codePoints += kCodePoints[i % std::size(kCodePoints)];
    }
    TString const expected = TString::fromStdUString(codePoints);
    std::string utf16 = "?" + std::string(kUtf16Mark); // the first byte makes the rest unaligned
    for (char16_t const unit : expected) {
        utf16 += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    }
    std::string utf32 = "?" + std::string(kUtf32Mark);
    for (char32_t const c : codePoints) {
        utf32 += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8 & 0xFF),
                  static_cast<char>(c >> 16), '\0'};
    }
    for (std::string const& bytes : {utf16, utf32}) {
        TTextEncoding encoding(bytes.data() + 1, bytes.size() - 1);
        EXPECT_EQ(encoding.ToTString(bytes.data() + 1, bytes.size() - 1), expected);
    }
}

TEST(TTextEncodingTest, APieceOfMoreThanATextHoldsIsRefusedBeforeItIsRead)
{
    struct Case
    {
        int line;
        std::string_view start;
        unsigned long unitBytes;
    };
    Case const cases[] = {
        {__LINE__, "plain", 1},
        {__LINE__, "<?xml encoding='iso-8859-1'?>", 1},
        {__LINE__, kUtf16Mark, 2},
        {__LINE__, kUtf32Mark, 4},
    };
    for (Case const& c : cases) {
        for (unsigned long const size : {c.unitBytes * (1ul + TString::kMaxLength) + 4,
                                         c.unitBytes * (2ul + UINT_MAX) + 4, ULONG_MAX / 2}) {
            SCOPED_TRACE(testing::Message() << "line " << c.line << ", size " << size);
            TTextEncoding encoding(c.start.data(), c.start.size());
            EXPECT_KOR_ERROR(encoding.ToTString(c.start.data(), size), StringException, kTooLong);
        }
    }
}

TEST(TTextEncodingTest, NamedCodecsDecodeAndTellFailure)
{
    struct Case
    {
        int line;
        char const* data;
        char const* name;
        TString text;
        std::optional<bool> failed; // nothing: not written
    };
    Case const cases[] = {
        {__LINE__, "\xE4\x80", "windows-1252", u"\u00E4\u20AC", false},
        {__LINE__, "z\xC3\xA9", "UTF-8", u"z\u00E9", false},
        {__LINE__, "z\xFF", "utf-8", u"z\uFFFD", true},
        {__LINE__, "z\xC3\xA9", "no such codec", u"z\u00E9", {}},
        {__LINE__, "z\xFF", "", u"z\uFFFD", {}},
        {__LINE__, "z\xFF", nullptr, u"z\uFFFD", {}},
        {__LINE__, "", "utf-8", u"", {}},
        {__LINE__, nullptr, "utf-8", u"", {}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        for (bool const before : {false, true}) {
            bool failed = before;
            EXPECT_EQ(TStringFromEncoding(c.data, c.name, &failed), c.text);
            EXPECT_EQ(failed, c.failed.value_or(before));
        }
        EXPECT_EQ(TString::fromEncoding(c.data, c.name, nullptr), c.text);
    }
}

} // namespace
