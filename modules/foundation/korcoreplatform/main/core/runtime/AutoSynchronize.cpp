#include "korcoreplatform/main/core/runtime/AutoSynchronize.h"

#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/runtime/AutoSynchronize_p.h"
#include "korcoreplatform/main/core/runtime/ICrashNow.h"
#include "korcoreplatform/main/string/TFormatString.h"

#include <cstring>
#include <optional>

std::atomic<bool> AutoSynchronize::s_isEnforced{false};

std::time_t (*AutoSynchronizeInternals::g_now)() = [] { return std::time(nullptr); };

namespace {

constexpr std::time_t kSecondsBetweenReports = 60;

thread_local AutoSynchronize const* t_top = nullptr;  ///< The lock taken last.
thread_local std::optional<std::time_t> t_nextReport; ///< No report before; set by the first one.

/// Hides the locks of this thread, so that those of the logger are not compared with them.
class HiddenStack
{
public:
    HiddenStack() noexcept : m_top(t_top) { t_top = nullptr; }
    ~HiddenStack() { t_top = m_top; }
    HiddenStack(HiddenStack const&) = delete;
    HiddenStack& operator=(HiddenStack const&) = delete;

private:
    AutoSynchronize const* m_top;
};

/// The part of a path behind the second "/" from its end; all of it when there are fewer.
char const* LastTwoComponents(char const* path)
{
    if (path == nullptr) {
        return "";
    }
    int separators = 0;
    for (char const* at = path + std::strlen(path); at != path; --at) {
        if (at[-1] == '/' && ++separators == 2) {
            return at;
        }
    }
    return path;
}

} // namespace

void AutoSynchronize::SetEnforceLockLeveling(bool isEnforced) noexcept
{
    s_isEnforced.store(isEnforced, std::memory_order_relaxed);
}

void AutoSynchronize::CheckAndPush()
{
    m_previous = t_top;
    CheckLockAcquisition();
    t_top = this;
}

void AutoSynchronize::Pop() const noexcept
{
    t_top = m_previous;
}

bool AutoSynchronize::IsOutOfOrder() const noexcept
{
    for (AutoSynchronize const* held = m_previous; held != nullptr; held = held->m_previous) {
        if (m_priority > held->m_priority ||
            (m_priority == held->m_priority && &m_mutex != &held->m_mutex)) {
            return true;
        }
    }
    return false;
}

void AutoSynchronize::CheckLockAcquisition() const
{
    if (!IsOutOfOrder() || (t_nextReport && AutoSynchronizeInternals::g_now() < *t_nextReport)) {
        return;
    }
    Report();
    if (IsEnforced()) {
        ICrashNow();
    }
    t_nextReport = AutoSynchronizeInternals::g_now() + kSecondsBetweenReports;
}

void AutoSynchronize::Report() const
{
    HiddenStack const hidden;
    TLog::NonErrorSeverity const warn(TLog::Severity::Warn);
    LogMessage(warn, u"AutoSynchronize: lock acquired out of order!");
    LogMessage(warn, Describe(u"Tried to acquire lock: "));
    for (AutoSynchronize const* held = m_previous; held != nullptr; held = held->m_previous) {
        LogMessage(warn, held->Describe(u"  while holding lock:  "));
    }
}

void AutoSynchronize::CheckLockRelease() const
{
    if (t_top != this) {
        t_top = nullptr;
        LogMessage(u"AutoSynchronize:: lock released out of order!");
    }
}

void AutoSynchronize::LogLockAcquisition() const
{
    LogMessage(Describe(u"Acquire lock: "));
    for (AutoSynchronize const* held = m_previous; held != nullptr; held = held->m_previous) {
        LogMessage(held->Describe(u"  have lock:  "));
    }
}

void AutoSynchronize::LogLockRelease() const
{
    LogMessage(Describe(u"Release lock: "));
}

TString AutoSynchronize::Describe(char16_t const* lead) const
{
    return TFormat(u"%1%2:%3:%4 pcs=%5 priority=%6", lead,
                   TString::fromUtf8(LastTwoComponents(m_file)), TString::fromLatin1(m_function),
                   m_line, TString::pointer(&m_mutex), m_priority);
}
