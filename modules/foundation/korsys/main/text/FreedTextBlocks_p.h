/// Blocks of texts that a thread has freed and keeps for its next texts.

#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>

/// Most texts live for a moment on one thread, and making and freeing their blocks is half of their
/// cost. Each thread keeps up to 8 freed blocks of each size up to 512 bytes, 66 KiB at the most,
/// until it ends.
///
/// Nothing is kept while the address, thread or memory sanitizer or valgrind watches the process,
/// so that they see a text which is used after its end.
///
/// Thread safety: each thread sees its own blocks only, whichever thread they were made on.
class FreedTextBlocks
{
public:
    FreedTextBlocks() = delete;

    /// A block of `bytes` bytes that `malloc` made, or null when the thread keeps none.
    /// Requires: a multiple of 16.
    static void* Take(std::size_t bytes) noexcept
    {
        std::size_t const size = bytes / kGranularity;
        Blocks* const blocks = t_blocks;
        if (size >= kSizes || blocks == nullptr || blocks->first[size] == nullptr) {
            return nullptr;
        }
        Block* const block = blocks->first[size];
        blocks->first[size] = block->next;
        ++blocks->room[size];
        return block;
    }

    /// Keeps a block that `malloc` made for `bytes` bytes, a multiple of 16, or returns false.
    static bool Keep(void* block, std::size_t bytes) noexcept
    {
        std::size_t const size = bytes / kGranularity;
        Blocks* const blocks = t_blocks;
        if (size >= kSizes || blocks == nullptr || blocks->room[size] == 0) {
            return false;
        }
        blocks->first[size] = new (block) Block{blocks->first[size]};
        --blocks->room[size];
        return true;
    }

    /// Lets a thread that kept nothing yet do so from now on, if nothing stands against it.
    static void Begin() noexcept;

    /// Frees all that the thread keeps, and has it keep none any more.
    /// Requires: what `Begin` has left with the system for the end of the thread.
    static void End(void* blocks) noexcept;

private:
    static constexpr std::size_t kGranularity = 16;
    static constexpr std::size_t kSizes = 512 / kGranularity + 1;
    static constexpr unsigned char kMostOfSize = 8;

    struct Block
    {
        Block* next;
    };

    struct Blocks
    {
        Blocks() noexcept { std::fill(std::begin(room), std::end(room), kMostOfSize); }
        Blocks(Blocks const&) = delete;
        Blocks& operator=(Blocks const&) = delete;
        ~Blocks(); ///< Frees what is kept.

        Block* first[kSizes] = {};
        unsigned char room[kSizes]; ///< How many more of a size may be kept.
    };

    // Without constructor and destructor, so that they may be used until the thread is gone.
    [[gnu::tls_model("initial-exec")]] inline static thread_local Blocks* t_blocks = nullptr;
    [[gnu::tls_model("initial-exec")]] inline static thread_local bool t_wasBegun = false;
};
