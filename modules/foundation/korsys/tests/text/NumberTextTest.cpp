#include "korsys/main/text/NumberText_p.h"

#include "korsys/main/error/StringException.h"
#include "korsys/tests/support/KorTest.h"

#include <gtest/gtest.h>

#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace NumberText;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// A block of exactly the text's size, so that the address sanitizer sees a read outside.
struct Exact
{
    template <class Text>
    explicit Exact(Text const& text) : units(text.begin(), text.end())
    {}
    char16_t const* Data() const { return units.empty() ? nullptr : units.data(); }
    int Size() const { return static_cast<int>(units.size()); }
    std::vector<char16_t> units;
};

std::string Narrow(char16_t const* units, std::int64_t length)
{
    return std::string(units, units + length);
}

std::string Signed(std::int64_t value, int base)
{
    char16_t units[kMaxIntegerUnits];
    return Narrow(units, WriteSigned(units, value, base));
}

std::string Unsigned(std::uint64_t value, int base)
{
    char16_t units[kMaxIntegerUnits];
    return Narrow(units, WriteUnsigned(units, value, base));
}

template <class Integer>
std::string Decimal32(Integer value)
{
    std::vector<char16_t> units(kMaxDecimal32Units);
    return Narrow(units.data(), WriteDecimal(units.data(), value));
}

std::string Float(double value, char format, int precision, bool trim = false)
{
    FloatText const text(value, format, precision, trim);
    return Narrow(text.Data(), text.Length());
}

template <class Number>
Parsed<Number> Read(std::string const& ascii, int base = 10)
{
    Exact const text(ascii);
    return ToInteger<Number>(text.Data(), text.Size(), base);
}

std::uint64_t BitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

