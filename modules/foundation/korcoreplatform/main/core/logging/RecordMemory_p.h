/// The memory of log records, which one thread takes and another gives back.

#pragma once

#include <cstddef>

namespace TLog {

/// Blocks that go round: those that the writer gives back serve the threads that log. A general
/// allocator is slow where one thread frees what others allocated. What a burst needed is kept
/// until `Trim`.
///
/// Thread safety: may be called from any thread, at any time of the process and of the thread, and
/// in a child made by `fork`. No call waits for another.
class RecordMemory
{
public:
    RecordMemory() = delete;

    static constexpr std::size_t kSmallBytes = 128;
    static constexpr std::size_t kMediumBytes = 256;
    static constexpr std::size_t kLargeBytes = 512;

    /// A block of at least `bytes`, aligned for any type.
    /// Throws: `std::bad_alloc`.
    static void* Allocate(std::size_t bytes);

    /// Takes back a block that was asked for with the same `bytes`.
    static void Free(void* block, std::size_t bytes) noexcept;

    /// Whether a block that was asked for with one of these may be taken back with the other.
    static bool AreOfOneSize(std::size_t bytes, std::size_t otherBytes) noexcept;

    /// Gives the system back what nobody has used since a burst, all but some 4 MiB a size.
    static void Trim() noexcept;
};

} // namespace TLog
