#include "korsys/main/text/THash.h"

#include "korsys/main/text/THash_p.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace {

/// Programs keep hashes: whatever instructions a processor has, it gives the algorithm's own.
TEST(THashTest, EveryLengthAndPlaceHashesAsXxh3Does)
{
    std::mt19937 random(3); // fixed seed: a failure can be run again
    std::string bytes(4200, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    for (std::size_t n = 0; n < 4100; n += n < 1100 ? 1 : 37) {
        char const* const at = bytes.data() + n % 64;
        ASSERT_EQ(THash(at, n), XXH3_64bits(at, n)) << n;
        ASSERT_EQ(THash32(at, n, 0xDEADBEEF),
                  static_cast<std::uint32_t>(XXH3_64bits_withSeed(at, n, 0xDEADBEEF)))
            << n;
        for (HashKernels::Hash* const hash : {&HashKernels::Plain, &HashKernels::Best}) {
            ASSERT_EQ(hash(at, n, 7), XXH3_64bits_withSeed(at, n, 7)) << n;
        }
    }
}

} // namespace
