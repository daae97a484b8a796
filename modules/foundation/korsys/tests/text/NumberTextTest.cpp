#include "korsys/main/text/NumberText_p.h"

#include "korsys/tests/support/KorTest.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace NumberText;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Calls a reader on a block of exactly the text's size, so that the address sanitizer sees a read
/// outside.
template <class Reader, class Text, class... Base>
auto Read(Reader reader, Text const& text, Base... base)
{
    std::vector<char16_t> const units(text.begin(), text.end());
    return reader(units.data(), static_cast<int>(units.size()), base...);
}

template <class Number, class Reader, class... Base>
void CheckAgainstStandard(std::string const& ascii, Reader reader, Base... base)
{
    Number expected = 0;
    auto const* const end = ascii.data() + ascii.size();
    auto const status = std::from_chars(ascii.data(), end, expected, base...).ec;
    Parsed<Number> const number = Read(reader, ascii, base...);
    ASSERT_EQ(number.ok, status == std::errc()) << ascii;
    ASSERT_TRUE(number.value == expected || (!number.ok && sizeof...(base) == 0)) << ascii;
}

template <class Number, class... Format>
std::string Standard(Number value, Format... format)
{
    char text[2000];
    return std::string(text, std::to_chars(text, text + 2000, value, format...).ptr);
}

/// What a function writes, narrowed.
template <class Value, class Result, class... Format>
std::string Written(Result (*write)(char16_t*, Value, Format...), Value value, Format... format)
{
    std::vector<char16_t> units(sizeof...(format) == 0 ? kMaxDecimal32Units : kMaxIntegerUnits);
    auto const length = write(units.data(), value, format...);
    return std::string(units.begin(), units.begin() + length);
}

std::string Unsigned(std::uint64_t value, int base)
{
    return Written(WriteUnsigned, value, base);
}

std::string Float(double value, char format, int precision, bool trim = false)
{
    FloatText const text(value, format, precision, trim);
    return std::string(text.Data(), text.Data() + text.Length());
}

TEST(NumberTextTest, IntegersOfEveryLengthReadBackWhatWasWritten)
{
    std::mt19937_64 random(301); // fixed seed: a failure can be run again
    std::vector<std::uint64_t> values = {1u << 31};
    for (std::uint64_t power = 1; values.size() < 3 * 20; power *= 10) {
        values.insert(values.end(), {power - 1, power, power + 1});
    }
    while (values.size() < 20000) {
        values.push_back(random() >> random() % 64);
    }
    int base = 2;
    for (std::uint64_t const value : values) {
        ASSERT_EQ(Unsigned(value, 10), std::to_string(value));
        for (auto const narrow : {std::uint32_t(value), -std::uint32_t(value)}) {
            ASSERT_EQ(Written<std::uint32_t>(WriteDecimal, narrow), std::to_string(narrow));
            auto const number = static_cast<std::int32_t>(narrow);
            ASSERT_EQ(Written<std::int32_t>(WriteDecimal, number), std::to_string(number));
        }
        std::string const text = Unsigned(value, base);
        if (base <= 36) {
            ASSERT_EQ(text, Standard(value, base)) << base;
        }
        if (text[0] != '-') { // the digit 62 reads as a sign there
            Parsed<std::uint64_t> const back = Read(ToUInt64, text, base);
            ASSERT_TRUE(back.ok && back.value == value) << text << " in base " << base;
        }
        base = base == 64 ? 2 : base + 1;
    }
    EXPECT_EQ(Written(WriteSigned, INT64_MIN, 10), "-9223372036854775808");
    EXPECT_EQ(Written(WriteSigned, std::int64_t(-1), 8), "1777777777777777777777");
    EXPECT_EQ(Unsigned(62 * 63 + 61, 63), "-Z");
    EXPECT_EQ(Unsigned(63 * 64 + 62, 64), "_-");
}

