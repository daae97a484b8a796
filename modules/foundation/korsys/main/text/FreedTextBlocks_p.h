/// Blocks of texts that a thread has freed and keeps for its next texts.

#pragma once

#include <cstddef>
#include <new>

/// Most texts live for a moment on one thread, and making and freeing their blocks is half of their
/// cost. Each thread keeps up to 8 freed blocks of each size up to 512 bytes, 66 KiB at the most,
/// until it ends.
///
/// Under a sanitizer or valgrind nothing is kept, so that these see a text which is used after its
/// end.
///
/// Thread safety: each thread sees its own blocks only, whichever thread they were made on.
class FreedTextBlocks
{
public:
    /// A block of `bytes` bytes that `malloc` made, or null when the thread keeps none.
    /// Requires: a multiple of 16.
    static void* Take(std::size_t bytes) noexcept
    {
        std::size_t const size = bytes / kGranularity;
        if (size >= kSizes || t_blocks.first[size] == nullptr) {
            return nullptr;
        }
        Block* const block = t_blocks.first[size];
        t_blocks.first[size] = block->next;
        ++t_blocks.room[size];
        return block;
    }

    /// Keeps a block that `malloc` made for `bytes` bytes, a multiple of 16, or returns false.
    static bool Keep(void* block, std::size_t bytes) noexcept
    {
        std::size_t const size = bytes / kGranularity;
        if (size >= kSizes || t_blocks.room[size] == 0) {
            return false;
        }
        t_blocks.first[size] = new (block) Block{t_blocks.first[size]};
        --t_blocks.room[size];
        return true;
    }

    /// Lets a thread that kept nothing yet do so from now on, if nothing stands against it.
    static void Begin() noexcept;

    /// Frees all that the thread keeps, and has it keep none any more.
    static void End() noexcept;

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
        Block* first[kSizes];
        unsigned char room[kSizes]; ///< How many more of a size may be kept.
        bool wasBegun;
    };

    // Without constructor and destructor, so that it may be used until the thread is gone.
    [[gnu::tls_model("initial-exec")]] inline static thread_local Blocks t_blocks;
};
