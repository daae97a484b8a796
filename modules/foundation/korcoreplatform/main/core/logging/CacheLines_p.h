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
        char const* const line = static_cast<char const*>(begin) + i * kBytes;
#if defined(__x86_64__)
        // The builtin only reads unless newer processors are compiled for; the first store then
        // still waits until the other processor has given up its copy.
        __asm__ volatile("prefetchw (%0)" ::"r"(line));
#else
        __builtin_prefetch(line, 1);
#endif
    }
}

} // namespace TLog::CacheLines
