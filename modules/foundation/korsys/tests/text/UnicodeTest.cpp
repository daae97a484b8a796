#include "korsys/main/text/Unicode.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

std::string Normalized(std::string bytes)
{
    bytes.resize(Unicode::normalizeLineEndings(bytes.data(), bytes.size()));
    return bytes;
}

TEST(UnicodeTest, TurnsOnlyCrLfIntoLf)
{
    struct Case
    {
        int line;
        std::string bytes;
        std::string result;
    };
    Case const cases[] = {
        {__LINE__, "", ""},
        {__LINE__, "\r\n", "\n"},
        {__LINE__, "\r", "\r"},
        {__LINE__, "a\r\nb\r\n", "a\nb\n"},
        {__LINE__, "a\rb\nc", "a\rb\nc"},
        {__LINE__, "a\r\r\nb", "a\r\nb"}, // what comes out is not looked at again
        {__LINE__, "\n\r\n\r", "\n\n\r"},
        {__LINE__, std::string("\0\r\n\0", 4), std::string("\0\n\0", 3)},
        {__LINE__, "\xC3\xA4\r\n", "\xC3\xA4\n"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(Normalized(c.bytes), c.result);
    }
    EXPECT_EQ(Unicode::normalizeLineEndings(nullptr, 0), 0u);
}

TEST(UnicodeTest, AgreesWithTheRuleByteByByte)
{
    std::mt19937 random(41); // fixed seed: a failure can be run again
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 40, '\0');
        for (char& byte : bytes) {
            byte = "\r\nab"[random() % 4];
        }
        std::string expected;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (bytes.compare(i, 2, "\r\n") != 0) {
                expected += bytes[i];
            }
        }
        ASSERT_EQ(Normalized(bytes), expected) << round;
    }
}

} // namespace
