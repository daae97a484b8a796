/// Memory straight from the system.

#pragma once

#include <cstddef>

namespace TLog {
namespace RecordPages {

/// `bytes` bytes, populated, aligned to `bytes`, which is a power of two of at least a page. Null
/// when there is no memory.
void* Map(std::size_t bytes) noexcept;

/// Has the system bring in all pages at once, where it knows how to.
void Populate(void* pages, std::size_t bytes) noexcept;

void Unmap(void* pages, std::size_t bytes) noexcept;

} // namespace RecordPages
} // namespace TLog
