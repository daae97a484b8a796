#include "korcoreplatform/main/core/runtime/ReadMostlyLock_p.h"

#include <thread>

#include <pthread.h>

ReadMostlyLock::Slot ReadMostlyLock::s_slots[kSlots];
std::atomic<std::size_t> ReadMostlyLock::s_usedSlots{0};
ReadMostlyLock::Slot ReadMostlyLock::s_noSlot;

/// Gives the slot back when the thread ends. What reads even later goes without.
class ReadMostlyLock::SlotOfThread
{
public:
    SlotOfThread()
    {
        for (std::size_t i = 0; i < kSlots; ++i) {
            // Pairs with the store of the thread that had it.
            if (!s_slots[i].isTaken.exchange(true, std::memory_order_acq_rel)) {
                m_slot = &s_slots[i];
                CountAsUsed(i + 1);
                break;
            }
        }
        t_slot = m_slot != nullptr ? m_slot : &s_noSlot;
    }
    SlotOfThread(SlotOfThread const&) = delete;
    SlotOfThread& operator=(SlotOfThread const&) = delete;
    ~SlotOfThread()
    {
        t_slot = &s_noSlot;
        if (m_slot != nullptr) {
            m_slot->isTaken.store(false, std::memory_order_release);
        }
    }

private:
    /// Sequentially consistent: a writer that the reader does not see looks at the slot.
    static void CountAsUsed(std::size_t count)
    {
        std::size_t used = s_usedSlots.load(std::memory_order_seq_cst);
        while (used < count &&
               !s_usedSlots.compare_exchange_weak(used, count, std::memory_order_seq_cst)) {}
    }

    Slot* m_slot = nullptr; ///< Null when all were taken.
};

/// In a child made by `fork`: the threads that read are not there.
void ReadMostlyLock::ForgetOthers()
{
    for (Slot& slot : s_slots) {
        if (&slot != t_slot) {
            slot.lock.store(nullptr, std::memory_order_relaxed);
        }
    }
}

namespace {

[[maybe_unused]] int const s_atFork =
    ::pthread_atfork(nullptr, nullptr, [] { ReadMostlyLock::ForgetOthers(); });

} // namespace

ReadMostlyLock::Slot* ReadMostlyLock::TakeSlot()
{
    static thread_local SlotOfThread const t_slotOfThread;
    return t_slot;
}

void ReadMostlyLock::ReadGuard::WaitForWriter()
{
    m_slot->lock.store(nullptr, std::memory_order_release);
    m_slot = nullptr;
    m_lock.m_mutex.lock_shared();
}

ReadMostlyLock::WriteGuard::WriteGuard(ReadMostlyLock& lock) : m_lock(lock)
{
    lock.m_mutex.lock();
    lock.m_isWriting.store(true, std::memory_order_seq_cst);
    std::size_t const used = s_usedSlots.load(std::memory_order_seq_cst);
    for (std::size_t i = 0; i < used; ++i) {
        while (s_slots[i].lock.load(std::memory_order_seq_cst) == &lock) {
            std::this_thread::yield();
        }
    }
}

ReadMostlyLock::WriteGuard::~WriteGuard()
{
    m_lock.m_isWriting.store(false, std::memory_order_release); // what was written is written
    m_lock.m_mutex.unlock();
}
