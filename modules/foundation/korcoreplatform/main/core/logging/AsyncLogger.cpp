#include "korcoreplatform/main/core/logging/AsyncLogger.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/AsyncLoggerItem_p.h"
#include "korcoreplatform/main/core/logging/CacheLines_p.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"

#include <utility>

namespace TLog {
namespace {

constexpr int kShutdownMs = 30000;

static_assert(sizeof(AsyncLogger) == CacheLines::kBytes &&
                  alignof(AsyncLogger) == sizeof(AsyncLogger),
              "a cache line to itself");

} // namespace

AsyncLogger::AsyncLogger(Severity minimal, TPath const& logConfigPath)
    : Logger(minimal, logConfigPath), m_impl(std::make_unique<Impl>())
{
    DecideByMinimalSeverity(typeid(AsyncLogger));
    SetContendedMemory(m_impl->Contended());
}

AsyncLogger::~AsyncLogger()
{
    if (!m_impl->Shutdown(kShutdownMs)) {
        static_cast<void>(
            m_impl.release()); // the writer still uses it, or it belongs to another process
    }
}

void AsyncLogger::AddFilter(std::shared_ptr<Filter> filter)
{
    PushChange(LogItemKind::AddFilter, &Impl::Item::filter, std::move(filter));
}

void AsyncLogger::RemoveFilter(std::shared_ptr<Filter> filter)
{
    PushChange(LogItemKind::RemoveFilter, &Impl::Item::filter, std::move(filter));
}

void AsyncLogger::AddChannel(std::shared_ptr<Channel> channel)
{
    PushChange(LogItemKind::AddChannel, &Impl::Item::channel, std::move(channel));
}

void AsyncLogger::RemoveChannel(std::shared_ptr<Channel> channel)
{
    PushChange(LogItemKind::RemoveChannel, &Impl::Item::channel, std::move(channel));
}

void AsyncLogger::Log(Severity severity, Event const& event)
{
    LogAccepted(AccessLevel::Standard, severity, event);
}

void AsyncLogger::Log(Severity severity, Event&& event)
{
    LogAccepted(AccessLevel::Standard, severity, std::move(event));
}

void AsyncLogger::Log(AccessLevel accessLevel, Severity severity, Event const& event)
{
    LogAccepted(accessLevel, severity, event);
}

void AsyncLogger::Log(AccessLevel accessLevel, Severity severity, Event&& event)
{
    LogAccepted(accessLevel, severity, std::move(event));
}

void AsyncLogger::Log(LogDetail::LogDetailEnums detail, Severity severity, Event const& event)
{
    LogDetailed(AccessLevel::Standard, detail, severity, event);
}

void AsyncLogger::Log(LogDetail::LogDetailEnums detail, Severity severity, Event&& event)
{
    LogDetailed(AccessLevel::Standard, detail, severity, std::move(event));
}

void AsyncLogger::Log(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
                      Event const& event)
{
    LogDetailed(accessLevel, detail, severity, event);
}

void AsyncLogger::Log(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
                      Event&& event)
{
    LogDetailed(accessLevel, detail, severity, std::move(event));
}

void AsyncLogger::Flush()
{
    if (m_impl->IsAlive()) {
        m_impl->Push(std::make_unique<Impl::Item>(LogItemKind::Flush));
    }
}

bool AsyncLogger::FlushAndWait(int milliseconds)
{
    return m_impl->FlushAndWait(milliseconds);
}

void AsyncLogger::SetMaximumUnflushedAge(std::chrono::milliseconds age)
{
    m_impl->SetMaximumUnflushedAge(age);
}

AsyncLogger::Counters AsyncLogger::GetCounters() const
{
    return m_impl->GetCounters();
}

template <class Change, class Member>
void AsyncLogger::PushChange(LogItemKind kind, Member what, std::shared_ptr<Change>&& change)
{
    if (change != nullptr && m_impl->IsAlive()) {
        auto item = std::make_unique<Impl::Item>(kind);
        *item.*what = std::move(change);
        m_impl->Push(std::move(item));
    }
}

template <class AnyEvent>
void AsyncLogger::LogAccepted(AccessLevel accessLevel, Severity severity, AnyEvent&& event)
{
    if (AcceptsSeverity(severity) && m_impl->IsAlive()) {
        m_impl->PushRecord(accessLevel, severity, std::forward<AnyEvent>(event));
    }
}

template <class AnyEvent>
void AsyncLogger::LogDetailed(AccessLevel accessLevel, LogDetail::LogDetailEnums detail,
                              Severity severity, AnyEvent&& event)
{
    if (!OptLogSeverity::IsSeverityPerLogDetailOn()) {
        Log(severity, static_cast<Event const&>(event));
    } else if (DetailAcceptsSeverity(detail, severity) && m_impl->IsAlive()) {
        m_impl->PushRecord(accessLevel, severity, std::forward<AnyEvent>(event));
    }
}

} // namespace TLog