TEST(NumberTextTest, FieldsPadOnTheSideOfTheSignAndPointersAfterTheirPrefix)
{
    auto const field = [](std::u16string const& number, int base, int width, char16_t fill) {
        int const length = static_cast<int>(number.size());
        std::vector<char16_t> units(std::size_t(FieldLength(length, width)));
        WriteField(units.data(), number.data(), length, base, width, fill);
        return std::string(units.begin(), units.end());
    };
    EXPECT_EQ(field(u"-5", 10, 6, u'0'), "-00005");
    EXPECT_EQ(field(u"-5", 10, 6, u' '), "    -5");
    EXPECT_EQ(field(u"-5", 10, -6, u'0'), "-50000");
    EXPECT_EQ(field(u"-a", 64, 4, u'0'), "00-a"); // a digit, not a sign
    EXPECT_EQ(field(u"12345", 10, -3, u'x'), "12345");
    EXPECT_EQ(FieldLength(1, INT_MIN), std::int64_t(INT_MAX) + 1);

    auto const pointer = [](std::uintptr_t address, bool prefix, bool padded) {
        return Written(WritePointer, reinterpret_cast<void const*>(address), prefix, padded);
    };
    EXPECT_EQ(pointer(0, true, false), "0x0");
    EXPECT_EQ(pointer(0xAB0F, true, true), "0x000000000000ab0f");
    EXPECT_EQ(pointer(UINTPTR_MAX, false, true), "ffffffffffffffff");
}

TEST(NumberTextTest, IntegerGrammar)
{
    // In bases 63 and 64 a leading "-" is the sign.
    std::vector<std::tuple<std::u16string, int, std::optional<int>>> cases = {
        {u" \t\u3000-12\u00A0\n", 10, -12},
        {u"000000000000000000000012", 10, 12},
        {u"--", 63, -62},
        {u"+-_", 64, 62 * 64 + 63},
        {u"1_", 63, {}},
        {u"0", 1, {}},
        {u"1", 65, {}}};
    // What is no number: an Arabic digit, units that end in the byte of a digit, the neighbours of
    // the digits.
    for (char16_t const* text : {u"+-1", u"1 2", u"1x1", u"0x0x1", u"0x-1", u"123\u0664",
                                 u"123\u0134", u"\u8035678", u"12345/789", u"1234567:9"}) {
        cases.emplace_back(text, 16, std::nullopt);
        cases.emplace_back(text, 10, std::nullopt);
    }
    for (auto const& [text, base, value] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        auto const check = [&expected = value](auto number, bool fits) {
            EXPECT_EQ(number.ok, expected && fits);
            EXPECT_EQ(std::int64_t(number.value), fits ? expected.value_or(0) : 0);
        };
        check(Read(ToInt64, text, base), true);
        check(Read(ToInt32, text, base), true);
        check(Read(ToUInt64, text, base), value > 0);
    }
}

/// The limits with every digit in place of their last and behind it, and all round numbers of
/// their length and the next.
template <class Integer>
void CheckRange(Parsed<Integer> (*reader)(char16_t const*, int, int) = ToInteger<Integer>)
{
    using Limits = std::numeric_limits<Integer>;
    for (int base = 2; base <= 36; ++base) {
        for (Integer const limit : {Limits::max(), Limits::min()}) {
            std::string const text = Standard(limit, base);
            std::string const start = text.substr(0, text.size() - 1);
            for (int digit = 0; digit < base; ++digit) {
                std::string const last = Unsigned(static_cast<std::uint64_t>(digit), base);
                std::string const round = last + std::string(start.size(), '0');
                for (auto const& near : {start + last, text + last, round, round + '0'}) {
                    CheckAgainstStandard<Integer>(near, reader, base);
                }
            }
        }
    }
}

TEST(NumberTextTest, EveryIntegerTypeEndsAtItsLimits)
{
    CheckRange<short>();
    CheckRange<int>(ToInt32); // a way of its own leads to 32 bits
    CheckRange<unsigned int>();
    CheckRange<long>();
    CheckRange<unsigned long long>();
}

