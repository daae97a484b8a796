#include "korsys/main/text/TextConversion_p.h"

#include "korsys/main/text/TStringCore.h"
#include "korsys/tests/support/TextConversionChecks.h"
#include "korsys/tests/support/TextPeers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <tuple>

#include <sys/mman.h>
#include <unistd.h>

using TextConversion::Kernels;

namespace {

/// Text of all lengths whose stretches keep to one kind of character, as real text does.
std::u32string RandomCodePoints(std::mt19937& random)
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

std::u16string FromUtf32(std::u32string const& text)
{
    std::u16string units(TextConversion::CountUtf16(text.data(), text.size()), u'\0');
    TextConversion::Utf32ToUtf16(text.data(), text.size(), &units[0]);
    return units;
}

std::u32string ToUtf32(std::u16string const& units)
{
    std::u32string text(TextConversion::CountCodePoints(units.data(), units.size()), U'\0');
    TextConversion::Utf16ToUtf32(units.data(), units.size(), &text[0]);
    return text;
}

TEST(TextConversionTest, RandomTextGoesThroughEveryFormAndBack)
{
    std::mt19937 random(2718); // fixed seed: a failure can be run again
    for (int i = 0; i < 4000; ++i) {
        SCOPED_TRACE(i);
        std::u32string const text = RandomCodePoints(random);
        std::u16string units = FromUtf32(text);
        std::string bytes = IcuEncode(units);
        ASSERT_EQ(ToUtf32(units), text);
        ASSERT_EQ(IcuDecode(bytes), units);
        ASSERT_NO_THROW(CheckEncoding(units); CheckDecoding(bytes));
        if (!bytes.empty()) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
            units[random() % units.size()] = static_cast<char16_t>(0xD700 + random() % 0xA00);
            ASSERT_NO_THROW(CheckEncoding(units); CheckDecoding(bytes));
        }
    }
    EXPECT_EQ(FromUtf32({0xD7FF, 0xD800, 0xDFFF, 0xE000, 0x10FFFF, 0x110000, 0xFFFFFFFF}),
              u"\xD7FF\xFFFD\xFFFD\xE000\xDBFF\xDFFF\xFFFD\xFFFD");
    EXPECT_EQ(ToUtf32(u"\xDC00\xD800x\xD83D\xDE00\xD800"),
              std::u32string({0xFFFD, 0xFFFD, U'x', 0x1F600, 0xFFFD}));
}

TEST(TextConversionTest, LongTextThatSeemsAsciiIsDecodedAroundItsOtherBytes)
{
    // Places between the samples, the bytes there, and how often a text is to be resized.
    std::tuple<std::size_t, std::string, int> const cases[] = {{0, "", 1},
                                                               {0, "\xC3\xA9", 1},
                                                               {100, "\xC3\xA9", 2},
                                                               {65535, "\xC3\xA9", 2},
                                                               {199800, "\xF0\x9F\x98\x80", 2},
                                                               {100000, "\xE6\xBC", 4},
                                                               {100000, "\x80\x80\x80", 4}};
    for (auto const& [place, inserted, expectedResizes] : cases) {
        std::string const bytes =
            std::string(200001, 'x').replace(place, inserted.size(), inserted);
        std::u16string result;
        int resizes = 0;
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
        for (std::size_t const halves : {0, 3, 4201}) {
            std::u16string text(before, u'x');
            for (std::size_t i = 0; i < halves; ++i) {
                text += i % 2 == 0 ? u'\xD83D' : u'\xDE00';
            }
            std::string const utf8 = TextConversion::ToUtf8(text.data(), text.size());
            ASSERT_EQ(utf8, IcuEncode(text)) << before << " and " << halves << " surrogates";
            ASSERT_LT(utf8.capacity(), utf8.size() + 32);
        }
    }
}

