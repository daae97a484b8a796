/// A queue with many producers and one consumer who takes all there is.

#pragma once

#include <tbb/concurrent_vector.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

/// Unbounded; producers never wait. The items of one producer keep their order, items of different
/// producers the order in which they were appended.
///
/// Thread safety: `Push` may be called from any thread, `Pop` from one at a time.
template <class T>
class TConcurrentQueue
{
public:
    TConcurrentQueue() : m_items(std::make_shared<Items>()) {}
    TConcurrentQueue(TConcurrentQueue const&) = delete;
    TConcurrentQueue& operator=(TConcurrentQueue const&) = delete;

    /// Throws: `std::bad_alloc`; the item is then not in the queue.
    void Push(T&& item)
    {
        std::shared_ptr<Items> const items = std::atomic_load(&m_items);
        items->push_back(std::move(item));
    }

    /// Takes every item, in order. An item whose `Push` has begun is waited for, 5 ms at a time.
    /// Throws: `std::bad_alloc`.
    std::vector<T> Pop()
    {
        std::shared_ptr<Items> taken = std::atomic_exchange(&m_items, std::make_shared<Items>());
        while (taken.use_count() > 1) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        // The count is read without order; giving a share back takes part in the order of the
        // producers' releases, so what they wrote is seen behind it.
        std::shared_ptr<Items>(taken).reset();
        return std::vector<T>(std::make_move_iterator(taken->begin()),
                              std::make_move_iterator(taken->end()));
    }

private:
    // The thread sanitizer does not see into the allocator that is the default: it would take
    // memory that one thread gave back and another got for a race.
    using Items = tbb::concurrent_vector<T, std::allocator<T>>;

    std::shared_ptr<Items> m_items; ///< Never null; only touched by the atomic functions above.
};
