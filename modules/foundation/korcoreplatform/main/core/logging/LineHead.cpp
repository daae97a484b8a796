#include "korcoreplatform/main/core/logging/LineHead_p.h"

#include <charconv>
#include <chrono>
#include <cstring>
#include <string_view>

namespace TLog {
namespace {

char* Copy(char* to, std::string_view text)
{
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

} // namespace

char* LineHead::Write(char* to, EventTime time, std::uint32_t processId,
                      std::uint64_t threadId) noexcept
{
    if (time < m_firstOfMillisecond || time > m_lastOfMillisecond) {
        RenderTime(time);
    }
    if (m_idsLength == 0 || threadId != m_threadId || processId != m_processId) {
        RenderIds(processId, threadId);
    }
    // Whole arrays: a copy of known size is a few moves.
    static_assert(sizeof(m_time) + sizeof(m_ids) <= kMaxBytes);
    std::memcpy(to, m_time, sizeof(m_time));
    to += m_timeLength;
    std::memcpy(to, m_ids, sizeof(m_ids));
    return to + m_idsLength;
}

[[gnu::noinline]] void LineHead::RenderTime(EventTime time) noexcept
{
    SplitTime const split(time);
    if (m_secondLength == 0 || split.second != m_second) {
        RenderSecond(split.second);
    }
    char* const end = WriteMilliseconds(m_time + m_secondLength, split.milliseconds);
    m_timeLength = static_cast<std::size_t>(end - m_time);
    constexpr std::chrono::microseconds kMillisecond(1000);
    auto before = time.time_since_epoch() % kMillisecond; // what of it is gone by
    before += before.count() < 0 ? kMillisecond : kMillisecond.zero();
    auto const behind = kMillisecond - before - std::chrono::microseconds(1);
    // As far as there are times.
    m_firstOfMillisecond = time < EventTime::min() + before ? EventTime::min() : time - before;
    m_lastOfMillisecond = time > EventTime::max() - behind ? EventTime::max() : time + behind;
}

void LineHead::RenderSecond(std::int64_t second) noexcept
{
    char* const end = WriteSecond(Copy(m_time, R"({"ts":")"), second, true);
    *end = '.';
    m_secondLength = static_cast<std::size_t>(end + 1 - m_time);
    m_second = second;
}

void LineHead::RenderIds(std::uint32_t processId, std::uint64_t threadId) noexcept
{
    char* const limit = m_ids + sizeof(m_ids);
    char* end = Copy(m_ids, R"(","pid":)");
    end = std::to_chars(end, limit, processId).ptr;
    end = Copy(end, R"(,"tid":")");
    end = std::to_chars(end, limit, threadId, 16).ptr;
    end = Copy(end, R"(","sev":")");
    m_idsLength = static_cast<std::size_t>(end - m_ids);
    m_processId = processId;
    m_threadId = threadId;
}

} // namespace TLog
