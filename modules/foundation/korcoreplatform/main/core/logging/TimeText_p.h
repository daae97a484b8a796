/// The text of a time, up to the second.

#pragma once

#include "korcoreplatform/main/core/logging/Event.h"

#include <cstdint>
#include <ctime>

namespace TLog {

/// The second since 1970 that a time lies in, and the milliseconds gone by in it.
struct SplitTime
{
    explicit SplitTime(EventTime time) noexcept
    {
        constexpr std::int64_t kPerSecond = 1000000;
        std::int64_t const microseconds = time.time_since_epoch().count();
        bool const isBefore = microseconds % kPerSecond < 0; // rounded up, then
        second = microseconds / kPerSecond - isBefore;
        milliseconds = static_cast<int>((microseconds % kPerSecond + isBefore * kPerSecond) / 1000);
    }

    std::int64_t second;
    int milliseconds;
};

/// Room for the longest second and its milliseconds.
constexpr int kMaxTimeBytes = 32;

/// The parts of a time in the process's time zone. Also after a `fork` amid calls of it.
std::tm LocalTime(std::time_t time) noexcept;

/// Writes 2024-03-02T09:05:03, in local time or in UTC, and returns the end.
/// Requires: room for kMaxTimeBytes at `to`.
char* WriteSecond(char* to, std::int64_t second, bool isLocal) noexcept;

/// Writes three digits; `value` is 0 to 999.
inline char* WriteMilliseconds(char* to, int value) noexcept
{
    to[0] = static_cast<char>('0' + value / 100);
    to[1] = static_cast<char>('0' + value / 10 % 10);
    to[2] = static_cast<char>('0' + value % 10);
    return to + 3;
}

} // namespace TLog