TEST(NumberTextTest, LeftLengthsMeasureTheLongestNumber)
{
    std::tuple<std::string, int, int> const integers[] = {
        {"12ab", 10, 2}, {" 12", 10, 0}, {"-", 10, 0},     {"+5.", 10, 2},
        {"", 10, 0},     {"0x", 16, 1},  {"-0xfg", 16, 4}, {"0xg", 0, 1},
        {"089", 0, 1},   {"0x1g", 0, 3}, {"--a", 63, 3},   {"1", 65, 0}};
    for (auto const& [text, base, length] : integers) {
        EXPECT_EQ(Read(LeftIntegerLength, text, base), length) << text << " in base " << base;
    }
    std::pair<std::string, int> const floats[] = {
        {"1e", 1}, {"1e+", 1}, {"1e5e", 3}, {"1.e-05,", 6}, {"+2.5E7 ", 6}, {" 1", 0},
        {"1.", 2}, {"1..", 2}, {".", 0},    {"-.5x", 3},    {"-.e5", 0},    {"inf", 0}};
    for (auto const& [text, length] : floats) {
        EXPECT_EQ(Read(LeftDoubleLength, text), length) << text;
    }
    EXPECT_EQ(LeftIntegerLength(u"99999999999999999999999 ", -1), 23); // past every type
    EXPECT_EQ(LeftDoubleLength(u"4.2e1", -1), 5);
}

TEST(NumberTextTest, FloatFormats)
{
    std::tuple<double, char, int, char const*, char const*> const cases[] = {
        // The forms, their capitals and what is none of them.
        {1234.5, 'E', 6, "1.234500E+03", "1.2345E+03"},
        {1.0 / 3, '?', 3, "0.333", "0.333"},
        {1e-7, 'G', 6, "1E-07", "1E-07"},
        // Where 'g' changes its form; its precision; the default one.
        {0.00001, 'g', 6, "1e-05", "1e-05"},
        {0.0001, 'g', 6, "0.0001", "0.0001"},
        {999999.5, 'g', 6, "1e+06", "1e+06"},
        {12, 'g', 0, "1e+01", "1e+01"},
        {2, 'f', -1, "2.000000", "2"},
        // Ties go away from zero.
        {1234565, 'g', 6, "1.23457e+06", "1.23457e+06"},
        // Zero and its sign; no numbers.
        {-0.0, 'f', 2, "0.00", "0"},
        {-0.001, 'f', 2, "-0.00", "-0"},
        {-kInfinity, 'g', 6, "-inf", "-inf"},
        {kInfinity, 'E', 6, "INF", "INF"},
        {-kNan, 'F', 6, "NAN", "NAN"},
    };
    for (auto const& [value, format, precision, text, trimmed] : cases) {
        EXPECT_EQ(Float(value, format, precision), text);
        EXPECT_EQ(Float(value, format, precision, true), trimmed) << text;
    }
}

/// The text of a number by the standard library, which takes ties to even digits: those that it
/// leaves below grow by one.
std::string Reference(double value, std::chars_format format, int precision)
{
    std::string const all = Standard(value, format, 1250);
    std::string text = Standard(value, format, precision);
    std::size_t const cut = all.find('.') + 1 + std::size_t(precision);
    std::size_t const last = precision == 0 ? cut - 2 : cut - 1;
    bool const isTie = all[cut] == '5' && all.find_first_not_of('0', cut + 1) == all.find('e');
    text[last] = static_cast<char>(text[last] + (isTie && all[last] % 2 == 0));
    return text;
}

/// Doubles of all kinds: any bits, few bits, short decimals, halves of the last place, neighbours
/// of powers of ten.
double AnyDouble(std::mt19937_64& random)
{
    std::uint64_t const bits = random();
    int const power = static_cast<int>(bits % 633) - 324;
    double value = 0;
    switch (bits >> 61) {
    case 0:
        return std::ldexp(double(random() % 4096 + 1), power);
    case 1:
        return double(random() % 1000000000) / 1000;
    case 2:
        return (double(random() % 100000) + 0.5) * std::pow(10.0, power % 20);
    case 3:
        return std::nextafter(std::pow(10.0, power), random() % 2 == 0 ? 0.0 : kInfinity);
    default:
        std::uint64_t const any = random() % 0x7FF0000000000000u >> (bits & 1) * 11;
        std::memcpy(&value, &any, sizeof(value));
        return value;
    }
}

