/// The lock of this process's environment.

#pragma once

#include "korsys/main/thread/TReadWriteLock.h"

/// Held for reading by what goes through the variables or hands them to a new process, for writing
/// while one is set or removed. Where a `QProcess` is started it is not held: slots of the host,
/// which may change a variable, run meanwhile. Single variables are read under Qt's own lock, which
/// the writers hold as well.
///
/// Thread safety: safe from any thread, until the process ends.
TReadWriteLock& EnvironmentLock() noexcept;
