#include "korcoreplatform/main/core/logging/RecordMemory_p.h"

#include <atomic>
#include <new>
#include <utility>

namespace TLog {
namespace {

constexpr int kSizes = 2;
constexpr int kNoSize = -1;            ///< Of blocks that the general allocator serves.
constexpr int kBatchBlocks = 64;       ///< What a thread and the pool hand to each other at a time.
constexpr int kMaxBytes = 256 << 20;   ///< That a pool holds,
constexpr int kTrimmedBytes = 4 << 20; ///< and that it keeps when it is trimmed.

constexpr std::size_t kBytes[kSizes] = {RecordMemory::kSmallBytes, RecordMemory::kLargeBytes};

int SizeOf(std::size_t bytes)
{
    return bytes <= kBytes[0] ? 0 : bytes <= kBytes[1] ? 1 : kNoSize;
}

/// A free block.
struct Block
{
    Block* next;
};

void FreeAll(Block* blocks) noexcept
{
    while (blocks != nullptr) {
        ::operator delete(std::exchange(blocks, blocks->next));
    }
}

/// The batches of one size that no thread has. Constant-initialised and never destroyed. Whoever
/// finds it in use does without: a child made by `fork` may find it so for ever.
class Pool
{
public:
    /// Returns false when it is full or in use.
    bool Give(Block* batch) noexcept
    {
        if (m_isInUse.test_and_set(std::memory_order_acquire)) {
            return false;
        }
        bool const hasRoom = m_count < kMaxBatches;
        if (hasRoom) {
            m_batches[m_count++] = batch;
        }
        m_isInUse.clear(std::memory_order_release);
        return hasRoom;
    }

    /// Null when there are no more than `keep` batches, or when it is in use.
    Block* Take(int keep) noexcept
    {
        if (m_isInUse.test_and_set(std::memory_order_acquire)) {
            return nullptr;
        }
        Block* const batch = m_count > keep ? m_batches[--m_count] : nullptr;
        m_isInUse.clear(std::memory_order_release);
        return batch;
    }

private:
    static constexpr int kMaxBatches =
        kMaxBytes / kBatchBlocks / static_cast<int>(RecordMemory::kLargeBytes);

    std::atomic_flag m_isInUse = ATOMIC_FLAG_INIT;
    int m_count = 0;
    Block* m_batches[kMaxBatches] = {};
};

Pool s_pools[kSizes];

/// The free blocks of one size that a thread has at hand: a whole batch, or none, and a part of
/// one.
struct Cache
{
    Block* part;
    int partCount;
    Block* batch;
};

enum class CacheState
{
    Unused, ///< The thread has not registered yet that its caches are to be emptied.
    InUse,
    Over ///< The thread is ending; what it still logs goes past the caches.
};

// Without constructor and destructor, so that they may be used until the thread is gone.
thread_local Cache t_caches[kSizes];
thread_local CacheState t_state;

struct EmptyAtThreadExit
{
    ~EmptyAtThreadExit()
    {
        t_state = CacheState::Over;
        for (int size = 0; size != kSizes; ++size) {
            Cache& cache = t_caches[size];
            FreeAll(cache.part);
            if (cache.batch != nullptr && !s_pools[size].Give(cache.batch)) {
                FreeAll(cache.batch);
            }
            cache = Cache();
        }
    }

    bool isRegistered = false;
};

bool HasCaches()
{
    if (t_state == CacheState::Unused) {
        thread_local EmptyAtThreadExit t_atExit;
        t_atExit.isRegistered = true;
        t_state = CacheState::InUse;
    }
    return t_state == CacheState::InUse;
}

/// Makes sure that there is a block in `part`, if a whole batch is to be had.
void Refill(Cache& cache, Pool& pool) noexcept
{
    cache.part = std::exchange(cache.batch, nullptr);
    if (cache.part == nullptr) {
        cache.part = pool.Take(0);
    }
    cache.partCount = cache.part != nullptr ? kBatchBlocks : 0;
}

} // namespace

void* RecordMemory::Allocate(std::size_t bytes)
{
    int const size = SizeOf(bytes);
    if (size == kNoSize) {
        return ::operator new(bytes);
    }
    if (HasCaches()) {
        Cache& cache = t_caches[size];
        if (cache.part == nullptr) {
            Refill(cache, s_pools[size]);
        }
        if (cache.part != nullptr) {
            --cache.partCount;
            return std::exchange(cache.part, cache.part->next);
        }
    }
    return ::operator new(kBytes[size]);
}

void RecordMemory::Free(void* block, std::size_t bytes) noexcept
{
    int const size = SizeOf(bytes);
    if (size == kNoSize || !HasCaches()) {
        ::operator delete(block);
        return;
    }
    Cache& cache = t_caches[size];
    if (cache.partCount == kBatchBlocks) {
        if (cache.batch != nullptr && !s_pools[size].Give(cache.batch)) {
            FreeAll(cache.batch);
        }
        cache.batch = std::exchange(cache.part, nullptr);
        cache.partCount = 0;
    }
    cache.part = new (block) Block{cache.part};
    ++cache.partCount;
}

void RecordMemory::Trim() noexcept
{
    for (int size = 0; size != kSizes; ++size) {
        int const keep = kTrimmedBytes / kBatchBlocks / static_cast<int>(kBytes[size]);
        while (Block* batch = s_pools[size].Take(keep)) {
            FreeAll(batch);
        }
    }
}

} // namespace TLog
