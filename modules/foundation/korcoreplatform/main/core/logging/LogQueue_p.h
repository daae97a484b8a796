/// The queue between the threads that log and the one that writes.

#pragma once

#include "korcoreplatform/main/core/logging/CacheLines_p.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace TLog {

/// What an item of a `LogQueue` derives from.
struct LogQueueLink
{
    std::atomic<LogQueueLink*> next{nullptr};
};

/// A linked list of items, unbounded, that many threads append to and one takes from. To append is
/// one exchange of a pointer: no loop, no lock, no memory. (The algorithm is Dmitry Vyukov's
/// intrusive queue for many producers and one consumer.)
///
/// Ownership: the items belong to whoever takes them out.
class LogQueue
{
public:
    LogQueue() noexcept : m_last(&m_stub), m_first(&m_stub) {}
    LogQueue(LogQueue const&) = delete;
    LogQueue& operator=(LogQueue const&) = delete;

    /// Any thread. What the thread wrote before is seen by the one that takes the item.
    ///
    /// Takes part in the one order of sequentially consistent operations: a consumer that goes to
    /// sleep sees this item, or the producer sees behind this call that the consumer sleeps.
    void Push(LogQueueLink& item) noexcept
    {
        item.next.store(nullptr, std::memory_order_relaxed);
        LogQueueLink* const before = m_last.exchange(&item, std::memory_order_seq_cst);
        before->next.store(&item, std::memory_order_release);
    }

    /// The same for an item that `CountedItems` is to tell.
    void PushCounted(LogQueueLink& item) noexcept
    {
        m_counted.fetch_add(1, std::memory_order_relaxed); // where this thread writes next anyway
        Push(item);
    }

    /// What `Push` writes first, and the other threads that append write as well.
    void const* Contended() const noexcept { return &m_last; }

    /// The consumer. Null when the queue is empty, or when the producer of the next item has not
    /// linked it yet; `IsEmpty` tells which.
    LogQueueLink* Pop() noexcept
    {
        LogQueueLink* first = m_first;
        LogQueueLink* second = first->next.load(std::memory_order_acquire);
        if (first == &m_stub) {
            if (second == nullptr) {
                return nullptr;
            }
            m_first = second;
            first = second;
            second = second->next.load(std::memory_order_acquire);
        }
        if (second == nullptr) {
            if (first != m_last.load(std::memory_order_acquire)) {
                return nullptr; // there is one behind it that is not linked yet
            }
            // The last item leaves only when something stands behind it.
            Push(m_stub);
            second = first->next.load(std::memory_order_acquire);
            if (second == nullptr) {
                return nullptr;
            }
        }
        m_first = second;
        CacheLines::PrefetchForReading(second, kPrefetchedLines);
        return first;
    }

    /// The consumer, after `Pop` gave null: whether nothing was appended that is not taken out.
    bool IsEmpty() const noexcept
    {
        return m_first == &m_stub && m_last.load(std::memory_order_seq_cst) == &m_stub;
    }

    /// Any thread: how many items were ever appended by `PushCounted`.
    std::uint64_t CountedItems() const noexcept
    {
        return m_counted.load(std::memory_order_relaxed);
    }

private:
    static constexpr std::size_t kPrefetchedLines = 2; ///< A record with a short text.

    // What producers write stays away from what the consumer writes.
    alignas(CacheLines::kBytes) std::atomic<LogQueueLink*> m_last;
    std::atomic<std::uint64_t> m_counted{0};
    alignas(CacheLines::kBytes) LogQueueLink* m_first; ///< The consumer's.
    LogQueueLink m_stub; ///< Stands in the queue when nothing else does.
};

} // namespace TLog
