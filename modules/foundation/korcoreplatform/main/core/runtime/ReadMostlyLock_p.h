/// A lock for what is read all the time and seldom changed: readers write to no shared memory.

#pragma once

#include "korsys/main/thread/TReadWriteLock.h"

#include <atomic>
#include <cstddef>

/// Each thread has a slot, a cache line of its own, in which it says under which lock it reads. A
/// writer announces itself in the lock and waits until no slot names it. Meanwhile, new readers
/// wait at an ordinary lock. Threads without a slot always use that one.
///
///     ReadMostlyLock::ReadGuard const reading(m_lock);
///
/// Requires: while a thread reads, it takes no other lock of this kind. So nothing foreign, such as
/// the destructor of a stored object, may run under a guard.
/// Thread safety: safe from any thread.
class ReadMostlyLock
{
    struct alignas(64) Slot
    {
        std::atomic<ReadMostlyLock const*> lock{nullptr}; ///< Under which the thread reads.
        std::atomic<bool> isTaken{false};                 ///< By a thread that has not ended.
    };

public:
    ReadMostlyLock() = default;
    ReadMostlyLock(ReadMostlyLock const&) = delete;
    ReadMostlyLock& operator=(ReadMostlyLock const&) = delete;

    static void ForgetOthers();

    class ReadGuard
    {
    public:
        explicit ReadGuard(ReadMostlyLock& lock)
            : m_lock(lock), m_slot(t_slot != nullptr ? t_slot : TakeSlot())
        {
            // Both sequentially consistent, as the writer's store and load in the other order:
            // at least one of the two sees what the other stored.
            m_slot->lock.store(&lock, std::memory_order_seq_cst);
            if (lock.m_isWriting.load(std::memory_order_seq_cst) || m_slot == &s_noSlot) {
                WaitForWriter();
            }
        }
        ReadGuard(ReadGuard const&) = delete;
        ReadGuard& operator=(ReadGuard const&) = delete;
        ~ReadGuard()
        {
            if (m_slot != nullptr) {
                // Pairs with the writer's load: what was read is read.
                m_slot->lock.store(nullptr, std::memory_order_release);
            } else {
                m_lock.m_mutex.unlock_shared();
            }
        }

    private:
        void WaitForWriter();

        ReadMostlyLock& m_lock;
        Slot* m_slot; ///< Null: the mutex is held instead.
    };

    class WriteGuard
    {
    public:
        explicit WriteGuard(ReadMostlyLock& lock);
        WriteGuard(WriteGuard const&) = delete;
        WriteGuard& operator=(WriteGuard const&) = delete;
        ~WriteGuard();

    private:
        ReadMostlyLock& m_lock;
    };

private:
    class SlotOfThread;

    static constexpr std::size_t kSlots = 128;

    static Slot* TakeSlot();

    static Slot s_slots[kSlots];
    static std::atomic<std::size_t> s_usedSlots; ///< Those from this one on were never taken.
    static Slot s_noSlot; ///< Of threads that came when all were taken, or that are ending.
    [[gnu::tls_model("initial-exec")]] inline static thread_local Slot* t_slot =
        nullptr; ///< Null until the thread reads.

    std::atomic<bool> m_isWriting{false};
    TReadWriteLock m_mutex; ///< Held by the writer.
};
