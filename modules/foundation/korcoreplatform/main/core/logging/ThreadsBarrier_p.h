/// A memory barrier for all threads of the process at once.

#pragma once

namespace TLog {

/// Where two threads each write something and then read what the other one writes, both need a
/// barrier in between. With this one, the thread that comes by often does without, and the other
/// one issues it for both.
namespace ThreadsBarrier {

/// Asks the system for it, once before the first `Issue`. Returns false where there is none: every
/// thread then needs barriers of its own.
bool Arrange() noexcept;

/// Returns when every thread of the process has gone through a barrier since the call. Where the
/// process has meanwhile forbidden itself the system call, after a time that is long enough for
/// any processor to show its stores.
void Issue() noexcept;

} // namespace ThreadsBarrier
} // namespace TLog
