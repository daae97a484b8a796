/// Decides about single records on their way to the channels.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Severity.h"

namespace TLog {

class Event;

/// A filter of an `AsyncLogger`, which asks its filters in the order in which they were added.
///
/// Thread safety: `Decide` is called on the logger's writer thread only. What it throws ends the
/// process.
class KORCOREPLATFORM_EXPORT Filter
{
public:
    // What `Decide` answers. Any other number accepts as well.
    static constexpr int Drop = 0;   ///< The record is not written.
    static constexpr int Next = 1;   ///< The next filter decides; behind the last one: accepted.
    static constexpr int Accept = 2; ///< The record is written, no further filter is asked.

    virtual ~Filter();

    virtual int Decide(Severity severity, Event const& event) = 0;

protected:
    Filter() = default;
    Filter(Filter const&) = default;
    Filter& operator=(Filter const&) = default;
};

} // namespace TLog
