#include "Session.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korsys/main/system/TSystemCore.h"

#include <memory>

namespace TextCensus {

WorkerSession::WorkerSession(std::unordered_map<TString, TString> const& context)
    : m_scope(m_session.Id())
{
    if (CoreThreadContext::HasSessionId()) {
        CoreThreadContextUtils::SetLoggingContext(
            std::make_shared<std::unordered_map<TString, TString>>(context));
    }
}

void InstallSessions()
{
    SessionScope::InstallHooks();
    TLog::ActivityInfoFactory::SetFactoryFunction([](TLog::EventTime time, TString const& none) {
        TString const session =
            CoreThreadContext::HasSessionId()
                ? CoreThreadContext::GetSessionId().ToString(TUUIDFormatOption::Base36)
                : none;
        return TLog::ActivityInfo(time, TSystemCore::ProcessID(), TSystemCore::ThreadID(), session,
                                  none, none, none, nullptr, nullptr, nullptr, none);
    });
}

} // namespace TextCensus
