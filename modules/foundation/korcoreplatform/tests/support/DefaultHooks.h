/// The hooks of a thread's context as they were before a test.

#pragma once

#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"

/// Takes the host's hooks away when it dies.
struct DefaultHooks
{
    ~DefaultHooks() { Restore(); }

    static void Restore()
    {
        CoreThreadContext::SetHasSessionIdFunction({});
        CoreThreadContext::SetGetSessionIdFunction({});
        CoreThreadContext::SetGetSessionObjectsInterfaceFunction({});
    }
};
