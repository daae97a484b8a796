#include "korcoreplatform/main/core/logging/RecordMemory_p.h"

#include "korcoreplatform/main/core/logging/CacheLines_p.h"
#include "korcoreplatform/main/core/logging/RecordPages_p.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include <pthread.h>

namespace TLog {
namespace {

constexpr int kSizes = 3;
constexpr int kNoSize = -1; ///< Of blocks that the general allocator serves.
constexpr std::size_t kBytes[kSizes] = {RecordMemory::kSmallBytes, RecordMemory::kMediumBytes,
                                        RecordMemory::kLargeBytes};

constexpr std::size_t kChunkBytes = 256 << 10; ///< Mapped at a time, and aligned to that.
constexpr int kBatchBlocks = 64;               ///< What threads and the pool hand to each other.
constexpr std::size_t kKeptBytes = 4 << 20;    ///< What `Trim` leaves of a size.
constexpr std::size_t kSmallLines = RecordMemory::kSmallBytes / CacheLines::kBytes;
constexpr std::size_t kPrefetchedLines = 4; ///< Of a block: a record and the head of its text.

int SizeOf(std::size_t bytes)
{
    return bytes <= kBytes[0] ? 0 : bytes <= kBytes[1] ? 1 : bytes <= kBytes[2] ? 2 : kNoSize;
}

/// A free block. The blocks of a batch are linked by `next`; the first one of a batch in the pool
/// links to the first one of the batch below it.
struct Block
{
    Block* next;
    Block* nextBatch;
};

/// Stands at the beginning of the memory that blocks are cut from. Used while a pool is trimmed.
struct Chunk
{
    int freeBlocks;  ///< How many were found in the pool; see `SortOut`.
    Chunk* nextFree; ///< Of those that go back to the system.
};

Chunk& ChunkOf(Block* block)
{
    return *reinterpret_cast<Chunk*>(reinterpret_cast<std::uintptr_t>(block) &
                                     ~std::uintptr_t(kChunkBytes - 1));
}

/// The first block's worth of a chunk is for its head.
int BlocksOfChunk(int size)
{
    return static_cast<int>(kChunkBytes / kBytes[size]) - 1;
}

/// The batches of one size that no thread has. Constant-initialised and never destroyed.
class Pool
{
public:
    bool Give(Block* batch) noexcept ///< Returns false when it is in use.
    {
        return Use([=] { AddBatch(batch); });
    }

    /// Takes any number of blocks, also when it is in use.
    void GiveLoose(Block* blocks) noexcept
    {
        if (blocks == nullptr || Use([=] { AddLoose(blocks); })) {
            return;
        }
        Block* last = blocks;
        while (last->next != nullptr) {
            last = last->next;
        }
        last->next = m_orphans.load(std::memory_order_relaxed);
        while (!m_orphans.compare_exchange_weak(last->next, blocks, std::memory_order_release,
                                                std::memory_order_relaxed)) {}
    }

    Block* Take() noexcept ///< Null when it is empty or in use.
    {
        Block* batch = nullptr;
        Use([&] {
            AddOrphans();
            batch = m_batches;
            if (batch != nullptr) {
                m_batches = batch->nextBatch;
                --m_count;
            }
        });
        return batch;
    }

    /// All batches, linked by `nextBatch`; null when they are no more than `keep`, or it is in use.
    Block* TakeAllBut(int keep) noexcept
    {
        Block* batches = nullptr;
        Use([&] {
            AddOrphans();
            if (m_count > keep) {
                batches = std::exchange(m_batches, nullptr);
                m_count = 0;
            }
        });
        return batches;
    }

private:
    /// Whoever finds it in use tries for about a microsecond and does without then: in a child made
    /// by `fork` it may be in use for ever.
    template <class Function>
    bool Use(Function function) noexcept
    {
        for (int i = 0; m_isInUse.test_and_set(std::memory_order_acquire); ++i) {
            if (i == kTries) {
                return false;
            }
        }
        function();
        m_isInUse.clear(std::memory_order_release);
        return true;
    }

    void AddBatch(Block* batch) noexcept
    {
        batch->nextBatch = std::exchange(m_batches, batch);
        ++m_count;
    }

    void AddLoose(Block* blocks) noexcept
    {
        while (blocks != nullptr) {
            Block* const block = std::exchange(blocks, blocks->next);
            block->next = std::exchange(m_loose, block);
            if (++m_looseCount == kBatchBlocks) {
                AddBatch(std::exchange(m_loose, nullptr));
                m_looseCount = 0;
            }
        }
    }

    void AddOrphans() noexcept
    {
        if (m_orphans.load(std::memory_order_relaxed) != nullptr) {
            AddLoose(m_orphans.exchange(nullptr, std::memory_order_acquire));
        }
    }

