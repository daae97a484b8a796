/// What is logged for the length of a scope.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/string/TString.h"

#include <memory>
#include <unordered_map>

class TElapsedTimer;

namespace TLog {

class Filter;
class Logger;

/// A filter that a logger has while the scope lasts. The change takes its turn among the records
/// that this thread logs. When the filter cannot be taken away at the end, for want of memory, it
/// stays.
///
/// The logger must outlive the scope.
///
/// Thread safety: one thread at a time.
class KORCOREPLATFORM_EXPORT FilterScope
{
public:
    FilterScope(Logger& logger, std::shared_ptr<Filter> filter);
    FilterScope(FilterScope const&) = delete;
    FilterScope& operator=(FilterScope const&) = delete;
    ~FilterScope();

private:
    Logger& m_logger;
    std::shared_ptr<Filter> m_filter;
};

/// Logs at Info how long a scope took: a record with the scope's values and "elapsed", in seconds.
///
///     TLog::ElapsedTimeEventScope const scope(logger, u"parse", {{u"file", name}},
///                                             TLog::ElapsedTimeEventScope::BeginEnd);
///
/// The logger must outlive the scope. What goes wrong at the end of the scope is swallowed.
///
/// Thread safety: one thread at a time.
class KORCOREPLATFORM_EXPORT ElapsedTimeEventScope
{
public:
    enum Type : int
    {
        EndOnly = 0,            ///< One record with the bare name, at the end.
        EndOnlyDetailed = 1,    ///< The same.
        BeginEnd = 2,           ///< "begin-" and the name, then "end-" and the name.
        BeginEndWhenTracing = 3 ///< The same, each while tracing is on (`OptMetrics`).
    };

    /// Starts the timer and calls `Begin`.
    /// Throws: `std::bad_function_call` for `BeginEndWhenTracing` while that option is empty.
    ElapsedTimeEventScope(Logger& logger, TString const& name,
                          std::unordered_map<TString, TString> const& values, Type type);

    /// The same with an object that becomes the scope's. The caller may add values to it until the
    /// end, which adds "elapsed"; the begin record has those of the beginning. Null counts as
    /// empty.
    ElapsedTimeEventScope(Logger& logger, TString const& name, std::shared_ptr<Object> values,
                          Type type);

    ElapsedTimeEventScope(ElapsedTimeEventScope const&) = delete;
    ElapsedTimeEventScope& operator=(ElapsedTimeEventScope const&) = delete;
    ~ElapsedTimeEventScope(); ///< Calls `End`.

    /// Write the records of the type, where the logger accepts Info; each call writes one more.
    void Begin();
    void End();

private:
    bool HasBeginRecord() const noexcept;
    bool IsWanted() const;

    Logger& m_logger;
    TString m_name;
    std::shared_ptr<Object> m_values; ///< Never null.
    std::unique_ptr<TElapsedTimer> m_timer;
    Type m_type;
    bool m_isHandedOver = false; ///< A record has `m_values`, which therefore stay as they are.
};

} // namespace TLog
