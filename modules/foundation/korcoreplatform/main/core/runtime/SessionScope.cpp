#include "korcoreplatform/main/core/runtime/SessionScope.h"

#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"
#include "korcoreplatform/main/core/runtime/SessionObjects.h"

namespace {

thread_local SessionScope* t_innermost = nullptr;

TUUID CreateSessionWithObjects()
{
    auto objects = std::make_shared<SessionObjects>(); // first: what fails leaves no session
    TUUID const id = SessionObjectStore::CreateSession();
    SessionObjectStore::SetSessionObjectsInterface(id, std::move(objects));
    return id;
}

} // namespace

SessionScope::SessionScope(TUUID const& id)
    : m_id(id), m_objects(SessionObjectsMap::Get().GetSessionObjectsInterface(id)),
      m_outer(t_innermost)
{
    t_innermost = this;
}

SessionScope::~SessionScope()
{
    // The innermost one, unless scopes end in a wrong order: then it leaves the others as they are.
    SessionScope** link = &t_innermost;
    while (*link != nullptr && *link != this) {
        link = &(*link)->m_outer;
    }
    if (*link != nullptr) {
        *link = m_outer;
    }
}

void SessionScope::InstallHooks()
{
    CoreThreadContext::SetGetSessionIdFunction([]() -> TUUID {
        bool const hasSession = t_innermost != nullptr && t_innermost->m_objects != nullptr;
        return hasSession ? t_innermost->m_id : TUUID();
    });
    CoreThreadContext::SetGetSessionObjectsInterfaceFunction(
        [] { return t_innermost != nullptr ? t_innermost->m_objects : nullptr; });
    // Last: generic objects are asked for only from now on.
    CoreThreadContext::SetHasSessionIdFunction(
        [] { return t_innermost != nullptr && t_innermost->m_objects != nullptr; });
}

OwnedSession::OwnedSession() : m_id(CreateSessionWithObjects()) {}

OwnedSession::~OwnedSession()
{
    SessionObjectStore::DeleteSession(m_id);
}
