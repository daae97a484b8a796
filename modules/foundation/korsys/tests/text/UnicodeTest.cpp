#include "korsys/main/text/Unicode.h"

#include "korsys/tests/support/TextPeers.h"

#include <gtest/gtest.h>

namespace {

TEST(UnicodeTest, OnlyCrLfBecomesLf)
{
    EXPECT_EQ(Unicode::normalizeLineEndings(nullptr, 0), 0u);
    std::mt19937 random(41); // fixed seed: a failure can be run again
    for (std::size_t round = 0; round < 2000; ++round) {
        std::string bytes =
            IcuEncode(RandomText(random, round % 40, std::u16string(u"\r\n\0a", 4)));
        std::string expected;
        for (std::size_t i = 0; i < bytes.size(); ++i) { // what comes out is not looked at again
            if (bytes.compare(i, 2, "\r\n") != 0) {
                expected += bytes[i];
            }
        }
        bytes.resize(Unicode::normalizeLineEndings(bytes.data(), bytes.size()));
        ASSERT_EQ(bytes, expected) << round;
    }
}

} // namespace
