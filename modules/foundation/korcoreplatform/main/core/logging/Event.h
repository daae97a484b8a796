/// One log record: when, where and by whom it was made, and what it says.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>

namespace TError {
class ErrorInfo;
}

namespace TLog {

class EventAccess;
class Object;
class Value;

/// A point of the system clock.
using EventTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;

/// When a record was made. The texts read 2024-03-02T09:05:03.004: the year is not padded,
/// milliseconds are cut off, not rounded, and no time zone is named.
///
/// Thread safety: immutable but for assignment. The texts may be asked for on any thread; a change
/// of the process's time zone meanwhile is the host's to prevent.
class KORCOREPLATFORM_EXPORT EventTimestamp
{
public:
    EventTimestamp() noexcept; ///< Now.
    explicit EventTimestamp(EventTime time) noexcept : m_time(time) {}

    EventTime GetTime() const noexcept { return m_time; }

    TString GetFormattedLocalValue() const { return GetFormattedValue(true); }
    TString GetFormattedUtcValue() const { return GetFormattedValue(false); }
    TString GetFormattedValue(bool local) const;

    static TString GetFormattedLocalTimestamp(); ///< Of the current time.
    static TString GetFormattedUtcTimestamp();   ///< Of the current time.

    bool operator<(EventTimestamp const& other) const noexcept { return m_time < other.m_time; }

private:
    EventTime m_time;
};

/// What a record learns when it is made about the activity it belongs to.
///
/// Thread safety: one object may be read from several threads; a write needs it alone.
class KORCOREPLATFORM_EXPORT ActivityInfo
{
public:
    /// A `time` of zero stands for the time at which the record is made. `location`, `activity`
    /// and `extra` may be null.
    ActivityInfo(EventTime time, std::uint32_t processId, std::uint64_t threadId,
                 TString const& session, TString const& request, TString const& user,
                 TString const& site, std::shared_ptr<Value> location,
                 std::shared_ptr<Value> activity, std::shared_ptr<Object> extra = nullptr,
                 TString const& traceId = TString());

    EventTime GetTime() const noexcept { return m_time; }
    std::uint32_t GetProcessId() const noexcept { return m_processId; }
    std::uint64_t GetThreadId() const noexcept { return m_threadId; }
    TString const& GetSession() const noexcept { return m_session; }
    TString const& GetRequest() const noexcept { return m_request; }
    TString const& GetTraceId() const noexcept { return m_traceId; }
    TString const& GetUser() const noexcept { return m_user; }
    TString const& GetSite() const noexcept { return m_site; }
    std::shared_ptr<Value> const& GetLocation() const noexcept { return m_location; }
    std::shared_ptr<Value> const& GetActivity() const noexcept { return m_activity; }
    std::shared_ptr<Object> const& GetExtra() const noexcept { return m_extra; }

private:
    EventTime m_time;
    std::uint32_t m_processId;
    std::uint64_t m_threadId;
    TString m_session;
    TString m_request;
    TString m_traceId;
    TString m_user;
    TString m_site;
    std::shared_ptr<Value> m_location;
    std::shared_ptr<Value> m_activity;
    std::shared_ptr<Object> m_extra;
};

/// Supplies the activity of each record. A host sets its own function once at start-up, before
/// other threads log.
class KORCOREPLATFORM_EXPORT ActivityInfoFactory
{
public:
    ActivityInfoFactory() = delete;

    /// Called for every record, on the thread that logs, with a time of zero, which stands for the
    /// time of the record, and with the text "-" for what the host does not know. It finds the ids
    /// in `TSystemCore`:
    ///
    ///     return TLog::ActivityInfo(time, TSystemCore::ProcessID(), TSystemCore::ThreadID(),
    ///                               t_session.name, none, none, none, nullptr, nullptr, nullptr,
    ///                               none); // the last one is the trace
    ///
    /// An empty function takes the current one away.
    static void SetFactoryFunction(std::function<ActivityInfo(EventTime, TString const&)> function);

    /// What the function answers; while there is none, the ids of this process and thread, every
    /// text `placeholder`, and no values.
    /// Throws: what the function throws.
    static ActivityInfo CreateActivityInfo(EventTime time, TString const& placeholder);
};

/// A log record. It does not change once it is made; copies share what it holds and cost a count.
/// A record that was moved from is empty: without texts, values and attributes, at time zero.
///
///     TLog::Event event(u"cache", TLog::Object::Make(values));
///     (*TLog::Logger::Get())->Log(TLog::Severity::Info, std::move(event));
///
/// Thread safety: one object may be read from several threads, copies may be used on different
/// threads at once.
class KORCOREPLATFORM_EXPORT Event
{
public:
    /// `value` may be null. The time is that of `activity` unless it is zero. The thread's logging
    /// context is taken in, followed by the activity's extra values whose names it does not hold.
    Event(TString const& key, std::shared_ptr<Value> value, ActivityInfo&& activity);

    /// With an activity made by `ActivityInfoFactory` for zero time and the placeholder "-".
    /// Throws: what the host's factory function throws.
    Event(TString const& key, std::shared_ptr<Value> value);

    /// The same with the error value `FormatErrorInfo(error)`.
    Event(TString const& key, std::shared_ptr<Value> value, TError::ErrorInfo&& error);

    Event(Event const& other) noexcept;
    Event(Event&& other) noexcept : m_record(other.m_record) { other.m_record = nullptr; }
    Event& operator=(Event const& other) noexcept;
    Event& operator=(Event&& other) noexcept;
    ~Event()
    {
        if (m_record != nullptr) {
            Release(m_record);
        }
    }

    EventTimestamp const& GetTimestamp() const noexcept;
    std::uint32_t GetProcessId() const noexcept;
    std::uint64_t GetThreadId() const noexcept;

    /// The texts of the activity: "sess", "req", "traceid", "user", "site".
    std::unordered_map<TString, TString> const& GetAttributes() const noexcept;

    TString const& GetKey() const noexcept;

    // Null when the record has none.
    std::shared_ptr<Value> GetValue() const;
    std::shared_ptr<Value> GetLocation() const noexcept;
    std::shared_ptr<Value> GetActivity() const noexcept;
    std::shared_ptr<Value> GetError() const;
    std::shared_ptr<Object> GetLoggingContext() const;

    static TString FormatPointer(void const* address); ///< The text of an address: "0x7f3a...".

private:
    friend class EventAccess;
    struct Record;

    explicit Event(Record* record) noexcept : m_record(record) {}

    static void Release(Record* record) noexcept; ///< Deletes it when no other event has it.

    Record* m_record; ///< Shared by the copies, which count themselves in it. Null: moved from.
};

/// An object of texts: "excp-error-code", "excp-source", "excp-status-code" and, when a call stack
/// was captured, "callstack" with one frame a line.
KORCOREPLATFORM_EXPORT std::shared_ptr<Value> FormatErrorInfo(TError::ErrorInfo&& error);

} // namespace TLog
