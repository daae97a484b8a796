/// Gives the calling thread a session to work for.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"

#include <memory>

class ISessionObjects;

/// While one lives, the calling thread works for a session: that is what `CoreThreadContext`, and
/// so the logging context, then answers on this thread.
///
///     SessionScope::InstallHooks(); // once, at the start of the program
///     ...
///     SessionScope const scope(id);
///     CoreThreadContextUtils::SetLoggingContext(context);
///
/// Log records have the context as "ctx" once `TLog::SetLoggingContextEnabled(true)` was called,
/// and a session as "sess" when a `TLog::ActivityInfoFactory` function gives one.
///
/// Scopes nest: the innermost one counts, and behind it the one outside again. A scope for an id
/// without a store, such as the null id, means that the thread works for no session meanwhile.
///
/// Ownership: a scope shares the store of its session, which it looks up once, when it begins.
/// Deleting the session takes nothing away from it.
/// Thread safety: several threads may work for one session. Each scope is made and destroyed on one
/// thread, the last one first.
class KORCOREPLATFORM_EXPORT SessionScope
{
public:
    explicit SessionScope(TUUID const& id);
    SessionScope(SessionScope const&) = delete;
    SessionScope& operator=(SessionScope const&) = delete;
    ~SessionScope();

    /// Makes `CoreThreadContext` look at scopes; before, they mean nothing to it. Replaces the
    /// host's own hooks. To be called while no other thread uses `CoreThreadContext`.
    static void InstallHooks();

private:
    TUUID const m_id;
    std::shared_ptr<ISessionObjects> const m_objects; ///< Null: no session.
    SessionScope* m_outer;                            ///< Null: none.
};

/// A session that keeps its objects in a `SessionObjects`, and is deleted at the end.
///
///     OwnedSession const session;
///     SessionScope const scope(session.Id());
///
/// Thread safety: safe from any thread.
class KORCOREPLATFORM_EXPORT OwnedSession
{
public:
    /// Throws: as `SessionObjectStore::CreateSession`.
    OwnedSession();
    OwnedSession(OwnedSession const&) = delete;
    OwnedSession& operator=(OwnedSession const&) = delete;
    ~OwnedSession();

    TUUID const& Id() const noexcept { return m_id; }

private:
    TUUID const m_id;
};
