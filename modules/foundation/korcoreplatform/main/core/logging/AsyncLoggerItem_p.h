/// The items of an `AsyncLogger`'s queue that are no records of their own.

#pragma once

#include "korcoreplatform/main/core/logging/AsyncLoggerImpl_p.h"
#include "korcoreplatform/main/core/logging/Event_p.h"
#include "korcoreplatform/main/core/logging/RecordMemory_p.h"

#include <memory>
#include <optional>
#include <utility>

namespace TLog {

/// A thread that waits for a flush, and what it is told.
struct AsyncLogger::Impl::Waiter
{
    TEvent flushed;
    bool isComplete = false; ///< Set before `flushed` is signalled.
};

/// Changes of filters and channels, flushes, the stop, and records that others have as well.
struct AsyncLogger::Impl::Item : LogItem
{
    explicit Item(LogItemKind itemKind) noexcept : LogItem(itemKind) {}
    explicit Item(Event&& shared) noexcept
        : LogItem(LogItemKind::LogShared), event(std::move(shared))
    {}

    // NOLINTNEXTLINE(misc-new-delete-overloads): the one that is told the size matches it.
    static void* operator new(std::size_t bytes) { return RecordMemory::Allocate(bytes); }
    static void operator delete(void* item, std::size_t bytes) noexcept
    {
        RecordMemory::Free(item, bytes);
    }

    std::optional<Event> event; ///< Of an item that logs.
    std::shared_ptr<Filter> filter;
    std::shared_ptr<Channel> channel;
    std::shared_ptr<Waiter> waiter; ///< May be null.
};

} // namespace TLog
