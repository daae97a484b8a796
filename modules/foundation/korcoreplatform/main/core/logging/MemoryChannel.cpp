#include "korcoreplatform/main/core/logging/MemoryChannel.h"

namespace TLog {

MemoryChannel::MemoryChannel(std::size_t maxRecords) : m_maxRecords(maxRecords) {}

MemoryChannel::~MemoryChannel() = default;

std::vector<MemoryChannel::Record> MemoryChannel::GetRecords() const
{
    std::lock_guard const lock(m_mutex);
    return {m_records.begin(), m_records.end()};
}

std::vector<TString> MemoryChannel::GetLines() const
{
    std::lock_guard const lock(m_mutex);
    std::vector<TString> lines;
    lines.reserve(m_records.size());
    for (Record const& record : m_records) {
        lines.push_back(record.line);
    }
    return lines;
}

void MemoryChannel::Clear()
{
    std::deque<Record> removed; // destroyed without the lock
    std::lock_guard const lock(m_mutex);
    removed.swap(m_records);
}

void MemoryChannel::Append(Severity severity, Event const& event)
{
    Append(AccessLevel::Standard, severity, event);
}

void MemoryChannel::Append(AccessLevel accessLevel, Severity severity, Event const& event)
{
    std::lock_guard const lock(m_mutex);
    m_records.push_back({accessLevel, severity, event, m_formatter(accessLevel, severity, event)});
    if (m_records.size() > m_maxRecords) {
        m_records.pop_front();
        ++m_counters.lostRecords;
    }
}

ChannelCounters MemoryChannel::GetCounters() const
{
    std::lock_guard const lock(m_mutex);
    return m_counters;
}

} // namespace TLog
