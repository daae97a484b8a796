/// Counts heap allocations, for tests of what promises how many there are.

#pragma once

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