TEST(TextConversionTest, Latin1AndAsciiHoldAtEveryLengthAndPlace)
{
    for (std::size_t n = 0; n <= 100; ++n) {
        std::string bytes;
        std::u16string expected;
        for (std::size_t i = 0; i < n; ++i) {
            bytes += static_cast<char>(i * 37);
            expected += static_cast<char16_t>(i * 37 % 256);
        }
        Exact const from(bytes);
        Exact const units(expected);
        Exact const back(bytes);
        Exact const asciiUnits(std::u16string(n, u'\x7F'));
        Exact const asciiBytes(std::string(n, '\x7F'));
        for (Kernels const* kernels : TextConversion::UsableKernels()) {
            SCOPED_TRACE(testing::Message() << kernels->name << ", " << n);
            kernels->latin1ToUtf16(from, n, units);
            ASSERT_EQ(units.Text(), expected);
            ASSERT_TRUE(kernels->utf16ToLatin1(units, n, back));
            ASSERT_EQ(back.Text(), bytes);
            ASSERT_TRUE(kernels->isAsciiUnits(asciiUnits, n));
            ASSERT_TRUE(kernels->isAsciiBytes(asciiBytes, n));
            for (std::size_t at = 0; at < n; ++at) {
                units[at] = at % 2 != 0 ? 0x100 : 0xFFFF;
                ASSERT_FALSE(kernels->utf16ToLatin1(units, n, back));
                ASSERT_EQ(back.Text(), std::string(bytes).replace(at, 1, 1, '?'));
                units[at] = expected[at];
                asciiUnits[at] = at % 2 != 0 ? 0x80 : 0x8000;
                ASSERT_FALSE(kernels->isAsciiUnits(asciiUnits, n));
                asciiUnits[at] = 0x7F;
                asciiBytes[at] = '\x80';
                ASSERT_FALSE(kernels->isAsciiBytes(asciiBytes, n));
                asciiBytes[at] = 0x7F;
            }
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
    for (std::size_t i = 0; i < places.size(); ++i) {
        expected[places[i]] = u"\x20AC\x160\x161\x17D\x17E\x152\x153\x178"[i];
    }
    std::u16string units(256, u'\0');
    TextConversion::Latin9ToUtf16(bytes.data(), 256, &units[0]);
    EXPECT_EQ(units, expected);
    std::string back(256, '\0');
    EXPECT_TRUE(TextConversion::Utf16ToLatin9(units.data(), 256, &back[0]));
    EXPECT_EQ(back, bytes);
    EXPECT_FALSE(TextConversion::Utf16ToLatin9(places.data(), places.size(), &back[0]));
    EXPECT_EQ(back.substr(0, places.size() + 1), "????????\x08");
}

TEST(TextConversionTest, LengthStopsAtTheFirstZeroUnit)
{
    for (std::size_t n = 0; n <= 110; ++n) {
        for (std::size_t skipped = 0; skipped <= n; ++skipped) {
            // Zeros before the start and behind the end must not be taken for the end, and neither
            // must the zero byte of a unit.
            Exact const text(std::u16string(skipped, u'\0') +
                             std::u16string(n - skipped, u'\x100') + u'\0');
            for (Kernels const* kernels : TextConversion::UsableKernels()) {
                ASSERT_EQ(kernels->length(text + skipped), n - skipped) << kernels->name;
            }
        }
    }
}

TEST(TextConversionTest, LengthReadsNoPageBehindTheText)
{
    auto const pageBytes = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* const pages =
        ::mmap(nullptr, 2 * pageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    char* const end = static_cast<char*>(pages) + pageBytes;
    ASSERT_EQ(::mprotect(end, pageBytes, PROT_NONE), 0);
    auto* const zero = reinterpret_cast<char16_t*>(end) - 1;
    std::fill_n(zero - 50, 50, u'a');
    *zero = 0;
    for (std::size_t n = 0; n <= 50; ++n) {
        for (Kernels const* kernels : TextConversion::UsableKernels()) {
            ASSERT_EQ(kernels->length(zero - n), n) << kernels->name;
        }
        ASSERT_EQ(TStringCore(zero - n), TStringCore(u'a', static_cast<int>(n)));
    }
    ::munmap(pages, 2 * pageBytes);
}

} // namespace
