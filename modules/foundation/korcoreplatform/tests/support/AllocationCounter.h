/// Counts heap allocations, for tests of what promises how many there are.

#pragma once

#include "korcoreplatform/main/string/TString.h"

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

/// Uses up the freed blocks that this thread keeps for its next texts: until the end of the object,
/// every text that needs a block allocates it.
class NoKeptTextBlocks
{
public:
    static constexpr int kKeptOfSize = 8;
    static constexpr int kLargestKeptBytes = 512;

    NoKeptTextBlocks();

    static int UnitsOfBlock(int bytes) { return (bytes - 16) / 2 - 1; } ///< Of a full one.

private:
    std::vector<TString> m_texts;
};
