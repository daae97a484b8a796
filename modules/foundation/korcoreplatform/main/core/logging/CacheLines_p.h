/// Cache lines, where threads hand memory to each other.

#pragma once

#include <cstddef>

namespace TLog::CacheLines {

constexpr std::size_t kBytes = 64;

// Fetch the `count` lines from `begin` on, which another processor had last. The caller is busy
// with something else until they are there. Null is harmless.

inline void PrefetchForReading(void const* begin, std::size_t count) noexcept
{
    for (std::size_t i = 0; i != count; ++i) {
        __builtin_prefetch(static_cast<char const*>(begin) + i * kBytes, 0);
    }
}

inline void PrefetchForWriting(void const* begin, std::size_t count) noexcept
{
    for (std::size_t i = 0; i != count; ++i) {
        __builtin_prefetch(static_cast<char const*>(begin) + i * kBytes, 1);
    }
}

} // namespace TLog::CacheLines
