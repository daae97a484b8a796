#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/tests/support/Threads.h"

#include <pthread.h>

#if defined(__GLIBC_PREREQ)
#if __GLIBC_PREREQ(2, 33)

#include <malloc.h>

namespace {

constexpr int kTexts = 20;

/// Makes that many texts whose blocks have one size, then frees them.
void MakeTexts(std::size_t blockBytes)
{
    std::array<TString, kTexts> texts;
    for (TString& text : texts) {
        text.resize(NoKeptTextBlocks::UnitsOfBlock(blockBytes));
        auto* const block = reinterpret_cast<TLongStringHeader*>(text.data()) - 1;
        EXPECT_GE(::malloc_usable_size(block), blockBytes);
    }
}

TEST(FreedTextBlocksTest, AThreadKeepsSomeOfEachSize)
{
    if (!AllocationCounter::IsAvailable()) {
        GTEST_SKIP() << "allocations cannot be counted in this build";
    }
    for (std::size_t bytes = 48; bytes <= NoKeptTextBlocks::kLargestKeptBytes + 16; bytes += 16) {
        bool const isKept = bytes <= NoKeptTextBlocks::kLargestKeptBytes;
        MakeTexts(bytes);
        AllocationCounter const counter;
        MakeTexts(bytes);
        EXPECT_EQ(counter.Count(), kTexts - (isKept ? NoKeptTextBlocks::kKeptOfSize : 0)) << bytes;
    }
}

std::atomic<int> s_allocatedAtTheEnd{0};

extern "C" void DeleteText(void* text)
{
    delete static_cast<TString*>(text);
    AllocationCounter const counter;
    TString const another(u'x', 100);
    s_allocatedAtTheEnd += counter.Count();
}

TEST(FreedTextBlocksTest, AllAreFreedWhenTheThreadEnds)
{
    if (!AllocationCounter::IsAvailable()) {
        GTEST_SKIP() << "the allocator of this build has no statistics";
    }
    pthread_key_t key;
    ASSERT_EQ(::pthread_key_create(&key, &DeleteText), 0);
    auto const run = [key](unsigned) {
        thread_local TString const ofThread(u"freed before the blocks are");
        ::pthread_setspecific(key, new TString(u'x', 100)); // freed after them
        for (std::size_t bytes = 48; bytes <= NoKeptTextBlocks::kLargestKeptBytes; bytes += 32) {
            MakeTexts(bytes);
        }
    };
    constexpr int kThreads = 8;
    constexpr int kRuns = 50;
    OnThreads(kThreads, run);
    std::size_t const before = ::mallinfo2().uordblks;
    for (int i = 0; i != kRuns; ++i) {
        OnThreads(kThreads, run);
    }
    constexpr int kLess = 100; // than the smallest that a thread could leave behind
    EXPECT_LT(::mallinfo2().uordblks, before + kRuns * kThreads * kLess);
    EXPECT_EQ(s_allocatedAtTheEnd, (1 + kRuns) * kThreads); // nothing was kept there any more
    ::pthread_key_delete(key);
}

} // namespace

#endif
#endif
