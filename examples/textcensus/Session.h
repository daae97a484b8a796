/// The sessions that threads work for, and that their log records name.

#pragma once

#include "korcoreplatform/main/core/runtime/SessionScope.h"
#include "korcoreplatform/main/string/TString.h"

#include <unordered_map>

namespace TextCensus {

/// Tells the library about the sessions: log records then have the id of their thread's session as
/// "sess" and the context of the session as "ctx". To be called once, before there are threads.
void InstallSessions();

/// While one lives, the calling thread works for a session of its own.
///
///     WorkerSession const session({{u"worker", u"1"}});
///
/// Thread safety: made and destroyed on the same thread, the last one first.
class WorkerSession
{
public:
    /// `context` is what log records of the session contain, while sessions are installed.
    explicit WorkerSession(std::unordered_map<TString, TString> const& context);

private:
    OwnedSession m_session;
    SessionScope m_scope;
};

} // namespace TextCensus