TEST(NumberTextTest, EveryDigitOfADoubleIsExact)
{
    std::mt19937_64 random(302);
    for (int i = 0; i < 20000; ++i) {
        double const value = AnyDouble(random);
        int const precision = static_cast<int>(random() % (i % 50 == 0 ? 150 : 20));
        SCOPED_TRACE(testing::Message() << value << " precision " << precision);
        ASSERT_EQ(Float(value, 'e', precision),
                  Reference(value, std::chars_format::scientific, precision));
        ASSERT_EQ(Float(value, 'f', precision),
                  Reference(value, std::chars_format::fixed, precision));
    }
    double const largest = std::numeric_limits<double>::max();
    std::string const text = Float(-largest, 'f', 2000);
    EXPECT_EQ(text,
              "-" + Reference(largest, std::chars_format::fixed, 0) + "." + std::string(2000, '0'));
    EXPECT_EQ(Float(-largest, 'f', INT_MAX, true), text.substr(0, 310));
    EXPECT_EQ(Float(5e-324, 'g', INT_MAX).size(), 751u + 6); // all its digits, point, exponent
    EXPECT_KOR_ERROR((FloatText(0.5, 'f', INT_MAX)), StringException,
                     "StringException_AutoGen_0xC83B3D89");
}

TEST(NumberTextTest, FloatGrammar)
{
    std::u16string const zeros(40, u'0');
    // Behind the forms: what is too large or too small; ties go to even, a digit far behind
    // decides.
    std::tuple<std::u16string, double, bool> const cases[] = {
        {u" \u2003-12.5e+1\t", -125, true},
        {u"1.E5", 1e5, true},
        {u"-0", -0.0, true},
        {u"00000000000000.00000000000", 0, true},
        {zeros + u"12." + zeros + u"5e0", 12, true},
        {u"1" + zeros + zeros + u"e-80", 1, true},
        {u"iNf ", kInfinity, true},
        {u" NaN", kNan, true},
        {u"1.7976931348623158e308", 1.7976931348623157e308, true},
        {u"-1.7976931348623159e308", -kInfinity, false},
        {u"1" + std::u16string(400, u'0'), kInfinity, false},
        {u"1e99999999999999999999", kInfinity, false},
        {u"2.4703282292062328e-324", 5e-324, true},
        {u"12345678901234567890123e-9999999999", 0, false},
        {u"9007199254740993." + zeros + u"1", 9007199254740994, true}};
    for (auto const& [text, value, ok] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        Parsed<double> const number = Read(ToDouble, text);
        EXPECT_EQ(number.ok, ok);
        EXPECT_EQ(std::signbit(number.value), std::signbit(value));
        EXPECT_TRUE(number.value == value || (std::isnan(number.value) && std::isnan(value)));
    }
    // What is no number; at last the neighbours of the digits and a unit that ends in the byte of
    // one.
    for (std::u16string const text :
         {u"", u".", u"-.e1", u"1e", u"1e+", u"1e 5", u"- 1", u"1.2.3", u"-nan", u"+nan",
          u"infinity", u"in", u"1d5", u"1.234567/", u"12345678:", u"1234567\u0138"}) {
        Parsed<double> const number = Read(ToDouble, text);
        EXPECT_TRUE(!number.ok && number.value == 0) << testing::PrintToString(text);
    }
    EXPECT_TRUE(std::isinf(ToFloat(u"1e39", 4).value) && !ToFloat(u"1e39", 4).ok);
    // Through a double this one would be rounded twice.
    EXPECT_EQ(ToFloat(u"1.00000017881393432617187499", 28).value, 1.00000011920928955078125f);
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
}

} // namespace
