#include "korsys/main/text/TextConversion_p.h"

#include "korsys/main/text/TextConversionKernels_p.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <unicode/ustring.h>

using TextConversion::Kernels;

namespace {

/// A copy in a heap block of its exact size, so that a sanitizer sees every access outside it.
template <class T>
std::unique_ptr<T[]> Exact(std::basic_string<T> const& text)
{
    std::unique_ptr<T[]> copy(new T[text.size()]);
    std::copy(text.begin(), text.end(), copy.get());
    return copy;
}

std::u16string IcuDecode(std::string const& bytes)
{
    std::u16string units(bytes.size(), u'\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    ::u_strFromUTF8WithSub(&units[0], static_cast<int32_t>(units.size()), &length, bytes.data(),
                           static_cast<int32_t>(bytes.size()), 0xFFFD, nullptr, &status);
    EXPECT_TRUE(U_SUCCESS(status));
    units.resize(static_cast<std::size_t>(length));
    return units;
}

std::string IcuEncode(std::u16string const& units)
{
    std::string bytes(3 * units.size(), '\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    ::u_strToUTF8WithSub(&bytes[0], static_cast<int32_t>(bytes.size()), &length, units.data(),
                         static_cast<int32_t>(units.size()), 0xFFFD, nullptr, &status);
    EXPECT_TRUE(U_SUCCESS(status));
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

/// Each version must convert well-formed bytes, refuse others, and stay inside its memory.
void CheckDecoding(std::string const& bytes)
{
    std::u16string const expected = IcuDecode(bytes);
    bool const wellFormed = IcuEncode(expected) == bytes;
    std::size_t const n = bytes.size();
    auto const from = Exact(bytes);
    for (Kernels const* kernels : TextConversion::UsableKernels()) {
        SCOPED_TRACE(kernels->name);
        std::size_t const units = kernels->countUtf16(from.get(), n);
        auto const to = Exact(std::u16string(units, u'\xABCD'));
        ASSERT_EQ(kernels->decodeUtf8(from.get(), n, to.get(), units), wellFormed);
        ASSERT_TRUE(!wellFormed || std::u16string(to.get(), units) == expected);
    }
    std::vector<char16_t> result;
    TextConversion::Utf8ToUtf16(from.get(), n, [&](std::size_t units) {
        result.resize(units);
        result.shrink_to_fit(); // no more memory than that
        return result.data();
    });
    ASSERT_EQ(std::u16string(result.begin(), result.end()), expected);
}

void CheckEncoding(std::u16string const& units)
{
    std::string const expected = IcuEncode(units);
    std::size_t const n = units.size();
    std::size_t const pairs = n - std::size_t(::u_countChar32(units.data(), int32_t(n)));
    auto const from = Exact(units);
    for (Kernels const* kernels : TextConversion::UsableKernels()) {
        SCOPED_TRACE(kernels->name);
        std::size_t const bytes = kernels->countUtf8(from.get(), n);
        ASSERT_EQ(bytes, expected.size());
        for (std::size_t const slack : {0, 7, 200}) {
            std::unique_ptr<char[]> const to(new char[bytes + slack]);
            ASSERT_EQ(kernels->encodeUtf8(from.get(), n, to.get(), bytes + slack), bytes);
            ASSERT_EQ(std::string(to.get(), bytes), expected);
        }
        ASSERT_EQ(kernels->countPairs(from.get(), n), pairs);
    }
    ASSERT_EQ(TextConversion::ToUtf8(from.get(), n), expected);
}

struct Filler
{
    char const* bytes;
    char16_t const* units;
};

// One character of each length, so that a row of them puts block borders at each place of it.
constexpr Filler kFillers[] = {{"a", u"a"},
                               {"\xC3\xA9", u"\xE9"},
                               {"\xE6\xBC\xA2", u"\x6F22"},
                               {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"}};

template <class T>
std::basic_string<T> Repeated(T const* text, std::size_t times)
{
    std::basic_string<T> result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

TEST(TextConversionTest, EveryVersionFindsBadBytesWhereverTheyStand)
{
    // One mark for what is there of a cut character, one for each byte that fits nowhere.
    ASSERT_EQ(IcuDecode("\xF0\x9F\x98\xC3\xA9\xA9\xC0\x80"), u"\xFFFD\xE9\xFFFD\xFFFD\xFFFD");
    ASSERT_EQ(IcuDecode("\xE0\x9F\xBF\xED\xA0\x80"), std::u16string(6, u'\xFFFD'));
    ASSERT_EQ(IcuDecode("\xF4\x90\x80\x80\xFF\xF0\x80"), std::u16string(7, u'\xFFFD'));
    std::string const cases[] = {
        "\x80", "\xBF\x80", std::string(200, '\x80'),
        // Characters cut at each place, and one trailing byte too many.
        "\xC2", "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x98", "\xE2\x82\xE2\x82\xAC",
        "\xF0\x9F\x98\xC3\xA9", "\xC3\xA9\xA9", "\xE2\x82\xAC\xAC", "\xF0\x9F\x98\x80\x80",
        // Longer than needed; surrogates; above 10FFFF.
        "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xF7\xBF\xBF\xBF", "\xF8\x88\x80\x80\x80", "\xFE",
        "\xFF\xBF",
        // As many units as bytes if it were well-formed, which ASCII alone can have.
        "\xF0\x80",
        // The neighbours of the above are characters.
        "\xC2\x80\xDF\xBF\xE0\xA0\x80", "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF",
        "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", "\xEF\xBB\xBF", std::string("\0x\0", 3)};
    for (std::string const& bad : cases) {
        for (Filler const& filler : kFillers) {
            for (std::size_t before = 0; before <= 70; ++before) {
                SCOPED_TRACE(testing::PrintToString(bad) + " behind " + std::to_string(before) +
                             " times " + filler.bytes);
                std::string const start = Repeated(filler.bytes, before) + bad;
                ASSERT_NO_FATAL_FAILURE(CheckDecoding(start));
                ASSERT_NO_FATAL_FAILURE(CheckDecoding(start + Repeated(filler.bytes, 45)));
                // The other lengths shift the border by less than a character.
                ASSERT_NO_FATAL_FAILURE(CheckDecoding("ab" + start + "\xC3\xA9"));
            }
        }
    }
}

TEST(TextConversionTest, UnpairedSurrogatesBecomeOneMarkWhereverTheyStand)
{
    ASSERT_EQ(IcuEncode(u"\xDC00\xDBFF"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    std::u16string const cases[] = {u"\xD800",
                                    u"\xDFFF",
                                    u"\xDC00\xD800",
                                    u"\xDBFF\xD800\xDC00",
                                    u"\xDBFF\xDFFF\xDC00",
                                    u"\xD7FF\xE000\x7F\x80\x7FF\x800\xFFFF",
                                    std::u16string(u"\0x", 2)};
    for (std::u16string const& units : cases) {
        for (Filler const& filler : kFillers) {
            for (std::size_t before = 0; before <= 70; ++before) {
                SCOPED_TRACE(testing::PrintToString(units) + " behind " + std::to_string(before) +
                             " times " + filler.bytes);
                std::u16string const start = Repeated(filler.units, before) + units;
                ASSERT_NO_FATAL_FAILURE(CheckEncoding(start));
                ASSERT_NO_FATAL_FAILURE(CheckEncoding(start + Repeated(filler.units, 45)));
            }
        }
    }
}

/// Text of all lengths whose stretches keep to one kind of character, as real text does.
std::u32string RandomText(std::mt19937& random)
{
    constexpr char32_t kFirst[] = {0x00, 0x80, 0x800, 0xE000, 0x10000};
    constexpr char32_t kLast[] = {0x7F, 0x7FF, 0xD7FF, 0xFFFF, 0x10FFFF};
    std::u32string text;
    for (unsigned stretches = random() % 6; stretches > 0; --stretches) {
        unsigned const kind = random() % 5;
        for (unsigned left = random() % 60; left > 0; --left) {
            text += kFirst[kind] + random() % (kLast[kind] - kFirst[kind] + 1);
        }
    }
    return text;
}

TEST(TextConversionTest, RandomTextGoesThroughEveryFormAndBack)
{
    std::mt19937 random(2718); // fixed seed: a failure can be run again
    for (int i = 0; i < 4000; ++i) {
        SCOPED_TRACE(i);
        std::u32string const text = RandomText(random);
        std::u16string units(TextConversion::CountUtf16(text.data(), text.size()), u'\0');
        TextConversion::Utf32ToUtf16(text.data(), text.size(), &units[0]);
        ASSERT_EQ(TextConversion::CountCodePoints(units.data(), units.size()), text.size());
        std::u32string back(text.size(), U'\0');
        TextConversion::Utf16ToUtf32(units.data(), units.size(), &back[0]);
        ASSERT_EQ(back, text);

        ASSERT_NO_FATAL_FAILURE(CheckEncoding(units));
        std::string bytes = IcuEncode(units);
        ASSERT_NO_FATAL_FAILURE(CheckDecoding(bytes));
        ASSERT_EQ(IcuDecode(bytes), units);
        if (!bytes.empty()) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
            ASSERT_NO_FATAL_FAILURE(CheckDecoding(bytes));
            units[random() % units.size()] = static_cast<char16_t>(0xD700 + random() % 0xA00);
            ASSERT_NO_FATAL_FAILURE(CheckEncoding(units));
        }
    }
}

TEST(TextConversionTest, LongTextThatSeemsAsciiIsDecodedAroundItsOtherBytes)
{
    // Places between the samples, the bytes there, and how often a text is to be resized.
    std::tuple<std::size_t, std::string, std::size_t> const cases[] = {
        {0, "", 1},
        {0, "\xC3\xA9", 1},
        {100, "\xC3\xA9", 2},
        {199800, "\xF0\x9F\x98\x80", 2},
        {100000, "\xE6\xBC", 4},
        {100000, "\x80\x80\x80", 4}};
    for (auto const& [place, inserted, expectedResizes] : cases) {
        std::string const bytes =
            std::string(200001, 'x').replace(place, inserted.size(), inserted);
        std::u16string result;
        std::size_t resizes = 0;
        TextConversion::Utf8ToUtf16(bytes.data(), bytes.size(), [&](std::size_t units) {
            ++resizes;
            result.resize(units);
            return &result[0];
        });
        EXPECT_EQ(result, IcuDecode(bytes));
        EXPECT_EQ(resizes, expectedResizes) << place;
    }
}

TEST(TextConversionTest, LongTextIsEncodedPieceByPieceInItsExactMemory)
{
    for (std::size_t const before : {0, 2046, 2047, 2048, 4095, 9000}) {
        for (std::size_t const pairs : {0, 1, 2100}) {
            SCOPED_TRACE(testing::Message() << before << " and " << pairs << " pairs");
            std::u16string const text = std::u16string(before, u'x') +
                                        Repeated(kFillers[3].units, pairs) +
                                        std::u16string(pairs % 2, u'\xD83D');
            std::string const utf8 = TextConversion::ToUtf8(text.data(), text.size());
            ASSERT_EQ(utf8, IcuEncode(text));
            ASSERT_LT(utf8.capacity(), utf8.size() + 32);
        }
    }
}

TEST(TextConversionTest, Utf32ThatIsNoCodePointBecomesAMark)
{
    std::u32string const text = {0xD7FF, 0xD800, 0xDFFF, 0xE000, 0x10FFFF, 0x110000, 0xFFFFFFFF};
    std::u16string const expected = u"\xD7FF\xFFFD\xFFFD\xE000\xDBFF\xDFFF\xFFFD\xFFFD";
    std::u16string units(TextConversion::CountUtf16(text.data(), text.size()), u'\0');
    ASSERT_EQ(units.size(), expected.size());
    TextConversion::Utf32ToUtf16(text.data(), text.size(), &units[0]);
    EXPECT_EQ(units, expected);

    std::u16string const unpaired = u"\xDC00\xD800x\xD83D\xDE00\xD800";
    std::u32string points(TextConversion::CountCodePoints(unpaired.data(), unpaired.size()), U'\0');
    ASSERT_EQ(points.size(), 5U);
    TextConversion::Utf16ToUtf32(unpaired.data(), unpaired.size(), &points[0]);
    EXPECT_EQ(points, std::u32string({0xFFFD, 0xFFFD, U'x', 0x1F600, 0xFFFD}));
}

TEST(TextConversionTest, Latin1AndAsciiHoldAtEveryLengthAndPlace)
{
    for (std::size_t n = 0; n <= 100; ++n) {
        std::string bytes(n, '\0');
        for (std::size_t i = 0; i < n; ++i) {
            bytes[i] = static_cast<char>(i * 37);
        }
        auto const from = Exact(bytes);
        auto const ascii = Exact(std::u16string(n, u'\x7F'));
        for (Kernels const* kernels : TextConversion::UsableKernels()) {
            SCOPED_TRACE(testing::Message() << kernels->name << ", " << n);
            std::unique_ptr<char16_t[]> const units(new char16_t[n]);
            kernels->latin1ToUtf16(from.get(), n, units.get());
            std::unique_ptr<char[]> const back(new char[n]);
            ASSERT_TRUE(kernels->utf16ToLatin1(units.get(), n, back.get()));
            ASSERT_EQ(std::string(back.get(), n), bytes);
            ASSERT_TRUE(kernels->isAsciiUnits(ascii.get(), n));
            for (std::size_t at = 0; at < n; ++at) {
                ASSERT_EQ(units[at], static_cast<unsigned char>(bytes[at]));
                char16_t const kept =
                    std::exchange(units[at], char16_t(at % 2 != 0 ? 0x100 : 0xFFFF));
                ASSERT_FALSE(kernels->utf16ToLatin1(units.get(), n, back.get()));
                ASSERT_EQ(std::string(back.get(), n), std::string(bytes).replace(at, 1, 1, '?'));
                units[at] = kept;
                std::string const one = std::string(n, 'x').replace(at, 1, 1, '\x80');
                ASSERT_FALSE(kernels->isAsciiBytes(Exact(one).get(), n));
                ascii[at] = at % 2 != 0 ? 0x80 : 0x8000;
                ASSERT_FALSE(kernels->isAsciiUnits(ascii.get(), n));
                ascii[at] = 0x7F;
            }
            ASSERT_TRUE(kernels->isAsciiBytes(Exact(std::string(n, '\x7F')).get(), n));
        }
    }
}

TEST(TextConversionTest, Latin9DiffersFromLatin1InEightPlaces)
{
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    std::u16string expected(256, u'\0');
    std::iota(expected.begin(), expected.end(), u'\0');
    std::u16string const places = u"\xA4\xA6\xA8\xB4\xB8\xBC\xBD\xBE";
    std::u16string const characters = u"\x20AC\x160\x161\x17D\x17E\x152\x153\x178";
    for (std::size_t i = 0; i < places.size(); ++i) {
        expected[places[i]] = characters[i];
    }
    std::u16string units(bytes.size(), u'\0');
    TextConversion::Latin9ToUtf16(bytes.data(), bytes.size(), &units[0]);
    EXPECT_EQ(units, expected);
    std::string back(units.size(), '\0');
    EXPECT_TRUE(TextConversion::Utf16ToLatin9(units.data(), units.size(), &back[0]));
    EXPECT_EQ(back, bytes);
    std::string none(places.size(), '\0');
    EXPECT_FALSE(TextConversion::Utf16ToLatin9(places.data(), places.size(), &none[0]));
    EXPECT_EQ(none, "????????");
}

TEST(TextConversionTest, LengthStopsAtTheFirstZeroUnit)
{
    for (std::size_t n = 0; n <= 40; ++n) {
        for (std::size_t skipped = 0; skipped <= n; ++skipped) {
            // Zeros before the start and behind the end must not be taken for the end, and neither
            // must the zero byte of a unit.
            std::u16string text(n, u'\x100');
            std::fill_n(text.begin(), skipped, u'\0');
            auto const exact = Exact(text + u'\0');
            for (Kernels const* kernels : TextConversion::UsableKernels()) {
                SCOPED_TRACE(kernels->name);
                ASSERT_EQ(kernels->length(exact.get() + skipped), n - skipped);
            }
        }
    }
}

} // namespace
