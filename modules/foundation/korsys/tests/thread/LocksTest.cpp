#include "korsys/main/thread/InitOnce.h"
#include "korsys/main/thread/TReadWriteLock.h"
#include "korsys/main/thread/TRecursiveMutex.h"
#include "korsys/tests/support/Threads.h"

#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>

namespace {

/// Whether another thread could take the lock through `Guard` now.
template <template <class> class Guard, class Lock>
bool IsFree(Lock& lock)
{
    auto const attempt = [&lock] { return Guard<Lock>(lock, std::try_to_lock).owns_lock(); };
    return std::async(std::launch::async, attempt).get();
}

TEST(LocksTest, RecursiveMutexIsFreeAfterAsManyUnlocksAsLocks)
{
    TRecursiveMutex mutex;
    mutex.Lock();
    mutex.lock();
    EXPECT_TRUE(mutex.TryLock());
    for (int left = 3; left > 0; --left) {
        EXPECT_FALSE(IsFree<std::unique_lock>(mutex)) << left;
        left == 2 ? mutex.unlock() : mutex.Unlock();
    }
    EXPECT_TRUE(IsFree<std::unique_lock>(mutex));
}

TEST(LocksTest, ReadersShareAndAWriterIsAlone)
{
    TReadWriteLock lock;
    {
        std::shared_lock const reader(lock);
        EXPECT_TRUE(IsFree<std::shared_lock>(lock));
        EXPECT_FALSE(IsFree<std::unique_lock>(lock));
    }
    {
        std::lock_guard const writer(lock);
        EXPECT_FALSE(IsFree<std::shared_lock>(lock));
        EXPECT_FALSE(IsFree<std::unique_lock>(lock));
    }
    EXPECT_TRUE(IsFree<std::unique_lock>(lock));
}

TEST(LocksTest, InitOnceRunsUntilOneSucceedsAndShowsAllWhatItDid)
{
    for (int round = 0; round < 50; ++round) {
        InitOnce once;
        EXPECT_THROW(once.Run([] { throw std::runtime_error("at first"); }), std::runtime_error);
        int runs = 0; // plain: the object itself must order its users
        OnThreads(4, [&](unsigned) {
            once.Run([&] { ++runs; });
            EXPECT_EQ(runs, 1);
        });
    }
}

} // namespace
