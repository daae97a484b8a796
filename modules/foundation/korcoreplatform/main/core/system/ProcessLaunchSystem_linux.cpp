#include "korcoreplatform/main/core/system/ProcessLaunchSystem_p.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int kLargePipeBytes = 1024 * 1024; ///< What a user may have by default.
constexpr int kFirstClosedDescriptor = 3;

} // namespace

int ProcessLaunchSystem::OpenPipe(int (&ends)[2]) noexcept
{
    return ::pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno;
}

void ProcessLaunchSystem::EnlargePipe(int end) noexcept
{
    ::fcntl(end, F_SETPIPE_SZ, kLargePipeBytes); // refused to a user with very many pipes
}

int ProcessLaunchSystem::CloseOtherDescriptors(::posix_spawn_file_actions_t& actions,
                                               short& /*flags*/) noexcept
{
    return ::posix_spawn_file_actions_addclosefrom_np(&actions, kFirstClosedDescriptor);
}

bool ProcessLaunchSystem::MarkOtherDescriptors() noexcept
{
    // Marks since Linux 5.11.
    return ::close_range(kFirstClosedDescriptor, ~0U, CLOSE_RANGE_CLOEXEC) == 0;
}

int ProcessLaunchSystem::OpenEndWatch(::pid_t child) noexcept
{
    // Not by the C library's name for it, which older ones lack. Unknown before Linux 5.3.
    return static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
}
