/// The one place where the library crashes on purpose.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

#include <functional>

/// Calls the crash hook. A hook that ends the process, as a host's usually does, never comes back;
/// any other lets the caller go on.
/// Throws: what the hook throws.
/// Thread safety: may be called from any thread, but not while the hook is being replaced.
KORCOREPLATFORM_EXPORT void ICrashNow();

/// Replaces the crash hook and destroys the old one at once, so a hook must not replace itself. An
/// empty callable brings back `DefaultCrashNow`, and so does the end of the process.
/// Thread safety: one thread at a time, usually at start-up.
KORCOREPLATFORM_EXPORT void RegisterICrashNowFunc(std::function<void()> func);

/// The hook until the host registers one: it does not end the process.
/// Throws: `KorvelException` with id AutoGen_0xEEAA139E, always.
KORCOREPLATFORM_EXPORT void DefaultCrashNow();
