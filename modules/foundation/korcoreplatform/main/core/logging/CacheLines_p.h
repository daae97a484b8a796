/// Cache lines, where threads hand memory to each other.

#pragma once

#include <cstddef>

namespace TLog::CacheLines {

constexpr std::size_t kBytes = 64;

/// Fetches the `count` lines from `begin` on, which another processor had last. The caller is busy
/// with something else until they are there. Null is harmless.
template <bool isForWriting>
inline void Prefetch(void const* begin, std::size_t count) noexcept
{
    auto const* const bytes = static_cast<char const*>(begin);
    for (std::size_t i = 0; i != count; ++i) {
        __builtin_prefetch(bytes + i * kBytes, isForWriting);
    }
}

} // namespace TLog::CacheLines
