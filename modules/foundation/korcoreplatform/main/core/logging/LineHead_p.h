/// The beginning of a log line, of which little changes from line to line.

#pragma once

#include "korcoreplatform/main/core/logging/TimeText_p.h"

#include <cstddef>
#include <cstdint>

namespace TLog {

/// Writes {"ts":"2024-03-02T09:05:03.004","pid":4242,"tid":"1a2b","sev":" and keeps the texts of
/// the last millisecond, process and thread. A change of the time zone shows from the next second
/// on.
///
/// Thread safety: one thread at a time.
class LineHead
{
public:
    static constexpr std::size_t kMaxBytes = 128;

    /// Returns the end.
    /// Requires: room for kMaxBytes at `to`.
    char* Write(char* to, EventTime time, std::uint32_t processId, std::uint64_t threadId) noexcept;

private:
    void RenderTime(EventTime time) noexcept;
    void RenderSecond(std::int64_t second) noexcept;
    void RenderIds(std::uint32_t processId, std::uint64_t threadId) noexcept;

    // What the texts are of, once their lengths are not zero.
    std::int64_t m_second = 0;
    EventTime m_firstOfMillisecond = EventTime::max(); ///< Behind the last: there is none yet.
    EventTime m_lastOfMillisecond = EventTime::min();
    std::uint64_t m_threadId = 0;
    std::uint32_t m_processId = 0;

    std::size_t m_secondLength = 0; ///< From the brace up to the point before the milliseconds.
    std::size_t m_timeLength = 0;
    std::size_t m_idsLength = 0;
    char m_time[48]; ///< Up to the milliseconds.
    char m_ids[64];  ///< From behind the milliseconds on.
};

} // namespace TLog
