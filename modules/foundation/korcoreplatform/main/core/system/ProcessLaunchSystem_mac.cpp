#include "korcoreplatform/main/core/system/ProcessLaunchSystem_p.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/event.h>
#include <unistd.h>

int ProcessLaunchSystem::OpenPipe(int (&ends)[2]) noexcept
{
    // Between the two steps another thread's fork can still get the ends; children that are
    // launched here cannot, as they get no descriptor that is not named.
    if (::pipe(ends) != 0) {
        return errno;
    }
    ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    return 0;
}

void ProcessLaunchSystem::EnlargePipe(int /*end*/) noexcept {} // the system does it by itself

int ProcessLaunchSystem::CloseOtherDescriptors(::posix_spawn_file_actions_t& /*actions*/,
                                               short& flags) noexcept
{
    flags = static_cast<short>(flags | POSIX_SPAWN_CLOEXEC_DEFAULT);
    return 0;
}

bool ProcessLaunchSystem::MarkOtherDescriptors() noexcept
{
    return false;
}

int ProcessLaunchSystem::OpenEndWatch(::pid_t child) noexcept
{
    int const queue = ::kqueue(); // no program that is started gets it, nor does a fork
    if (queue < 0) {
        return -1;
    }
    struct kevent end;
    EV_SET(&end, child, EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    if (::kevent(queue, &end, 1, nullptr, 0, nullptr) != 0) { // it may have ended already
        ::close(queue);
        return -1;
    }
    return queue;
}
