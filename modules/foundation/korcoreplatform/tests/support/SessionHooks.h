/// A thread's context as a host with sessions has it.

#pragma once

#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/SessionScope.h"

/// Scopes of sessions count while it lives; then the default hooks are back.
struct SessionHooks
{
    SessionHooks() { SessionScope::InstallHooks(); }
    ~SessionHooks() { Remove(); }

    static void Remove()
    {
        CoreThreadContext::SetHasSessionIdFunction({});
        CoreThreadContext::SetGetSessionIdFunction({});
        CoreThreadContext::SetGetSessionObjectsInterfaceFunction({});
    }
};
