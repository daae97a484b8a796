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

/// What stands right behind a record, in the same block.
enum class RecordTail : std::uint8_t
{
    PlainText, ///< A short message as bytes, each of which stands for itself in a JSON text.
    Text,      ///< Any other short message.
    Rest       ///< There is no message, or a long one; see `Event::Record::Rest`.
};

/// The common beginning of all items. A record with one owner is an item itself.
struct LogItem : LogQueueLink
{
    LogItem(LogItemKind itemKind, Severity itemSeverity = Severity::Trace,
            AccessLevel itemAccessLevel = AccessLevel::Standard) noexcept
        : kind(itemKind), severity(itemSeverity), tail(RecordTail::Rest), tailLength(0),
          accessLevel(itemAccessLevel)
    {}

    LogItemKind kind;
    Severity severity; ///< Of an item that logs.

    // Of a record. They stand here because there is room: a record takes two cache lines if it can.
    RecordTail tail : 2;
    std::uint16_t tailLength : 14; ///< Bytes or units of a short message.

    AccessLevel accessLevel; ///< Of an item that logs.
};

} // namespace TLog
