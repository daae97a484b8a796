/// The sessions that threads work for, and that their log records name.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <memory>
#include <unordered_map>

namespace TextCensus {

/// Tells the library about the sessions: log records then have the id of their thread's session as
/// "sess" and the context of the session as "ctx". To be called once, before there are threads.
void InstallSessions();

/// While one lives, the calling thread works for a session of its own.
///
///     SessionScope const session({{u"worker", u"1"}});
///
/// Thread safety: made and destroyed on the same thread, the last one first.
class SessionScope
{
public:
    /// `context` is what log records of the session contain, while sessions are installed.
    explicit SessionScope(std::unordered_map<TString, TString> const& context);
    SessionScope(SessionScope const&) = delete;
    SessionScope& operator=(SessionScope const&) = delete;
    ~SessionScope();

private:
    struct Session;
    friend void InstallSessions();

    static thread_local Session const* t_current; ///< Null: the thread works for none.

    std::unique_ptr<Session const> m_session;
    Session const* m_former;
};

} // namespace TextCensus
