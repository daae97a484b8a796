/// Log records kept in memory.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Channel.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <deque>
#include <mutex>
#include <vector>

namespace TLog {

/// Keeps the latest records, for a host's tests and for what it wants to show or send later:
///
///     auto channel = std::make_shared<TLog::MemoryChannel>();
///     logger->AddChannel(channel);
///     ...
///     EXPECT_EQ(channel->GetRecords().at(0).event.GetKey(), u"cache");
///
/// There are at most as many as the constructor is told; each one more pushes out the oldest, which
/// is counted as lost. A record keeps alive what its event holds.
///
/// Thread safety: safe from any thread.
class KORCOREPLATFORM_EXPORT MemoryChannel : public Channel
{
public:
    struct Record
    {
        AccessLevel accessLevel;
        Severity severity;
        Event event;
        TString line; ///< As a file would have it, without the line feed.
    };

    static constexpr std::size_t kDefaultMaxRecords = 10000;

    /// Of 0 records, none is kept.
    explicit MemoryChannel(std::size_t maxRecords = kDefaultMaxRecords);
    ~MemoryChannel() override;

    std::vector<Record> GetRecords() const; ///< Oldest first.
    std::vector<TString> GetLines() const;  ///< Of the same.
    void Clear();                           ///< What is removed here is not lost.

    /// Throw what `Formatter::operator()` throws; nothing is kept then.
    void Append(Severity severity, Event const& event) override;
    void Append(AccessLevel accessLevel, Severity severity, Event const& event) override;

    void Flush() override {}
    TPath GetPath() const override { return {}; }
    unsigned long GetFileSizeMB() const override { return 0; }
    ChannelCounters GetCounters() const override; ///< Writes no bytes.

private:
    std::size_t const m_maxRecords;
    mutable std::mutex m_mutex;   ///< Of all that follows.
    std::deque<Record> m_records; ///< At most m_maxRecords.
    Formatter m_formatter;
    ChannelCounters m_counters;
};

} // namespace TLog
