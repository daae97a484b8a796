/// Where log records go.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/Severity.h"

#include <cstdint>

namespace TLog {

class Event;

/// What became of the records that a channel was given.
struct ChannelCounters
{
    std::uint64_t lostRecords = 0;  ///< Taken but not kept, for example because the disk is full.
    std::uint64_t bytesWritten = 0; ///< And still there: not what was taken back after a failure.
};

/// A destination of records. A logger calls its channels on its writer thread; what they throw
/// there ends the process.
///
/// Thread safety: one thread at a time.
class KORCOREPLATFORM_EXPORT Channel
{
public:
    virtual ~Channel();

    /// The first form is for `AccessLevel::Standard`.
    virtual void Append(Severity severity, Event const& event) = 0;
    virtual void Append(AccessLevel accessLevel, Severity severity, Event const& event) = 0;

    /// Hands on what is buffered.
    virtual void Flush() = 0;

    virtual TPath GetPath() const = 0; ///< Empty when there is no file.

    /// The size of the file in whole MiB, without what is buffered; 0 when it is not known.
    virtual unsigned long GetFileSizeMB() const = 0;

    /// All zero in a class that does not override it.
    virtual ChannelCounters GetCounters() const;

protected:
    Channel() = default;
    Channel(Channel const&) = default;
    Channel& operator=(Channel const&) = default;
};

} // namespace TLog