    static constexpr int kTries = 100;

    std::atomic_flag m_isInUse = ATOMIC_FLAG_INIT;
    int m_count = 0;
    Block* m_batches = nullptr;
    int m_looseCount = 0; ///< Less than a batch.
    Block* m_loose = nullptr;
    std::atomic<Block*> m_orphans{nullptr}; ///< Given while it was in use; not counted yet.
};

Pool s_pools[kSizes];

/// The free blocks of one size that a thread has at hand: full batches, and a part of one.
struct Cache
{
    Block* part;
    int partCount;
    Block* batches; ///< Linked by `nextBatch`.
};

struct alignas(CacheLines::kBytes) Caches
{
    Cache ofSizes[kSizes];
};

// Without constructor and destructor, so that they may be used until the thread is gone.

/// Null before the first use, and for a thread that is ending or cannot have any: what it logs goes
/// past them.
[[gnu::tls_model("initial-exec")]] thread_local Caches* t_caches = nullptr;
[[gnu::tls_model("initial-exec")]] thread_local bool t_hadCaches = false;

/// Hands a batch on. Where the pool is in use, the thread keeps it and tries again with the next.
void GiveBatches(Cache& cache, Pool& pool) noexcept
{
    while (cache.batches != nullptr) {
        Block* const batch = cache.batches;
        Block* const rest = batch->nextBatch;
        if (!pool.Give(batch)) {
            return;
        }
        cache.batches = rest;
    }
}

void AddBatch(Cache& cache, Block* batch) noexcept
{
    batch->nextBatch = std::exchange(cache.batches, batch);
}

void GiveAll(Cache& cache, Pool& pool) noexcept
{
    GiveBatches(cache, pool);
    while (cache.batches != nullptr) {
        pool.GiveLoose(std::exchange(cache.batches, cache.batches->nextBatch));
    }
    pool.GiveLoose(cache.part);
    cache = Cache();
}

extern "C" void EmptyRecordCaches(void* ofThread)
{
    t_hadCaches = true; // where the system has made the thread's variables anew by now
    t_caches = nullptr;
    std::unique_ptr<Caches> const caches(static_cast<Caches*>(ofThread));
    for (int size = 0; size != kSizes; ++size) {
        GiveAll(caches->ofSizes[size], s_pools[size]);
    }
}

/// Has them emptied and deleted when the thread ends. Returns false when the system cannot.
bool ArrangeToEmpty(Caches& caches) noexcept
{
    struct Key
    {
        Key() : isThere(::pthread_key_create(&key, &EmptyRecordCaches) == 0) {}

        pthread_key_t key = 0;
        bool isThere;
    };
    static Key const s_key;
    return s_key.isThere && ::pthread_setspecific(s_key.key, &caches) == 0;
}

/// Of this thread; may be null.
Caches* OwnCaches() noexcept
{
    if (!std::exchange(t_hadCaches, true)) {
        std::unique_ptr<Caches> caches(new (std::nothrow) Caches());
        if (caches != nullptr && ArrangeToEmpty(*caches)) {
            t_caches = caches.release();
        }
    }
    return t_caches;
}

[[maybe_unused]] auto* const s_atLoad = OwnCaches(); // no child of `fork` finds its key half made

/// Cuts the blocks of a new chunk.
/// Requires: no block in `part`.
bool AddChunk(Cache& cache, int size) noexcept
{
    void* const pages = RecordPages::Map(kChunkBytes);
    if (pages == nullptr) {
        return false;
    }
    new (pages) Chunk{0, nullptr};
    char* at = static_cast<char*>(pages) + kBytes[size];
    Block* part = nullptr;
    for (int i = 1; i <= BlocksOfChunk(size); ++i, at += kBytes[size]) {
        part = new (at) Block{part, nullptr};
        if (i % kBatchBlocks == 0) {
            AddBatch(cache, std::exchange(part, nullptr));
        }
    }
    cache.part = part;
    cache.partCount = BlocksOfChunk(size) % kBatchBlocks;
    return true;
}

/// Brings blocks into `part`, which has none. Returns false when there is no memory.
bool Refill(Cache& cache, int size) noexcept
{
    if (cache.batches != nullptr) {
        cache.part = cache.batches;
        cache.batches = cache.part->nextBatch;
    } else {
        cache.part = s_pools[size].Take();
        if (cache.part == nullptr) {
            return AddChunk(cache, size);
        }
    }
    cache.partCount = kBatchBlocks;
    return true;
}

/// Requires: a block in `part`.
Block* TakeFirst(Cache& cache, int size) noexcept
{
    --cache.partCount;
    Block* const block = std::exchange(cache.part, cache.part->next);
    // The next record is written here.
    CacheLines::PrefetchForWriting(cache.part, size == 0 ? kSmallLines : kPrefetchedLines);
    return block;
}

void AddFirst(Cache& cache, void* block) noexcept
{
    cache.part = new (block) Block{cache.part, nullptr};
    ++cache.partCount;
}

// What is done once for many blocks is out of line, so that the rest needs no stack.

[[gnu::noinline]] Block* TakeSlowly(int size)
{
    Caches* const own = OwnCaches();
    Cache forOne = {};
    Cache& cache = own != nullptr ? own->ofSizes[size] : forOne;
    if (!Refill(cache, size)) {
        throw std::bad_alloc();
    }
    Block* const block = TakeFirst(cache, size);
    GiveAll(forOne, s_pools[size]);
    return block;
}

[[gnu::noinline]] void GiveSlowly(void* block, int size) noexcept
{
    Caches* const own = OwnCaches();
    if (own == nullptr) {
        s_pools[size].GiveLoose(new (block) Block{nullptr, nullptr});
        return;
    }
    Cache& cache = own->ofSizes[size];
    if (cache.partCount == kBatchBlocks) {
        AddBatch(cache, std::exchange(cache.part, nullptr));
        cache.partCount = 0;
        GiveBatches(cache, s_pools[size]);
    }
    AddFirst(cache, block);
}

/// Hands the blocks of `batches` to `keep`, except for those of chunks of which none is in use;
/// these chunks are returned, linked. So many blocks of them are kept as well.
template <class Keep>
Chunk* SortOut(Block* batches, int size, int keptBlocks, Keep const& keep) noexcept
{
    constexpr int kKept = 0;
    constexpr int kGoes = -1;
    auto const forEach = [&](auto const& visit) {
        for (Block* batch = batches; batch != nullptr;) {
            Block* const below = batch->nextBatch;
            for (Block* block = batch; block != nullptr;) {
                visit(*std::exchange(block, block->next));
            }
            batch = below;
        }
    };
    forEach([](Block& block) { ++ChunkOf(&block).freeBlocks; });
    Chunk* free = nullptr;
    forEach([&](Block& block) {
        Chunk& chunk = ChunkOf(&block);
        if (chunk.freeBlocks == BlocksOfChunk(size) && keptBlocks <= 0) {
            chunk.freeBlocks = kGoes;
            chunk.nextFree = std::exchange(free, &chunk);
        } else if (chunk.freeBlocks != kKept && chunk.freeBlocks != kGoes) {
            keptBlocks -= chunk.freeBlocks;
            chunk.freeBlocks = kKept;
        }
        if (chunk.freeBlocks == kKept) {
            keep(block);
        }
    });
    return free;
}

} // namespace

void* RecordMemory::Allocate(std::size_t bytes)
{
    int const size = SizeOf(bytes);
    if (size == kNoSize) {
        return ::operator new(bytes);
    }
    Caches* const own = t_caches;
    bool const isAtHand = own != nullptr && own->ofSizes[size].part != nullptr;
    return isAtHand ? TakeFirst(own->ofSizes[size], size) : TakeSlowly(size);
}

void RecordMemory::Free(void* block, std::size_t bytes) noexcept
{
    int const size = SizeOf(bytes);
    if (size == kNoSize) {
        ::operator delete(block);
        return;
    }
    Caches* const own = t_caches;
    if (own != nullptr && own->ofSizes[size].partCount != kBatchBlocks) {
        AddFirst(own->ofSizes[size], block);
    } else {
        GiveSlowly(block, size);
    }
}

bool RecordMemory::AreOfOneSize(std::size_t bytes, std::size_t otherBytes) noexcept
{
    int const size = SizeOf(bytes);
    return size != kNoSize && size == SizeOf(otherBytes);
}

void RecordMemory::Trim() noexcept
{
    static std::atomic_flag s_isTrimming = ATOMIC_FLAG_INIT; // chunks are counted by one at a time
    if (s_isTrimming.test_and_set(std::memory_order_acquire)) {
        return;
    }
    for (int size = 0; size != kSizes; ++size) {
        Pool& pool = s_pools[size];
        int const keptBlocks = static_cast<int>(kKeptBytes / kBytes[size]);
        Block* const batches = pool.TakeAllBut(keptBlocks / kBatchBlocks);
        Block* part = nullptr;
        int partCount = 0;
        Chunk* chunks = SortOut(batches, size, keptBlocks, [&](Block& block) {
            block.next = std::exchange(part, &block);
            if (++partCount == kBatchBlocks) {
                pool.GiveLoose(std::exchange(part, nullptr));
                partCount = 0;
            }
        });
        pool.GiveLoose(part);
        while (chunks != nullptr) {
            RecordPages::Unmap(std::exchange(chunks, chunks->nextFree), kChunkBytes);
        }
    }
    s_isTrimming.clear(std::memory_order_release);
}

} // namespace TLog
