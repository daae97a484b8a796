/// What stands in the queue of an `AsyncLogger`.

#pragma once

#include "korcoreplatform/main/core/logging/LogQueue_p.h"
#include "korcoreplatform/main/core/logging/Severity.h"

#include <cstdint>

namespace TLog {

enum class LogItemKind : std::uint8_t
{
    AddFilter = 0,
    RemoveFilter = 1,
    AddChannel = 2,
    RemoveChannel = 3,
    Log = 4,
    Flush = 5,
    Stop = 6,
    LogShared = 7 ///< A record that others have as well; the item refers to it.
};

/// The common beginning of all items. A record with one owner is an item itself.
struct LogItem : LogQueueLink
{
    LogItem(LogItemKind itemKind, Severity itemSeverity = Severity::Trace,
            AccessLevel itemAccessLevel = AccessLevel::Standard) noexcept
        : kind(itemKind), severity(itemSeverity), accessLevel(itemAccessLevel)
    {}

    LogItemKind kind;
    Severity severity;       ///< Of an item that logs.
    AccessLevel accessLevel; ///< The same.
};

} // namespace TLog
