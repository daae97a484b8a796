/// What launching a program needs that each system does in its own way.

#pragma once

#include <spawn.h>
#include <sys/types.h>

namespace ProcessLaunchSystem {

/// A pipe whose ends no other program gets. Returns 0 or an error number.
int OpenPipe(int (&ends)[2]) noexcept;

/// Gives a pipe with much to carry more room, where the system lets it have some.
void EnlargePipe(int end) noexcept;

/// Adds to what a child is started with that of its descriptors only 0, 1 and 2 stay open, all of
/// which an action before sets. `flags` are those that the attributes will have. Returns 0 or an
/// error number.
int CloseOtherDescriptors(::posix_spawn_file_actions_t& actions, short& flags) noexcept;

/// Marks all descriptors of this process but 0, 1 and 2 to be closed in programs that are started.
/// Returns false where the system cannot do it in one call.
bool MarkOtherDescriptors() noexcept;

/// A descriptor that `poll` calls readable when the child, one that nobody waited for, has ended.
/// -1 when the system has none for it.
int OpenEndWatch(::pid_t child) noexcept;

} // namespace ProcessLaunchSystem
