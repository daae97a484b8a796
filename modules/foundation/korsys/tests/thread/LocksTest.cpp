#include "korsys/main/thread/InitOnce.h"
#include "korsys/main/thread/TReadWriteLock.h"
#include "korsys/main/thread/TRecursiveMutex.h"

#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

/// Whether another thread could take the lock through `Guard` now.
template <template <class> class Guard, class Lock>
bool IsFree(Lock& lock)
{
    return std::async(std::launch::async,
                      [&lock] { return Guard<Lock>(lock, std::try_to_lock).owns_lock(); })
        .get();
}

TEST(LocksTest, RecursiveMutexIsFreeAfterAsManyUnlocksAsLocks)
{
    TRecursiveMutex mutex;
    mutex.Lock();
    {
        std::lock_guard const again(mutex);
        EXPECT_TRUE(mutex.TryLock());
        mutex.Unlock();
        EXPECT_FALSE(IsFree<std::unique_lock>(mutex));
    }
    EXPECT_FALSE(IsFree<std::unique_lock>(mutex));
    mutex.Unlock();
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
        std::vector<std::thread> threads(4);
        for (std::thread& thread : threads) {
            thread = std::thread([&] {
                once.Run([&] { ++runs; });
                EXPECT_EQ(runs, 1);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
}

} // namespace
