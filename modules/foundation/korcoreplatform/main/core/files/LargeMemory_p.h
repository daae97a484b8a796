/// A hint to the system about large blocks of memory.

#pragma once

#include <cstddef>

namespace LargeMemory {

/// Tells the system that a block that was not touched yet will be filled from its start on, so that
/// it may come in few large pages rather than in many small ones: more than half of the time of
/// reading a large file goes into the first touch of each page. Blocks of less than a few large
/// pages are left alone. Only a hint: what is in the block does not change.
/// Thread safety: may be called from any thread.
void WillFill(void* block, std::size_t bytes) noexcept;

} // namespace LargeMemory
