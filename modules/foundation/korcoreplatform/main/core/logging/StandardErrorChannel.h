/// Log records on the terminal.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Channel.h"

namespace TLog {

/// Writes each record to the standard error stream as a line to be read by people:
///
///     2024-03-02T09:05:03.004 Info  The workbook was opened.
///     2024-03-02T09:05:03.012 Warn  cache hits=12 name="a b"
///
/// That is the local time, the severity, the message or the key, and the pairs in the order of
/// their names, those of an error behind those of the value. Names and texts with blanks, quotes,
/// "=" or backslashes are quoted. Control characters are escaped, so that a record is one line and
/// cannot direct the terminal. The word for the severity is coloured when the stream is a terminal
/// as the channel is made and the environment has no NO_COLOR.
///
/// Nothing is buffered: a record is one write, and waits as long as nobody reads from a full pipe.
/// What cannot be written is counted as lost.
///
/// Thread safety: one thread at a time. Several channels may write at once.
class KORCOREPLATFORM_EXPORT StandardErrorChannel : public Channel
{
public:
    StandardErrorChannel();
    ~StandardErrorChannel() override;

    /// Throw `std::bad_alloc`.
    void Append(Severity severity, Event const& event) override;
    void Append(AccessLevel accessLevel, Severity severity, Event const& event) override;

    void Flush() override {}
    TPath GetPath() const override { return {}; }
    unsigned long GetFileSizeMB() const override { return 0; }
    ChannelCounters GetCounters() const override { return m_counters; }

private:
    bool m_isColoured;
    ChannelCounters m_counters;
};

} // namespace TLog
