#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/tests/support/Threads.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif
#include <pthread.h>

namespace {

constexpr int kTexts = 20;

/// Makes that many texts whose blocks have one size, then frees them.
void MakeTexts(int blockBytes)
{
    std::array<TString, kTexts> texts;
    for (TString& text : texts) {
        text.resize(NoKeptTextBlocks::UnitsOfBlock(blockBytes));
    }
}

TEST(FreedTextBlocksTest, AThreadKeepsSomeOfEachSize)
{
    if (!AllocationCounter::IsAvailable()) {
        GTEST_SKIP() << "allocations cannot be counted in this build";
    }
    for (int bytes = 48; bytes <= NoKeptTextBlocks::kLargestKeptBytes + 16; bytes += 16) {
        bool const isKept = bytes <= NoKeptTextBlocks::kLargestKeptBytes;
        MakeTexts(bytes);
        AllocationCounter const counter;
        MakeTexts(bytes);
        EXPECT_EQ(counter.Count(), kTexts - (isKept ? NoKeptTextBlocks::kKeptOfSize : 0)) << bytes;
    }
}

TEST(FreedTextBlocksTest, BlocksHoldWhatTextsNeed)
{
    std::mt19937 random(1);
    std::vector<std::pair<TString, std::u16string>> texts(100);
    for (int i = 0; i != 100000; ++i) {
        auto& [text, expected] = texts[random() % texts.size()];
        ASSERT_EQ(text, expected.c_str());
        expected.assign(random() % 270, static_cast<char16_t>(u'a' + i % 26));
        switch (i % 3) {
        case 0:
            text = TString(expected.data(), static_cast<int>(expected.size()));
            break;
        case 1:
            text.assign(expected.data(), static_cast<int>(expected.size()));
            break;
        default:
            text.clear();
            for (char16_t const c : expected) {
                text.append(c);
            }
        }
    }
}

#if defined(__GLIBC__)

extern "C" void DeleteText(void* text)
{
    delete static_cast<TString*>(text);
}

TEST(FreedTextBlocksTest, AllAreFreedWhenTheThreadEnds)
{
    if (!AllocationCounter::IsAvailable()) {
        GTEST_SKIP() << "the allocator of this build has no statistics";
    }
    pthread_key_t key; // its destructor is called after that of a key made before
    ASSERT_EQ(::pthread_key_create(&key, &DeleteText), 0);
    auto const run = [key](unsigned) {
        thread_local TString const ofThread(u"freed before the blocks are");
        ::pthread_setspecific(key, new TString(u'x', 100)); // freed after them
        for (int bytes = 48; bytes <= NoKeptTextBlocks::kLargestKeptBytes; bytes += 32) {
            MakeTexts(bytes);
        }
    };
    OnThreads(8, run);
    std::size_t const before = ::mallinfo2().uordblks;
    for (int i = 0; i != 50; ++i) {
        OnThreads(8, run);
    }
    EXPECT_LT(::mallinfo2().uordblks, before + 400 * 100); // a text alone takes more
    ::pthread_key_delete(key);
}

#endif

} // namespace