double FromBits(std::uint64_t bits)
{
    double value = 0;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

TEST(NumberTextTest, WritesIntegersInEveryBase)
{
    struct Case
    {
        int line;
        std::int64_t value;
        int base;
        char const* text;
    };
    Case const cases[] = {
        {__LINE__, 0, 10, "0"},
        {__LINE__, INT64_MIN, 10, "-9223372036854775808"},
        {__LINE__, INT64_MAX, 10, "9223372036854775807"},
        {__LINE__, -1, 8, "1777777777777777777777"},
        {__LINE__, 35 * 36 + 10, 36, "za"},
        {__LINE__, 61 * 62 + 37, 62, "ZB"},
        {__LINE__, 62 * 63 + 61, 63, "-Z"},
        {__LINE__, 63 * 64 + 62, 64, "_-"},
        {__LINE__, -1, 64, "f__________"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(Signed(c.value, c.base), c.text);
    }
    EXPECT_EQ(Unsigned(UINT64_MAX, 10), "18446744073709551615");
    EXPECT_EQ(Unsigned(UINT64_MAX, 2), std::string(64, '1'));
}

TEST(NumberTextTest, IntegersOfEveryLengthReadBackWhatWasWritten)
{
    std::mt19937_64 random(301); // fixed seed: a failure can be run again
    for (int i = 0; i < 20000; ++i) {
        std::uint64_t const value = random() >> random() % 64;
        auto const narrow = static_cast<std::int32_t>(value);
        ASSERT_EQ(Decimal32(narrow), std::to_string(narrow));
        ASSERT_EQ(Decimal32(static_cast<std::uint32_t>(value)),
                  std::to_string(std::uint32_t(value)));
        ASSERT_EQ(Unsigned(value, 10), std::to_string(value));
        int const base = 2 + static_cast<int>(random() % 35);
        char reference[64];
        auto const end = std::to_chars(reference, reference + 64, value, base).ptr;
        ASSERT_EQ(Unsigned(value, base), std::string(reference, end)) << base;
    }
    std::uint64_t power = 1;
    for (int digits = 0; digits < 20; ++digits, power *= 10) {
        for (std::uint64_t const value : {power - 1, power, power + 1}) {
            ASSERT_EQ(Unsigned(value, 10), std::to_string(value));
            ASSERT_EQ(Decimal32(std::uint32_t(value)), std::to_string(std::uint32_t(value)));
            ASSERT_EQ(Decimal32(-std::int32_t(value)), std::to_string(-std::int32_t(value)));
        }
    }
    EXPECT_EQ(Decimal32(INT32_MIN), "-2147483648");
    for (int base = 2; base <= 64; ++base) {
        for (int i = 0; i < 200; ++i) {
            std::uint64_t const value = random() >> random() % 64;
            std::string const text = Unsigned(value, base);
            if (text[0] != '-') { // the digit 62 reads as a sign there
                Parsed<std::uint64_t> const back = Read<std::uint64_t>(text, base);
                ASSERT_TRUE(back.ok && back.value == value) << text << " in base " << base;
            }
        }
    }
}

TEST(NumberTextTest, FieldsPadOnTheSideOfTheSign)
{
    struct Case
    {
        int line;
        std::string number;
        int base, width;
        char16_t fill;
        char const* text;
    };
    Case const cases[] = {
        {__LINE__, "-5", 10, 6, u'0', "-00005"},    {__LINE__, "-5", 10, 6, u' ', "    -5"},
        {__LINE__, "-5", 10, -6, u'0', "-50000"},   {__LINE__, "-5", 10, 2, u'0', "-5"},
        {__LINE__, "-5", 10, 0, u'*', "-5"},        {__LINE__, "ff", 16, 4, u'0', "00ff"},
        {__LINE__, "-a", 64, 4, u'0', "00-a"}, // a digit, not a sign
        {__LINE__, "12345", 10, -3, u'x', "12345"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        Exact const number(c.number);
        std::vector<char16_t> field(std::size_t(FieldLength(number.Size(), c.width)));
        WriteField(field.data(), number.Data(), number.Size(), c.base, c.width, c.fill);
        EXPECT_EQ(std::string(field.begin(), field.end()), c.text);
    }
    EXPECT_EQ(FieldLength(1, INT_MIN), std::int64_t(INT_MAX) + 1);
}

TEST(NumberTextTest, PointersAreHexadecimal)
{
    auto const write = [](std::uintptr_t address, bool prefix, bool padded) {
        char16_t units[kMaxIntegerUnits];
        void const* const pointer = reinterpret_cast<void const*>(address);
        return Narrow(units, WritePointer(units, pointer, prefix, padded));
    };
    EXPECT_EQ(write(0, true, false), "0x0");
    EXPECT_EQ(write(0xAB0F, false, false), "ab0f");
    EXPECT_EQ(write(0xAB0F, true, true), "0x000000000000ab0f");
    EXPECT_EQ(write(UINTPTR_MAX, false, true), "ffffffffffffffff");
}

TEST(NumberTextTest, IntegerGrammar)
{
    struct Case
    {
        int line;
        std::u16string text;
        int base;
        std::int64_t value;
        bool fitsUnsigned;
    };
    Case const cases[] = {
        {__LINE__, u" \t\u3000-12\u00A0\n", 10, -12, false},
        {__LINE__, u"+7", 10, 7, true},
        {__LINE__, u"-0", 10, 0, false},
        {__LINE__, u"0000000000000000000000000000012", 10, 12, true},
        {__LINE__, u"0x1F", 0, 31, true},
        {__LINE__, u"-0X1f", 16, -31, false},
        {__LINE__, u"017", 0, 15, true},
        {__LINE__, u"0", 0, 0, true},
        {__LINE__, u"0x1", 36, 33 * 36 + 1, true},
        {__LINE__, u"Zz", 36, 35 * 36 + 35, true}, // letters in both cases, up to this base
        {__LINE__, u"zZ", 62, 35 * 62 + 61, true},
        {__LINE__, u"--", 63, -62, false}, // the first one is the sign
        {__LINE__, u"+-_", 64, 62 * 64 + 63, true},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        Exact const text(c.text);
        Parsed<std::int64_t> const number = ToInt64(text.Data(), text.Size(), c.base);
        EXPECT_TRUE(number.ok && number.value == c.value) << number.value;
        Parsed<std::int32_t> const narrow = ToInt32(text.Data(), text.Size(), c.base);
        EXPECT_TRUE(narrow.ok && narrow.value == c.value) << narrow.value;
        Parsed<std::uint64_t> const positive = ToUInt64(text.Data(), text.Size(), c.base);
        EXPECT_EQ(positive.ok, c.fitsUnsigned);
        EXPECT_EQ(positive.value, c.fitsUnsigned ? std::uint64_t(c.value) : 0);
    }
}

TEST(NumberTextTest, WhatIsNoInteger)
{
    struct Case
    {
        int base;
        std::vector<std::u16string> texts;
    };
    Case const cases[] = {
        {10, {u"", u" ", u"-", u"+-1", u"- 1", u"1 2", u"1,000", u"0x10"}},
        // An Arabic digit; units that end in the byte of a digit; the neighbours of the digits.
        {10, {u"123\u0664", u"123\u0134", u"\u8035678", u"12345/789", u"1234567:9"}},
        {0, {u"08", u"0x", u"0x0x1", u"1a"}},
        {16, {u"0x", u"0x-1", u"g"}},
        {2, {u"12", u"0b1"}},
        {63, {u"1_"}},
        {1, {u"0"}}, // no bases
        {65, {u"1"}},
    };
    for (Case const& c : cases) {
        for (std::size_t i = 0; i < c.texts.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "base " << c.base << " text " << i);
            Exact const text(c.texts[i]);
            Parsed<std::int64_t> const number = ToInt64(text.Data(), text.Size(), c.base);
            EXPECT_TRUE(!number.ok && number.value == 0);
            EXPECT_FALSE(ToInt32(text.Data(), text.Size(), c.base).ok);
            EXPECT_FALSE(ToUInt64(text.Data(), text.Size(), c.base).ok);
        }
    }
}

TEST(NumberTextTest, OnlyWhiteSpaceMayStandAround)
{
    std::u16string const space =
        u"\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005"
        u"\u2006\u2007\u2008\u2009\u200A\u2028\u2029\u202F\u205F\u3000";
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        auto const c = static_cast<char16_t>(unit);
        bool const isSpace = space.find(c) != std::u16string::npos;
        char16_t const before[] = {c, u'x'};
        char16_t const after[] = {u'1', c};
        ASSERT_EQ(ToInt32(after, 2).ok, isSpace || (c >= u'0' && c <= u'9')) << unit;
        ASSERT_EQ(ToDouble(after, 2).ok, isSpace || (c >= u'0' && c <= u'9') || c == u'.') << unit;
        ASSERT_FALSE(ToInt32(before, 2).ok || ToDouble(before, 2).ok) << unit;
    }
}

__extension__ using Magnitude = unsigned __int128;

/// The digits of a number that may be wider than 64 bits.
std::string Wide(Magnitude value, int base)
{
    std::string text;
    do {
        text.insert(0, Unsigned(static_cast<std::uint64_t>(value % unsigned(base)), base));
        value /= unsigned(base);
    } while (value != 0);
    return text;
}

template <class Integer>
void CheckRange()
{
    using Limits = std::numeric_limits<Integer>;
    Magnitude const largest = Limits::max();
    for (int const base : {2, 3, 8, 10, 16, 36, 37, 62}) {
        SCOPED_TRACE(base);
        Parsed<Integer> const atMost = Read<Integer>(Wide(largest, base), base);
        EXPECT_TRUE(atMost.ok && atMost.value == Limits::max());
        for (Magnitude const tooLarge : {largest + 1, largest * Magnitude(base), largest << 40}) {
            Parsed<Integer> const above = Read<Integer>(Wide(tooLarge, base), base);
            EXPECT_TRUE(!above.ok && above.value == 0) << Wide(tooLarge, base);
        }
        if (Limits::is_signed) {
            Parsed<Integer> const atLeast = Read<Integer>("-" + Wide(largest + 1, base), base);
            EXPECT_TRUE(atLeast.ok && atLeast.value == Limits::min());
            Parsed<Integer> const below = Read<Integer>("-" + Wide(largest + 2, base), base);
            EXPECT_TRUE(!below.ok && below.value == 0);
        }
    }
}

TEST(NumberTextTest, EveryIntegerTypeEndsAtItsLimits)
{
    CheckRange<short>();
    CheckRange<unsigned short>();
    CheckRange<int>();
    CheckRange<unsigned int>();
    CheckRange<long>();
    CheckRange<unsigned long long>();
    char16_t const tooLarge[] = u"2147483648"; // a way of its own leads to 32 bits
    EXPECT_TRUE(!ToInt32(tooLarge, 10).ok && ToInt32(tooLarge, 10).value == 0);
    EXPECT_EQ(ToInt32(u"-2147483648", 11).value, INT32_MIN);
}

TEST(NumberTextTest, LeftLengthsMeasureTheLongestNumber)
{
    constexpr int kFloat = -1;
    struct Case
    {
        int base;
        std::vector<std::pair<std::string, int>> measured;
    };
    Case const cases[] = {
        {10, {{"12ab", 2}, {" 12", 0}, {"-", 0}, {"+5.", 2}, {"", 0}}},
        {16, {{"0x", 1}, {"-0xfg", 4}}},
        {0, {{"0xg", 1}, {"089", 1}, {"0x1g", 3}}},
        {8, {{"0x8", 1}}},
        {63, {{"--a", 3}}},
        {65, {{"1", 0}}},
        {kFloat, {{"1e", 1}, {"1e+", 1}, {"1e5e", 3}, {"1.e-05,", 6}, {"+2.5E7 ", 6}, {" 1", 0}}},
        {kFloat, {{"1.", 2}, {"1..", 2}, {".", 0}, {"-.5x", 3}, {"-.e5", 0}, {"inf", 0}}},
    };
    for (Case const& c : cases) {
        for (auto const& [ascii, length] : c.measured) {
            Exact const text(ascii);
            EXPECT_EQ(length, c.base == kFloat
                                  ? LeftDoubleLength(text.Data(), text.Size())
                                  : LeftIntegerLength(text.Data(), text.Size(), c.base))
                << ascii << " in base " << c.base;
        }
    }
    EXPECT_EQ(LeftIntegerLength(u"99999999999999999999999 ", -1), 23); // past every type
    EXPECT_EQ(LeftDoubleLength(u"4.2e1", -1), 5);
}

TEST(NumberTextTest, FloatFormats)
{
    struct Case
    {
        int line;
        double value;
        char format;
        int precision;
        char const* text;
        char const* trimmed;
    };
    Case const cases[] = {
        // The forms, their capitals and what is none of them.
        {__LINE__, 1234.5, 'e', 2, "1.23e+03", "1.23e+03"},
        {__LINE__, 1234.5, 'E', 6, "1.234500E+03", "1.2345E+03"},
        {__LINE__, 1234.5, 'f', 3, "1234.500", "1234.5"},
        {__LINE__, 1.0 / 3, '?', 3, "0.333", "0.333"},
        {__LINE__, 1e-7, 'G', 6, "1E-07", "1E-07"},
        // Where 'g' changes its form; its precision; the default one.
        {__LINE__, 0.00001, 'g', 6, "1e-05", "1e-05"},
        {__LINE__, 999999.5, 'g', 6, "1e+06", "1e+06"},
        {__LINE__, 1.5e-300, 'g', 16, "1.5e-300", "1.5e-300"},
        {__LINE__, 12, 'g', 0, "1e+01", "1e+01"},
        {__LINE__, 2, 'f', -1, "2.000000", "2"},
        // Ties go away from zero, also where powers of ten divide.
        {__LINE__, 0.125, 'e', 1, "1.3e-01", "1.3e-01"},
        {__LINE__, 0.5, 'f', 0, "1", "1"},
        {__LINE__, -0.25, 'f', 1, "-0.3", "-0.3"},
        {__LINE__, 1234565, 'g', 6, "1.23457e+06", "1.23457e+06"},
        {__LINE__, 9.5, 'e', 0, "1e+01", "1e+01"},
        {__LINE__, 99.95, 'f', 1, "100.0", "100"}, // 99.9500000000000028...
        // Zero and its sign.
        {__LINE__, 0, 'e', 2, "0.00e+00", "0e+00"},
        {__LINE__, -0.0, 'f', 2, "0.00", "0"},
        {__LINE__, -0.001, 'f', 2, "-0.00", "-0"},
        // No numbers.
        {__LINE__, -kInfinity, 'g', 6, "-inf", "-inf"},
        {__LINE__, kInfinity, 'E', 6, "INF", "INF"},
        {__LINE__, -kNan, 'F', 6, "NAN", "NAN"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(Float(c.value, c.format, c.precision), c.text);
        EXPECT_EQ(Float(c.value, c.format, c.precision, true), c.trimmed);
    }
}

/// The text of a number, rounded by hand out of all its digits.
std::string RoundedByHand(double value, std::chars_format format, int precision)
{
    std::vector<char> all(1600);
    char* const end =
        std::to_chars(all.data(), all.data() + all.size(), value, format, 1100 + precision).ptr;
    std::string const full(all.data(), end);
    std::size_t const point = full.find('.');
    std::string text = "0" + full.substr(0, point + 1 + std::size_t(precision));
    bool up = full[point + 1 + std::size_t(precision)] >= '5';
    for (std::size_t i = text.size(); up && i-- > 0;) {
        if (text[i] != '.') {
            up = text[i] == '9';
            text[i] = up ? '0' : static_cast<char>(text[i] + 1);
        }
    }
    bool const carried = text[0] != '0';
    bool const scientific = format == std::chars_format::scientific;
    text = scientific && carried ? "1." + std::string(std::size_t(precision), '0')
                                 : text.substr(carried ? 0 : 1);
    if (precision == 0) {
        text.pop_back(); // the point
    }
    if (scientific) {
        char exponent[8];
        int const value10 = std::stoi(full.substr(full.find('e') + 1)) + carried;
        std::snprintf(exponent, sizeof(exponent), "e%+03d", value10);
        text += exponent;
    }
    return text;
}

/// Doubles of all kinds: any bits, few bits, short decimals, halves of the last place, neighbours
/// of powers of ten.
double AnyDouble(std::mt19937_64& random)
{
    std::uint64_t const bits = random();
    int const power = static_cast<int>(bits % 633) - 324;
    switch (bits >> 61) {
    case 0:
        return FromBits(random() & 0x000FFFFFFFFFFFFFu);
    case 1:
        return std::ldexp(double(random() % 4096 + 1), power);
    case 2:
        return double(random() % 1000000000) / 1000;
    case 3:
        return (double(random() % 100000) + 0.5) * std::pow(10.0, power % 20);
    case 4:
        return std::nextafter(std::pow(10.0, power), random() % 2 == 0 ? 0.0 : kInfinity);
    case 5:
        return double(random() % 100000 * 10 + 5) * std::pow(10.0, power % 12);
    default:
        return FromBits(random() % 0x7FF0000000000000u);
    }
}

TEST(NumberTextTest, EveryDigitOfADoubleIsExact)
{
    std::mt19937_64 random(302);
    for (int i = 0; i < 20000; ++i) {
        double const value = AnyDouble(random);
        int const precision = static_cast<int>(random() % (i % 50 == 0 ? 150 : 20));
        SCOPED_TRACE(testing::Message() << "bits " << BitsOf(value) << " precision " << precision);
        if (value != 0) {
            ASSERT_EQ(Float(value, 'e', precision),
                      RoundedByHand(value, std::chars_format::scientific, precision));
        }
        ASSERT_EQ(Float(value, 'f', precision),
                  RoundedByHand(value, std::chars_format::fixed, precision));
    }
}

TEST(NumberTextTest, LongFloatTexts)
{
    double const largest = std::numeric_limits<double>::max();
    std::string const text = Float(-largest, 'f', 2000);
    EXPECT_EQ(text, "-" + RoundedByHand(largest, std::chars_format::fixed, 0) + "." +
                        std::string(2000, '0'));
    EXPECT_EQ(Float(-largest, 'f', INT_MAX, true), text.substr(0, 310));
    EXPECT_EQ(Float(5e-324, 'g', INT_MAX).size(), 751u + 6); // all its digits, point, exponent
    EXPECT_KOR_ERROR((FloatText(0.5, 'f', INT_MAX)), StringException,
                     "StringException_AutoGen_0xC83B3D89");
}

TEST(NumberTextTest, FloatGrammar)
{
    struct Case
    {
        int line;
        std::u16string text;
        bool ok;
        double value;
    };
    std::u16string const zeros(40, u'0');
    Case const cases[] = {
        {__LINE__, u" \u2003-12.5e+1\t", true, -125},
        {__LINE__, u"+.5", true, 0.5},
        {__LINE__, u"1.", true, 1},
        {__LINE__, u"1.E5", true, 1e5},
        {__LINE__, u"-0", true, -0.0},
        {__LINE__, u"00000000000000.00000000000", true, 0},
        {__LINE__, zeros + u"12." + zeros + u"5e0", true, 12},
        {__LINE__, u"." + zeros + zeros + u"1e81", true, 1},
        {__LINE__, u"1" + zeros + zeros + u"e-80", true, 1},
        // Names.
        {__LINE__, u"iNf ", true, kInfinity},
        {__LINE__, u"-INF", true, -kInfinity},
        {__LINE__, u" NaN", true, kNan},
        // Too large, too small.
        {__LINE__, u"1.7976931348623158e308", true, 1.7976931348623157e308},
        {__LINE__, u"-1.7976931348623159e308", false, -kInfinity},
        {__LINE__, u"1" + std::u16string(400, u'0'), false, kInfinity},
        {__LINE__, u"1e99999999999999999999", false, kInfinity},
        {__LINE__, u"2.4703282292062328e-324", true, 5e-324},
        {__LINE__, u"12345678901234567890123e-9999999999", false, 0},
        // Ties go to even; a digit far behind decides, too.
        {__LINE__, u"9007199254740993", true, 9007199254740992},
        {__LINE__, u"90071992547409930e-1", true, 9007199254740992},
        {__LINE__, u"9007199254740993." + zeros + u"1", true, 9007199254740994},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        Exact const text(c.text);
        Parsed<double> const number = ToDouble(text.Data(), text.Size());
        EXPECT_EQ(number.ok, c.ok);
        bool const bothNan = std::isnan(number.value) && std::isnan(c.value);
        EXPECT_TRUE(bothNan || BitsOf(number.value) == BitsOf(c.value)) << number.value;
    }
}

TEST(NumberTextTest, WhatIsNoFloat)
{
    // At last the neighbours of the digits and a unit that ends in the byte of one.
    std::vector<std::u16string> const texts = {
        u"",         u".",     u"-.e1", u"1e",        u"1e+",       u"1e 5",
        u"- 1",      u"1.2.3", u"1,5",  u"0x1p3",     u"-nan",      u"+nan",
        u"infinity", u"in",    u"1d5",  u"1.234567/", u"12345678:", u"1234567\u0138"};
    for (std::u16string const& units : texts) {
        Exact const text(units);
        Parsed<double> const number = ToDouble(text.Data(), text.Size());
        EXPECT_TRUE(!number.ok && number.value == 0) << Narrow(text.Data(), text.Size());
    }
}

template <class Number, class Reader>
void CheckAgainstStandard(std::string const& ascii, Reader reader)
{
    Number expected = 0;
    auto const status = std::from_chars(ascii.data(), ascii.data() + ascii.size(), expected).ec;
    Exact const text(ascii);
    Parsed<Number> const number = reader(text.Data(), text.Size());
    ASSERT_EQ(number.ok, status == std::errc()) << ascii;
    if (number.ok) {
        ASSERT_EQ(number.value, expected) << ascii;
    }
}

TEST(NumberTextTest, FloatsReadAsTheNearestValue)
{
    std::mt19937_64 random(303);
    for (int i = 0; i < 20000; ++i) {
        double const value = AnyDouble(random);
        std::string const text = Float(value, "eg"[i % 2], static_cast<int>(random() % 25));
        std::string const integer = std::to_string(random() >> random() % 64) + "e" +
                                    std::to_string(static_cast<int>(random() % 660) - 340);
        auto const narrow = static_cast<float>(value);
        double const between = (double(narrow) + double(std::nextafter(narrow, 0.0f))) / 2;
        std::string const tie = std::isfinite(between) ? Float(between, 'e', 120) : "0";
        for (std::string const& ascii : {text, integer, tie, Float(value, 'e', 16)}) {
            CheckAgainstStandard<double>(ascii, ToDouble);
            CheckAgainstStandard<float>(ascii, ToFloat);
        }
    }
    EXPECT_TRUE(std::isinf(ToFloat(u"1e39", 4).value) && !ToFloat(u"1e39", 4).ok);
    // Through a double this one would be rounded twice.
    EXPECT_EQ(ToFloat(u"1.00000017881393432617187499", 28).value, 1.00000011920928955078125f);
}

} // namespace
