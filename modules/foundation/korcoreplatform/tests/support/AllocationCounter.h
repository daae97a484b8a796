/// Counts heap allocations, for tests of what promises how many there are.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <vector>

/// Counts what the current thread allocates from the construction of the counter on, whoever asks:
/// `new`, the text type, Qt. Tests skip where counting is not possible: in sanitizer builds, which
/// bring an allocator of their own, and where the C library has no second entry to its own.
class AllocationCounter
{
public:
    AllocationCounter();

    int Count() const;
    long long Bytes() const; ///< As asked for, in all allocations together.

    static bool IsAvailable();

private:
    int m_before;
    long long m_bytesBefore;
};

/// Uses up the freed blocks that this thread keeps for its next texts, so that a text takes such a
/// block only when another one was freed after this.
class NoKeptTextBlocks
{
public:
    static constexpr int kKeptOfSize = 8;
    static constexpr std::size_t kLargestKeptBytes = 512;

    NoKeptTextBlocks();

    /// Of the longest text in a block of `bytes`.
    static int UnitsOfBlock(std::size_t bytes);

private:
    std::vector<TString> m_texts;
};
